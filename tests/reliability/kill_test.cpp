// No map is lost when the program is killed, when it runs twice at the same time, or when the power
// is cut. VORA_KILLS sets how many times it is killed for each edition, VORA_CUTS how often the
// power is cut for each edition and file system, VORA_SEED repeats a run of this test.
#include "tests/support/process.h"
#include "tests/support/promise.h"
#include "tests/support/real_disk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iostream>
#include <random>
#include <thread>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

int setting(const char* name, int otherwise) {
  const char* text = std::getenv(name);
  return text ? std::atoi(text) : otherwise;
}

class Killed : public testing::TestWithParam<const char*> {
protected:
  Killed() {
    galaxies.edition = GetParam();
    galaxies.count = 15;
    machine.write_data();
    const bool base = galaxies.edition == "v";
    machine.install(base ? "vora" : "voratarnfall",
                    base ? VersionParts{1, 2, 3, 4} : VersionParts{5, 6, 7, 8});
    folder = base ? machine.user_folder : machine.expansion_folder;
    measure();
  }

  // Looks at a few runs that nobody disturbs.
  void measure() {
    Clock::duration times[5];
    for (auto& time : times) {
      galaxies.fill(folder);
      const auto start = Clock::now();
      EXPECT_EQ(run_silently(machine).said, "");
      time = Clock::now() - start;
    }
    std::nth_element(times, times + 2, times + 5);
    median = times[2];
    whole = tree(folder);
    EXPECT_EQ(unfinished(galaxies, whole), "");
  }

  // A moment of a run: up to the median of how long it takes when nobody disturbs it.
  Clock::duration any_moment() {
    return Clock::duration(std::uniform_int_distribution<Clock::rep>(0, median.count())(random));
  }

  // Whether a run was ended in the middle of its conversions.
  bool is_midway(const Tree& left) const {
    int converted = 0;
    for (int i = 0; i < galaxies.count; ++i)
      converted += left.at(galaxies.name(i) + ".galaxy") == galaxies.converted(i);
    return converted > 0 && converted < galaxies.count;
  }

  // Lets a run come to its end, which must leave what undisturbed ones do.
  void finish() {
    EXPECT_EQ(run_silently(machine).said, "");
    const Tree left = tree(folder);
    ASSERT_EQ(unfinished(galaxies, left), "");
    ASSERT_EQ(left, whole);
  }

  TestMachine machine;
  Galaxies galaxies;
  fs::path folder;
  Clock::duration median;
  Tree whole;  // what undisturbed runs leave
  const unsigned seed = static_cast<unsigned>(
      setting("VORA_SEED", static_cast<int>(Clock::now().time_since_epoch().count() & 0xFFFF)));
  std::mt19937 random{seed};
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Editions, Killed, testing::Values("v", "t"));

TEST_P(Killed, AtAnyMoment) {
  SCOPED_TRACE("VORA_SEED=" + std::to_string(seed));
  const int kills = setting("VORA_KILLS", 100);
  int midway = 0;
  for (int done = 0; done < kills;) {
    galaxies.fill(folder);
    for (bool again = true; again && done < kills;) {
      Process process(machine);
      std::this_thread::sleep_for(any_moment());
      process.kill();
      again = process.wait().status == -SIGKILL;
      done += again;
      const Tree left = tree(folder);
      ASSERT_EQ(broken(galaxies, left), "");
      midway += again && is_midway(left);
    }
    ASSERT_NO_FATAL_FAILURE(finish());
  }
  std::cout << "kills: " << kills << ", with some maps converted and some not: " << midway << "\n";
  EXPECT_GT(midway, 0);
}

TEST_P(Killed, OrThePowerIsCutOnARealDisk) {
  SCOPED_TRACE("VORA_SEED=" + std::to_string(seed));
  int disks = 0;
  for (const char* kind : {"ext4", "xfs"}) {
    const RealDisk disk(kind, folder.parent_path());
    if (!disk)
      continue;
    ++disks;
    measure();
    const int cuts = setting("VORA_CUTS", 20);
    int midway = 0;
    for (int done = 0; done < cuts; ++done) {
      galaxies.fill(folder);
      disk.flush();
      Process process(machine);
      std::this_thread::sleep_for(any_moment());
      ASSERT_TRUE(disk.cut_power());
      process.kill();
      process.wait();
      ASSERT_TRUE(disk.restart());
      const Tree left = tree(folder);
      ASSERT_EQ(broken(galaxies, left), "") << kind;
      midway += is_midway(left);
      ASSERT_NO_FATAL_FAILURE(finish());
    }
    std::cout << "power cuts, " << kind << ": " << cuts
              << ", with some maps converted and some not: " << midway << "\n";
    EXPECT_GT(midway, 0) << kind;
  }
  if (disks == 0)
    GTEST_SKIP() << "no file system of its own can be made and mounted here";
}

// Each leaves the maps alone that the other is converting; now and then one is killed.
TEST_P(Killed, TwoAtOnce) {
  SCOPED_TRACE("VORA_SEED=" + std::to_string(seed));
  for (int round = 0; round < 20; ++round) {
    galaxies.fill(folder);
    Process one(machine);
    Process other(machine);
    std::this_thread::sleep_for(any_moment());
    if (round % 2)
      other.kill();
    one.wait();
    other.wait();
    ASSERT_EQ(broken(galaxies, tree(folder)), "");
    ASSERT_NO_FATAL_FAILURE(finish());
  }
}
