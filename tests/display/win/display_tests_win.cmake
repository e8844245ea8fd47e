# Windows display tests: the portable core, the vendor drivers against the simulated libraries, the screen ramp.
uc_add_test(display_test SOURCES ${DISPLAY_CORE_TESTS} win/vendor_drivers_test.cpp win/screen_gamma_test.cpp LIBS gdi32)
add_dependencies(display_test uc_nvapi_sim uc_adl_sim uc_adl_sim_partial)
# Wine may ship stand-ins of its own for these libraries: the ones beside the test must win.
set_property(TEST display_test APPEND PROPERTY ENVIRONMENT
             "WINEDLLOVERRIDES=mscoree,mshtml=\\;nvapi,nvapi64,atiadlxx,atiadlxy=n")
