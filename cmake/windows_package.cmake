# The archive for players on Windows: the program, the checker of templates, the documents, the data
# files, a readme and the licence, in one folder.
install(TARGETS vora-map-updater vora-template-check RUNTIME DESTINATION .)
install(DIRECTORY data/ DESTINATION .)
configure_file(share/readme-windows.txt readme.txt @ONLY NEWLINE_STYLE CRLF)
configure_file(LICENSE license.txt @ONLY NEWLINE_STYLE CRLF)
foreach(document players reliability templates)
  configure_file(docs/${document}.md ${document}.md @ONLY NEWLINE_STYLE CRLF)
endforeach()
foreach(file readme.txt license.txt players.md reliability.md templates.md)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${file} DESTINATION .)
endforeach()

# Not cpack's own ZIP, which takes the files in the order of the disk.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${CMAKE_CURRENT_SOURCE_DIR}/cmake/make_zip.cmake)
set(CPACK_PACKAGE_FILE_NAME vora-map-updater-${PROJECT_VERSION}-windows)
include(CPack)
