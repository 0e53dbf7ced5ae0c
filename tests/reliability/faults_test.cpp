// No map is lost when a call fails, when the power is cut, or when somebody else is at it,
// whichever call of the run it happens at.
#include "convert/conversion.h"
#include "discover/search.h"

#include "platform/prefix/prefix_files.h"
#include "tests/support/disks.h"
#include "tests/support/prefix/machine_of.h"
#include "tests/support/promise.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>

namespace fs = std::filesystem;

namespace {

// How somebody saves a map: with another last line in the place of the old one, which leaves the
// size as it was, and may leave the time, or with one line more.
enum class Saving { in_place, keeping_time, by_renaming, appending };
constexpr std::string_view newend = "END\r\n";

std::string saved(const std::string& map, Saving how) {
  const std::size_t kept = how == Saving::appending ? map.size() : map.size() - newend.size();
  return map.substr(0, kept) + std::string(newend);
}

void save(const fs::path& map, const std::string& text, Saving how) {
  if (how == Saving::appending) {
    std::ofstream(map, std::ios::app) << newend;
  } else if (how != Saving::by_renaming) {
    const auto time = fs::last_write_time(map);
    std::fstream(map).seekp(-5, std::ios::end) << newend;
    if (how == Saving::keeping_time)
      fs::last_write_time(map, time);
  } else {
    const fs::path beside = map.parent_path().parent_path() / "saved";
    write_file(beside, text);
    fs::rename(beside, map);
  }
}

// The edition's letter, and what the file system does not know.
class Faults : InMemory, public testing::TestWithParam<std::pair<const char*, Unknown>> {
protected:
  Faults() {
    machine.write_data();
    fs::create_directory(machine.drive_c / "empty");
    galaxies.edition = GetParam().first;
    galaxies.fill(folder);
    ::setenv("LC_ALL", "C", 1);
  }

  // Finds and converts all maps on such a disk; what the user is told.
  std::string convert(Disk& disk) {
    Program program(std::make_unique<PrefixFiles>(machine_of(machine), disk), machine.system(""));
    program.form.edition = galaxies.edition;
    program.form.pathlist[0] = "C:\\maps";
    program.form.pathlist[1] = "C:\\empty";
    program.run([&] {
      findgalaxies(program.form);
      fixgalaxies(program.form);
    });
    std::string told;
    for (const std::string& message : program.screen.messages)
      told += message + "\n";
    return told;
  }

  // How many calls it takes.
  int convert_undisturbed() {
    WatchedDisk disk([](int) { return 0; }, unknown);
    convert(disk);
    return disk.calls;
  }

  std::vector<std::string> not_converted(const Tree& left) const {
    std::vector<std::string> names;
    for (int i = 0; i < galaxies.count; ++i)
      if (left.at(galaxies.name(i) + ".galaxy") == galaxies.old(i))
        names.push_back(galaxies.name(i) + ".galaxy");
    return names;
  }

  TestMachine machine;
  Galaxies galaxies;
  const Unknown unknown = GetParam().second;
  const fs::path folder = machine.drive_c / "maps";
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Editions, Faults,
                         testing::Values(std::pair("v", Unknown{}), std::pair("v", Unknown{EPERM}),
                                         std::pair("v", Unknown{0, EINVAL}),
                                         std::pair("t", Unknown{}),
                                         std::pair("t", Unknown{EOPNOTSUPP, ENOSYS})));

// Whatever fails, every map that is not converted is reported with its name and the reason. A
// single failure leaves every other map converted, but for a folder that cannot be listed, which
// gives no maps, and a template's failure, which ends the run.
TEST_P(Faults, EveryCallFailsOnceOrFromThenOn) {
  int injected = 0;
  const int calls = convert_undisturbed();
  for (const auto& [error, lasting] :
       {std::pair(EIO, false), std::pair(ENOSPC, false), std::pair(EACCES, false),
        std::pair(WatchedDisk::half, false), std::pair(EIO, true), std::pair(ENOSPC, true)}) {
    for (int fault = 1; fault <= calls; ++fault) {
      galaxies.fill(folder);
      WatchedDisk disk(
          [&](int call) { return call == fault || (lasting && call > fault) ? error : 0; },
          unknown);
      const std::string told = convert(disk);
      injected += lasting ? disk.disturbed > 0 : disk.disturbed;
      const Tree left = tree(folder);
      SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(fault) + ": " + told);
      ASSERT_EQ(broken(galaxies, left), "");
      const auto skipped = not_converted(left);
      const bool ended = told.find("struct") != told.npos;
      const bool not_listed = told.find("could not be searched") != told.npos;
      const std::size_t most = ended || not_listed || lasting ? 3
                               : error == WatchedDisk::half   ? 0
                                                              : 1;
      ASSERT_LE(skipped.size(), most);
      for (const std::string& name : skipped) {
        ASSERT_TRUE(lasting || ended || not_listed || told.find(name) != told.npos) << name;
        ASSERT_TRUE(ended || told.find(std::strerror(error)) != told.npos);
      }
      convert_undisturbed();
      ASSERT_EQ(unfinished(galaxies, tree(folder)), "");
    }
  }
  std::cout << "injected failures: " << injected << "\n";
}

