// What a run leaves and shows does not depend on how many maps it replaces together.
#include "convert/conversion.h"
#include "tests/reliability/disks.h"
#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

namespace fs = std::filesystem;

namespace {

class Batches : public testing::Test {
protected:
  Batches() { machine.write_data(); }

  // One of the maps that may be there, in a few folders; some differ in letter case alone.
  fs::path some_map() {
    const char* const stems[] = {"a", "A", "b", "c", "d", "e"};
    return fs::path(pick(2) ? "one" : "two") / (stems[pick(6)] + std::string(".galaxy"));
  }

  int pick(int below) { return static_cast<int>(chance() % static_cast<unsigned>(below)); }

  // Makes one file as a player may have it: a map of any kind, a hard link to one, or something
  // under a companion's name.
  void make_something() {
    const fs::path map = folder / some_map();
    if (fs::exists(map))
      return;
    const int content = pick(1000);
    switch (pick(9)) {
    case 0:
      return write_file(map, "only one line");
    case 1:
      return write_file(map, converted_map);
    case 2:
      return fs::create_hard_link(some_file(), map);
    case 3:
      return write_file(fs::path(map).replace_extension("GALold"), numbered(old_map, content));
    case 4:
      fs::create_directories(fs::path(map).replace_extension("galfix"));
      return;
    case 5:
      write_file(fs::path(map).replace_extension("galold"), numbered(old_map, content));
      [[fallthrough]];
    default:
      return write_file(map, numbered(old_map, content));
    }
  }

  fs::path some_file() {
    const Tree files = tree(folder);
    return folder / std::next(files.begin(), pick(static_cast<int>(files.size())))->first;
  }

  static void find(Program& program, const std::string& map) {
    auto& list = program.form.foundlist;
    list.insert(list.end() - 1, "C:\\maps\\" + map);
  }

  void fill(unsigned seed) {
    chance.seed(seed);
    fs::remove_all(folder);
    for (const char* name : {"one", "two"})
      fs::create_directories(folder / name);
    write_file(folder / "none.galaxy", numbered(old_map, 0));
    for (int i = 0; i < 12; ++i)
      make_something();
    if (pick(8) == 0)
      write_file(folder / some_map(), "MAP\r\nversion 2\r\n");  // it has no template
  }

  // Converts what `fill` makes, in batches of at most `most` maps; returns all that can be seen of
  // it.
  std::vector<std::string> convert(unsigned seed, std::size_t most) {
    fill(seed);
    WatchedDisk no_locks([](int) { return 0; }, Unknown{.lease = 0, .lock = ENOLCK});
    Disk& disk = pick(2) ? no_locks : system_disk();  // as some network file systems are, or not
    Program program(std::make_unique<BoundedFiles>(machine_of(machine), disk, most),
                    machine.system(""));
    program.form.edition = pick(2) ? "v" : "t";
    program.form.debugmode = pick(4) == 0;
    for (int i = 0; i < 20; ++i) {
      const fs::path map = some_map();
      find(program, map.parent_path().string() + "\\" + map.filename().string());
    }
    const int status = program.run([&] { fixgalaxies(program.form); });
    std::vector<std::string> seen = program.screen.messages;
    for (const auto& [name, content] : tree(folder))
      seen.push_back(name + ": " + content);
    seen.insert(seen.end(),
                {program.form.Text2.text(), program.form.Label4.text(), std::to_string(status)});
    return seen;
  }

  TestMachine machine;
  const fs::path folder = machine.drive_c / "maps";
  std::mt19937 chance;
};

// A disk without room for one map's result at first.
class FullAtFirst : public Disk {
public:
  int rename(int folder, const char* from, const char* to, unsigned flags) override {
    errno = ENOSPC;
    return to == std::string("a.galaxy") && !std::exchange(failed, true)
               ? -1
               : Disk::rename(folder, from, to, flags);
  }

private:
  bool failed = false;
};

}  // namespace

// A map that needs a template that is not there ends the run while another waits to be tried again.
TEST_F(Batches, WhatWaitsToBeTriedAgainIsReportedWhenTheRunEnds) {
  for (const bool ends : {false, true}) {
    FullAtFirst disk;
    Program program(std::make_unique<BoundedFiles>(machine_of(machine), disk, 64),
                    machine.system(""));
    program.form.edition = "v";
    for (const std::string name : {"a.galaxy", "b.galaxy", "c.galaxy"}) {
      write_file(folder / name, ends && name[0] == 'c' ? "MAP\r\nversion 2\r\n" : old_map);
      find(program, name);
    }
    program.run([&] { fixgalaxies(program.form); });
    EXPECT_EQ(program.form.Text2.text(),
              ends ? "b.galaxy\r\n" : "b.galaxy\r\nc.galaxy\r\na.galaxy\r\n");
    EXPECT_EQ(read_file(folder / "a.galaxy"), ends ? old_map : converted_map);
    EXPECT_EQ(program.screen.messages.size(), ends ? 2 : 0);
    if (ends) {
      EXPECT_TRUE(program.screen.messages[0].ends_with(
          "C:\\maps\\a.galaxy: cannot write it: No space left on device"));
      EXPECT_NE(program.screen.messages[1].find("C:\\maps\\c.galaxy: "), std::string::npos);
    }
    fs::remove_all(folder);
  }
}

TEST_F(Batches, LeaveWhatMapsLeaveThatAreReplacedOneByOne) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    const auto expected = convert(seed, 1);
    for (const std::size_t most : {2u, 3u, 64u})
      ASSERT_EQ(convert(seed, most), expected) << seed << " " << most;
  }
}
