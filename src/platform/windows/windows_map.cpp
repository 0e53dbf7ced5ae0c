// An open map on Windows itself, and the steps of its replacement there.
#include "platform/windows/windows_map.h"

#include "platform/letter_case.h"
#include "platform/windows/find_file.h"
#include "platform/windows/name_lock.h"
#include "platform/windows/wide_text.h"

namespace {

// The attributes that new files copy from the map.
constexpr DWORD permissions =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

bool set_attributes(const std::wstring& path, DWORD attributes) {
  return SetFileAttributesW(path.c_str(), attributes ? attributes : FILE_ATTRIBUTE_NORMAL);
}

bool is_read_only(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

// Clears an entry's read-only attribute for the object's lifetime, because Windows neither replaces
// nor opens for writing an entry that has it.
class Writable {
public:
  explicit Writable(std::wstring entry)
      : path(std::move(entry)), attributes(GetFileAttributesW(path.c_str())) {
    if (is_read_only(attributes))
      set_attributes(path, attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  }
  Writable(const Writable&) = delete;
  Writable& operator=(const Writable&) = delete;
  ~Writable() {
    if (is_read_only(attributes))
      set_attributes(path, attributes);
  }

  // The entry is gone: there is nothing to restore.
  void forget() { attributes = INVALID_FILE_ATTRIBUTES; }

private:
  const std::wstring path;
  DWORD attributes;
};

std::uint64_t joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

bool is_taken(DWORD error) { return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS; }

}  // namespace

bool delete_file(const std::wstring& path) {
  Writable writable(path);
  const bool deleted = DeleteFileW(path.c_str());
  if (deleted)
    writable.forget();
  return deleted;
}

WindowsMap::WindowsMap(std::string path_in, std::wstring folder_in, std::string name_in,
                       std::string text_in, std::shared_ptr<RetryBudget> retry_in)
    : OpenMap(std::move(path_in), std::move(name_in), std::move(text_in)),
      folder(folder_in.ends_with(L'\\') ? std::move(folder_in) : folder_in + L"\\"),
      retry_budget(std::move(retry_in)) {}

Failure WindowsMap::last_error() const { return last_failure(path, "convert it"); }

Result<bool> WindowsMap::false_if_taken() const {
  return is_taken(GetLastError()) ? Result<bool>(false) : last_error();
}

std::wstring WindowsMap::path_of(const std::string& entry) const { return folder + widen(entry); }

std::string WindowsMap::spelled(const std::string& entry) {
  const auto found = find_file(path_of(entry));
  return found ? narrow(found->cFileName) : "";
}

Result<bool> WindowsMap::lock_entry(const std::string& entry) {
  Handle taken = lock_name(folder, widen(entry));
  if (!taken)
    return false_if_taken();
  locks.push_back(std::move(taken));
  return true;
}

Result<OpenMap::FileState> WindowsMap::lock() {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  if (*kind == Kind::folder || *kind == Kind::other)
    return failure(not_ordinary);
  // A program that has it open may forbid to rename it, and would forbid to undo what was begun.
  if (!open_with_retry(*retry_budget, path_of(name), DELETE, OPEN_EXISTING,
                       FILE_FLAG_OPEN_REPARSE_POINT))
    return last_error();
  const auto taken = lock_entry(name);
  if (!taken)
    return taken.failure();
  locked = *taken;
  if (!locked)
    return failure(locked_by_another);
  map_attributes = GetFileAttributesW(path_of(name).c_str());
  if (map_attributes == INVALID_FILE_ATTRIBUTES)
    return last_error();
  return state_of(name);
}

std::string WindowsMap::folded() const { return lowercase(path); }

Result<OpenMap::Kind> WindowsMap::kind_of(const std::string& entry) {
  const auto found = find_file(path_of(entry));
  if (!found && GetLastError() == ERROR_FILE_NOT_FOUND)
    return Kind::nothing;
  if (!found)
    return last_error();
  if (found->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
    return Kind::folder;
  return is_link(*found) ? Kind::other : Kind::file;
}

Result<OpenMap::FileState> WindowsMap::state_of(const std::string& entry) {
  const Handle file = open_file(path_of(entry), FILE_READ_ATTRIBUTES, OPEN_EXISTING, 0);
  const auto about = file_information(file);
  if (!about)
    return last_error();
  return FileState{
      about->dwVolumeSerialNumber, joined(about->nFileIndexHigh, about->nFileIndexLow),
      joined(about->nFileSizeHigh, about->nFileSizeLow),
      joined(about->ftLastWriteTime.dwHighDateTime, about->ftLastWriteTime.dwLowDateTime),
      false};  // Windows may set the time only when the writer closes the file
}

std::optional<OpenMap::Content> WindowsMap::content_of(std::shared_ptr<const Handle> file) {
  const auto about = file_information(*file);
  if (!about)
    return std::nullopt;
  return Content{joined(about->nFileSizeHigh, about->nFileSizeLow),
                 [file](char* into, std::size_t size) { return read_all(*file, into, size); }};
}

Result<std::optional<OpenMap::Content>> WindowsMap::open_to_read(const std::string& entry) {
  const auto kind = kind_of(entry);
  if (!kind)
    return kind.failure();
  if (*kind == Kind::other)
    return std::optional<Content>();
  const auto file = std::make_shared<const Handle>(
      open_with_retry(*retry_budget, path_of(entry), GENERIC_READ, OPEN_EXISTING, 0));
  auto content = content_of(file);
  if (!content)
    return last_error();
  return content;
}

Result<Handle> WindowsMap::open_to_flush(const std::string& entry) {
  const Writable writable(path_of(entry));
  Handle file = open_with_retry(*retry_budget, path_of(entry), GENERIC_WRITE, OPEN_EXISTING, 0);
  if (!file)
    return last_error();
  return file;
}

Result<bool> WindowsMap::make_temporary(const std::string& entry, std::string_view content) {
  const auto ours = lock_entry(entry);
  if (!ours || !*ours)
    return ours;
  Handle file = open_file(path_of(entry), GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN);
  if (!file)
    return false_if_taken();
  if (write_all(file, content) && close(file) &&
      set_attributes(path_of(entry), (map_attributes & permissions) | FILE_ATTRIBUTE_HIDDEN))
    return true;
  Failure failure = last_error();
  file.reset();
  remove(entry);
  return failure;
}

// The entry may be a hard link to the map, which shares its read-only attribute.
void WindowsMap::remove(const std::string& entry) {
  retry_budget->retry(sharing_or_access_errors, [&] { return delete_file(path_of(entry)); });
  if (is_read_only(map_attributes))
    set_attributes(path_of(name), map_attributes);
}

bool WindowsMap::move_file(const std::string& from, const std::string& to, DWORD flags) {
  return retry_budget->retry(sharing_or_access_errors, [&] {
    return MoveFileExW(path_of(from).c_str(), path_of(to).c_str(),
                       flags | MOVEFILE_WRITE_THROUGH) != 0;
  });
}

// Wine unhides only a file that may be written: the read-only attribute comes afterwards.
void WindowsMap::unhide(const std::string& entry) {
  const DWORD attributes = GetFileAttributesW(path_of(entry).c_str());
  if (!is_temporary(entry) || attributes == INVALID_FILE_ATTRIBUTES ||
      !(attributes & FILE_ATTRIBUTE_HIDDEN))
    return;
  const DWORD shown = attributes & permissions;
  set_attributes(path_of(entry), shown & ~DWORD{FILE_ATTRIBUTE_READONLY});
  if (is_read_only(shown))
    set_attributes(path_of(entry), shown);
}

// Hard links to one file share its attributes: the read-only attribute that was cleared for `to` is
// restored on `kept`.
Result<Done> WindowsMap::rename(const std::string& from, const std::string& to,
                                const std::string& kept) {
  const DWORD kept_attributes = kept.empty() ? 0 : GetFileAttributesW(path_of(kept).c_str());
  Writable target(path_of(to));
  unhide(from);
  if (!move_file(from, to, MOVEFILE_REPLACE_EXISTING))
    return last_error();
  target.forget();
  if (is_read_only(kept_attributes))
    set_attributes(path_of(kept), kept_attributes);
  return Done{};
}

Result<bool> WindowsMap::rename_no_replace(const std::string& from, const std::string& to) {
  unhide(from);
  return move_file(from, to, 0) ? Result<bool>(true) : false_if_taken();
}

// File systems without hard links fail with many different errors.
Result<bool> WindowsMap::link(const std::string& from, const std::string& to) {
  if (const auto ours = lock_entry(to); !ours)  // like every temporary file
    return ours.failure();
  if (CreateHardLinkW(path_of(to).c_str(), path_of(from).c_str(), nullptr))
    return true;
  if (is_taken(GetLastError()))
    return last_error();
  return false;
}
