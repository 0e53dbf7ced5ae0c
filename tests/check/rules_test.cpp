// What the checker finds beside the examples of docs/templates.md.
#include "tests/check/check_texts.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

// The places and rules of a report: "new:5 E shadowed" for an error, with W for a warning.
std::string places(const std::string& report) {
  static const std::regex finding(
      "(?:[vt](old|new)struct(fix|)3.txt|([^:\n]*)):([0-9]+): (.)[^\n]*\\[(.*)\\]");
  std::string found;
  for (std::sregex_iterator at(report.begin(), report.end(), finding), end; at != end; ++at)
    found += (found.empty() ? "" : ", ") + at->format("$1$2$3:$4 $5 $6");
  return found;
}

const std::string title = "Map\r\n= version $1\r\n";
const std::string old_start = title + "version 3\r\n", new_start = title + "version 4\r\n";

// Templates that follow on the section of the version line, and a map's lines behind its second.
struct Case {
  const char *old, *current, *map;
  const char* found;
};

}  // namespace

TEST(Rules, FindTheirMistakes) {
  const Case cases[] = {
      // Sections and counts. The headers are in line 4.
      {"a $1\r\na", "a $1\r\nx", nullptr, ""},
      {"a $1\r\na", "a $1\r\nx\r\n\r\n\t\r\n= a remark", nullptr, ""},
      {"a $1\r\na", "a $1\r\nx\r\ny\r\nz", nullptr, "new:6 w count-too-small"},
      {"a $1\r\na", "a $1\r\nx\r\nb $1\r\ny", nullptr, "new:6 e section-count"},
      {"a $1\r\na\r\nb $1\r\nb", "b $1\r\ny", nullptr, "new:4 e section-count"},
      {"a $1\r\na\r\nb $1\r\nb", "b $1\r\nx\r\nc $1\r\ny", nullptr, ""},
      {"a $0\r\na", "a $1\r\nx", nullptr, ""},
      {"a $-1\r\na", "a $1\r\nx", nullptr, "old:4 w bad-count"},
      {"a $1.5\r\na", "a $1.5\r\nx", nullptr, "new:4 w bad-count, old:4 w bad-count"},
      {"a $1\r\na", "a $0.5\r\nx", nullptr, "new:4 e bad-count"},
      {"a $1\r\na", "a $99999999999999999999\r\nx", nullptr, "new:4 e count-past-end"},
      // Recognition lines.
      {"a $1\r\na\r\nab\r\nb", "a $1\r\nx", nullptr, ""},
      {"a $1\r\nab\r\na", "a $1\r\nx", nullptr, "old:5 w shadowed"},
      {"a $1\r\na\r\nb $1\r\na", "a $1\r\nx\r\nb $1\r\ny", nullptr, "old:5 e shadowed"},
      {"a $1\r\na $1\r\n= a", "a $1\r\nx", nullptr, "new:4 e section-count"},
      {"Version $1\r\nversion", "Version $1\r\nx", nullptr, "new:5 e no-version, old:3 e shadowed"},
      {"a $1\r\nMa", "a $1\r\nx", nullptr, "old:1 w no-version"},
      // Markers.
      {"a $3\r\na", "a $3\r\nx #\r\nit is gone#\r\n#", nullptr, ""},
      {"a $3\r\na", "a $3\r\n\tx&\r\nx##\r\nx & ", nullptr,
       "new:5 w dead-marker, new:6 w dead-marker, new:7 w dead-marker"},
      {"a $1\r\n\ta \"", "a $1\r\n\t\ta &", nullptr, ""},
      {"a $1\r\n\ta ", "a $1\r\n\t\t\ta &", nullptr, "new:5 w dead-marker"},
      {"a $1\r\na", "a $1\r\n\t\t\tabc &", nullptr, ""},
      {"a $1\r\na \"", "a $1\r\na &", nullptr, "new:5 w dead-marker"},
      // Blocks that overlap.
      {"a $2\r\na\r\nb $1\r\n\tb", "a $2\r\na #\r\nb #\r\nb $1\r\ny", nullptr,
       "old:4 w block-overlap"},
      {"a $1\r\na\r\nb $1\r\n\tb", "a $2\r\na #\r\nb #\r\nb $1\r\ny", nullptr, ""},
      {"a $2\r\na\r\nb $1\r\nb", "a $2\r\na #\r\nb 1\r\nb $1\r\ny", "a 1\r\nb 2\r\nb 3", ""},
      {"a $2\r\na\r\nb $1\r\nb", "a $2\r\na #\r\nc #\r\nb $1\r\ny", "a 1\r\nb 2\r\nb 3",
       "a.galaxy:4 e block-overlap"},
      {"a $2\r\na\r\nb $1\r\nb", "a $2\r\na #\r\nc #\r\nb $1\r\nc #", "a 1\r\nb 2\r\nb 3", ""},
      {"a $2\r\na", "a $2\r\na #\r\nc #", "a 1\r\na 2", "a.galaxy:4 e block-overlap"},
      {"a $2\r\na\r\nb", "a $2\r\na #\r\nc #", "a 1\r\nb 2\r\nb 3\r\nc 4", ""},
      {"a $2\r\na", "a $2\r\na #\r\n\tend", "a 1\r\nb 2\r\nend", "a.galaxy:5 w block-overlap"},
      {"a $4\r\na", "a $2\r\na #\r\n\tend", "a 1\r\nend\r\nb\r\nc", "a.galaxy:5 w block-overlap"},
      {"a $3\r\na", "a $2\r\na #\r\nend", "a 1\r\nend\r\nend\r\nend", ""},
      // What happens to maps.
      {"a $1\r\na", "a $1\r\na #", "a 7\r\na 0.7\r\na -7\r\na x7\r\na \"A\"",
       "a.galaxy:4 w cut-value"},
      {"a $1\r\na", "a $1\r\na #", "a \"A\"", "a.galaxy:3 w cut-value"},
      {"a $1\r\na", "a $1\r\na ##", "a 7\r\na 17\r\na=1", ""},
      {"a $1\r\na", "a $1\r\nlong name &", "a Amber", "a.galaxy:3 w cut-value"},
      {"a $1\r\na", "a $1\r\nab &", "a Amber", ""},
      {"a $1\r\na", "a $1\r\na &", "a Amber", "a.galaxy:3 w cut-value"},
      {"a $1\r\na", "a $1\r\nabc &", "a Amber", "a.galaxy:3 w cut-value"},
      {"a $2\r\na", "a $1\r\nx", "a", "a.galaxy:3 e past-map-end"},
      {"a $1\r\na\tb", "a $1\r\nx", "b\r\n  a b", "old:5 w unmatched"},
      {"a $1\r\na", "a $2\r\nx", "a", "a.galaxy:2 e not-current, new:4 e count-past-end"},
  };
  for (const Case& c : cases) {
    const Texts texts{{"vnewstruct0.txt", "Map\r\nversion 4"},
                      {"voldstruct3.txt", old_start + c.old},
                      {"vnewstruct3.txt", new_start + c.current}};
    std::vector<std::string> maps;
    if (c.map)
      maps.push_back("Map\r\nversion 3\r\n" + std::string(c.map));
    const std::string report = check_texts(texts, maps);
    EXPECT_EQ(places(report), c.found) << c.old << "\n---\n" << c.current << "\n---\n" << report;
  }
}

