// The files of Windows itself.
#include "platform/windows/windows_files.h"

#include "platform/parallel.h"
#include "platform/path_rules.h"
#include "platform/windows/find_file.h"
#include "platform/windows/handle.h"
#include "platform/windows/letter_case.h"
#include "platform/windows/paths.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows_map.h"

#include <limits>
#include <optional>

namespace {

// So that many maps that another program holds do not freeze the window: about those of a batch.
constexpr unsigned maps_of_a_budget = 64;

// Every map that these files have opened is of this machine.
WindowsMap& map_of(const Unflushed& file) { return static_cast<WindowsMap&>(file.map); }

// U+FFFD stands for what is no character in a name: a file of such a name is not found by it.
constexpr char no_text[] = "its name is no text: it has an unpaired surrogate";
bool is_no_text(const std::string& path) { return path.find("\xEF\xBF\xBD") != path.npos; }

Failure failure(const std::string& path, const char* action) {
  const DWORD error = GetLastError();
  const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  if (missing && is_no_text(path))
    return {path, action, no_text};
  return {path, action, system_reason(), missing ? Failure::Kind::missing : Failure::Kind::other};
}

// Information about what a path leads to, symlinks followed; nullopt when there is nothing.
std::optional<BY_HANDLE_FILE_INFORMATION> follow(const std::wstring& path) {
  const Handle file =
      open_file(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  return file ? file_information(file) : std::nullopt;
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

// Locates a folder and checks that it can be listed.
Result<Location> find_folder(const std::string& folder) {
  auto location = locate(folder);
  if (!location)
    return location;
  const Handle open =
      open_file(location->wide(), FILE_LIST_DIRECTORY, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  const auto information = open ? file_information(open) : std::nullopt;
  if (!information)
    return failure(folder, "open the folder");
  if (!is_folder(information->dwFileAttributes))
    return Failure{folder, "open the folder", "it is not a folder"};
  return location;
}

Handle open_text(const std::wstring& path, DWORD access, DWORD creation) {
  RetryBudget retry_budget;
  return open_with_retry(retry_budget, path, access, creation,
                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT);
}

// Writes a text file anew, or appends to it; never through a symlink. A file with another hard link
// is somebody's: it is never written into.
Result<Done> write_text(const std::string& path, std::string_view text, bool at_end) {
  const auto location = locate(path);
  if (!location)
    return location.failure();
  const std::wstring wide = location->wide();
  const DWORD access = at_end ? FILE_APPEND_DATA : GENERIC_WRITE;
  Handle file = open_text(wide, access, OPEN_ALWAYS);
  const auto information = file ? file_information(file) : std::nullopt;
  if (!information)
    return failure(path, "write it");
  const auto found = find_file(wide);
  if (found && is_link(*found))
    return Failure{path, "write it", "it is a link"};
  if (information->nNumberOfLinks > 1) {
    if (at_end)
      return Failure{path, "write it", "it has another hard link"};
    static_cast<void>(file.close());
    if (!DeleteFileW(wide.c_str()))
      return failure(path, "write it");
    file = open_text(wide, access, CREATE_NEW);
  }
  if (!file || (!at_end && !SetEndOfFile(file.get())) || !write_all(file, text) || !file.close())
    return failure(path, "write it");
  return Done{};
}

}  // namespace

Result<std::string> WindowsFiles::lookup(const std::string& path, Match match) {
  const bool folders = match == Match::files_and_folders;
  const bool own = path.ends_with("\\.");  // the "." among a folder's entries
  if (folders && (own || path.ends_with('\\')))
    return full_path(path) ? std::string(".") : std::string();
  if (path.ends_with('\\'))
    return first_listed_file(path);
  const auto location = locate(path);
  if (!location)
    return location.failure();
  const auto found = own || location->names.empty() ? std::nullopt : find_file(location->wide());
  const auto entry = found ? make_entry(*found, location->wide()) : std::nullopt;
  return entry && (folders || !entry->folder) ? entry->name : std::string();
}

Result<std::vector<Entry>> WindowsFiles::list(const std::string& folder, std::string_view pattern) {
  const auto location = locate(folder);
  if (!location)
    return location.failure();
  const std::wstring path = location->wide();
  const std::wstring start = path.ends_with(L'\\') ? path : path + L"\\";
  std::vector<Entry> entries;
  std::vector<std::wstring> stale;
  const bool complete = for_each_entry(path, [&](const WIN32_FIND_DATAW& found) {
    if (!is_folder(found.dwFileAttributes) && OpenMap::is_temporary(narrow(found.cFileName)))
      stale.emplace_back(found.cFileName);
    else if (auto entry = make_entry(found, start + found.cFileName);
             entry && (entry->folder || matches_pattern(entry->name, pattern)))
      entries.push_back(*std::move(entry));
  });
  if (!complete)
    return failure(folder, "list the folder");
  for (const std::wstring& name : stale)
    remove_stale_temporary(start, name);
  sort_entries(entries, lowercase);
  return entries;
}

Result<std::string> WindowsFiles::full_path(const std::string& folder) {
  auto location = find_folder(folder);
  if (!location)
    return location.failure();
  Location spelled{location->root, {}};
  for (const std::string& name : location->names) {
    spelled.names.push_back(name);
    // A folder that may be passed but not listed stays as it was written.
    if (const auto found = find_file(spelled.wide()))
      spelled.names.back() = narrow(found->cFileName);
  }
  return spelled.text();
}

Result<WindowsFiles::ReadFile> WindowsFiles::read_file(const std::string& path,
                                                       RetryBudget& retry_budget) {
  auto name = path.ends_with('\\') ? std::string() : lookup(path, Match::files);
  if (!name)
    return name.failure();
  if (name->empty() && is_no_text(path))
    return Failure{path, "read it", no_text};
  if (name->empty())
    return Failure{path, "read it", "the file is missing", Failure::Kind::missing};
  auto location = locate(path);
  if (!location)
    return location.failure();
  const Handle file =
      open_with_retry(retry_budget, location->wide(), GENERIC_READ, OPEN_EXISTING, 0);
  LARGE_INTEGER size;
  if (!file)
    return failure(path, "read it");
  if (GetFileType(file.get()) != FILE_TYPE_DISK)
    return Failure{path, "read it", "it is not an ordinary file"};
  if (!GetFileSizeEx(file.get(), &size))
    return failure(path, "read it");
  if (size.QuadPart > max_file_size)
    return Failure{path, "read it", "it is larger than 1 GiB"};
  std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
  const auto length = read_all(file, text.data(), text.size());
  if (!length)
    return failure(path, "read it");
  text.resize(*length);
  location->names.pop_back();
  return ReadFile{location->wide(), *std::move(name), std::move(text)};
}

Result<std::string> WindowsFiles::read(const std::string& path) {
  RetryBudget retry_budget;
  auto file = read_file(path, retry_budget);
  if (!file)
    return file.failure();
  return std::move(file->text);
}

Result<std::unique_ptr<OpenMap>> WindowsFiles::open_map(const std::string& path) {
  if (opened_maps++ % maps_of_a_budget == 0)
    map_budget = std::make_shared<RetryBudget>();
  auto file = read_file(path, *map_budget);
  if (!file)
    return file.failure();
  return {std::make_unique<WindowsMap>(path, std::move(file->folder), std::move(file->name),
                                       std::move(file->text), map_budget)};
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
    SetLastError(errors[i]);
    if (!handles[i])
      files[i].flushed = handles[i].failure();
    else if (errors[i] != ERROR_SUCCESS)
      files[i].flushed =
          Failure{files[i].map.path, "flush it", system_reason(), Failure::Kind::unconfirmed};
  }
}

Result<Done> WindowsFiles::write(const std::string& path, std::string_view text) {
  return write_text(path, text, false);
}

Result<Done> WindowsFiles::append(const std::string& path, std::string_view text) {
  return write_text(path, text, true);
}
