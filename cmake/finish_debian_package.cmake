# Read by cpack when the files of the Debian package are in place: adds the changelog, compresses
# what Debian wants compressed, and finds the libraries that the package needs.
include(${CMAKE_CURRENT_LIST_DIR}/changelog.cmake)
set(root ${CPACK_TEMPORARY_DIRECTORY})
set(changelog ${root}/usr/share/doc/${CPACK_PACKAGE_NAME}/changelog)
set(release_time $ENV{SOURCE_DATE_EPOCH})
write_debian_changelog(${CPACK_CHANGELOG} ${CPACK_PACKAGE_NAME} "${CPACK_PACKAGE_CONTACT}"
  ${changelog})
set(ENV{SOURCE_DATE_EPOCH} ${release_time})

file(GLOB manuals ${root}/usr/share/man/man1/*.1)
execute_process(COMMAND gzip -9n ${changelog} ${manuals} COMMAND_ERROR_IS_FATAL ANY)

execute_process(COMMAND chmod -R u=rwX,go=rX ${root}  # whatever the umask
  COMMAND_ERROR_IS_FATAL ANY)

find_program(SHLIBDEPS dpkg-shlibdeps)
if(NOT SHLIBDEPS)
  message(FATAL_ERROR "To make the package, install dpkg-dev: dpkg-shlibdeps is missing.")
endif()
# The window's libraries are wanted where there is a display; the silent run does without them.
file(GLOB programs ${root}/usr/bin/*)
file(GLOB_RECURSE window ${root}/usr/*-window.so)
file(WRITE ${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps/debian/control
  "Source: ${CPACK_PACKAGE_NAME}\n\nPackage: ${CPACK_PACKAGE_NAME}\nArchitecture: any\n")
execute_process(
  COMMAND ${SHLIBDEPS} -O -dDepends ${programs} -dRecommends ${window}
  WORKING_DIRECTORY ${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps
  OUTPUT_VARIABLE libraries COMMAND_ERROR_IS_FATAL ANY)
if(libraries MATCHES "shlibs:Depends=([^\n]+)")
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "${CMAKE_MATCH_1}")
endif()
if(libraries MATCHES "shlibs:Recommends=([^\n]+)")
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "${CMAKE_MATCH_1}")
endif()