TEST(Rules, FindWhatAFolderLacks) {
  const std::string old = old_start, current = new_start, baseline = "Map\r\nversion 4\r\n";
  const std::string third = "Map\r\nversion 3";  // a baseline of the version to convert from
  const auto base = [](const std::string& zero, const std::string& from, const std::string& to) {
    return Texts{{"vnewstruct0.txt", zero}, {"voldstruct3.txt", from}, {"vnewstruct3.txt", to}};
  };
  const auto fix = [](const std::string& zero, const std::string& from, const std::string& to) {
    return Texts{
        {"tnewstruct0.txt", zero}, {"toldstructfix3.txt", from}, {"tnewstructfix3.txt", to}};
  };
  Texts chain = fix(third, title + "ver", title + "version #");
  chain["toldstruct2.txt"] = title + "version 2";
  chain["tnewstruct2.txt"] = title + "version 3";
  Texts with_others = base(baseline, title + "ver", current);
  with_others.insert(
      {{"readme.txt", "a\nb"}, {"voldstruct123.txt", "a"}, {"voldstructfix3.txt", "a"}});
  const std::pair<Texts, const char*> cases[] = {
      {{{"vnewstruct0.txt", baseline}}, ""},
      {{{"VNewStruct0.TXT", baseline}, {"vOldStruct3.txt", old}, {"vnewstruct3.TXT", current}}, ""},
      {{{"vnewstruct3.txt", current}}, "vnewstruct0.txt:1 e missing-pair, new:1 e missing-pair"},
      {{{"vnewstruct0.txt", "Map\r\nversion x"}}, "vnewstruct0.txt:2 e missing-pair"},
      {{{"vnewstruct0.txt", "Map\nversion 4"}},
       "vnewstruct0.txt:1 e line-ends, vnewstruct0.txt:2 e missing-pair"},
      {{{"vnewstruct0.txt", baseline},
        {"voldstruct1.txt", title + "version 1"},
        {"vnewstruct1.txt", current}},
       "vnewstruct0.txt:2 w missing-pair, vnewstruct0.txt:2 w missing-pair"},
      {base(third, old, current), "old:1 w missing-pair"},
      {base(baseline, old, current + "= a\nb\rc"), "new:4 w line-ends"},
      {{{"tnewstruct0.txt", baseline}}, "tnewstruct0.txt:2 e missing-pair"},
      {fix(baseline, old, current), "tnewstruct0.txt:2 e missing-pair, oldfix:1 w missing-pair"},
      {chain, "newfix:3 w no-version"},
      {fix(third, "Map\r\na $1\r\na\r\ny\r\nb $1\r\nb\r\ny", "Map\r\na $1\r\na &\r\nb $1\r\ny &"),
       "oldfix:4 w shadowed"},
      {base(baseline, "for 3\r\nhead $2\r\nMap", "for 3\r\nhead $2\r\nMap\r\nversion 4"),
       "old:1 w no-version"},
      {with_others, ""},
      {base(baseline, title + "Ver", current), "old:1 w no-version"},
      {base(baseline, "", ""), "new:1 e no-version, new:1 e bad-count, old:1 e bad-count"},
  };
  for (const auto& [texts, found] : cases) {
    const std::string report = check_texts(texts);
    EXPECT_EQ(places(report), found) << report;
  }
}

