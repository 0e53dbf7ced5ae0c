# The program on Linux, for a Windows machine that is kept in a folder.
layer(prefix BELOW platform SOURCES
  platform/prefix/disk.cpp platform/prefix/folders.cpp platform/prefix/handle.cpp
  platform/prefix/hashset.cpp platform/prefix/lettercase.cpp platform/prefix/machine.cpp
  platform/prefix/memory.cpp platform/prefix/paths.cpp platform/prefix/prefixfiles.cpp
  platform/prefix/prefixmapfolder.cpp platform/prefix/prefixsystem.cpp
  platform/prefix/registry.cpp platform/prefix/registrytext.cpp platform/prefix/utf8.cpp
  platform/prefix/versionresource.cpp)
layer(console BELOW ui SOURCES ui/console/consolescreen.cpp)

set(windowlibrary vora-map-updater-window.so)
set(windowfolder ${CMAKE_INSTALL_LIBDIR}/vora-map-updater)
file(RELATIVE_PATH fromprogram /${CMAKE_INSTALL_BINDIR} /${windowfolder})

add_executable(vora-map-updater main.cpp ui/qt/loadwindow.cpp)
target_link_libraries(vora-map-updater PRIVATE console prefix ${CMAKE_DL_LIBS})
target_compile_definitions(vora-map-updater PRIVATE
  WINDOWLIBRARY="${windowlibrary}" LIBRARYFOLDER="${fromprogram}")
set_target_properties(vora-map-updater PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR} ENABLE_EXPORTS ON)

add_subdirectory(ui/qt)
