# Read by cpack when the files of the archive are in place: packs them, sorted by name.
set(archive ${CPACK_TOPLEVEL_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.zip)
get_filename_component(parent ${CPACK_TEMPORARY_DIRECTORY} DIRECTORY)
set(readable OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)  # whatever the umask
file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY} FILE_PERMISSIONS ${readable}
  DIRECTORY_PERMISSIONS ${readable} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
file(GLOB_RECURSE files RELATIVE ${parent} ${CPACK_TEMPORARY_DIRECTORY}/*)
execute_process(COMMAND touch -d @$ENV{SOURCE_DATE_EPOCH} -- ${files}
  WORKING_DIRECTORY ${parent} COMMAND_ERROR_IS_FATAL ANY)
find_program(ZIP zip)
if(NOT ZIP)
  message(FATAL_ERROR "To make the archive, install zip.")
endif()
file(REMOVE ${archive})
execute_process(COMMAND ${ZIP} -q -X ${archive} ${files}  # -X: without the packer's user
  WORKING_DIRECTORY ${parent} COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${archive})
