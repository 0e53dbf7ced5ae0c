// What the checker finds beside the examples of docs/templates.md.
#include "tests/check/check_texts.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

// The places and rules of a report: "new:5 E shadowed" for an error, with W for a warning.
std::string places(const std::string& report) {
  static const std::regex finding(
      "(?:[vt](old|new)struct(fix|)3.txt|([^:\n]*)):([0-9]+):(?:[0-9]+:)? (.)[^\n]*\\[(.*)\\]");
  std::string found;
  for (std::sregex_iterator at(report.begin(), report.end(), finding), end; at != end; ++at)
    found += (found.empty() ? "" : ", ") + at->format("$1$2$3:$4 $5 $6");
  return found;
}

const std::string title = "Map\r\n= version $1\r\n";
const std::string old_start = title + "version 3\r\n", new_start = title + "version 4\r\n";

const std::string baseline = "Map\r\nversion 4\r\n";

// A pair of the base game for version 3, and a baseline.
Texts base(const std::string& old, const std::string& current, const std::string& zero = baseline) {
  return {{"vnewstruct0.txt", zero}, {"voldstruct3.txt", old}, {"vnewstruct3.txt", current}};
}

// Templates that follow on the section of the version line, a map's lines behind its second, and a
// baseline's.
struct Case {
  const char *old, *current, *map;
  const char* found;
  const char* shown = "";
};

}  // namespace

