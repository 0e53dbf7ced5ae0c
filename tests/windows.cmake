# The tests of the Windows build. A cross build makes GoogleTest from Debian's sources of it.
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

add_library(testsupport INTERFACE)
target_include_directories(testsupport INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(testsupport INTERFACE ui windows executable GTest::gtest_main)

# One program for the tests of a folder of the sources.
function(testsof name)
  add_executable(test-${name} ${ARGN})
  target_link_libraries(test-${name} PRIVATE testsupport)
  add_test(NAME ${name} COMMAND test-${name})
endfunction()

testsof(platform platform/osversion_test.cpp)
testsof(windows
  platform/windows/replacing_test.cpp platform/windows/windowsfiles_test.cpp
  platform/windows/windowssystem_test.cpp)
target_link_libraries(test-windows PRIVATE advapi32)
testsof(form form/linearray_test.cpp form/text_test.cpp)
testsof(convert
  convert/matching_test.cpp convert/passes_test.cpp convert/rewriting_test.cpp)
testsof(window ui/win32/window_test.cpp)
target_link_libraries(test-window PRIVATE win32 advapi32)
add_dependencies(test-window vora-map-updater)
target_compile_definitions(test-window PRIVATE
  PROGRAM="$<TARGET_FILE:vora-map-updater>" PROJECT="${CMAKE_SOURCE_DIR}")
