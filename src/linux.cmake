# The program on Linux, for a Windows machine that is kept in a folder.
set(machine prefix)
layer(prefix BELOW platform SOURCES
  platform/prefix/code_page.cpp platform/prefix/console.cpp platform/prefix/descriptor.cpp
  platform/prefix/disk.cpp platform/prefix/folder_names.cpp platform/prefix/hidden_names.cpp
  platform/prefix/launcher_prefixes.cpp platform/prefix/letter_case.cpp
  platform/prefix/machine.cpp platform/prefix/paths.cpp platform/prefix/prefix_files.cpp
  platform/prefix/prefix_map.cpp platform/prefix/prefix_system.cpp platform/prefix/process.cpp
  platform/prefix/processor.cpp
  platform/prefix/registry.cpp platform/prefix/registry_text.cpp
  platform/prefix/version_resource.cpp)
file(RELATIVE_PATH prefix_from_program /${CMAKE_INSTALL_BINDIR} /)
target_compile_definitions(prefix PRIVATE
  PREFIXFROMPROGRAM="${prefix_from_program}"
  DATAFOLDER="${CMAKE_INSTALL_DATADIR}/vora-map-updater")
find_package(utf8cpp REQUIRED)
target_link_libraries(prefix PRIVATE utf8::cpp ${CMAKE_DL_LIBS})
layer(console BELOW ui SOURCES ui/console/console_screen.cpp)

set(window_library vora-map-updater-window.so)
string(REPLACE "." "_" window_entry run_window_${PROJECT_VERSION})

add_executable(vora-map-updater main.cpp ui/qt/load_window.cpp)
target_link_libraries(vora-map-updater PRIVATE console prefix)
target_compile_definitions(vora-map-updater PRIVATE
  WINDOWLIBRARY="${window_library}" WINDOWENTRY="${window_entry}"
  LIBRARYFOLDER="${CMAKE_INSTALL_LIBDIR}/vora-map-updater")
set_target_properties(vora-map-updater PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR} ENABLE_EXPORTS ON)

add_subdirectory(ui/qt)
