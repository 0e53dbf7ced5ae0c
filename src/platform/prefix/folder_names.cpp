// Lists folders and finds names in them case-insensitively, as Windows does.
#include "platform/prefix/folder_names.h"

#include "platform/prefix/letter_case.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// `for_each_name` for a folder that may have been read already.
bool read_again(const Descriptor& folder, const Visit& visit) {
  return for_each_name(open_at(folder, ".", O_RDONLY | O_DIRECTORY), visit);
}

// The first name in byte order that differs from `name` only in case.
std::string find_folded(const Descriptor& folder, const std::string& name) {
  const std::string wanted = lowercase(name);
  std::string found;
  read_again(folder, [&](const char* other, unsigned char) {
    if (lowercase(other) == wanted && (found.empty() || other < found))
      found = other;
  });
  return found;
}

// Ends in a NUL, which no name contains: a key that no other key starts with.
std::string folded_key(std::string_view name) { return lowercase(name) + '\0'; }

bool has_name(const Descriptor& folder, const std::string& name) {
  struct stat ignored;
  return stat_at(folder, name, ignored);
}

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
  return has_name(folder, name) ? name : find_folded(folder, name);
}

FolderNames::FileState FolderNames::state_of(const Descriptor& folder) {
  struct stat status;
  if (!describe(folder, status))
    return {};
  return {status.st_dev, status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

std::shared_ptr<FolderNames> FolderNames::of(const Descriptor& folder, Known& known) {
  const FileState now = state_of(folder);
  const auto found = std::find_if(known.begin(), known.end(),
                                  [&](const auto& other) { return other->state.same_folder(now); });
  auto names = found == known.end() ? std::make_shared<FolderNames>() : *found;
  std::erase_if(known, [&](const auto& other) { return other == names || other.use_count() == 1; });
  known.push_back(names);
  if (names->complete && names->state == now)
    return names;
  names->state = now;
  names->read(folder);
  return names;
}

void FolderNames::read(const Descriptor& folder) {
  struct statx attributes;
  is_append_only = ::statx(folder.get(), "", AT_EMPTY_PATH, 0, &attributes) == 0 &&
                   (attributes.stx_attributes & STATX_ATTR_APPEND);
  hashes.clear();
  spellings.reset();
  complete = read_again(folder, [&](const char* name, unsigned char) {
    hashes.insert(std::hash<std::string>()(folded_key(name)));
  });
}

std::string FolderNames::find(const Descriptor& folder, const std::string& name) {
  if (has_name(folder, name))
    return name;
  const auto key = folded_key(name);
  if (!hashes.contains(std::hash<std::string>()(key)))
    return "";
  if (!spellings) {
    spellings.emplace();
    const auto visit = [&](const char* other, unsigned char) {
      spellings->insert(folded_key(other) + other);
    };
    complete &= read_again(folder, visit);
  }
  for (auto known = spellings->lower_bound(key);
       known != spellings->end() && known->starts_with(key); ++known)
    if (auto spelling = known->substr(key.size()); has_name(folder, spelling))
      return spelling;
  return "";
}

void FolderNames::added(const std::string& name) {
  const auto key = folded_key(name);
  hashes.insert(std::hash<std::string>()(key));
  if (spellings)
    spellings->insert(key + name);
}

void FolderNames::changed(const Descriptor& folder) { state = state_of(folder); }

std::string FolderNames::folded(const std::string& name) const {
  return std::to_string(state.device) + "/" + std::to_string(state.inode) + "/" + lowercase(name);
}
