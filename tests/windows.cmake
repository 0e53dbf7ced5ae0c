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

add_library(testsupport INTERFACE)
target_include_directories(testsupport INTERFACE ${CMAKE_SOURCE_DIR})
target_link_libraries(testsupport INTERFACE ui windows executable GTest::gtest_main)

# One test program for each source folder. They share one Wine prefix, so they run one at a time.
function(testsof name)
  add_executable(test-${name} ${ARGN})
  target_link_libraries(test-${name} PRIVATE testsupport)
  add_test(NAME ${name} COMMAND test-${name})
  set_tests_properties(${name} PROPERTIES RESOURCE_LOCK machine)
endfunction()

# Tests that change the registry run only under Wine, never on a developer's own Windows.
if(NOT CMAKE_CROSSCOMPILING)
  testsof(platform platform/osversion_test.cpp)
  testsof(form form/linearray_test.cpp form/text_test.cpp)
  testsof(convert convert/passes_test.cpp)
  return()
endif()

testsof(windows
  platform/windows/replacing_test.cpp platform/windows/windowsfiles_test.cpp
  platform/windows/windowssystem_test.cpp)
target_link_libraries(test-windows PRIVATE advapi32)
testsof(window ui/win32/window_test.cpp)
target_link_libraries(test-window PRIVATE win32 advapi32)
add_dependencies(test-window vora-map-updater)
target_compile_definitions(test-window PRIVATE
  PROGRAM="$<TARGET_FILE:vora-map-updater>" PROJECT="${CMAKE_SOURCE_DIR}")

add_library(testmachine STATIC support/testmachine.cpp support/windows/testmachine.cpp)
target_link_libraries(testmachine PUBLIC testsupport advapi32)

function(machinetestsof name)
  testsof(${name} ${ARGN})
  target_link_libraries(test-${name} PRIVATE testmachine)
  target_compile_definitions(test-${name} PRIVATE DOCUMENTS="Z:${CMAKE_SOURCE_DIR}/docs")
endfunction()

machinetestsof(platform
  platform/osversion_test.cpp platform/replacing_test.cpp platform/services_test.cpp)
machinetestsof(form form/control_test.cpp form/linearray_test.cpp form/text_test.cpp)
machinetestsof(convert
  convert/conversion_test.cpp convert/linereader_test.cpp convert/originalmaps_test.cpp
  convert/passes_test.cpp convert/templates_test.cpp docs/templates_test.cpp)
machinetestsof(discover discover/search_test.cpp)
machinetestsof(app app/commandline_test.cpp app/edition_test.cpp app/startup_test.cpp)
machinetestsof(ui ui/handlers_test.cpp ui/layout_test.cpp)
