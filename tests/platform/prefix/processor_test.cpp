// The processor's variables, from what the kernel says of it.
#include "platform/prefix/processor.h"

#include "platform/prefix/prefix_system.h"
#include "tests/support/prefix/machine_of.h"

#include <gtest/gtest.h>

namespace {

std::string cpuinfo(const char* vendor, int family, int model, int stepping) {
  return "processor\t: 0\nvendor_id\t: " + std::string(vendor) +
         "\ncpu family\t: " + std::to_string(family) + "\nmodel\t\t: " + std::to_string(model) +
         "\nmodel name\t: Some 7: processor\nstepping\t: " + std::to_string(stepping) +
         "\nflags\t\t: fpu\n\nprocessor\t: 1\nvendor_id\t: other\n";
}

}  // namespace

TEST(Processor, IsDescribedAsByWine) {
  const struct {
    std::string cpuinfo;
    bool is_64bit;
    const char *architecture, *identifier, *level, *revision;
  } cases[] = {
      {cpuinfo("AuthenticAMD", 26, 2, 1), true, "AMD64",
       "AMD64 Family 26 Model 2 Stepping 1, AuthenticAMD", "26", "0201"},
      {cpuinfo("GenuineIntel", 6, 142, 10), true, "AMD64",
       "Intel64 Family 6 Model 142 Stepping 10, GenuineIntel", "6", "8e0a"},
      {cpuinfo("GenuineIntel", 6, 142, 10), false, "x86",
       "x86 Family 6 Model 142 Stepping 10, GenuineIntel", "6", "8e0a"},
      {"processor\t: 0\nCPU architecture: 8\n", true, "", "", "", ""},
      {"", true, "", "", "", ""},
  };
  for (const auto& c : cases) {
    const auto value = [&](const char* name) {
      return processor_variable(name, c.is_64bit, c.cpuinfo, 12).value_or("");
    };
    EXPECT_EQ(value("processor_architecture"), c.architecture);
    EXPECT_EQ(value("processor_identifier"), c.identifier);
    EXPECT_EQ(value("processor_level"), c.level);
    EXPECT_EQ(value("processor_revision"), c.revision);
    EXPECT_EQ(value("number_of_processors"), "12");
    EXPECT_EQ(value("os"), "Windows_NT");
    EXPECT_EQ(value("processor"), "");
  }
}

TEST(Processor, IsTheMachinesOwnWhereNeitherProcessNorRegistrySaysOne) {
  TestMachine machine;
  const auto value = [&](const char* name) {
    return PrefixSystem(machine_of(machine), "").environment(name);
  };
  EXPECT_EQ(value("OS"), "Windows_NT");
  EXPECT_EQ(value("Processor_Level"), processor_variable("processor_level", true).value_or(""));
  EXPECT_EQ(value("PROCESSOR_IDENTIFIER"), "");  // as in the registry
  setenv("OS", "", 1);
  EXPECT_EQ(value("OS"), "");
  setenv("OS", "mine", 1);
  EXPECT_EQ(value("OS"), "mine");
  unsetenv("OS");
}
