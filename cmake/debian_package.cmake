# The Debian package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Vora Map Updater authors <vora-map-updater@example.org>")
set(CPACK_PACKAGE_DESCRIPTION "\
The game Vorakai keeps its maps (galaxies) as text files whose format changes
between releases. This program finds the maps of a game that is installed in a
Wine prefix, converts the old ones to the current format and keeps a backup
beside each. It serves the base game, zendrel and the expansion Tarnfall.

The program has a window and, for scripts, a silent run that needs neither a
display nor the recommended libraries. A second program checks the templates
that describe the map formats, for those who write them.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "fonts-liberation, qt6-wayland, wine")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_CHANGELOG ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/finish_debian_package.cmake)
include(CPack)
