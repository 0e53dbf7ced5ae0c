// The steps of a replacement, on Windows itself.
#include "platform/windows/windowsmapfolder.h"

#include "platform/windows/findfile.h"
#include "platform/windows/namelock.h"
#include "platform/windows/wide.h"

namespace {

constexpr int attempts = 100;  // to find a free name

// What a map's result takes over from it.
constexpr DWORD permissions =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

MapFolder::Reason lasterror() { return {systemreason()}; }

bool setattributes(const std::wstring& path, DWORD attributes) {
  return SetFileAttributesW(path.c_str(), attributes ? attributes : FILE_ATTRIBUTE_NORMAL);
}

bool isreadonly(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
}

// Takes an entry's read-only attribute away for as long as it lives: Windows replaces and opens to
// write no entry that has it.
class Writable {
public:
  explicit Writable(std::wstring entry)
      : path(std::move(entry)), attributes(GetFileAttributesW(path.c_str())) {
    if (isreadonly(attributes))
      setattributes(path, attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  }
  Writable(const Writable&) = delete;
  Writable& operator=(const Writable&) = delete;
  ~Writable() {
    if (isreadonly(attributes))
      setattributes(path, attributes);
  }

  // The entry is gone: there is nothing to give back.
  void forget() { attributes = INVALID_FILE_ATTRIBUTES; }

private:
  const std::wstring path;
  DWORD attributes;
};

bool deletefile(const std::wstring& path) {
  Writable writable(path);
  const bool deleted = DeleteFileW(path.c_str());
  if (deleted)
    writable.forget();
  return deleted;
}

std::uint64_t joined(DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; }

bool istaken(DWORD error) { return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS; }

}  // namespace

WindowsMapFolder::WindowsMapFolder(std::wstring path, std::string map, Patience itspatience)
    : MapFolder(std::move(map)), folder(path.ends_with(L'\\') ? std::move(path) : path + L"\\"),
      patience(std::move(itspatience)) {}

std::wstring WindowsMapFolder::pathof(const std::string& name) const {
  return folder + widen(name);
}

std::string WindowsMapFolder::spelled(const std::string& name) {
  const auto found = findfile(pathof(name));
  return found ? narrow(found->cFileName) : "";
}

MapFolder::Answer<bool> WindowsMapFolder::own(const std::string& name) {
  Handle taken = lockname(folder, widen(name));
  if (!taken && istaken(GetLastError()))
    return false;
  if (!taken)
    return lasterror();
  locked.push_back(std::move(taken));
  return true;
}

MapFolder::Answer<std::optional<MapFolder::Stamp>> WindowsMapFolder::lock() {
  const auto kind = kindof(mapname);
  if (!kind)
    return kind.failure();
  if (*kind == Kind::folder || *kind == Kind::other)
    return notordinary;
  const auto ours = own(mapname);
  if (!ours)
    return ours.failure();
  if (!*ours)
    return std::optional<Stamp>();
  mapattributes = GetFileAttributesW(pathof(mapname).c_str());
  if (mapattributes == INVALID_FILE_ATTRIBUTES)
    return lasterror();
  const auto stamp = stampof(mapname);
  if (!stamp)
    return stamp.failure();
  return std::optional(*stamp);
}

MapFolder::Answer<MapFolder::Kind> WindowsMapFolder::kindof(const std::string& name) {
  const auto found = findfile(pathof(name));
  if (!found && GetLastError() == ERROR_FILE_NOT_FOUND)
    return Kind::nothing;
  if (!found)
    return lasterror();
  if (found->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
    return Kind::folder;
  return islink(*found) ? Kind::other : Kind::file;
}

MapFolder::Answer<MapFolder::Stamp> WindowsMapFolder::stampof(const std::string& name) {
  const Handle file = openfile(pathof(name), FILE_READ_ATTRIBUTES, OPEN_EXISTING, 0);
  if (!file)
    return lasterror();
  const auto about = informationof(file);
  if (!about)
    return lasterror();
  return Stamp{about->dwVolumeSerialNumber, joined(about->nFileIndexHigh, about->nFileIndexLow),
               joined(about->nFileSizeHigh, about->nFileSizeLow),
               joined(about->ftLastWriteTime.dwHighDateTime, about->ftLastWriteTime.dwLowDateTime),
               false};  // Windows may set the time only when the writer closes the file
}

MapFolder::Answer<bool> WindowsMapFolder::holds(const std::string& name, std::string_view text) {
  const auto kind = kindof(name);
  if (!kind)
    return kind.failure();
  if (*kind == Kind::other)
    return false;
  const Handle file = openheld(patience, pathof(name), GENERIC_READ, OPEN_EXISTING, 0);
  const auto about = file ? informationof(file) : std::nullopt;
  if (!about)
    return lasterror();
  if (joined(about->nFileSizeHigh, about->nFileSizeLow) != text.size())
    return false;
  const auto same =
      reads([&](char* into, std::size_t size) { return readall(file, into, size); }, text);
  if (!same)
    return lasterror();
  return *same;
}

MapFolder::Answer<Done> WindowsMapFolder::flush(const std::string& name) {
  const Writable writable(pathof(name));
  const Handle file = openheld(patience, pathof(name), GENERIC_WRITE, OPEN_EXISTING, 0);
  if (!file || !FlushFileBuffers(file.get()))
    return lasterror();
  return Done{};
}

MapFolder::Answer<std::string> WindowsMapFolder::makefile(Handle& file) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::string free = temporaryname();
    const auto ours = own(free);
    if (!ours)
      return ours.failure();
    file =
        *ours ? openfile(pathof(free), GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN) : Handle();
    if (file)
      return free;
    if (*ours && !istaken(GetLastError()))
      break;
  }
  return lasterror();
}

