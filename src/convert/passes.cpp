// The two passes that turn the lines of a map into its text in the new format.
#include "convert/passes.h"

#include "convert/matching.h"

#include <algorithm>

namespace {

// A map on its way into the new format: what is written so far, and the line in hand. Lines that
// are carried over wait, so that a run of them is copied in one piece.
struct Pass {
  const OldTemplate& oldtemplate;
  const NewTemplate& newtemplate;
  const LineArray& galaxylines;
  std::string out;
  std::size_t k = 0;
  std::size_t pending = 0;  // the first line that waits; `k` when none does

  std::size_t match(std::size_t line) const { return matchline(oldtemplate, galaxylines[line]); }

  void carry_over() { ++k; }

  void write_pending() {
    if (pending < k)
      write_line(out, galaxylines.piece(pending, k));
    pending = k;
  }

  std::string finish() {
    write_pending();
    return std::move(out);
  }

  // Writes the section of template line `t` and steps over the block. A block of less than one
  // line leaves the line in hand to be carried over, so that nothing is lost.
  std::optional<TemplateError> rewrite(std::size_t t) {
    write_pending();
    const auto count =
        rewritesection(oldtemplate, newtemplate, sectionof(oldtemplate, t), galaxylines, k, out);
    if (!count)
      return count.failure();
    if (out.size() > Files::max_file_size)
      return TemplateError{newtemplate.filename, "it makes the map larger than 1 GiB", ""};
    if (*count < 1) {
      carry_over();
      return std::nullopt;
    }
    k += static_cast<std::size_t>(std::min(*count, static_cast<long long>(galaxylines.size() - k)));
    pending = k;
    return std::nullopt;
  }
};

}  // namespace

Result<std::string, TemplateError> first_pass(const OldTemplate& oldtemplate,
                                              const NewTemplate& newtemplate,
                                              const LineArray& galaxylines) {
  Pass pass{oldtemplate, newtemplate, galaxylines, {}};
  pass.out.reserve(galaxylines.text().size());
  while (pass.k < galaxylines.size()) {
    const std::size_t t = pass.match(pass.k);
    if (t == 0)
      pass.carry_over();
    else if (auto error = pass.rewrite(t))
      return *std::move(error);
  }
  return pass.finish();
}

Result<std::string, TemplateError> fix_pass(const OldTemplate& oldtemplate,
                                            const NewTemplate& newtemplate,
                                            const LineArray& galaxylines) {
  Pass pass{oldtemplate, newtemplate, galaxylines, {}};
  pass.out.reserve(galaxylines.text().size());
  while (pass.k + 2 < galaxylines.size()) {
    const std::size_t t = pass.match(pass.k);
    if (t == 0 || pass.match(pass.k + 1) == 0 || pass.match(pass.k + 2) == 0)
      pass.carry_over();
    else if (auto error = pass.rewrite(t))
      return *std::move(error);
  }
  for (int last = 0; last < 2 && pass.k < galaxylines.size(); ++last)
    pass.carry_over();
  return pass.finish();
}
