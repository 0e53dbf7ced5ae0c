# The rules of the checker, a header made anew with docs/templates.md: the rows of its table, which
# src/check/finding.h includes, and for --explain what it says about each.
set(document ${PROJECT_SOURCE_DIR}/docs/templates.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${document})
file(READ ${document} pages)
string(FIND "${pages}" "\n## What the checker finds\n" begin)
string(SUBSTRING "${pages}" ${begin} -1 pages)
string(FIND "${pages}" "\n## Before you ship" end)
string(SUBSTRING "${pages}" 0 ${end} pages)
string(REGEX MATCHALL "\\| \\[`[^|]+\\| [a-z ,]+" rules "${pages}")
list(TRANSFORM rules REPLACE ".*\\[`(.+)`.* (error|warning)" "{\"\\1\", Severity::\\2")
list(TRANSFORM rules REPLACE ", (also )?in maps" ", true")
list(JOIN rules "},\n    " rules)
string(REPLACE "\n### " ")~\"\n    R\"~(\n### " pages "${pages}")  # compilers bound a literal's size
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/generated/check/rules.h @ONLY
  CONTENT "#pragma once\n\n#include \"check/rule.h\"\n
inline constexpr Rule rule_table[] = {\n    @rules@}};\n
inline constexpr char rule_pages[] = R\"~(@pages@)~\";\n")
target_include_directories(check PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/generated)
