# The program on Windows itself.
set(machine windows)
layer(windows BELOW platform SOURCES
  platform/windows/console.cpp platform/windows/find_file.cpp platform/windows/handle.cpp platform/windows/letter_case.cpp
  platform/windows/name_lock.cpp platform/windows/paths.cpp platform/windows/retry_budget.cpp
  platform/windows/script_shell.cpp platform/windows/wide_text.cpp
  platform/windows/windows_files.cpp platform/windows/windows_map.cpp
  platform/windows/windows_system.cpp)
target_link_libraries(windows PUBLIC ole32 oleaut32 shell32 uuid)
target_compile_definitions(windows PUBLIC UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
  _WIN32_WINNT=0x0601 WINVER=0x0601)  # Windows 7

layer(win32 BELOW ui windows SOURCES
  ui/win32/controls.cpp ui/win32/font.cpp ui/win32/key_guard.cpp
  ui/win32/main_window.cpp ui/win32/message_box.cpp ui/win32/monitor.cpp)
target_link_libraries(win32 PUBLIC comctl32 gdi32)

# Gives a program its manifest, its version and, by a line of a resource script, its icon.
enable_language(RC)
function(add_resources target DESCRIPTION ICON)
  set(NAME ${target})
  configure_file(ui/win32/program.manifest ${target}.manifest @ONLY)
  configure_file(ui/win32/program.rc ${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  if(MSVC)
    target_link_options(${target} PRIVATE /MANIFEST:NO)
  endif()
endfunction()

add_executable(vora-map-updater WIN32 main_windows.cpp)
add_resources(vora-map-updater "Vora Map Updater"
  "1 ICON \"${PROJECT_SOURCE_DIR}/share/vora-map-updater.ico\"")
target_link_libraries(vora-map-updater PRIVATE win32)
set_target_properties(vora-map-updater PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
if(MSVC)  # a program with a window whose entry is main all the same
  target_link_options(vora-map-updater PRIVATE /ENTRY:mainCRTStartup)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_link_options(vora-map-updater PRIVATE -s)
endif()
