// How the lines of a map become its text in the new format.
#include "engine/passes.h"

#include "tests/support/make_templates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <random>
#include <vector>

using Lines = std::vector<std::string>;

namespace {

// The plain definition of a pass, line by line and without an index.
class PlainPass {
public:
  PlainPass(const Lines& old_lines, const Lines& new_lines, const Lines& map_lines)
      : old(old_lines), current(new_lines), map(map_lines) {}

  // The map in the new format; nothing for a template error.
  std::optional<Lines> run(bool fix) {
    std::size_t k = 0;
    for (; k + (fix ? 2 : 0) < map.size();) {
      const bool block = match(k) && (!fix || (match(k + 1) && match(k + 2)));
      if (!block)
        out.push_back(map[k++]);
      else if (const auto r = rewrite(sectionof(match(k)), k))
        k += *r;
      else
        return std::nullopt;
    }
    for (std::size_t last = k; fix && k < std::min(last + 2, map.size()); ++k)
      out.push_back(map[k]);
    return out;
  }

private:
  static std::vector<std::size_t> heads(const Lines& lines) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < lines.size(); ++i)
      if (lines[i].find('$') != std::string::npos && lines[i].find('$') > 0)
        result.push_back(i);
    return result.empty() ? std::vector<std::size_t>{0} : result;
  }

  static std::size_t count(const std::string& header) {
    const auto number = std::strtoll(header.substr(header.find('$') + 1).c_str(), nullptr, 10);
    return static_cast<std::size_t>(std::max(number, 0LL));
  }

  std::size_t match(std::size_t k) const {
    std::size_t result = 0;
    for (std::size_t j = 0; j < old.size(); ++j)
      if (map[k].compare(0, old[j].size(), old[j]) == 0)
        result = j;
    return result;
  }

  std::size_t sectionof(std::size_t t) const {
    std::size_t result = 0;
    const auto all = heads(old);
    for (std::size_t j = 0; j < all.size(); ++j)
      if (t > all[j])
        result = j;
    return result;
  }

  std::optional<std::size_t> rewrite(std::size_t s, std::size_t k) {
    const auto newheads = heads(current);
    const std::size_t lines = s < newheads.size() ? count(current[newheads[s]]) : 0;
    if (lines == 0 || lines >= current.size() - newheads[s])
      return std::nullopt;
    for (std::size_t d = 0; d < lines; ++d)
      write(current[newheads[s] + 1 + d], map[k], k + d < map.size() ? map[k + d] : "");
    const std::size_t taken = count(old[heads(old)[s]]);
    if (taken == 0)
      out.push_back(map[k]);
    return std::clamp<std::size_t>(taken, 1, map.size() - k);
  }

  void write(const std::string& tl, const std::string& first, const std::string& aligned) {
    const auto last = [&](std::size_t n) {
      return aligned.substr(aligned.size() - std::min(n, aligned.size()));
    };
    const std::size_t length = tl.size();
    if (tl.ends_with(" #"))
      out.push_back(tl.substr(0, length - 1) + last(1));
    else if (tl.ends_with("##"))
      out.push_back(tl.substr(0, length - 2) + last(2));
    else if (tl.ends_with(" &"))
      out.push_back(tl.substr(0, length - 1) + first.substr(std::min(length - 2, first.size())));
    else if (!tl.ends_with('#') && !tl.ends_with('&'))
      out.push_back(tl);
  }

  const Lines &old, &current, &map;
  Lines out;
};

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines)
    text += line + "\r\n";
  return text;
}

}  // namespace

TEST(Passes, TheFaultOfATemplateIsNamed) {
  const struct {
    const char *old, *current, *reason;
  } cases[] = {
      {"x$1\na", "x$\na", "its section count is 0 or below: x$"},
      {"x$1\na", "x$0.9\na", "its section count is 0 or below: x$0.9"},
      {"x$1\na", "", "its section count is 0 or below"},
      {"x$1\na\ny$1\nb", "x$1\na", "it has no such section: y$1"},
      {"x$1\na", "x$2\na", "its count runs past its end: x$2"},
  };
  const LineArray map = lines_of("b\na");
  for (const auto& c : cases) {
    const auto result = first_pass(old_of(c.old), new_of(c.current), map);
    ASSERT_FALSE(bool(result)) << c.reason;
    EXPECT_EQ(result.failure().path, "new.txt");
    EXPECT_EQ(result.failure().reason, c.reason);
  }
  const Failure missing{"", "read it", "the file is missing", true};
  const auto no_old = first_pass(index_old("old.txt", missing), new_of("x$1\na"), map);
  EXPECT_EQ(no_old.failure().path, "old.txt");
  const auto no_new = first_pass(old_of("x$1\na"), index_new("new.txt", missing), map);
  EXPECT_EQ(no_new.failure().path, "new.txt");
}

// However a pass is made fast, it must give what the plain definition gives.
TEST(Passes, AgreeWithThePlainDefinition) {
  std::mt19937 random(11);
  const auto lines = [&](std::size_t most, std::initializer_list<const char*> pieces) {
    Lines result(1 + random() % most);
    for (std::string& line : result)
      for (std::size_t i = random() % 4; i > 0; --i)
        line += pieces.begin()[random() % pieces.size()];
    result.push_back("end");  // line ends at a text's end are dropped
    return result;
  };
  const char huge[] = "x$99999999999999999999";
  int errors = 0;
  for (int round = 0; round < 20000; ++round) {
    const Lines old =
        lines(12, {"a", "b", "\t", "ab", "\xFF", "$-1", "$0", "$1", "$2", "$3", huge});
    const Lines current =
        lines(20, {"a", "b\n", "x$1", "x$2", "x$3", huge, " #", "##", " &", "#", "&"});
    const Lines map = lines(20, {"a", "b", "\t", "ab", "\xFF", "$1", "\n", "\rc", "7"});
    for (const bool fix : {false, true}) {
      const auto expected = PlainPass(old, current, map).run(fix);
      const auto result = (fix ? fix_pass : first_pass)(index_old("old", joined(old)),
                                                        index_new("new", joined(current)),
                                                        LineArray::split(joined(map)));
      const std::string text = expected ? joined(*expected) : "an error";
      ASSERT_EQ(result ? *result : "an error", text)
          << joined(old) << joined(current) << joined(map);
      errors += expected ? 0 : 1;
    }
  }
  EXPECT_GT(errors, 1000);  // both outcomes were tried
  EXPECT_LT(errors, 39000);
}
