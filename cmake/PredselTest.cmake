# predsel_add_test(NAME SOURCES... LIBRARIES...): one GoogleTest program, its tests known to ctest.
find_package(GTest REQUIRED)
include(GoogleTest)

function(predsel_add_test name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE predsel_flags ${arg_LIBRARIES} GTest::gtest_main)
  # Optimising the assertions of a test takes twice the time to compile and speeds up nothing.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Debug>:-O0>)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
