# uc_add_test(NAME SOURCES... [LIBS libs...] [GUI] [THREADS]): one GoogleTest program, one CTest entry.
# On Windows targets CTest runs it through the Wine wrapper (the toolchain's cross-compiling emulator);
# GUI marks tests that open windows (they run with an X display). THREADS marks suites that run code on more
# than one thread (label "threads"): the native-tsan preset builds and runs only those, under ThreadSanitizer.
function(uc_add_test name)
  cmake_parse_arguments(T "GUI;THREADS" "" "SOURCES;LIBS" ${ARGN})
  if(UC_TSAN AND NOT T_THREADS)
    # Left out of the build and of CTest, but defined, so that settings made on the target still apply.
    add_executable(${name} EXCLUDE_FROM_ALL ${T_SOURCES})
    target_link_libraries(${name} PRIVATE uc_test_support utils_controls_static ${T_LIBS})
    return()
  endif()
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE uc_test_support utils_controls_static ${T_LIBS})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 ENVIRONMENT "UC_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  if(T_GUI)
    set_property(TEST ${name} APPEND PROPERTY LABELS gui)
  endif()
  if(T_THREADS)
    set_property(TEST ${name} APPEND PROPERTY LABELS threads)
  endif()
endfunction()
