# The archive for players on Windows: the program, its data files and a readme, in one folder.
install(TARGETS vora-map-updater RUNTIME DESTINATION .)
install(DIRECTORY data/ DESTINATION .)
configure_file(share/readme-windows.txt readme.txt @ONLY NEWLINE_STYLE CRLF)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/readme.txt DESTINATION .)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME vora-map-updater-${PROJECT_VERSION}-windows)
include(CPack)