TEST(Rules, FindTheirMistakes) {
  const char* planet = "planet\r\n\tclass\r\n\tmoons\r\nendplanet\r\nmines\r\nnote";
  const Case cases[] = {
      // Sections and counts. The headers are in line 4.
      {"a $1\r\na", "a $1\r\nx", nullptr, ""},
      {"a $1\r\na", "a $1\r\nx\r\n\r\n\t\r\n= a remark", nullptr, ""},
      {"a $1\r\na", "a $1\r\nx\r\nb $1\r\ny", nullptr, "new:6 e section-count"},
      {"a $1\r\na\r\nb $1\r\nb", "b $1\r\ny", nullptr, "new:4 e section-count"},
      {"a $1\r\na\r\nb $1\r\nb", "b $1\r\nx\r\nc $1\r\ny", nullptr, ""},
      {"a $0\r\na", "a $1\r\nx", nullptr, ""},
      {"a $-1\r\na", "a $1\r\nx", nullptr, ""},
      {"a $1.5\r\na", "a $1.5\r\nx", nullptr, ""},
      {"a $1\r\na", "a $0.5\r\nx", nullptr, "new:4 e bad-count"},
      {"a $1\r\na", "a $99999999999999999999\r\nx", nullptr, "new:4 e count-past-end"},
      // Recognition lines.
      {"a $1\r\na\r\nab\r\nb", "a $1\r\nx", nullptr, ""},
      {"a $1\r\nab\r\na", "a $1\r\nx", nullptr, ""},
      {"a $1\r\na $1\r\n= a", "a $1\r\nx", nullptr, "new:4 e section-count"},
      {"Version $1\r\nversion", "Version $1\r\nx", nullptr, "new:1 e no-version, old:3 e shadowed"},
      {"a $1\r\n  moons", "a $1\r\n\tmoons 1", nullptr, "old:5 w odd-recognition", planet},
      {"a $1\r\nMoons", "a $1\r\n\tmoons 1", nullptr, "old:5 w odd-recognition", planet},
      {"a $1\r\nmoon", "a $1\r\n\tmoons 1", nullptr, "", planet},
      // Markers.
      {"a $3\r\na", "a $3\r\nx #\r\nit is gone#\r\n#", nullptr, ""},
      {"a $3\r\na", "a $3\r\nx ###\r\nx##\r\nx & ", nullptr,
       "new:5 w dead-marker, new:6 w dead-marker, new:7 w dead-marker"},
      {"a $3\r\na", "a $3\r\nplanet&\r\nfleet#\r\nno mines#", nullptr, "new:5 w dead-marker",
       planet},
      {"a $2\r\na", "a $2\r\na &\r\nb &", nullptr, "new:6 w dead-marker"},
      {"a $2\r\na", "a $4\r\nx #\r\nx #\r\nx &\r\nx ##", nullptr, "new:8 w value-behind"},
      {"a $0\r\na", "a $2\r\nx #\r\nx #", nullptr, "new:6 w value-behind"},
      // The baseline.
      {"a $1\r\na", "a $2\r\nplanet &\r\n\tcla 1", nullptr, "new:6 w unknown-line", planet},
      {"a $1\r\na", "a $2\r\n\tclasses 1\r\n\tclass=1", nullptr, "new:5 w unknown-line", planet},
      {"a $2\r\na", "a $3\r\nplanet #\r\n\tclass #\r\nendplanet", nullptr, "new:7 w output-order",
       planet},
      {"a $2\r\na", "a $2\r\nmines 1\r\nmines 2", nullptr, "new:6 w output-order", planet},
      {"a $3\r\na", "a $3\r\nplanet #\r\nit is gone#\r\n\tclass #", nullptr, "", planet},
      // What happens to maps.
      {"a $1\r\na", "a $1\r\na #", "a 7\r\na 0.7\r\na -7\r\na x7\r\na \"A\"", "new:5 w cut-value"},
      {"a $1\r\na", "a $1\r\na #", "a \"A\"", "new:5 w cut-value"},
      {"a $1\r\na", "a $1\r\na ##", "a 7\r\na 17\r\na=1", ""},
      {"a $1\r\na", "a $1\r\nlong name &", "a Amber", "new:5 w cut-value"},
      {"a $1\r\na", "a $1\r\nab &", "a Amber", ""},
      {"a $1\r\na", "a $1\r\na &", "a Amber", "new:5 w cut-value"},
      {"a $1\r\na", "a $1\r\nabc &", "a Amber", "new:5 w cut-value"},
      {"a $1\r\n\ta \"", "a $1\r\n\t\ta &", "\ta \"Amber\"", ""},
      {"a $1\r\na\tb", "a $1\r\nx", "b\r\n  A b", "old:5 w unmatched"},
      {"a $1\r\na", "a $2\r\nx", "a", "a.galaxy:2 e not-current, new:4 e count-past-end"},
      {"a $3\r\na", "a $3\r\na #\r\nc #\r\nb #", "a 1\r\nb 2\r\nc 3",
       "new:6 w other-value, new:7 w other-value"},
      {"a $2\r\na", "a $2\r\nx #\r\ny #", "a 1\r\nb 2", ""},
      {"a $2\r\na\r\nb $1\r\nb", "a $2\r\na #\r\nc #\r\nb $1\r\nd 2", "a 1\r\nb 2\r\nb 2", ""},
      {"a $2\r\na\r\nb $1\r\nb", "a $1\r\na #\r\nb $1\r\nc #", "a 1\r\nb 2\r\nb 3",
       "old:4 w lost-line"},
      {"a $2\r\na", "a $2\r\na #\r\nb 4", "a 1\r\nb 4", ""},
      {"a $2\r\na", "a $2\r\na #\r\nb 4", "a 1\r\nb 5", "old:4 w lost-line"},
      {"a $3\r\n\ta", "a $1\r\na is gone#", "\ta\r\n\t\tb\r\n\tend", ""},
      {"a $3\r\n\ta", "a $1\r\na is gone#", "\ta\r\n\tend\r\nb", "old:4 w lost-line"},
      {"a $1\r\na 5", "a $1\r\na five", "a 5", ""},
      {"a $2\r\na", "a $1\r\nmines #", "a 1\r\nnote 5", "old:4 w lost-line", planet},
      {"a $2\r\na", "a $1\r\na is gone#", "a 1\r\nnote 5", "", planet},
      // Converted maps and the baseline.
      {"a $1\r\na", "a $1\r\nnote &", "a 1", "new:5 w cut-value", planet},
      {"a $1\r\na", "a $1\r\nmines #", "a 1\r\nplanet 1\r\n\tclass 1\r\nendplanet",
       "a.galaxy:6 w output-order", planet},
      {"a $2\r\na", "a $1\r\nendplanet",
       "planet 1\r\n\tclass 1\r\n\tmoons 2\r\na 1\r\nb 2\r\nendplanet", "new:5 w output-order",
       planet},
      {"a $1\r\na", "a $1\r\nmines #", "a 1\r\na 2\r\nmines 3\r\nmines 4", "", planet},
      {"a $3\r\nplanet", "a $4\r\nplanet #\r\n\tclass #\r\n\tmoons 0\r\nendplanet",
       "planet 1\r\nclass 2\r\nsize 2\r\nendplanet", "new:8 w output-order, old:4 w lost-line",
       planet},
      // Remarks.
      {"= check: shadowed\r\na $1\r\na\r\nb $1\r\na", "a $1\r\nx\r\nb $1\r\ny", nullptr, ""},
      {"a $1\r\n= check: shadowed\r\n= yes\r\na\r\nb $1\r\na", "a $1\r\nx\r\nb $1\r\ny", nullptr,
       ""},
      {"a $1\r\na\r\nb $1\r\n= check: shadowed\r\na", "a $1\r\nx\r\nb $1\r\ny", nullptr,
       "old:5 e shadowed, old:7 w needless-remark"},
      {"a $1\r\n= check: shadow\r\na", "a $1\r\nx", nullptr, "old:5 w needless-remark"},
      {"a $1\r\n= check: unmatched\r\na", "a $1\r\nx", nullptr, ""},
      {"a $1\r\n= check: unmatched\r\na", "a $1\r\nx", "a", "old:5 w needless-remark"},
      {"a $1\r\n= check: unmatched\r\na", "a $1\r\nx", "b", ""},
      {"a $1\r\na", "= check: cut-value\r\na $1\r\na #", "a 12", ""},
      {"a $1\r\na", "a $1\r\nmoons 1", nullptr, "vnewstruct0.txt:4 w needless-remark",
       "moons\r\n= check: version-gap"},
  };
  for (const Case& c : cases) {
    const Texts texts = base(old_start + c.old, new_start + c.current, baseline + c.shown);
    std::vector<std::string> maps;
    if (c.map)
      maps.push_back("Map\r\nversion 3\r\n" + std::string(c.map));
    const std::string report = check_texts(texts, maps);
    EXPECT_EQ(places(report), c.found) << c.old << "\n---\n" << c.current << "\n---\n" << report;
  }
}

