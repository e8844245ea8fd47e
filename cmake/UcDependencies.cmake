# Third-party libraries: pugixml (native XML back-end), GoogleTest, Google Benchmark, Eigen.
if(WIN32)
  # Windows builds compile GoogleTest from the system's sources with the cross compiler.
  set(UC_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources")
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
  add_subdirectory(${UC_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/_deps/googletest EXCLUDE_FROM_ALL SYSTEM)
  # GoogleTest 1.11 and later define these aliases themselves.
  if(NOT TARGET GTest::gtest)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gmock ALIAS gmock)
  endif()
else()
  find_package(pugixml REQUIRED)
  find_package(GTest REQUIRED)
  find_package(benchmark QUIET)
  find_package(Threads REQUIRED)
endif()
find_package(Eigen3 QUIET NO_MODULE PATHS /usr/share/eigen3/cmake /usr/lib/cmake/eigen3)