// Who saved the maps last has not flushed them, nor their copies. A map that keeps its name has
// what its flushing would have saved; one that has lost it must be whole under its backup name.
TEST_P(Faults, ThePowerIsCutAfterEveryChange) {
  ModelDisk disk(folder, unknown, [&](const std::string& name) {
    return read_file(folder / name) != galaxies.backup(1);
  });
  convert(disk);
  ASSERT_EQ(unfinished(galaxies, tree(folder)), "");
  ASSERT_TRUE(disk.cuts.contains(tree(folder)));
  for (Tree left : disk.cuts) {
    for (int i = 0; i < galaxies.count; ++i)
      if (left.at(galaxies.name(i) + ".galaxy") == ModelDisk::unflushed)
        left.at(galaxies.name(i) + ".galaxy") = galaxies.old(i);
    ASSERT_EQ(broken(galaxies, left), "");
    fs::remove_all(folder);
    for (const auto& [name, content] : left)
      write_file(folder / name, content);
    convert_undisturbed();
    ASSERT_EQ(unfinished(galaxies, tree(folder)), "");
  }
  std::cout << "power cuts: " << disk.cuts.size() << "\n";
}

// The other run may clear up what it takes for a leftover, and may replace every map.
TEST_P(Faults, AnotherRunComesInBeforeEveryCall) {
  const int calls = convert_undisturbed();
  for (int moment = 1; moment <= calls; ++moment) {
    galaxies.fill(folder);
    WatchedDisk disk(
        [&](int call) {
          if (call == moment)
            convert_undisturbed();
          return 0;
        },
        unknown);
    convert(disk);
    SCOPED_TRACE(moment);
    ASSERT_EQ(unfinished(galaxies, tree(folder)), "");
  }
}

// What somebody saves while a map is converted is in the map or in its backup afterwards. Only
// where the map's file does not become the backup, there are calls left behind the last look at the
// map: giving its successor the permissions and the name; and the look itself, where what is saved
// has the time that the map had before, as a coarse clock gives it to a map that was just written.
TEST_P(Faults, AMapIsSavedBeforeEveryCall) {
  constexpr int calls_after_last_look = 2, calls_of_last_look = 1;
  const int calls = convert_undisturbed();
  const struct {
    Saving how;
    bool old;  // enough for the map's time stamp to tell by itself
  } cases[] = {{Saving::in_place, true},      {Saving::keeping_time, true},
               {Saving::by_renaming, true},   {Saving::appending, true},
               {Saving::keeping_time, false}, {Saving::by_renaming, false},
               {Saving::appending, false}};
  for (int i = 0; i < static_cast<int>(std::size(cases)) * galaxies.count; ++i) {
    const int number = i % galaxies.count;
    const auto [how, old] = cases[i / galaxies.count];
    const auto age = std::chrono::seconds(old ? 3600 : 1);
    const fs::path map = folder / (galaxies.name(number) + ".galaxy");
    const std::string theirs = saved(galaxies.old(number), how);
    const std::string converted = galaxies.converted(number);
    int lost = 0;
    for (int moment = 1; moment <= calls; ++moment) {
      galaxies.fill(folder);
      fs::last_write_time(map, fs::file_time_type::clock::now() - age);
      WatchedDisk disk(
          [&](int call) {
            if (call == moment)
              save(map, theirs, how);
            return 0;
          },
          unknown);
      convert(disk);
      if (disk.calls < moment)
        break;
      SCOPED_TRACE(moment);
      const Tree left = tree(folder);
      const std::string own = left.at(map.filename());
      ASSERT_TRUE(own == theirs || own == converted || own == saved(converted, how)) << own;
      lost += own == converted && !has_backup(left, galaxies.name(number), theirs);
    }
    const bool has_copy = unknown.link != 0 || galaxies.has_equal_backup(number);
    const int unseen = how == Saving::keeping_time ? calls_of_last_look : 0;
    const int allowed =
        how != Saving::by_renaming && !has_copy ? 0 : calls_after_last_look + unseen;
    EXPECT_LE(lost, allowed) << i;
  }
}

// Nobody's file is overwritten that has got one of the backups' names in between. Where the file
// system knows no renaming that replaces nothing, one call is left behind the look at the name.
TEST_P(Faults, ABackupsNameIsTakenBeforeEveryCall) {
  const int calls = convert_undisturbed();
  for (const char* name : {"map0.galold", "map1.galold2", "map1.GALold2"}) {
    int lost = 0;
    for (int moment = 1; moment <= calls; ++moment) {
      galaxies.fill(folder);
      bool taken = false;
      WatchedDisk disk(
          [&](int call) {
            taken |= call == moment && !fs::exists(folder / name);
            if (call == moment && taken)
              write_file(folder / name, "theirs");
            return 0;
          },
          unknown);
      convert(disk);
      SCOPED_TRACE(moment);
      const Tree left = tree(folder);
      ASSERT_EQ(broken(galaxies, left), "");
      lost += taken && !has_backup(left, std::string(name).substr(0, 4), "theirs");
    }
    EXPECT_LE(lost, unknown.rename_no_replace ? 1 : 0) << name;
  }
}
