// The files of Windows itself.
#pragma once

#include "platform/files.h"
#include "platform/windows/retry_budget.h"

#include <memory>

class WindowsFiles : public Files {
public:
  Result<std::string> lookup(const std::string& path, Match match) override;
  Result<std::vector<Entry>> list(const std::string& folder, std::string_view pattern) override;
  Result<std::string> full_path(const std::string& folder) override;
  Result<std::string> read(const std::string& path) override;
  Result<std::unique_ptr<OpenMap>> open_map(const std::string& path) override;
  std::size_t most_open_maps() override;
  void flush(std::span<Unflushed> files) override;
  Result<Done> write(const std::string& path, std::string_view text) override;
  Result<Done> append(const std::string& path, std::string_view text) override;

private:
  struct ReadFile {
    std::wstring folder;  // path of the folder that holds it, in its long form
    std::string name;     // as the folder spells it
    std::string text;
  };

  Result<ReadFile> read_file(const std::string& path, RetryBudget& retry_budget);

  std::shared_ptr<RetryBudget> map_budget;  // of the map that was opened last
  unsigned opened_maps = 0;
};
