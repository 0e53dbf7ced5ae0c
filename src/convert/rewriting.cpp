// Writes a section of a map in the new format.
#include "convert/rewriting.h"

#include <algorithm>
#include <optional>

namespace {

std::string_view last_characters(std::string_view line, std::size_t count) {
  return line.substr(line.size() - std::min(count, line.size()));
}

std::string_view from(std::string_view line, std::size_t position) {
  return line.substr(std::min(position, line.size()));
}

// Adds one output line. `first` is the block's first line, `aligned` the one that the output line
// is aligned with.
void write_output(std::string& out, const OutputLine& line, std::string_view first,
                  std::string_view aligned) {
  if (line.marker == Marker::dropped)
    return;
  out += line.text;
  if (line.marker == Marker::last_character)
    out += last_characters(aligned, 1);
  if (line.marker == Marker::last_two)
    out += last_characters(aligned, 2);
  if (line.marker == Marker::rest)
    out += from(first, line.text.size() - 1);
  out += LineArray::line_end;
}

// What keeps the templates from writing section `s`; nothing when they can.
std::optional<TemplateError> find_fault(const OldTemplate& oldtemplate,
                                        const NewTemplate& newtemplate, std::size_t s) {
  if (oldtemplate.failure)
    return TemplateError{oldtemplate.filename, oldtemplate.failure->reason, ""};
  if (newtemplate.failure)
    return TemplateError{newtemplate.filename, newtemplate.failure->reason, ""};
  const auto fault = [&](const char* what, const Template& file) {
    const std::size_t head = file.heads[s];
    return TemplateError{newtemplate.filename, what, std::string(file.lines[head])};
  };
  if (s >= newtemplate.heads.size())
    return fault("it has no such section", oldtemplate);
  if (newtemplate.counts[s] <= 0)
    return fault("its section count is 0 or below", newtemplate);
  const std::size_t after =
      newtemplate.lines.size() - std::min(newtemplate.lines.size(), newtemplate.heads[s] + 1);
  if (static_cast<unsigned long long>(newtemplate.counts[s]) > after)
    return fault("its count runs past its end", newtemplate);
  return std::nullopt;
}

}  // namespace

void write_line(std::string& out, std::string_view line) {
  out += line;
  out += LineArray::line_end;
}

Result<long long, TemplateError> rewritesection(const OldTemplate& oldtemplate,
                                                const NewTemplate& newtemplate, std::size_t s,
                                                const LineArray& galaxylines, std::size_t k,
                                                std::string& out) {
  if (auto fault = find_fault(oldtemplate, newtemplate, s))
    return *std::move(fault);
  const auto count = static_cast<std::size_t>(newtemplate.counts[s]);
  const std::size_t start = newtemplate.heads[s] + 1;
  for (std::size_t d = 0; d < count; ++d)
    write_output(out, newtemplate.output[start + d], galaxylines[k], galaxylines[k + d]);
  return oldtemplate.counts[s];
}