MapFolder::Answer<std::string> WindowsMapFolder::writetemporary(std::string_view text) {
  Handle file;
  auto made = makefile(file);
  if (!made)
    return made;
  if (writeall(file, text) && FlushFileBuffers(file.get()) && file.close() &&
      setattributes(pathof(*made), (mapattributes & permissions) | FILE_ATTRIBUTE_HIDDEN))
    return made;
  Reason reason = lasterror();
  static_cast<void>(file.close());
  remove(*made);
  return reason;
}

void WindowsMapFolder::remove(const std::string& name) {
  patience.retry(heldordenied, [&] { return deletefile(pathof(name)); });
}

bool WindowsMapFolder::movefile(const std::string& from, const std::string& to, DWORD flags) {
  return patience.retry(heldordenied, [&] {
    return MoveFileExW(pathof(from).c_str(), pathof(to).c_str(), flags | MOVEFILE_WRITE_THROUGH) !=
           0;
  });
}

void WindowsMapFolder::show(const std::string& name) {
  if (istemporary(name))
    setattributes(pathof(name), GetFileAttributesW(pathof(name).c_str()) & permissions);
}

// Two names of one file share their attributes, so that what is taken from the one is given back to
// the other.
MapFolder::Answer<Done> WindowsMapFolder::rename(const std::string& from, const std::string& to,
                                                 const std::string& kept) {
  const DWORD keptattributes = kept.empty() ? 0 : GetFileAttributesW(pathof(kept).c_str());
  Writable target(pathof(to));
  show(from);
  if (!movefile(from, to, MOVEFILE_REPLACE_EXISTING))
    return lasterror();
  target.forget();
  if (isreadonly(keptattributes))
    setattributes(pathof(kept), keptattributes);
  return Done{};
}

MapFolder::Answer<bool> WindowsMapFolder::renamefree(const std::string& from,
                                                     const std::string& to) {
  show(from);
  if (movefile(from, to, 0))
    return true;
  if (istaken(GetLastError()))
    return false;
  return lasterror();
}

// File systems without second names say so in many ways.
MapFolder::Answer<bool> WindowsMapFolder::link(const std::string& from, const std::string& to) {
  if (CreateHardLinkW(pathof(to).c_str(), pathof(from).c_str(), nullptr))
    return true;
  if (istaken(GetLastError()))
    return lasterror();
  return false;
}

void clearleftover(const std::wstring& folder, const std::wstring& name) {
  const std::wstring path = folder + name;
  const Handle lock = lockname(folder, name);
  const auto found = lock ? findfile(path) : std::nullopt;
  if (found && !(found->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !islink(*found))
    deletefile(path);
}
