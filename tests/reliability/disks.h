// Disks for tests, below the program's files.
#pragma once

#include "platform/prefix/prefix_files.h"
#include "tests/support/test_machine.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <set>
#include <utility>

#include <fcntl.h>

// A map of its own: its ship has a number.
inline std::string numbered(std::string map, int i) {
  return map.insert(map.find("Foo") + 3, std::to_string(i));
}

// What a file system answers to that it does not know: an error, or 0 when it does.
struct Unknown {
  int link = 0;               // another hard link
  int rename_no_replace = 0;  // a renaming that replaces nothing
  int lease = EINVAL;  // a lease: a test that saves a map in this process would wait for itself
  int lock = 0;

  static bool refuses(int error) {
    if (error)
      errno = error;
    return error != 0;
  }
};

// Files of which no more than `most_in` maps are open at once.
class BoundedFiles : public PrefixFiles {
public:
  BoundedFiles(const Machine& machine, Disk& disk_in, std::size_t most_in)
      : PrefixFiles(machine, disk_in), most(most_in) {}

  std::size_t most_open_maps() override { return most; }

private:
  const std::size_t most;
};

// A disk on which something happens before one of the calls. It flushes nothing: no test that stays
// in one process needs that.
class WatchedDisk : public Disk {
public:
  // Told the number of each call, from 1: 0 lets it through, `half` too but for half of what it is
  // to read or write, anything else is the error that it fails with.
  using Before = std::function<int(int call)>;
  static constexpr int half = -1;

  WatchedDisk(Before what_to_do, Unknown unknown_in)
      : before(std::move(what_to_do)), unknown(unknown_in) {}

  int calls = 0;
  int disturbed = 0;  // of them: failed, or done by half
  int flushes_failed = 0;

  int open(int folder, const char* name, int flags, unsigned mode) override {
    return fails() ? -1 : Disk::open(folder, name, flags, mode);
  }
  // As on Linux, a file is closed even when its closing fails.
  int close(int file) override {
    const bool failed = fails();
    const int reason = errno;
    const int done = Disk::close(file);
    errno = reason;
    return failed ? -1 : done;
  }
  ssize_t read(int file, char* into, std::size_t size, off_t from) override {
    return fails() ? -1 : Disk::read(file, into, part(size), from);
  }
  ssize_t write(int file, const char* from, std::size_t size) override {
    return fails() ? -1 : Disk::write(file, from, part(size));
  }
  void flush(std::span<const int> files, std::span<int> errors) override {
    for (std::size_t i = 0; i < files.size(); ++i) {
      errors[i] = fails() ? errno : 0;
      flushes_failed += errors[i] != 0;
    }
  }
  int lock(int file) override {
    return fails() || Unknown::refuses(unknown.lock) ? -1 : Disk::lock(file);
  }
  int lease(int file) override {
    return fails() || Unknown::refuses(unknown.lease) ? -1 : Disk::lease(file);
  }
  int copy_acl(int from, int to) override { return fails() ? -1 : Disk::copy_acl(from, to); }
  int change_mode(int file, mode_t mode) override {
    return fails() ? -1 : Disk::change_mode(file, mode);
  }
  int status(int folder, const char* name, int flags, struct stat& status) override {
    return fails() ? -1 : Disk::status(folder, name, flags, status);
  }
  ssize_t names(int folder, char* into, std::size_t size) override {
    return fails() ? -1 : Disk::names(folder, into, size);
  }
  int rename(int folder, const char* from, const char* to, unsigned flags) override {
    return fails() || Unknown::refuses(flags ? unknown.rename_no_replace : 0)
               ? -1
               : Disk::rename(folder, from, to, flags);
  }
  int link(int folder, const char* from, const char* to) override {
    return fails() || Unknown::refuses(unknown.link) ? -1 : Disk::link(folder, from, to);
  }
  int remove(int folder, const char* name) override {
    return fails() ? -1 : Disk::remove(folder, name);
  }

private:
  bool fails() {
    const int error = before(++calls);
    halved = error == half;
    disturbed += error > 0;
    return Unknown::refuses(std::max(error, 0));
  }
  std::size_t part(std::size_t size) {  // of what is to be read or written
    disturbed += halved;
    return halved ? (size + 1) / 2 : size;
  }

  const Before before;
  const Unknown unknown;
  bool halved = false;  // the call in hand
};

// A disk that knows what a power cut can leave of one folder: the content of a file only as it was
// flushed last, its names surely only as they were then. Of the changes of names since, each may be
// left alone, or be missing while all others are there. One flush may fail: the disk reports it for
// one file, and what was to be flushed with it never gets there, whatever is said of it later.
class ModelDisk : public Disk {
public:
  // The folder's files have long been flushed, except for those whose content `is_unflushed`.
  ModelDisk(const std::filesystem::path& folder, Unknown unknown_in,
            const std::function<bool(const std::string& name)>& is_unflushed)
      : unknown(unknown_in) {
    for (const auto& [name, content] : tree(folder)) {
      before[name] = inode_of(AT_FDCWD, (folder / name).c_str());
      contents[before[name]] = is_unflushed(name) ? unflushed : content;
    }
  }

