find_package(GTest REQUIRED)
include(GoogleTest)

# Declares a GoogleTest program built from SOURCES and linked with LIBRARIES, and registers
# each of its tests with ctest as PREFIX<Suite>.<Test>. A test that runs longer than TIMEOUT
# seconds (default 300) fails, so one that blocks cannot hang the run. LABELS (default
# "quick") sort tests into tiers: quick (the edit-build-test loop, under a minute), slow
# (shipped data, training, whole trees), packaging (install, pip, subdirectory) and threads
# (what ThreadSanitizer runs); a test may carry several.
function(lingomat_add_gtest target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "PREFIX;TIMEOUT" "SOURCES;LIBRARIES;LABELS")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  if(NOT arg_LABELS)
    set(arg_LABELS quick)
  endif()
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} GTest::gtest_main)
  # GCC 12 at -O3 takes the strings of an options record built in place for uninitialised.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  gtest_discover_tests(${target} TEST_PREFIX "${arg_PREFIX}" DISCOVERY_TIMEOUT 60
                       TEST_LIST ${target}_tests PROPERTIES TIMEOUT ${arg_TIMEOUT})
  # Labels are set once the tests are discovered: given to gtest_discover_tests as a
  # property, a list of them would be split into separate arguments.
  set(labels_file ${CMAKE_CURRENT_BINARY_DIR}/${target}_labels.cmake)
  file(WRITE ${labels_file} "if(${target}_tests)\n  set_tests_properties(\${${target}_tests} PROPERTIES LABELS \"${arg_LABELS}\")\nendif()\n")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${labels_file})
endfunction()
