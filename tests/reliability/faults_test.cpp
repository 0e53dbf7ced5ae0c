// No map is lost when a call fails, when the power is cut, or when somebody else is at it,
// whichever call of the run it happens at.
#include "convert/conversion.h"
#include "discover/search.h"

#include "platform/letter_case.h"
#include "tests/reliability/disks.h"
#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>
#include <tuple>

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
  if (how != Saving::by_renaming) {
    const auto time = fs::last_write_time(map);
    std::fstream(map).seekp(how == Saving::appending ? 0 : -5, std::ios::end) << newend;
    if (how == Saving::keeping_time)
      fs::last_write_time(map, time);
  } else {
    const fs::path beside = map.parent_path().parent_path() / "saved";
    write_file(beside, text);
    fs::rename(beside, map);
  }
}

// Thousands of runs would take minutes on a real disk: their machine is made in memory.
struct InMemory {
  InMemory() {
    if (fs::is_directory("/dev/shm"))
      ::setenv("TMPDIR", "/dev/shm", 1);
    ::setenv("LC_ALL", "C", 1);
  }
};

// A folder of three maps: map 0 has no backup, map 1 an older one of other content (the expansion's
// in another letter case), map 2 one that holds just what it holds. The parameters are the
// edition's letter, what the file system does not know, and how many maps are replaced together.
class Faults : InMemory,
               public testing::TestWithParam<std::tuple<std::string, Unknown, std::size_t>> {
protected:
  static constexpr int count = 3;

  Faults() {
    machine.write_data();
    fs::create_directory(machine.drive_c / "empty");
  }

  static std::string map(int i) { return "map" + std::to_string(i) + ".galaxy"; }
  static bool is_map(const std::string& name) { return name.ends_with(".galaxy"); }
  static std::string old(int i) { return numbered(old_map, i); }
  std::string converted(int i) const {
    return numbered(edition == "v" ? converted_map : fixed_map, i);
  }

  // Makes the folder anew, with maps that were written before so many seconds.
  void fill(int age = 0) const {
    fs::remove_all(folder);
    for (int i = 0; i < count; ++i)
      write_file(folder / map(i), old(i));
    write_file(folder / (edition == "v" ? "map1.galold" : "map1.GALold"), older_backup);
    write_file(folder / "map2.galold", old(2));
    for (int i = 0; i < count; ++i)
      fs::last_write_time(folder / map(i),
                          fs::file_time_type::clock::now() - std::chrono::seconds(age));
  }

  static bool has_backup(const Tree& left, int i, const std::string& content) {
    const std::string name = "map" + std::to_string(i) + ".galold";
    return std::any_of(left.begin(), left.end(), [&](const auto& file) {
      return lowercase(file.first).starts_with(name) && file.second == content;
    });
  }

  // What is broken in what is left of the folder, empty when the promise holds: each map is there
  // under its own name, as it was or converted; as it was it is there under its own or a backup
  // name; every older backup is there under a backup name.
  std::string broken(const Tree& left) const {
    for (int i = 0; i < count; ++i) {
      const auto own = left.find(map(i));
      if (own == left.end() || (own->second != old(i) && own->second != converted(i)))
        return map(i) + " is gone or half converted";
      if (own->second != old(i) && !has_backup(left, i, old(i)))
        return map(i) + " is lost";
    }
    return has_backup(left, 1, older_backup) ? "" : "the older backup is lost";
  }

  // The same where nobody has flushed the maps but the backup that map 2 has: what a flush would
  // have saved of a map that keeps its name counts as saved.
  std::string broken_before_a_flush(Tree& left) const {
    if (left.at(map(2)) == ModelDisk::unflushed && !has_backup(left, 2, old(2)))
      return map(2) + " has lost the backup that was on the disk";
    for (int i = 0; i < count; ++i)
      if (left.at(map(i)) == ModelDisk::unflushed)
        left.at(map(i)) = old(i);
    return broken(left);
  }

  // The same at the end of a run that had no trouble: besides, every map is converted, and no
  // temporary file is left where stale ones can be told by their locks.
  std::string unfinished() const {
    const Tree left = tree(folder);
    if (!not_converted(left).empty())
      return not_converted(left)[0] + " is not converted";
    for (const auto& [name, content] : left)
      if (OpenMap::is_temporary(name) && !unknown.lock)
        return name + " stayed behind";
    return broken(left);
  }

  std::vector<std::string> not_converted(const Tree& left) const {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
      if (left.at(map(i)) != converted(i))
        names.push_back(map(i));
    return names;
  }

  // Finds and converts all maps on such a disk; what the user is reported.
  std::string convert(Disk& disk) {
    Program program(std::make_unique<BoundedFiles>(machine_of(machine), disk, most),
                    machine.system(""));
    program.form.edition = edition;
    program.form.pathlist[0] = "C:\\maps";
    program.form.pathlist[1] = "C:\\empty";
    program.run([&] {
      findgalaxies(program.form);
      fixgalaxies(program.form);
    });
    std::string reported;
    for (const std::string& message : program.screen.messages)
      reported += message + "\n";
    return reported;
  }

  // How many calls it takes.
  int convert_undisturbed() {
    WatchedDisk disk([](int) { return 0; }, unknown);
    convert(disk);
    return disk.calls;
  }

  // For each call of a run: fills the folder and converts it; `action` comes before that call.
  void before_every_call(int age, const std::function<void()>& action,
                         const std::function<void()>& check) {
    fill();
    const int calls = convert_undisturbed();
    for (int moment = 1; moment <= calls && !HasFatalFailure(); ++moment) {
      fill(age);
      bool came = false;
      const auto before = [&](int call) {
        if (call == moment)
          action();
        came |= call == moment;
        return 0;
      };
      WatchedDisk disk(before, unknown);
      convert(disk);
      SCOPED_TRACE(moment);
      if (came)
        check();
    }
  }

  TestMachine machine;
  const std::string edition = std::get<0>(GetParam());
  const Unknown unknown = std::get<1>(GetParam());
  const std::size_t most = std::get<2>(GetParam());
  const fs::path folder = machine.drive_c / "maps";
  const std::string older_backup = numbered(old_map, 1001);
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Editions, Faults,
    testing::Values(std::tuple("v", Unknown{}, 64), std::tuple("v", Unknown{}, 1),
                    std::tuple("v", Unknown{EPERM}, 64), std::tuple("v", Unknown{0, EINVAL}, 2),
                    std::tuple("v", Unknown{0, 0, EINVAL, ENOLCK}, 4),
                    std::tuple("v", Unknown{EPERM, EINVAL, EINVAL, ENOLCK}, 64),
                    std::tuple("t", Unknown{}, 1), std::tuple("t", Unknown{}, 64),
                    std::tuple("t", Unknown{EOPNOTSUPP, ENOSYS}, 2)));

