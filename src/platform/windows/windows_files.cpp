// The files of Windows itself.
#include "platform/windows/windows_files.h"

#include "platform/letter_case.h"
#include "platform/parallel.h"
#include "platform/path_rules.h"
#include "platform/windows/find_file.h"
#include "platform/windows/handle.h"
#include "platform/windows/name_lock.h"
#include "platform/windows/paths.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_map.h"

#include <limits>
#include <optional>

namespace {

// So that many files that another program holds do not freeze the window: about those of a batch.
constexpr unsigned files_of_a_budget = 64;

// Every map that these files have opened is of this machine.
WindowsMap& map_of(const Unflushed& file) { return static_cast<WindowsMap&>(file.map); }

// Information about what a path leads to, symlinks followed; nullopt when it cannot be opened.
std::optional<BY_HANDLE_FILE_INFORMATION> follow(const std::wstring& path,
                                                 DWORD access = FILE_READ_ATTRIBUTES) {
  return file_information(open_file(path, access, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS));
}

bool is_folder(DWORD attributes) { return attributes & FILE_ATTRIBUTE_DIRECTORY; }

// A found entry, whose own path is `path`, as the program lists it; nullopt when it does not belong
// in a list.
std::optional<Entry> make_entry(const WIN32_FIND_DATAW& found, const std::wstring& path) {
  constexpr DWORD excluded = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DEVICE;
  if (found.dwFileAttributes & excluded)
    return std::nullopt;
  Entry entry{narrow(found.cFileName), is_folder(found.dwFileAttributes), is_link(found)};
  if (!entry.link)
    return entry;
  const auto target = follow(path);
  if (!target)
    return std::nullopt;
  entry.folder = is_folder(target->dwFileAttributes);
  return entry;
}

std::wstring with_backslash(std::wstring folder) {
  return folder.ends_with(L'\\') ? folder : folder + L"\\";
}

}  // namespace

Result<Files::Found> WindowsFiles::find_entry(const std::string& path) {
  const auto location = locate(path);
  if (!location)
    return location.failure();
  const auto found = location->names.empty() ? std::nullopt : find_file(location->wide());
  auto entry = found ? make_entry(*found, location->wide()) : std::nullopt;
  if (!found && is_no_text(path))
    return Failure{path, "find it", no_text};
  return entry ? Found{std::move(entry->name), entry->folder} : Found{};
}

Result<Files::Listing> WindowsFiles::read_folder(const std::string& folder,
                                                 std::string_view pattern) {
  const auto location = locate(folder);
  if (!location)
    return location.failure();
  const std::wstring path = with_backslash(location->wide());
  Listing listing;
  const bool complete = for_each_entry(path, [&](const WIN32_FIND_DATAW& found) {
    if (std::string name = narrow(found.cFileName);
        !is_folder(found.dwFileAttributes) && OpenMap::is_temporary(name))
      listing.temporaries.push_back(std::move(name));
    else if (auto entry = make_entry(found, path + found.cFileName);
             entry && (entry->folder || matches_pattern(entry->name, pattern)))
      listing.entries.push_back(*std::move(entry));
  });
  if (!complete)
    return last_failure(folder, "list the folder");
  sort_entries(listing.entries, lowercase);
  return listing;
}

void WindowsFiles::remove_stale_temporary(const std::string& folder, const std::string& name) {
  const auto location = locate(folder);
  if (!location)
    return;
  const std::wstring path = with_backslash(location->wide());
  const Handle lock = lock_name(path, widen(name));
  const auto found = lock ? find_file(path + widen(name)) : std::nullopt;
  if (found && !is_folder(found->dwFileAttributes) && !is_link(*found))
    delete_file(path + widen(name));
}

Result<std::string> WindowsFiles::full_path(const std::string& folder) {
  const auto location = locate(folder);
  if (!location)
    return location.failure();
  const auto information = follow(location->wide(), FILE_LIST_DIRECTORY);
  if (!information)
    return last_failure(folder, "open the folder");
  if (!is_folder(information->dwFileAttributes))
    return Failure{folder, "open the folder", "it is not a folder"};
  AbsolutePath spelled{location->root, {}};
  for (const std::string& name : location->names) {
    spelled.names.push_back(name);
    // A folder that may be passed but not listed stays as it was written.
    if (const auto found = find_file(spelled.wide()))
      spelled.names.back() = narrow(found->cFileName);
  }
  return spelled.text();
}

Result<Files::OpenedFile> WindowsFiles::open_file(const std::string& path) {
  if (opened++ % files_of_a_budget == 0)
    read_budget = std::make_shared<RetryBudget>();
  auto found = find_entry(path);
  if (!found)
    return found.failure();
  if (found->name.empty() || found->folder)
    return OpenedFile{};
  auto location = locate(path);
  if (!location)
    return location.failure();
  const auto file = std::make_shared<const Handle>(
      open_with_retry(*read_budget, location->wide(), GENERIC_READ, OPEN_EXISTING, 0));
  if (*file && GetFileType(file->get()) != FILE_TYPE_DISK)
    return OpenedFile{};
  auto content = WindowsMap::content_of(file);
  if (!content)
    return last_failure(path, "read it");
  location->names.pop_back();
  return OpenedFile{
      std::make_unique<WindowsMap>(path, location->wide(), std::move(found->name), "", read_budget),
      *std::move(content)};
}

// A process may have millions of handles.
std::size_t WindowsFiles::most_open_maps() { return std::numeric_limits<std::size_t>::max(); }

void WindowsFiles::flush(std::span<Unflushed> files) {
  std::vector<Result<Handle>> handles;
  for (const Unflushed& file : files)
    handles.push_back(map_of(file).open_to_flush(file.entry));
  std::vector<DWORD> errors(files.size(), ERROR_SUCCESS);
  run_in_parallel(files.size(), [&](std::size_t i) {
    if (handles[i] && !FlushFileBuffers(handles[i]->get()))
      errors[i] = GetLastError();
  });
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!handles[i])
      files[i].flushed = handles[i].failure();
    else if (errors[i] != ERROR_SUCCESS)
      files[i].flushed = Failure{files[i].map.path, "flush it", system_reason(errors[i]),
                                 Failure::Kind::unconfirmed};
  }
}

Result<bool> WindowsFiles::write_text(const std::string& path, std::string_view text,
                                      Writing writing) {
  const auto location = locate(path);
  if (!location)
    return location.failure();
  const std::wstring wide = location->wide();
  RetryBudget retry_budget;
  Handle file = open_with_retry(retry_budget, wide,
                                writing == Writing::at_end ? FILE_APPEND_DATA : GENERIC_WRITE,
                                writing == Writing::new_file ? CREATE_NEW : OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT);
  const auto information = file_information(file);
  if (!information)
    return last_failure(path, "write it");
  const auto found = find_file(wide);
  if (found && is_link(*found))
    return Failure{path, "write it", "it is a link"};
  if (information->nNumberOfLinks > 1)
    return false;
  const bool truncated = writing == Writing::at_end || SetEndOfFile(file.get());
  if (!truncated || !write_all(file, text) || !close(file))
    return last_failure(path, "write it");
  return true;
}

Result<Done> WindowsFiles::remove_text(const std::string& path) {
  const auto location = locate(path);
  if (!location)
    return location.failure();
  if (!DeleteFileW(location->wide().c_str()))
    return last_failure(path, "write it");
  return Done{};
}
