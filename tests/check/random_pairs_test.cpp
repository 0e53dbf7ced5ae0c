// Random templates: the checker survives them all, and where it finds nothing, every map made from
// the old template is converted to the current version in one run.
#include "engine/numbers.h"
#include "tests/check/check_texts.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

using Lines = std::vector<std::string>;

std::mt19937 source(1);

std::size_t below(std::size_t end) { return source() % end; }
const std::string& any(const Lines& lines) { return lines[below(lines.size())]; }

// Of version 3, before 4.
struct RandomPair {
  Lines old, current;
};

// A pair without mistakes. The names of sections differ in their first characters.
RandomPair good_pair(bool fix) {
  RandomPair pair{{"Map"}, {"Map"}};
  if (!fix) {
    pair.old.insert(pair.old.end(), {"= version $1", any({"version", "version 3", "ver"})});
    pair.current.insert(pair.current.end(), {"= version $1", "version 4"});
  }
  for (const char* name : {"planet", "fleet", "gate", "mines"}) {
    const std::size_t count = 1 + below(3), more = below(3);
    pair.old.push_back("= " + (name + (" $" + std::to_string(count))));
    if (fix)
      pair.old.insert(pair.old.end(), {name, "\tsize", "\tmoons"});
    else
      pair.old.push_back(any({name, std::string("\t") + name, name + std::string(" \"")}));
    pair.current.push_back("= " + (name + (" $" + std::to_string(count + more))));
    for (std::size_t i = 0; i < count + more; ++i)
      pair.current.push_back(i == 0      ? "\tn &"
                             : i < count ? any({"\tsize #", "\tmoons ##", "it is gone#"})
                                         : any({"\tworld 1", "it is gone#"}));
  }
  return pair;
}

Lines gibberish() {
  Lines lines;
  for (std::size_t i = 1 + below(8); i > 0; --i)
    lines.push_back(any({"a", "b", "ab", "version 3", "version 4", "= x $1", "= x $2", "y$0", "",
                         "#", "\xff", "a #", "= ", "z$-1", "$1", "n\n", "x$99999999999999999999"}));
  return lines;
}

void spoil(Lines& lines) {
  const std::size_t at = below(lines.size());
  const auto place = lines.begin() + static_cast<std::ptrdiff_t>(at);
  std::string& line = lines[at];
  const std::function<void()> changes[] = {
      [&] { lines.erase(place); },
      [&] { lines.insert(place, any(lines)); },
      [&] { std::swap(line, lines[below(lines.size())]); },
      [&] { line.resize(below(line.size() + 1)); },
      [&] { lines.insert(place, any({"", "= more $1", "v", "version 9", "planet", "\t"})); },
      [&] { line += any({"#", " &", "##", " ", "$1", "\n", "\r"}); },
      [&] {
        line = line.substr(0, line.find('$') + 1) + any({"0", "1", "2", "9", "-1", "x", "0.5"});
      },
      [&] {
        line = any({"V", "m", "$", " "}) + line.substr(std::min<std::size_t>(1, line.size()));
      },
  };
  changes[below(std::size(changes))]();
  if (lines.empty())
    lines.push_back("Map");
}

RandomPair random_pair(bool fix) {
  if (below(5) == 0)
    return {gibberish(), gibberish()};
  RandomPair pair = good_pair(fix);
  for (std::size_t i = below(3); i > 0; --i)
    spoil(below(2) == 0 ? pair.old : pair.current);
  return pair;
}

std::string text_of(const Lines& lines, const char* line_end = "\r\n") {
  std::string text;
  for (const std::string& line : lines)
    text += line + line_end;
  return text;
}

// A map with lines that the templates recognise, each with a value or none.
std::string random_map(const RandomPair& pair, const RandomPair& fix) {
  Lines map{pair.old[0], "version 3"};
  for (std::size_t i = below(9); i > 0; --i)
    map.push_back(any(below(2) == 0 ? pair.old : fix.old) + any({"", " 1", " 77"}));
  return text_of(map);
}

}  // namespace

TEST(RandomPairs, NoFindingMeansThatMapsAreConverted) {
  std::size_t clean = 0;
  for (int round = 0; round < 10'000; ++round) {
    const bool both = below(3) == 0;
    const RandomPair pair = random_pair(false), fix = both ? random_pair(true) : pair;
    const std::string letter = both ? "t" : "v";
    const char* line_end = below(50) == 0 ? "\n" : "\r\n";
    Texts texts{{letter + "newstruct0.txt", "Map\r\nversion 4"},
                {letter + "oldstruct3.txt", text_of(pair.old, line_end)},
                {letter + "newstruct3.txt", text_of(pair.current)}};
    if (both) {
      texts["toldstructfix4.txt"] = text_of(fix.old);
      texts["tnewstructfix4.txt"] = text_of(fix.current, line_end);
    }
    Lines maps;
    for (int i = 0; i < 5; ++i)
      maps.push_back(random_map(pair, fix));
    static_cast<void>(check_texts(texts, maps));
    if (found_in_texts(texts) != "no findings\n")
      continue;
    ++clean;
    for (const std::string& map : maps) {
      auto result =
          first_pass(index_old("old", texts[letter + "oldstruct3.txt"]),
                     index_new("new", texts[letter + "newstruct3.txt"]), LineArray::split(map));
      if (result && both)
        result = fix_pass(index_old("old", texts["toldstructfix4.txt"]),
                          index_new("new", texts["tnewstructfix4.txt"]),
                          LineArray::split(*std::move(result)));
      const double version = result ? numeric_value(version_of(LineArray::split(*result)[1])) : 0;
      ASSERT_EQ(version, 4) << "round " << round << "\n"
                            << texts[letter + "oldstruct3.txt"] << "---\n"
                            << texts[letter + "newstruct3.txt"] << "---\n"
                            << map;
    }
  }
  EXPECT_GT(clean, 1'000u);
  EXPECT_LT(clean, 5'000u);
}