// Whatever fails, every map that is not converted is reported with its name and the reason. A
// single failure leaves every other map converted, but for a folder that cannot be listed, which
// gives no maps, a template's failure, which ends the run, and a flush that fails, after which none
// of the batch is converted.
TEST_P(Faults, EveryCallFailsOnceOrFromThenOn) {
  const std::regex map_named_twice(R"(\\([^\\:\n]+\.galaxy): [^\r\n]*\1)");
  int injected = 0, unread_templates = 0;
  fill();
  const int calls = convert_undisturbed();
  for (const auto& [error, lasting] :
       {std::pair(EIO, false), std::pair(ENOSPC, false), std::pair(EACCES, false),
        std::pair(WatchedDisk::half, false), std::pair(EIO, true), std::pair(ENOSPC, true)}) {
    for (int fault = 1; fault <= calls; ++fault) {
      fill();
      WatchedDisk disk(
          [&](int call) { return call == fault || (lasting && call > fault) ? error : 0; },
          unknown);
      const std::string reported = convert(disk);
      injected += lasting ? disk.disturbed > 0 : disk.disturbed;
      const Tree left = tree(folder);
      SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(fault) + ": " + reported);
      ASSERT_EQ(broken(left), "");
      ASSERT_FALSE(std::regex_search(reported, map_named_twice));
      const auto skipped = not_converted(left);
      const bool ended = reported.find("struct") != reported.npos;
      const bool unread = reported.find("it cannot be read: ") != reported.npos;
      ASSERT_FALSE(unread && reported.find("move this one elsewhere") != reported.npos);
      unread_templates += unread;
      const bool all = lasting || ended || reported.find("could not be searched") != reported.npos;
      const bool unconfirmed = disk.flushes_failed > 0;
      ASSERT_LE(skipped.size(),
                all || unconfirmed ? count : std::size_t{error != WatchedDisk::half});
      ASSERT_GE(skipped.size(), !unconfirmed ? 0 : most < count ? 1 : count);
      for (const std::string& name : skipped) {
        ASSERT_TRUE(all || reported.find(name) != reported.npos) << name;
        ASSERT_TRUE(ended || reported.find(std::strerror(error)) != reported.npos);
      }
      convert_undisturbed();
      ASSERT_EQ(unfinished(), "");
    }
  }
  EXPECT_GT(unread_templates, 0);
  std::cout << "injected failures: " << injected << "\n";
}

