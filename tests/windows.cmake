# The tests of the Windows build. A cross build compiles GoogleTest from Debian's source package.
if(CMAKE_CROSSCOMPILING)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL)
  foreach(library gtest gtest_main)
    target_compile_options(${library} PRIVATE -w)
  endforeach()
else()
  find_package(GTest)
  if(NOT GTest_FOUND)
    message(STATUS "GoogleTest is not installed: the tests are left out")
    return()
  endif()
endif()

add_library(test_support INTERFACE)
target_include_directories(test_support INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(test_support INTERFACE ui windows executable GTest::gtest_main)

# One test program for each source folder. They share one Wine prefix, so they run one at a time.
function(add_unit_tests name)
  add_executable(test-${name} ${ARGN})
  target_link_libraries(test-${name} PRIVATE test_support)
  add_test(NAME ${name} COMMAND test-${name})
  set_tests_properties(${name} PROPERTIES RESOURCE_LOCK machine TIMEOUT 900)
endfunction()

# Tests that change the registry run only under Wine, never on a developer's own Windows.
if(NOT CMAKE_CROSSCOMPILING)
  add_unit_tests(engine engine/line_array_test.cpp engine/numbers_test.cpp)
  return()
endif()

add_library(test_machine STATIC support/test_machine.cpp support/windows/test_machine.cpp)
target_link_libraries(test_machine PUBLIC test_support advapi32)

function(add_machine_tests name)
  add_unit_tests(${name} ${ARGN})
  target_link_libraries(test-${name} PRIVATE test_machine)
  target_compile_definitions(test-${name} PRIVATE DOCUMENTS="Z:${CMAKE_SOURCE_DIR}/docs")
endfunction()

add_machine_tests(windows
  platform/windows/replacing_test.cpp platform/windows/windows_files_test.cpp
  platform/windows/windows_system_test.cpp)
add_machine_tests(platform
  platform/files_test.cpp platform/parallel_test.cpp platform/printable_test.cpp
  platform/replacing_test.cpp platform/registry_and_folders_test.cpp)
add_machine_tests(engine engine/line_array_test.cpp engine/numbers_test.cpp)
add_machine_tests(check
  check/random_pairs_test.cpp check/rules_test.cpp docs/templates_test.cpp)
target_link_libraries(test-check PRIVATE check)
add_machine_tests(convert convert/conversion_test.cpp convert/data_files_test.cpp)
add_machine_tests(discover discover/search_test.cpp)
add_machine_tests(app app/command_line_test.cpp app/startup_test.cpp)
add_machine_tests(ui ui/handlers_test.cpp ui/layout_test.cpp)
add_machine_tests(window ui/win32/window_test.cpp)
target_link_libraries(test-window PRIVATE win32)
add_dependencies(test-window vora-map-updater)
target_compile_definitions(test-window PRIVATE PROGRAM="$<TARGET_FILE:vora-map-updater>")
