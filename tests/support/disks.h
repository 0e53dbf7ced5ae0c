// Disks for tests, below the program's files.
#pragma once

#include "platform/prefix/disk.h"
#include "tests/support/testmachine.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// A disk on which something happens before one of the calls. It flushes nothing: no test that stays
// in one process needs that.
class WatchedDisk : public Disk {
public:
  // Told the number of each call, from 1: 0 lets it through, `half` too but for half of what it is
  // to read or write, anything else is the error that it fails with.
  using Before = std::function<int(int call)>;
  static constexpr int half = -1;

  explicit WatchedDisk(
      Before whattodo = [](int) { return 0; }, bool knowslinks = true)
      : before(std::move(whattodo)), links(knowslinks) {}

  int open(int folder, const char* name, int flags, unsigned mode) override;
  int close(int file) override;
  ssize_t read(int file, char* into, std::size_t size) override;
  ssize_t write(int file, const char* from, std::size_t size) override;
  int flush(int file) override;
  int lock(int file) override;
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
  bool links;
  bool halved = false;  // the call in hand
};

// A disk that knows what a power cut would leave of one folder: changes of names are kept in their
// order, the content of a file only as it was flushed last.
class ModelDisk : public Disk {
public:
  ModelDisk(const std::filesystem::path& folder, bool knowslinks);

  int open(int folder, const char* name, int flags, unsigned mode) override;
  int flush(int file) override;
  int rename(int folder, const char* from, const char* to, unsigned flags) override;
  int link(int folder, const char* from, const char* to) override;
  int remove(int folder, const char* name) override;

  // What is left after a cut behind each of the changes; a file never flushed is empty.
  std::vector<std::map<std::string, std::string>> cuts;

private:
  void changed();

  bool links;
  std::map<std::string, ino_t> names;
  std::map<ino_t, std::string> contents;
};