// Who saved the maps last has not flushed them. One that has lost its name must be whole under its
// backup name. The flush of no file fails, or that of any one: then nothing that was flushed
// together is believed.
TEST_P(Faults, ThePowerIsCutAfterEveryChange) {
  int failing = 0;
  for (bool failed = true; failed; ++failing) {
    fill();
    ModelDisk disk(folder, unknown, is_map);
    disk.failing = failing;
    convert(disk);
    failed = disk.flushes >= failing;
    if (failing == 0) {
      ASSERT_EQ(unfinished(), "");
      ASSERT_TRUE(disk.cuts.contains(tree(folder)));
      std::cout << "power cuts: " << disk.cuts.size() << "\n";
    }
    for (Tree left : disk.cuts) {
      ASSERT_EQ(broken_before_a_flush(left), "") << failing;
      if (failing > 0)
        continue;
      const bool copied = unknown.link != 0;
      ASSERT_FALSE(copied && has_backup(left, 0, ModelDisk::unflushed));
      fs::remove_all(folder);
      for (const auto& [name, content] : left)
        write_file(folder / name, content);
      convert_undisturbed();
      ASSERT_EQ(unfinished(), "");
    }
  }
  EXPECT_GT(failing, count + 1);
}

// The other run may clear up what it takes for a stale temporary, and may replace every map.
TEST_P(Faults, AnotherRunComesInBeforeEveryCall) {
  before_every_call(0, [&] { convert_undisturbed(); }, [&] { ASSERT_EQ(unfinished(), ""); });
}

// What somebody saves while a map is converted is in the map or in its backup afterwards. Only
// where the map's file does not become the backup, there are calls left behind the last look at the
// map: giving its successor the permissions and the name; and the look itself, which comes after
// one at the backup, where what is saved has the time that the map had before, as a coarse clock
// gives it to a map that was just written.
TEST_P(Faults, AMapIsSavedBeforeEveryCall) {
  constexpr int calls_after_last_look = 2, calls_of_last_look = 2;
  constexpr int settled = 3600, unsettled = 1;  // whether the map's time alone tells of a change
  for (const auto& [how, age] :
       {std::pair(Saving::in_place, settled), std::pair(Saving::keeping_time, settled),
        std::pair(Saving::by_renaming, settled), std::pair(Saving::appending, settled),
        std::pair(Saving::keeping_time, unsettled), std::pair(Saving::by_renaming, unsettled),
        std::pair(Saving::appending, unsettled)}) {
    for (int i = 0; i < count; ++i) {
      const std::string theirs = saved(old(i), how);
      int lost = 0;
      before_every_call(
          age, [&] { save(folder / map(i), theirs, how); },
          [&] {
            const Tree left = tree(folder);
            const std::string own = left.at(map(i));
            ASSERT_TRUE(own == theirs || own == converted(i) || own == saved(converted(i), how));
            lost += own == converted(i) && !has_backup(left, i, theirs);
          });
      const bool has_copy = unknown.link != 0 || i == 2;
      const int unseen = how == Saving::keeping_time ? calls_of_last_look : 0;
      const int allowed =
          how != Saving::by_renaming && !has_copy ? 0 : calls_after_last_look + unseen;
      EXPECT_LE(lost, allowed) << static_cast<int>(how) << " " << age << " " << i;
    }
  }
}

