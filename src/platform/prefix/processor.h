// The variables that describe the processor, as Wine makes them for each process.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// The value that Wine would give a variable on this machine; `name` is in lower case. Nullopt for
// any other name, and where the kernel does not say what Wine reads from the processor. `is_64bit`:
// the prefix is one of a 64-bit Windows.
std::optional<std::string> processor_variable(std::string_view name, bool is_64bit);

// The same from the text of /proc/cpuinfo and the number of processors in use.
std::optional<std::string> processor_variable(std::string_view name, bool is_64bit,
                                              std::string_view cpuinfo, long processors);