TEST(Rules, FindWhatAFolderLacks) {
  const std::string &old = old_start, &current = new_start;
  const std::string third = "Map\r\nversion 3";  // a baseline of the version to convert from
  const auto fix = [](const std::string& from, const std::string& to, const std::string& zero) {
    return Texts{
        {"tnewstruct0.txt", zero}, {"toldstructfix3.txt", from}, {"tnewstructfix3.txt", to}};
  };
  Texts chain = fix(title + "ver", title + "version #", third);
  chain["toldstruct2.txt"] = title + "version 2";
  chain["tnewstruct2.txt"] = title + "version 3";
  Texts with_others = base(title + "ver", current);
  with_others.insert(
      {{"readme.txt", "a\nb"}, {"voldstruct123.txt", "a"}, {"voldstructfix3.txt", "a"}});
  const std::pair<Texts, const char*> cases[] = {
      {{{"vnewstruct0.txt", baseline}}, ""},
      {{{"VNewStruct0.TXT", baseline}, {"vOldStruct3.txt", old}, {"vnewstruct3.TXT", current}}, ""},
      {{{"vnewstruct3.txt", current}}, "vnewstruct0.txt:1 e missing-pair, new:1 e missing-pair"},
      {{{"vnewstruct0.txt", "Map\r\nversion x"}}, "vnewstruct0.txt:2 e bad-version"},
      {{{"vnewstruct0.txt", "Map\nversion 4"}},
       "vnewstruct0.txt:1 e line-ends, vnewstruct0.txt:2 e bad-version"},
      {{{"vnewstruct0.txt", baseline},
        {"voldstruct1.txt", title + "version 1"},
        {"vnewstruct1.txt", current}},
       "vnewstruct0.txt:2 w version-gap, vnewstruct0.txt:2 w version-gap"},
      {base(old, current + "= a\nb\rc"), "new:4 w odd-bytes"},
      {{{"tnewstruct0.txt", baseline}}, "tnewstruct0.txt:2 e missing-pair"},
      {fix(old, current, baseline), "tnewstruct0.txt:2 e missing-pair, oldfix:1 w version-gap"},
      {chain, "oldfix:2 w odd-recognition"},
      {fix("Map\r\na $1\r\na\r\ny\r\nb $1\r\nb\r\ny", "Map\r\na $1\r\na &\r\nb $1\r\ny &", third),
       "oldfix:2 w odd-recognition, oldfix:5 w odd-recognition"},
      {base("for 3\r\nhead $2\r\nMap", "for 3\r\nhead $2\r\nMap\r\nversion 4"),
       "old:1 w version-line"},
      {with_others, ""},
      {base("", ""), "old:1 w version-line"},
  };
  for (const auto& [texts, found] : cases) {
    const std::string report = check_texts(texts);
    EXPECT_EQ(places(report), found) << report;
  }
}