// Whoever removes a map or its backup loses nothing else by the run.
TEST_P(Faults, AFileIsRemovedBeforeEveryCall) {
  for (const std::string name : {"map0.galaxy", "map0.galold", "map1.GALold", "map2.galold"}) {
    const int removed = name[3] - '0';
    before_every_call(
        0, [&] { fs::remove(folder / name); },
        [&] {
          Tree left = tree(folder);
          if (!left.contains(map(removed)) || !has_backup(left, removed, old(removed)))
            left[map(removed)] = old(removed);
          if (name == "map1.GALold")
            left[name] = older_backup;
          ASSERT_EQ(broken(left), "") << name;
        });
  }
}

// Where there are no locks, the other run may take the name that this one was about to give its
// backup, or may convert a map whose backup this one has made, and then cannot confirm.
TEST_P(Faults, ACallFailsWhileAnotherRunComesIn) {
  constexpr int before = 2, after_a_flush = 12;  // calls
  fill();
  const int calls = convert_undisturbed();
  for (int fault = 1; fault <= calls; ++fault)
    for (int moment = std::max(1, fault - before); moment <= std::min(calls, fault + after_a_flush);
         ++moment) {
      fill();
      WatchedDisk disk(
          [&](int call) {
            if (call == moment)
              convert_undisturbed();
            return call == fault ? EIO : 0;
          },
          unknown);
      convert(disk);
      ASSERT_EQ(broken(tree(folder)), "") << fault << " " << moment;
      if (moment >= fault && disk.flushes_failed == 0)
        break;
    }
}

// Somebody's file that is renamed over a backup is lost only where it comes between the last stat
// of the name, or the empty file that takes it, and the rename.
TEST_P(Faults, ABackupIsReplacedBeforeEveryCall) {
  for (const std::string name : {"map0.galold", "map1.GALold", "map2.galold"}) {
    const int i = name[3] - '0';
    int lost = 0;
    before_every_call(
        0,
        [&] {
          write_file(machine.drive_c / "theirs", "theirs");
          fs::rename(machine.drive_c / "theirs", folder / name);
        },
        [&] {
          Tree left = tree(folder);
          lost += !has_backup(left, i, "theirs");
          left[name + ", theirs"] = old(i);
          left["map1.galold, theirs"] = older_backup;
          ASSERT_EQ(broken(left), "");
        });
    const bool stats_first = name.starts_with("map2") || unknown.rename_no_replace;
    const int in_between = unknown.link ? 2 : 1;  // calls: a copy gets its permissions first
    EXPECT_LE(lost, stats_first ? in_between : 0) << name;
  }
}

// Nobody's file is overwritten that has got one of the backups' names in between.
TEST_P(Faults, ABackupsNameIsTakenBeforeEveryCall) {
  for (const std::string name : {"map0.galold", "map1.galold2", "map1.GALold2"}) {
    int lost = 0;
    bool taken = false;
    before_every_call(
        0,
        [&] {
          taken = !fs::exists(folder / name);
          if (taken)
            write_file(folder / name, "theirs");
        },
        [&] {
          const Tree left = tree(folder);
          ASSERT_EQ(broken(left), "");
          lost += taken && !has_backup(left, name[3] - '0', "theirs");
        });
    EXPECT_EQ(lost, 0) << name;
  }
}