  int failing = 0;  // the number of the file, from 1, whose flush fails
  int flushes = 0;  // of files, so far

  // What may be left after a cut behind each of the calls. `unflushed` stands for the content of a
  // file that was not flushed since it was made.
  std::set<Tree> cuts;
  static constexpr char unflushed[] = "not flushed";

  int open(int folder, const char* name, int flags, unsigned mode) override {
    const int file = Disk::open(folder, name, flags, mode);
    if (file < 0 || !(flags & O_CREAT))
      return file;
    contents[inode_of(file, "")] = OpenMap::is_temporary(name) ? unflushed : "";
    if (OpenMap::is_temporary(name))
      numbered(name);
    changed({"", name, inode_of(file, ""), false});
    return file;
  }
  // Any of the files may be on the disk before the others.
  void flush(std::span<const int> files, std::span<int> errors) override {
    std::fill(errors.begin(), errors.end(), 0);
    const int first = std::exchange(flushes, flushes + static_cast<int>(files.size())) + 1;
    if (failing >= first && failing <= flushes) {
      errors[static_cast<std::size_t>(failing - first)] = EIO;
      for (const int file : files)
        lost.insert(inode_of(file, ""));
      return;
    }
    const auto changes_before = changes;
    const auto contents_before = contents;
    const unsigned all = (1u << files.size()) - 1;
    for (unsigned flushed = 0; flushed <= all; ++flushed) {
      changes = changes_before;
      contents = contents_before;
      for (std::size_t i = 0; i < files.size(); ++i)
        if (flushed >> i & 1)
          flush(files[i]);
      add_cuts();
    }
  }
  int lock(int file) override { return Unknown::refuses(unknown.lock) ? -1 : Disk::lock(file); }
  int rename(int folder, const char* from, const char* to, unsigned flags) override {
    const Change change{from, to, inode_of(folder, from), false};
    if (Unknown::refuses(flags ? unknown.rename_no_replace : 0))
      return -1;
    return changed(change, Disk::rename(folder, from, to, flags));
  }
  int link(int folder, const char* from, const char* to) override {
    if (Unknown::refuses(unknown.link))
      return -1;
    return changed({"", to, inode_of(folder, from), false}, Disk::link(folder, from, to));
  }
  int remove(int folder, const char* name) override {
    const Change change{name, "", inode_of(folder, name), false};
    return changed(change, Disk::remove(folder, name));
  }

private:
  struct Change {
    std::string gone, made;  // names, either may be empty
    ino_t inode;
    bool flushed;
  };

  static ino_t inode_of(int folder, const char* name) {
    struct stat status{};
    ::fstatat(folder, name, &status, AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW);
    return status.st_ino;
  }

  int changed(const Change& change, int result = 0) {
    if (result == 0) {
      changes.push_back(change);
      add_cuts();
    }
    return result;
  }
  void flush(int file) {
    const ino_t inode = inode_of(file, "");
    if (lost.contains(inode))
      return;
    contents[inode] = read_file("/proc/self/fd/" + std::to_string(file));
    for (Change& change : changes)
      change.flushed |= change.inode == inode;
  }
  // Temporary names are random: those of two runs are the same in what a cut leaves.
  std::string numbered(const std::string& temporary) {
    const auto number = temporaries.try_emplace(temporary, temporaries.size()).first->second;
    return ".vora-map-updater-" + std::to_string(number) + ".tmp";
  }
  void add_cuts() {
    add_cut([](std::size_t) { return true; });
    for (std::size_t lone = 0; lone < changes.size(); ++lone) {
      if (changes[lone].flushed)
        continue;
      add_cut([&](std::size_t i) { return i != lone; });
      add_cut([&](std::size_t i) { return i == lone || changes[i].flushed; });
    }
  }
  void add_cut(const std::function<bool(std::size_t change)>& is_left) {
    auto names = before;
    for (std::size_t i = 0; i < changes.size(); ++i) {
      if (!is_left(i))
        continue;
      names.erase(changes[i].gone);
      if (!changes[i].made.empty())
        names[changes[i].made] = changes[i].inode;
    }
    Tree left;
    for (const auto& [name, inode] : names)
      left[OpenMap::is_temporary(name) ? numbered(name) : name] = contents.at(inode);
    cuts.insert(std::move(left));
  }

  const Unknown unknown;
  std::map<std::string, ino_t> before;  // the first change
  std::vector<Change> changes;
  std::map<ino_t, std::string> contents;
  std::set<ino_t> lost;  // what was to be flushed when that failed
  std::map<std::string, std::size_t> temporaries;
};
