# The program on Windows itself.
set(machine windows)
layer(windows BELOW platform SOURCES
  platform/windows/console.cpp
  platform/windows/find_file.cpp platform/windows/handle.cpp platform/windows/letter_case.cpp
  platform/windows/name_lock.cpp platform/windows/paths.cpp platform/windows/retry_budget.cpp
  platform/windows/script_shell.cpp
  platform/windows/wide_text.cpp platform/windows/windows_files.cpp
  platform/windows/windows_map.cpp platform/windows/windows_system.cpp)
target_link_libraries(windows PUBLIC ole32 oleaut32 shell32 uuid version)
target_compile_definitions(windows PUBLIC UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
  _WIN32_WINNT=0x0601 WINVER=0x0601)  # Windows 7

layer(win32 BELOW ui windows SOURCES
  ui/win32/accessible_name.cpp ui/win32/controls.cpp ui/win32/font.cpp ui/win32/key_guard.cpp
  ui/win32/main_window.cpp ui/win32/monitor.cpp ui/win32/write_stderr.cpp)
target_link_libraries(win32 PUBLIC comctl32 gdi32)

enable_language(RC)
configure_file(ui/win32/program.rc program.rc @ONLY)
configure_file(ui/win32/program.manifest program.manifest @ONLY)

add_executable(vora-map-updater WIN32 main_windows.cpp ${CMAKE_CURRENT_BINARY_DIR}/program.rc)
target_link_libraries(vora-map-updater PRIVATE win32)
set_target_properties(vora-map-updater PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
if(MSVC)  # a program with a window whose entry is main all the same
  target_link_options(vora-map-updater PRIVATE /ENTRY:mainCRTStartup /MANIFEST:NO)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_link_options(vora-map-updater PRIVATE -s)
endif()
