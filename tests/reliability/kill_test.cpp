// No map is lost when the program is killed, or runs twice at the same time. VORA_KILLS sets how
// many times it is killed for each edition, VORA_SEED repeats a run of this test.
#include "tests/support/process.h"
#include "tests/support/promise.h"

#include <gtest/gtest.h>

#include <chrono>
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
    machine.writedata();
    const bool base = galaxies.edition == "v";
    machine.install(base ? "vora" : "voratarnfall",
                    base ? VersionParts{1, 2, 3, 4} : VersionParts{5, 6, 7, 8});
    folder = base ? machine.userfolder : machine.expansionfolder;
  }

  // How long a run takes that nobody disturbs.
  Clock::duration undisturbed() {
    galaxies.fill(folder);
    const auto start = Clock::now();
    EXPECT_EQ(runsilently(machine).said, "");
    EXPECT_EQ(unfinished(galaxies, tree(folder)), "");
    return Clock::now() - start;
  }

  Clock::duration uptoabout(Clock::duration time) {
    return Clock::duration(std::uniform_int_distribution<Clock::rep>(0, time.count())(random));
  }

  TestMachine machine;
  Galaxies galaxies;
  fs::path folder;
  const unsigned seed = static_cast<unsigned>(
      setting("VORA_SEED", static_cast<int>(Clock::now().time_since_epoch().count() & 0xFFFF)));
  std::mt19937 random{seed};
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Editions, Killed, testing::Values("v", "t"));

TEST_P(Killed, AtAnyMoment) {
  SCOPED_TRACE("VORA_SEED=" + std::to_string(seed));
  const auto time = undisturbed();
  const int kills = setting("VORA_KILLS", 100);
  for (int done = 0; done < kills;) {
    galaxies.fill(folder);
    for (bool again = true; again && done < kills;) {
      Process process(machine);
      std::this_thread::sleep_for(uptoabout(time));
      process.kill();
      again = process.wait().status == -1;
      done += again;
      ASSERT_EQ(broken(galaxies, tree(folder)), "");
    }
    EXPECT_EQ(runsilently(machine).said, "");
    ASSERT_EQ(unfinished(galaxies, tree(folder)), "");
  }
  std::cout << "kills: " << kills << "\n";
}

// Each leaves the maps alone that the other is converting; now and then one is killed.
TEST_P(Killed, TwoAtOnce) {
  SCOPED_TRACE("VORA_SEED=" + std::to_string(seed));
  const auto time = undisturbed();
  for (int round = 0; round < 20; ++round) {
    galaxies.fill(folder);
    Process one(machine);
    Process other(machine);
    std::this_thread::sleep_for(uptoabout(time));
    if (round % 2)
      other.kill();
    one.wait();
    other.wait();
    ASSERT_EQ(broken(galaxies, tree(folder)), "");
    EXPECT_EQ(runsilently(machine).said, "");
    ASSERT_EQ(unfinished(galaxies, tree(folder)), "");
  }
}
