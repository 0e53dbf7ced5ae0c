// The worked examples of docs/templates.md do what they say, and it and the manual page list the
// checker's rules.
#include "engine/passes.h"
#include "tests/check/check_texts.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Example = std::map<std::string, std::string>;  // its fenced blocks by their names

std::vector<Example> examples(const std::string& document) {
  std::vector<Example> found(1);
  std::istringstream lines(document);
  std::string block;
  std::string heading;
  for (std::string line; std::getline(lines, line);) {
    if (block.empty() && line.starts_with("#"))
      heading = line;
    if (!line.starts_with("```")) {
      if (!block.empty())
        found.back()[block] += line + (block.ends_with(" lf") ? "\n" : "\r\n");
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

// The lines of the manual page that list the rules.
std::string listed_in_manual() {
  std::string list;
  for (const Rule& rule : all_rules())
    list += ".TP\n.B " + std::string(rule.name) + "\n" +
            (rule.severity == Severity::error ? "error: " : "warning: ") + rule.text + "\n";
  return list;
}

// The rows of the document's table of rules.
std::string listed_in_document() {
  std::string list;
  for (const Rule& rule : all_rules())
    list += "| [`" + std::string(rule.name) + "`](#" + rule.name + ") | " +
            (rule.severity == Severity::error ? "error" : "warning") + " | " + rule.text + " |\n";
  return list;
}

std::string without_cr(std::string text) {
  std::erase(text, '\r');
  return text;
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
    const std::string finding = recipe ? "no findings\n" : without_cr(example["finding"]);
    EXPECT_EQ(finding, found_by_checker(example)) << example["old"] << example["new"];
    before = finding == "no findings\n" ? Example() : example;
    before.erase("finding");
  }
}

TEST(TemplatesDocument, AndTheManualListTheRules) {
  const std::string document = read_file(DOCUMENTS "/templates.md");
  EXPECT_NE(document.find("|---|---|---|\n" + listed_in_document() + "\n"), std::string::npos)
      << listed_in_document();
  const std::string manual = read_file(DOCUMENTS "/../share/vora-template-check.1.in");
  EXPECT_NE(manual.find(listed_in_manual() + ".SH EXIT STATUS\n"), std::string::npos)
      << listed_in_manual();
  for (const Rule& rule : all_rules()) {
    EXPECT_NE(
        document.find("\n### " + std::string(rule.name) + "\n\n" + std::string(explain(rule))),
        std::string::npos)
        << rule.name;
    EXPECT_TRUE(explain(rule).ends_with(".\n")) << rule.name;  // its example is not shown
  }
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
