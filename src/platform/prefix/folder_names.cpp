// Lists folders and finds names in them case-insensitively, as Windows does.
#include "platform/prefix/folder_names.h"

#include "platform/letter_case.h"

#include <functional>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

bool has_name(const Descriptor& folder, const std::string& name) {
  struct stat ignored;
  return stat_at(folder, name, ignored);
}

OpenMap::FileState state_of(const Descriptor& folder) {
  struct stat status;
  return stat_of(folder, status) ? file_state(status) : OpenMap::FileState{};
}

std::size_t hash(const std::string& name) { return std::hash<std::string>()(lowercase(name)); }

}  // namespace

bool for_each_name(const Descriptor& folder, const Visit& visit) {
  if (!folder)
    return false;
  alignas(dirent64) char buffer[1 << 13];
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

std::string find_name(const Descriptor& folder, const std::string& name) {
  if (has_name(folder, name))
    return name;
  const std::string wanted = lowercase(name);
  std::string first;
  for_each_name(open_at(folder, ".", O_RDONLY | O_DIRECTORY),
                [&](const char* other, unsigned char) {
                  if (lowercase(other) == wanted && (first.empty() || other < first))
                    first = other;
                });
  return first;
}

std::shared_ptr<FolderNames> FolderNames::of(const Descriptor& folder, Known& known) {
  const auto now = state_of(folder);
  std::erase_if(known.in_use, [](const auto& entry) { return entry.second.expired(); });
  auto& in_use = known.in_use[{now.device, now.file}];
  auto names = in_use.lock();
  if (!names)
    in_use = names = std::make_shared<FolderNames>(folder);
  else if (!names->complete || names->state != now)
    *names = FolderNames(folder);
  return known.last = names;
}

FolderNames::FolderNames(const Descriptor& folder) : state(state_of(folder)) {
  struct statx attributes;
  is_append_only = ::statx(folder.get(), "", AT_EMPTY_PATH, 0, &attributes) == 0 &&
                   (attributes.stx_attributes & STATX_ATTR_APPEND);
  complete = for_each_name(open_at(folder, ".", O_RDONLY | O_DIRECTORY),
                           [&](const char* name, unsigned char) { added(name); });
}

std::string FolderNames::find(const Descriptor& folder, const std::string& name) const {
  return hashes.contains(hash(name)) || has_name(folder, name) ? find_name(folder, name) : "";
}

void FolderNames::added(const std::string& name) { hashes.insert(hash(name)); }

void FolderNames::changed(const Descriptor& folder) { state = state_of(folder); }

std::string FolderNames::folded(const std::string& name) const {
  return std::to_string(state.device) + "/" + std::to_string(state.file) + "/" + lowercase(name);
}
