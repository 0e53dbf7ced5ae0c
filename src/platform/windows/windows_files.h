// The files of Windows itself.
#pragma once

#include "platform/files.h"
#include "platform/windows/handle.h"

#include <memory>

class WindowsFiles : public Files {
public:
  Result<std::string> full_path(const std::string& folder) override;
  std::size_t most_open_maps() override;
  void flush(std::span<Unflushed> files) override;

protected:
  Result<Found> find_entry(const std::string& path) override;
  Result<Listing> read_folder(const std::string& folder, std::string_view pattern) override;
  void remove_stale_temporary(const std::string& folder, const std::string& name) override;
  Result<OpenedFile> open_file(const std::string& path) override;
  Result<bool> write_text(const std::string& path, std::string_view text, Writing writing) override;
  Result<Done> remove_text(const std::string& path) override;

private:
  std::shared_ptr<RetryBudget> read_budget;  // of the file that was opened last
  unsigned opened = 0;
};
