// The two passes that turn the lines of a map into its text in the new format.
#include "engine/passes.h"

#include <algorithm>
#include <optional>

namespace {

Failure failure(const Template& file, std::string reason,
                Failure::Kind kind = Failure::Kind::other) {
  return {file.filename, "write the section", std::move(reason), kind};
}

std::string_view last_characters(std::string_view line, std::size_t count) {
  return line.substr(line.size() - std::min(count, line.size()));
}

std::string_view from(std::string_view line, std::size_t position) {
  return line.substr(std::min(position, line.size()));
}

// Appends one output line. `first` is the block's first line, `aligned` the one that the output
// line is aligned with.
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
std::optional<Failure> find_fault(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                                  std::size_t s) {
  for (const Template* file :
       {static_cast<const Template*>(&oldtemplate), static_cast<const Template*>(&newtemplate)})
    if (const auto& unread = file->failure)
      return failure(*file, (unread->missing() ? "" : "it cannot be read: ") + unread->reason,
                     unread->kind);
  const auto fault = [&](const std::string& what, std::string_view header) {
    return failure(newtemplate, header.empty() ? what : what + ": " + std::string(header));
  };
  if (s >= newtemplate.newheads.size())
    return fault("it has no such section", oldtemplate.lines[oldtemplate.oldheads[s]]);
  const std::size_t head = newtemplate.newheads[s];
  if (newtemplate.counts[s] <= 0)
    return fault("its section count is 0 or below", newtemplate.lines[head]);
  const std::size_t after = newtemplate.lines.size() - std::min(newtemplate.lines.size(), head + 1);
  if (static_cast<unsigned long long>(newtemplate.counts[s]) > after)
    return fault("its count runs past its end", newtemplate.lines[head]);
  return std::nullopt;
}

// A block starts where `in_a_row` lines in a row are recognised; the last lines, too few for that,
// are carried over. Such lines are pending until a block follows, so that a run of them is copied
// in one piece.
Result<std::string> run_pass(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                             const LineArray& galaxylines, Blocks* blocks, std::size_t in_a_row) {
  std::string out;
  out.reserve(galaxylines.text().size());
  std::size_t k = 0, pending = 0;  // the line in hand, and the first that is not written yet
  const auto write_pending = [&] {
    if (pending < k)
      out.append(galaxylines.piece(pending, k)).append(LineArray::line_end);
  };
  while (k + in_a_row <= galaxylines.size()) {
    const std::size_t t = matchline(oldtemplate, galaxylines[k]);
    bool starts = t != 0;
    for (std::size_t i = 1; starts && i < in_a_row; ++i)
      starts = matchline(oldtemplate, galaxylines[k + i]) != 0;
    if (!starts) {
      ++k;
      continue;
    }
    write_pending();
    const auto count =
        rewritesection(oldtemplate, newtemplate, sectionof(oldtemplate, t), galaxylines, k, out);
    if (!count)
      return count.failure();
    if (out.size() > LineArray::max_text_size)
      return failure(newtemplate, "it makes the map larger than 1 GiB");
    const auto left = static_cast<long long>(galaxylines.size() - k);
    const auto block = static_cast<std::size_t>(std::clamp(*count, 0LL, left));
    if (blocks)
      blocks->push_back({k, block, t});
    pending = k + block;
    k += std::max<std::size_t>(block, 1);  // the line of an empty block is carried over
  }
  k = galaxylines.size();
  write_pending();
  return out;
}

}  // namespace

Result<long long> rewritesection(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                                 std::size_t s, const LineArray& galaxylines, std::size_t k,
                                 std::string& out) {
  if (auto fault = find_fault(oldtemplate, newtemplate, s))
    return *std::move(fault);
  const auto count = static_cast<std::size_t>(newtemplate.counts[s]);
  const std::size_t start = newtemplate.newheads[s] + 1;
  for (std::size_t d = 0; d < count; ++d)
    write_output(out, newtemplate.output[start + d], galaxylines[k], galaxylines[k + d]);
  return oldtemplate.counts[s];
}

Result<std::string> first_pass(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                               const LineArray& galaxylines, Blocks* blocks) {
  return run_pass(oldtemplate, newtemplate, galaxylines, blocks, 1);
}

Result<std::string> fix_pass(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                             const LineArray& galaxylines, Blocks* blocks) {
  return run_pass(oldtemplate, newtemplate, galaxylines, blocks, 3);
}
