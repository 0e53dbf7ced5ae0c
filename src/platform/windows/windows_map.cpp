// The steps of a replacement, on Windows itself.
#include "platform/windows/windows_map.h"

#include "platform/windows/find_file.h"
#include "platform/windows/name_lock.h"
#include "platform/windows/wide_text.h"

namespace {

constexpr int attempts = 100;  // to find a free name

// What a map's result takes over from it.
constexpr DWORD permissions =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

MapFolder::Reason last_error() { return {system_reason()}; }

bool set_attributes(const std::wstring& path, DWORD attributes) {
  return SetFileAttributesW(path.c_str(), attributes ? attributes : FILE_ATTRIBUTE_NORMAL);
}

bool is_read_only(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

// Takes an entry's read-only attribute away for as long as it lives: Windows replaces and opens to
// write no entry that has it.
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

  // The entry is gone: there is nothing to give back.
  void forget() { attributes = INVALID_FILE_ATTRIBUTES; }

private:
  const std::wstring path;
  DWORD attributes;
};

bool delete_file(const std::wstring& path) {
  Writable writable(path);
  const bool deleted = DeleteFileW(path.c_str());
  if (deleted)
    writable.forget();
  return deleted;
}

std::uint64_t joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

bool is_taken(DWORD error) { return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS; }

}  // namespace

WindowsMapFolder::WindowsMapFolder(std::wstring path, std::string map, RetryBudget retry_in)
    : MapFolder(std::move(map)), folder(path.ends_with(L'\\') ? std::move(path) : path + L"\\"),
      retry_budget(std::move(retry_in)) {}

std::wstring WindowsMapFolder::path_of(const std::string& name) const {
  return folder + widen(name);
}

std::string WindowsMapFolder::spelled(const std::string& name) {
  const auto found = find_file(path_of(name));
  return found ? narrow(found->cFileName) : "";
}

MapFolder::Answer<bool> WindowsMapFolder::own(const std::string& name) {
  Handle taken = lock_name(folder, widen(name));
  if (!taken && is_taken(GetLastError()))
    return false;
  if (!taken)
    return last_error();
  locked.push_back(std::move(taken));
  return true;
}

MapFolder::Answer<std::optional<MapFolder::Stamp>> WindowsMapFolder::lock() {
  const auto kind = kind_of(map_name);
  if (!kind)
    return kind.failure();
  if (*kind == Kind::folder || *kind == Kind::other)
    return not_ordinary;
  const auto ours = own(map_name);
  if (!ours)
    return ours.failure();
  if (!*ours)
    return std::optional<Stamp>();
  map_attributes = GetFileAttributesW(path_of(map_name).c_str());
  if (map_attributes == INVALID_FILE_ATTRIBUTES)
    return last_error();
  const auto stamp = stamp_of(map_name);
  if (!stamp)
    return stamp.failure();
  return std::optional(*stamp);
}

