// Disks for tests, below the program's files.
#pragma once

#include "platform/prefix/disk.h"
#include "tests/support/test_machine.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

// A base for tests whose thousands of runs or files would take minutes on a real disk: their
// machines are made in memory.
struct InMemory {
  InMemory() {
    if (std::filesystem::is_directory("/dev/shm"))
      ::setenv("TMPDIR", "/dev/shm", 1);
  }
};

// What a file system answers to that it does not know: an error, or 0 when it does.
struct Unknown {
  int link = 0;               // a second name for a file
  int rename_no_replace = 0;  // a renaming that replaces nothing
};

// A disk on which something happens before one of the calls. It flushes nothing: no test that stays
// in one process needs that.
class WatchedDisk : public Disk {
public:
  // Told the number of each call, from 1: 0 lets it through, `half` too but for half of what it is
  // to read or write, anything else is the error that it fails with.
  using Before = std::function<int(int call)>;
  static constexpr int half = -1;

  explicit WatchedDisk(
      Before what_to_do = [](int) { return 0; }, Unknown unknown_in = {})
      : before(std::move(what_to_do)), unknown(unknown_in) {}

  int open(int folder, const char* name, int flags, unsigned mode) override;
  int close(int file) override;
  ssize_t read(int file, char* into, std::size_t size, off_t from) override;
  ssize_t write(int file, const char* from, std::size_t size) override;
  int flush(int file) override;
  int lock(int file) override;
  int permit(int file, mode_t mode) override;
  int status(int folder, const char* name, int flags, struct stat& status) override;
  ssize_t names(int folder, char* into, std::size_t size) override;
  int rename(int folder, const char* from, const char* to, unsigned flags) override;
  int link(int folder, const char* from, const char* to) override;
  int remove(int folder, const char* name) override;

  int calls = 0;
  int disturbed = 0;  // of them: failed, or done by half

private:
  bool fails();
  std::size_t part(std::size_t size);  // of what is to be read or written

  Before before;
  const Unknown unknown;
  bool halved = false;  // the call in hand
};

// A disk that knows what a power cut can leave of one folder: the content of a file only as it was
// flushed last, its names surely only as they were then. Of the changes of names since, each may be
// left alone, or be missing while all others are there.
class ModelDisk : public Disk {
public:
  // The folder's files have long been flushed, except for those whose content `is_unflushed`.
  ModelDisk(const std::filesystem::path& folder, Unknown unknown_in,
            const std::function<bool(const std::string& name)>& is_unflushed);

  int open(int folder, const char* name, int flags, unsigned mode) override;
  int flush(int file) override;
  int rename(int folder, const char* from, const char* to, unsigned flags) override;
  int link(int folder, const char* from, const char* to) override;
  int remove(int folder, const char* name) override;

  // What may be left after a cut behind each of the calls. `unflushed` stands for the content of a
  // file that was not flushed since it was made.
  std::set<std::map<std::string, std::string>> cuts;
  static constexpr char unflushed[] = "not flushed";

private:
  using Names = std::map<std::string, ino_t>;

  struct Change {
    std::string gone, made;  // names, either may be empty
    ino_t inode;
    bool flushed;
  };

  void changed(Change change);
  void add_cuts();
  void add_cut(const std::function<bool(std::size_t change)>& is_left);

  const Unknown unknown;
  Names before;  // the first change
  std::vector<Change> changes;
  std::map<ino_t, std::string> contents;
};