TEST(Rules, KnowAMapsEditionByItsFirstLine) {
  Texts texts{{"vnewstruct0.txt", "Map\r\nversion 4"},
              {"tnewstruct0.txt", "Chart\r\nversion 4"},
              {"toldstructfix4.txt", "Chart\r\n= a $1\r\na"},
              {"tnewstructfix4.txt", "Chart\r\n= a $1\r\nb"}};
  EXPECT_EQ(places(check_texts(texts, {"Map\r\nversion 3", "Chart\r\nversion 4", "Map\r\n"})),
            "a.galaxy:2 e not-current, c.galaxy:1 e not-current");
  EXPECT_NE(check_texts(texts, {"Plan\r\nversion 3"}).find("--edition"), std::string::npos);
  texts["tnewstruct0.txt"] = texts["vnewstruct0.txt"];
  EXPECT_NE(check_texts(texts, {"Map\r\nversion 3"}).find("--edition"), std::string::npos);
}

TEST(Findings, AreFitForATerminal) {
  Findings findings;
  findings.warning("a-rule", "\x1B[2J.txt", 6, quoted("\tcolour\xC2\x9B") + " stands there");
  EXPECT_EQ(findings.report(false),
            "\\x1B[2J.txt:7: warning: \"\\tcolour\\xC2\\x9B\" stands there [a-rule]\n"
            "0 errors, 1 warning\n");
}
