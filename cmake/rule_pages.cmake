# What docs/templates.md says about each rule, for --explain: a header, made anew with the document.
set(document ${PROJECT_SOURCE_DIR}/docs/templates.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${document})
file(READ ${document} pages)
string(FIND "${pages}" "\n## What the checker finds\n" begin)
string(SUBSTRING "${pages}" ${begin} -1 pages)
string(FIND "${pages}" "\n## Before you ship" end)
string(SUBSTRING "${pages}" 0 ${end} pages)
string(REPLACE "\n### " ")~\"\n    R\"~(\n### " pages "${pages}")  # compilers bound a literal's size
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/generated/check/rule_pages.h @ONLY
  CONTENT "#pragma once\n\ninline constexpr char rule_pages[] = R\"~(@pages@)~\";\n")
target_include_directories(check PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/generated)
