// The worked examples of docs/templates.md do what they say.
#include "engine/passes.h"

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
        found.back()[block] += line + "\r\n";
      continue;
    }
    const bool last = block == "result" || block == "error";
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
    return Failure{block, "read it", "the file is missing", true};
  return example.at(block);
}

}  // namespace

TEST(TemplatesDocument, ItsExamplesDoWhatTheySay) {
  const auto all = examples(read_file(DOCUMENTS "/templates.md"));
  ASSERT_GT(all.size(), 20u);
  for (const Example& example : all) {
    const bool fix = example.contains("fixold") || example.contains("fixnew");
    const std::string prefix = fix ? "fix" : "";
    const auto result = (fix ? fix_pass : first_pass)(
        index_old("old", file(example, prefix + "old")),
        index_new("new", file(example, prefix + "new")), LineArray::split(*file(example, "map")));
    const std::string reason = result ? "" : result.failure().reason;
    EXPECT_EQ(*file(example, example.contains("result") ? "result" : "error"),
              result ? *result : reason.substr(0, reason.find(": ")) + "\r\n");
    EXPECT_EQ(example.contains("result"), bool(result));
  }
}
