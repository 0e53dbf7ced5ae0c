# Read by cpack before it makes a package: no clock and no time zone shows in one, so two builds
# from the same sources give the same bytes.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} ${CPACK_RELEASE_SECONDS})
endif()
set(ENV{TZ} UTC)
