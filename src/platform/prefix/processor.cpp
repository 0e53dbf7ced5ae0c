// The variables that describe the processor. The kernel tells family, model and stepping as Wine
// reads them with CPUID, the extended ones included.
#include "platform/prefix/processor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <sstream>

#include <unistd.h>

namespace {

// What /proc/cpuinfo says of the first processor; empty when it does not say it.
std::string_view field(std::string_view cpuinfo, std::string_view name) {
  while (!cpuinfo.empty()) {
    const auto line = cpuinfo.substr(0, cpuinfo.find('\n'));
    cpuinfo.remove_prefix(std::min(line.size() + 1, cpuinfo.size()));
    const auto colon = line.find(": ");
    if (colon != std::string_view::npos &&
        line.substr(0, line.find_last_not_of("\t ", colon - 1) + 1) == name)
      return line.substr(colon + 2);
  }
  return "";
}

std::optional<unsigned> number(std::string_view text) {
  unsigned value = 0;
  const auto end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

std::string revision(unsigned model, unsigned stepping) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04x", (model << 8 | stepping) & 0xFFFF);
  return text.data();
}

}  // namespace

std::optional<std::string> processor_variable(std::string_view name, bool is_64bit,
                                              std::string_view cpuinfo, long processors) {
  if (name == "os")
    return "Windows_NT";
  if (name == "number_of_processors")
    return std::to_string(processors);
  const auto vendor = std::string(field(cpuinfo, "vendor_id"));
  const auto family = number(field(cpuinfo, "cpu family"));
  const auto model = number(field(cpuinfo, "model"));
  const auto stepping = number(field(cpuinfo, "stepping"));
  if (vendor.empty() || !family || !model || !stepping)
    return std::nullopt;
  if (name == "processor_architecture")
    return is_64bit ? "AMD64" : "x86";
  if (name == "processor_level")
    return std::to_string(*family);
  if (name == "processor_revision")
    return revision(*model, *stepping);
  if (name != "processor_identifier")
    return std::nullopt;
  const std::string maker = !is_64bit ? "x86" : vendor == "AuthenticAMD" ? "AMD64" : "Intel64";
  return maker + " Family " + std::to_string(*family) + " Model " + std::to_string(*model) +
         " Stepping " + std::to_string(*stepping) + ", " + vendor;
}

std::optional<std::string> processor_variable(std::string_view name, bool is_64bit) {
  std::ostringstream cpuinfo;
  cpuinfo << std::ifstream("/proc/cpuinfo").rdbuf();
  return processor_variable(name, is_64bit, cpuinfo.str(), ::sysconf(_SC_NPROCESSORS_ONLN));
}
