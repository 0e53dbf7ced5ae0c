# Reads CHANGELOG.md, whose headings are "## 1.2.3 (2026-01-31)".
set(release_heading "\n## ([0-9.]+) \\(([0-9]+)-([0-9]+)-([0-9]+)\\)\n+")

# The start of a day in UTC, in seconds since 1970. Month and day have two digits.
function(seconds_of result year month day)
  math(EXPR month "(1${month} - 100 + 9) % 12")  # counted from March
  math(EXPR year "${year} - ${month} / 10")
  math(EXPR days "365 * ${year} + ${year} / 4 - ${year} / 100 + ${year} / 400")
  math(EXPR seconds "(${days} + (306 * ${month} + 5) / 10 + 1${day} - 101 - 719468) * 86400")
  set(${result} ${seconds} PARENT_SCOPE)
endfunction()

# Sets release_version, release_date and release_seconds of the newest release.
function(newest_release changelog)
  file(READ ${changelog} text)
  if(NOT text MATCHES "${release_heading}")
    message(FATAL_ERROR "${changelog} has no heading with a version and a date.")
  endif()
  set(release_version ${CMAKE_MATCH_1} PARENT_SCOPE)
  set(release_date ${CMAKE_MATCH_2}-${CMAKE_MATCH_3}-${CMAKE_MATCH_4} PARENT_SCOPE)
  seconds_of(seconds ${CMAKE_MATCH_2} ${CMAKE_MATCH_3} ${CMAKE_MATCH_4})
  set(release_seconds ${seconds} PARENT_SCOPE)
endfunction()

# Writes the changelog in Debian's format.
function(write_debian_changelog changelog package maintainer output)
  file(READ ${changelog} text)
  set(entries "")
  while(text MATCHES "${release_heading}([^#]+)")
    set(version ${CMAKE_MATCH_1})
    set(whole "${CMAKE_MATCH_0}")
    string(STRIP "${CMAKE_MATCH_5}" changes)
    seconds_of(seconds ${CMAKE_MATCH_2} ${CMAKE_MATCH_3} ${CMAKE_MATCH_4})
    string(REPLACE "\n" "\n  " changes "\n${changes}")
    string(REPLACE "\n  - " "\n  * " changes "${changes}")
    set(ENV{SOURCE_DATE_EPOCH} ${seconds})  # the time that TIMESTAMP takes
    string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
    string(APPEND entries
      "${package} (${version}) stable; urgency=low\n${changes}\n\n -- ${maintainer}  ${date}\n\n")
    string(REPLACE "${whole}" "\n" text "${text}")
  endwhile()
  file(WRITE ${output} "${entries}")
endfunction()
