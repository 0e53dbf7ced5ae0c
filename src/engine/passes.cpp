// The two passes that turn the lines of a map into its text in the new format.
#include "engine/passes.h"

#include <algorithm>
#include <optional>

namespace {

Failure failure(const Template& file, std::string reason) {
  return {file.filename, "write the section", std::move(reason)};
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
      return failure(*file, (unread->missing() ? "" : "it cannot be read: ") + unread->reason);
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

// A map on its way into the new format: what is written so far, and the line in hand. Lines that
// are carried over are pending until a block follows, so that a run of them is copied in one piece.
struct PassInProgress {
  const OldTemplate& oldtemplate;
  const NewTemplate& newtemplate;
  const LineArray& galaxylines;
  Blocks* blocks;
  std::string out;
  std::size_t k = 0;
  std::size_t pending = 0;  // the first pending line; `k` when there is none

  std::size_t match(std::size_t line) const { return matchline(oldtemplate, galaxylines[line]); }

  void carry_over() { ++k; }

  void write_pending() {
    if (pending < k)
      out.append(galaxylines.piece(pending, k)).append(LineArray::line_end);
    pending = k;
  }

  std::string finish() {
    write_pending();
    return std::move(out);
  }

  // Writes the section of template line `t` and skips the block. A block of less than one line
  // leaves the line in hand to be carried over, so that nothing is lost.
  std::optional<Failure> rewrite(std::size_t t) {
    write_pending();
    const auto count =
        rewritesection(oldtemplate, newtemplate, sectionof(oldtemplate, t), galaxylines, k, out);
    if (!count)
      return count.failure();
    if (out.size() > LineArray::max_text_size)
      return failure(newtemplate, "it makes the map larger than 1 GiB");
    const std::size_t line = k;
    if (*count < 1) {
      carry_over();
    } else {
      k += static_cast<std::size_t>(
          std::min(*count, static_cast<long long>(galaxylines.size() - k)));
      pending = k;
    }
    if (blocks)
      blocks->push_back({line, pending - line, t});
    return std::nullopt;
  }
};

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
  PassInProgress pass{oldtemplate, newtemplate, galaxylines, blocks, {}};
  pass.out.reserve(galaxylines.text().size());
  while (pass.k < galaxylines.size()) {
    const std::size_t t = pass.match(pass.k);
    if (t == 0)
      pass.carry_over();
    else if (auto fault = pass.rewrite(t))
      return *std::move(fault);
  }
  return pass.finish();
}

Result<std::string> fix_pass(const OldTemplate& oldtemplate, const NewTemplate& newtemplate,
                             const LineArray& galaxylines, Blocks* blocks) {
  PassInProgress pass{oldtemplate, newtemplate, galaxylines, blocks, {}};
  pass.out.reserve(galaxylines.text().size());
  while (pass.k + 2 < galaxylines.size()) {
    const std::size_t t = pass.match(pass.k);
    if (t == 0 || pass.match(pass.k + 1) == 0 || pass.match(pass.k + 2) == 0)
      pass.carry_over();
    else if (auto fault = pass.rewrite(t))
      return *std::move(fault);
  }
  for (int last = 0; last < 2 && pass.k < galaxylines.size(); ++last)
    pass.carry_over();
  return pass.finish();
}