TEST(Rules, CompareThePairsOfAnEdition) {
  Texts texts = base(old_start + "= lane $1\r\nlane\r\n= moons $1\r\nmoons",
                     new_start + "= lane $1\r\nroute &\r\n= moons $1\r\nmoons ##",
                     baseline + "route\r\nmoons");
  texts["voldstruct2.txt"] = title + "version 2\r\n= moons $1\r\nmoons";
  texts["vnewstruct2.txt"] = new_start + "= moons $1\r\nmoons #";
  EXPECT_EQ(places(check_texts(texts)), "voldstruct2.txt:1 w forgotten-word");
  texts["voldstruct2.txt"] += "\r\n= route $1\r\nroute";
  texts["vnewstruct2.txt"] = new_start + "= moons $1\r\nmoons ##\r\n= route $1\r\nroute #";
  EXPECT_EQ(places(check_texts(texts)), "");
  // A line that is deeper now is gone from its old place.
  texts["vnewstruct0.txt"] += "\r\n\thull";
  texts["voldstruct3.txt"] += "\r\n= hull $1\r\nhull";
  texts["vnewstruct3.txt"] += "\r\n= hull $1\r\n\thull &";
  EXPECT_EQ(places(check_texts(texts)), "voldstruct2.txt:1 w forgotten-word");
}

TEST(Rules, KnowAMapsEditionByItsFirstLine) {
  Texts texts = base(old_start, new_start);
  texts.insert({{"tnewstruct0.txt", "Chart\r\nversion 4"},
                {"toldstructfix4.txt", "Chart\r\n"},
                {"tnewstructfix4.txt", "Chart\r\n"}});
  const std::vector<std::string> maps{"Map\r\nversion 3", "Chart\r\nversion 4", "Map\r\n",
                                      "Plan\r\nversion 3", "Plan\r\nversion 3"};
  const std::string report = check_texts(texts, maps);
  EXPECT_EQ(places(report), "c.galaxy:1 e not-current, d.galaxy:1 w unknown-edition");
  EXPECT_NE(report.find("(in 2 maps, first here)"), std::string::npos);
  EXPECT_TRUE(
      report.ends_with("2 pairs, 1 without a map; 5 maps: 1 converted, 1 not converted, 1 current, "
                       "2 of no known edition; 1 error, 1 warning\n"));
  texts["vnewstruct0.txt"] = "Mab\r\nversion 4";
  EXPECT_EQ(places(check_texts(texts, {"Map\r\nversion 3", "Map\r\nversion 3"})),
            "vnewstruct0.txt:1 w unknown-edition");
  texts["tnewstruct0.txt"] = texts["vnewstruct0.txt"];
  EXPECT_EQ(check_texts(texts, {"Mab\r\nversion 3", "Mab\r\nversion 4"}),
            "tnewstruct0.txt:1: warning: it begins like vnewstruct0.txt: name the edition of their "
            "maps with --edition (in 2 maps, first a.galaxy:1) [unknown-edition]\n"
            "2 pairs, 2 without a map; 2 maps: 2 of no known edition; 0 errors, 1 warning\n");
}

