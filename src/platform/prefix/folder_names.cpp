// Reads folders, and finds names in them as Windows would: letter case ignored.
#include "platform/prefix/folder_names.h"

#include "platform/prefix/letter_case.h"

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// `for_each_name` of a folder that may have been read before.
bool read_again(const Handle& folder, const Visit& visit) {
  return for_each_name(open_at(folder, ".", O_RDONLY | O_DIRECTORY), visit);
}

// The name that differs from `name` in letter case alone; the first in byte order of several.
std::string find_folded(const Handle& folder, const std::string& name) {
  const std::string wanted = lowercase(name);
  std::string found;
  read_again(folder, [&](const char* other, unsigned char) {
    if (lowercase(other) == wanted && (found.empty() || other < found))
      found = other;
  });
  return found;
}

bool has_name(const Handle& folder, const std::string& name) {
  struct stat ignored;
  return stat_at(folder, name, ignored);
}

}  // namespace

bool for_each_name(const Handle& folder, const Visit& visit) {
  if (!folder)
    return false;
  alignas(dirent64) char buffer[1 << 15];
  while (true) {
    const ssize_t length = folder.disk().names(folder.get(), buffer, sizeof buffer);
    if (length <= 0)
      return length == 0;
    for (ssize_t at = 0; at < length;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(buffer + at);
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..")
        visit(entry->d_name, entry->d_type);
      at += entry->d_reclen;
    }
  }
}

std::string find_name(const Handle& folder, const std::string& name) {
  return has_name(folder, name) ? name : find_folded(folder, name);
}

std::size_t FolderNames::Folded::operator()(const std::string& name) const {
  return std::hash<std::string>()(lowercase(name));
}

bool FolderNames::Folded::operator()(const std::string& one, const std::string& other) const {
  return lowercase(one) == lowercase(other);
}

FolderNames::Stamp FolderNames::stamp_of(const Handle& folder) {
  struct stat status;
  if (!describe(folder, status))
    return {};
  return {status.st_dev, status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

void FolderNames::refresh(const Handle& folder) {
  const Stamp now = stamp_of(folder);
  if (stamp == now)
    return;
  stamp = now;
  hashes.clear();
  spellings.reset();
  if (!read_again(folder, [&](const char* name, unsigned char) { hashes.insert(Folded()(name)); }))
    stamp = {};  // to be read again for the next question
}

std::string FolderNames::find(const Handle& folder, const std::string& name) {
  if (has_name(folder, name))
    return name;
  if (!hashes.contains(Folded()(name)))
    return "";
  if (!spellings) {
    spellings.emplace();
    if (!read_again(folder, [&](const char* other, unsigned char) { spellings->insert(other); }))
      stamp = {};
  }
  const auto [begin, end] = spellings->equal_range(name);
  std::string found;
  for (auto other = begin; other != end; ++other)
    if ((found.empty() || *other < found) && has_name(folder, *other))
      found = *other;
  return found;
}

void FolderNames::added(const std::string& name) {
  hashes.insert(Folded()(name));
  if (!spellings)
    return;
  const auto [begin, end] = spellings->equal_range(name);
  if (std::find(begin, end, name) == end)
    spellings->insert(name);
}

void FolderNames::changed(const Handle& folder) {
  if (stamp != Stamp{})
    stamp = stamp_of(folder);
}
