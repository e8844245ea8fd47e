# uc_add_test(NAME SOURCES... [LIBS libs...] [GUI]): one GoogleTest program, one CTest entry.
# On Windows targets CTest runs it through the Wine wrapper (the toolchain's cross-compiling emulator);
# GUI marks tests that open windows (they run with an X display).
function(uc_add_test name)
  cmake_parse_arguments(T "GUI" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE uc_test_support utils_controls_static ${T_LIBS})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 ENVIRONMENT "UC_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  if(T_GUI)
    set_tests_properties(${name} PROPERTIES LABELS gui)
  endif()
endfunction()