MapFolder::Answer<MapFolder::Kind> WindowsMapFolder::kind_of(const std::string& name) {
  const auto found = find_file(path_of(name));
  if (!found && GetLastError() == ERROR_FILE_NOT_FOUND)
    return Kind::nothing;
  if (!found)
    return last_error();
  if (found->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
    return Kind::folder;
  return is_link(*found) ? Kind::other : Kind::file;
}

MapFolder::Answer<MapFolder::Stamp> WindowsMapFolder::stamp_of(const std::string& name) {
  const Handle file = open_file(path_of(name), FILE_READ_ATTRIBUTES, OPEN_EXISTING, 0);
  if (!file)
    return last_error();
  const auto about = file_information(file);
  if (!about)
    return last_error();
  return Stamp{about->dwVolumeSerialNumber, joined(about->nFileIndexHigh, about->nFileIndexLow),
               joined(about->nFileSizeHigh, about->nFileSizeLow),
               joined(about->ftLastWriteTime.dwHighDateTime, about->ftLastWriteTime.dwLowDateTime),
               false};  // Windows may set the time only when the writer closes the file
}

MapFolder::Answer<bool> WindowsMapFolder::holds(const std::string& name, std::string_view text) {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  if (*kind == Kind::other)
    return false;
  const Handle file = open_with_retry(retry_budget, path_of(name), GENERIC_READ, OPEN_EXISTING, 0);
  const auto about = file ? file_information(file) : std::nullopt;
  if (!about)
    return last_error();
  if (joined(about->nFileSizeHigh, about->nFileSizeLow) != text.size())
    return false;
  const auto same =
      reads([&](char* into, std::size_t size) { return read_all(file, into, size); }, text);
  if (!same)
    return last_error();
  return *same;
}

MapFolder::Answer<Done> WindowsMapFolder::flush(const std::string& name) {
  const Writable writable(path_of(name));
  const Handle file = open_with_retry(retry_budget, path_of(name), GENERIC_WRITE, OPEN_EXISTING, 0);
  if (!file || !FlushFileBuffers(file.get()))
    return last_error();
  return Done{};
}

MapFolder::Answer<std::string> WindowsMapFolder::make_file(Handle& file) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::string free = temporary_name();
    const auto ours = own(free);
    if (!ours)
      return ours.failure();
    file = *ours ? open_file(path_of(free), GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN)
                 : Handle();
    if (file)
      return free;
    if (*ours && !is_taken(GetLastError()))
      break;
  }
  return last_error();
}

MapFolder::Answer<std::string> WindowsMapFolder::write_temporary(std::string_view text) {
  Handle file;
  auto made = make_file(file);
  if (!made)
    return made;
  if (write_all(file, text) && FlushFileBuffers(file.get()) && file.close() &&
      set_attributes(path_of(*made), (map_attributes & permissions) | FILE_ATTRIBUTE_HIDDEN))
    return made;
  Reason reason = last_error();
  static_cast<void>(file.close());
  remove(*made);
  return reason;
}

void WindowsMapFolder::remove(const std::string& name) {
  retry_budget.retry(sharing_or_access_errors, [&] { return delete_file(path_of(name)); });
}

bool WindowsMapFolder::move_file(const std::string& from, const std::string& to, DWORD flags) {
  return retry_budget.retry(sharing_or_access_errors, [&] {
    return MoveFileExW(path_of(from).c_str(), path_of(to).c_str(),
                       flags | MOVEFILE_WRITE_THROUGH) != 0;
  });
}

void WindowsMapFolder::show(const std::string& name) {
  if (is_temporary(name))
    set_attributes(path_of(name), GetFileAttributesW(path_of(name).c_str()) & permissions);
}

// Two names of one file share their attributes, so that what is taken from the one is given back to
// the other.
MapFolder::Answer<Done> WindowsMapFolder::rename(const std::string& from, const std::string& to,
                                                 const std::string& kept) {
  const DWORD kept_attributes = kept.empty() ? 0 : GetFileAttributesW(path_of(kept).c_str());
  Writable target(path_of(to));
  show(from);
  if (!move_file(from, to, MOVEFILE_REPLACE_EXISTING))
    return last_error();
  target.forget();
  if (is_read_only(kept_attributes))
    set_attributes(path_of(kept), kept_attributes);
  return Done{};
}

MapFolder::Answer<bool> WindowsMapFolder::rename_no_replace(const std::string& from,
                                                            const std::string& to) {
  show(from);
  if (move_file(from, to, 0))
    return true;
  if (is_taken(GetLastError()))
    return false;
  return last_error();
}

// File systems without second names say so in many ways.
MapFolder::Answer<bool> WindowsMapFolder::link(const std::string& from, const std::string& to) {
  if (CreateHardLinkW(path_of(to).c_str(), path_of(from).c_str(), nullptr))
    return true;
  if (is_taken(GetLastError()))
    return last_error();
  return false;
}

void remove_stale_temporary(const std::wstring& folder, const std::wstring& name) {
  const std::wstring path = folder + name;
  const Handle lock = lock_name(folder, name);
  const auto found = lock ? find_file(path) : std::nullopt;
  if (found && !(found->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !is_link(*found))
    delete_file(path);
}
