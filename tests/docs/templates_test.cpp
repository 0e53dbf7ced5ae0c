// The worked examples of docs/templates.md do what they say, and it and the manual page list the
// checker's rules.
#include "engine/passes.h"
#include "tests/check/check_texts.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace {

using Example = std::map<std::string, std::string>;  // its fenced blocks by their names

std::vector<Example> examples(const std::string& document) {
  std::vector<Example> found(1);
  std::istringstream lines(document);
  std::string block, heading;
  for (std::string line; std::getline(lines, line);) {
    if (block.empty() && line.starts_with("#"))
      heading = line;
    if (!line.starts_with("```")) {
      if (!block.empty())
        found.back()[block] += line + (block.ends_with("lf") || block == "finding" ? "\n" : "\r\n");
      continue;
    }
    const bool last = block == "result" || block == "error" || block == "finding";
    block = line.substr(3);
    found.back()["heading"] = heading;
    if (!block.empty())
      found.back()[block];
    if (last)
      found.emplace_back();
  }
  found.pop_back();
  return found;
}

Result<std::string> file(const Example& example, const std::string& block) {
  if (!example.contains(block))
    return Failure{block, "read it", "the file is missing", Failure::Kind::missing};
  return example.at(block);
}

// What the checker finds in an example.
std::string found_by_checker(const Example& example) {
  Texts texts{{"vnewstruct0.txt", "Galaxy\r\nversion 12\r\n"}};
  if (example.contains("baseline"))
    texts["vnewstruct0.txt"] = example.at("baseline");
  for (const std::string kind : {"old", "new"})
    for (const std::string form : {"", " lf", " bom", " 10"})
      if (example.contains(kind + form))
        texts["v" + kind + "struct" + (form == " 10" ? "10" : "11") + ".txt"] =
            (form == " bom" ? "\xEF\xBB\xBF" : "") + example.at(kind + form);
  return found_in_texts(texts, example.contains("map") ? std::vector{example.at("map")}
                                                       : std::vector<std::string>());
}

}  // namespace

TEST(TemplatesDocument, TheCheckerFindsWhatItSays) {
  Example before;  // which the next one mends
  for (Example example : examples(read_file(DOCUMENTS "/templates.md"))) {
    if (!example.contains("finding") && !example.contains("baseline"))
      continue;
    if (before["heading"] != example["heading"])
      before.clear();
    if (example.contains("old")) {
      before.erase("old lf");
      before.erase("old bom");
    }
    example.merge(before);
    const bool recipe = !example.contains("finding");
    const std::string finding = recipe ? "no findings\n" : example["finding"];
    EXPECT_EQ(finding, found_by_checker(example)) << example["old"] << example["new"];
    before = finding == "no findings\n" ? Example() : example;
    before.erase("finding");
  }
}

TEST(TemplatesDocument, AndTheManualListTheRules) {
  const std::string document = read_file(DOCUMENTS "/templates.md");
  const std::string manual = read_file(DOCUMENTS "/../share/vora-template-check.1.in");
  const std::regex row(R"(\n\| \[`(.*)`\]\(#\1\) \| (error|warning).* \| (.*) \|)");
  std::string listed = "of each rule.\n";
  for (std::sregex_iterator at(document.begin(), document.end(), row), end; at != end; ++at) {
    listed += at->format(".TP\n.B $1\n$2: $3\n");
    const Rule* rule = find_rule(at->str(1));
    ASSERT_NE(rule, nullptr) << at->str(1);
    EXPECT_EQ(rule->severity == Severity::error, at->str(2) == "error") << at->str(1);
    const std::string text(explain(*rule));
    EXPECT_NE(document.find("\n### " + at->str(1) + "\n\n" + text), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with(".\n")) << text;  // its example is not shown
  }
  EXPECT_NE(manual.find(listed + ".SH EXIT STATUS\n"), std::string::npos) << listed;
  EXPECT_EQ(explain(*find_rule("missing-pair")),
            "Both files of a pair must be there. The baseline must be there, too, and for the "
            "expansion the fix\npair of the current version.\n");
}

TEST(TemplatesDocument, ItsExamplesDoWhatTheySay) {
  const auto all = examples(read_file(DOCUMENTS "/templates.md"));
  ASSERT_GT(all.size(), 20u);
  for (const Example& example : all) {
    if (example.contains("finding"))
      continue;
    const bool fix = example.contains("fixold") || example.contains("fixnew");
    const std::string prefix = fix ? "fix" : "";
    const auto result =
        (fix ? fix_pass : first_pass)(index_old("old", file(example, prefix + "old")),
                                      index_new("new", file(example, prefix + "new")),
                                      LineArray::split(*file(example, "map")), nullptr);
    const std::string reason = result ? "" : result.failure().reason;
    EXPECT_EQ(*file(example, example.contains("result") ? "result" : "error"),
              result ? *result : reason.substr(0, reason.find(": ")) + "\r\n");
    EXPECT_EQ(example.contains("result"), bool(result));
  }
}
