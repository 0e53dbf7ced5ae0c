// The worked examples of docs/templates.md do what they say.
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
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("```")) {
      if (!block.empty())
        found.back()[block] += line + (block.ends_with(" lf") ? "\n" : "\r\n");
      continue;
    }
    const bool last = block == "result" || block == "error" || block == "finding";
    block = line.substr(3);
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

// What the checker prints about an example, without the number of findings.
std::string found_by_checker(const Example& example) {
  Texts texts{{"vnewstruct0.txt", "Galaxy\r\nversion 12\r\n"}};
  for (const char* kind : {"old", "new"})
    for (const char* line_ends : {"", " lf"})
      if (example.contains(std::string(kind) + line_ends))
        texts["v" + std::string(kind) + "struct11.txt"] = example.at(std::string(kind) + line_ends);
  const bool with_map = example.contains("map");
  std::string report =
      check_texts(texts, with_map ? std::vector{example.at("map")} : std::vector<std::string>());
  if (report != "no findings\n")
    report.erase(report.rfind('\n', report.size() - 2) + 1);
  return report;
}

std::string without_cr(std::string text) {
  std::erase(text, '\r');
  return text;
}

}  // namespace

TEST(TemplatesDocument, TheCheckerFindsWhatItSays) {
  Example before;  // which the next one mends
  for (Example example : examples(read_file(DOCUMENTS "/templates.md"))) {
    if (!example.contains("finding"))
      continue;
    if (example.contains("old"))
      before.erase("old lf");
    example.merge(before);
    const std::string finding = without_cr(example["finding"]);
    EXPECT_EQ(finding, found_by_checker(example));
    before = finding == "no findings\n" ? Example() : example;
    before.erase("finding");
  }
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