TEST(Rules, NameTheEncodingOfMaps) {
  EXPECT_EQ(places(check_texts({{"vnewstruct0.txt", baseline}},
                               {"\xEF\xBB\xBFMap\r\nversion 3", std::string("\xFF\xFEM\0", 4)})),
            "a.galaxy:1 w odd-bytes, a.galaxy:1 w unknown-edition, b.galaxy:1 e line-ends, "
            "b.galaxy:1 w unknown-edition");
}

TEST(Findings, AreOneForAllMaps) {
  const Texts texts = base(old_start + "a $1\r\na", new_start + "a $1\r\na #");
  const std::string map = "Map\r\nversion 3\r\na 12\r\na 13";
  EXPECT_EQ(check_texts(texts, {map, "Map\r\nversion 3\r\na 1", map}),
            "vnewstruct3.txt:5: warning: \"a #\" copies \"2\" of \"a 12\" "
            "(in 2 maps, first a.galaxy:3) [cut-value]\n"
            "1 pair; 3 maps: 3 converted; 0 errors, 1 warning\n");
}

TEST(Findings, AreFitForATerminal) {
  Findings findings;
  findings.add("shadowed", {"\x1B[2J.txt", 6, 3}, quote("\tcolour\xC2\x9B") + " stands there");
  EXPECT_EQ(findings.report(false),
            "\\x1B[2J.txt:7:3: error: \"\\tcolour\\xC2\\x9B\" stands there [shadowed]\n");
  EXPECT_EQ(findings.summary(), "1 error, 0 warnings");
}

TEST(Trace, SaysWhatHappensToEachLine) {
  const auto editions =
      find_editions("", base(old_start + "= moons $3\r\n\tmoons",
                             new_start + "= moons $3\r\nmoons ##\r\nit is gone#\r\n\tworld &"));
  const Map map{"a.galaxy", LineArray::split("Map\r\nversion 3\r\n\tmoons 12\r\nb\r\nc\r\n"
                                             "  moons 1\r\n\tMoons 2\r\nMap 2\r\nend\r\nend")};
  EXPECT_EQ(
      trace(convert(editions[0], map)),
      "a.galaxy, by voldstruct3.txt and vnewstruct3.txt:\n"
      "1: copied\n"
      "2: \"version 3\" begins section \"version\" of 1 line: line 3 of voldstruct3.txt\n"
      "    \"version 4\": line 3 of vnewstruct3.txt\n"
      "3: \"\\tmoons 12\" begins section \"moons\" of 3 lines: line 5 of voldstruct3.txt\n"
      "    \"moons 12\": line 5 of vnewstruct3.txt, value of line 3\n"
      "    nothing: line 6 of vnewstruct3.txt\n"
      "    \"\\tworld  12\": line 7 of vnewstruct3.txt, value of line 3\n"
      "6: \"  moons 1\" copied: line 5 of voldstruct3.txt has other tabs or blanks\n"
      "7: \"\\tMoons 2\" copied: line 5 of voldstruct3.txt has other capital letters\n"
      "8: \"Map 2\" copied: line 1 of voldstruct3.txt is the title, which recognises nothing\n"
      "9 to 10: copied\n");
}
