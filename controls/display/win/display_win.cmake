# Windows part of display control: the NVAPI, ADL and gamma-ramp drivers, and the simulated vendor libraries.
target_sources(uc_objects PRIVATE win/nvidia_i2c_driver.cpp win/ati_i2c_driver.cpp win/win_i2c_driver.cpp
               win/ddc_platform_win.cpp)
target_link_libraries(uc_objects PUBLIC gdi32 user32)

# The simulated libraries carry the monitor engine themselves (built without the DLL's exports).
add_library(uc_display_sim_core STATIC ${UC_DISPLAY_SIM_SOURCES} simulator/win/sim_library.cpp)
target_include_directories(uc_display_sim_core PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)

# They are built under the names each target loads, into the display test folder (the test loads them from
# beside itself) and copied beside uctool, so both reach them by their real names.
set(UC_DISPLAY_SIM_DIR ${CMAKE_BINARY_DIR}/tests/display)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(UC_NVAPI_NAME nvapi64)
else()
  set(UC_NVAPI_NAME nvapi)
endif()
function(uc_display_sim_library target output dir)
  add_library(${target} SHARED ${ARGN})
  target_link_libraries(${target} PRIVATE uc_display_sim_core)
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${output} RUNTIME_OUTPUT_DIRECTORY ${dir})
  install(TARGETS ${target} RUNTIME DESTINATION bin/display-simulator)
endfunction()
uc_display_sim_library(uc_nvapi_sim ${UC_NVAPI_NAME} ${UC_DISPLAY_SIM_DIR} simulator/win/nvapi_sim.cpp)
uc_display_sim_library(uc_adl_sim atiadlxx ${UC_DISPLAY_SIM_DIR} simulator/win/adl_sim.cpp)
# A library that lacks most ADL exports, under the second name the ADL driver tries.
uc_display_sim_library(uc_adl_sim_partial atiadlxy ${UC_DISPLAY_SIM_DIR}/partial simulator/win/adl_sim.cpp)
target_compile_definitions(uc_adl_sim_partial PRIVATE UC_ADL_SIM_PARTIAL)
foreach(sim uc_nvapi_sim uc_adl_sim)
  foreach(dir tools/uctool benchmarks/win)
    add_custom_command(TARGET ${sim} POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/${dir}
      COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:${sim}> ${CMAKE_BINARY_DIR}/${dir}/)
  endforeach()
endforeach()
