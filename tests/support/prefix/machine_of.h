// The folder that a test's machine is kept in, for tests of such machines.
#pragma once

#include "platform/prefix/machine.h"
#include "tests/support/test_machine.h"

#include <stdexcept>

// The program may search a whole drive, so that each must lead into the test's own folder.
inline Machine machine_of(const TestMachine& machine) {
  namespace fs = std::filesystem;
  const fs::path root = fs::canonical(machine.prefix.parent_path());
  for (const auto& drive : fs::directory_iterator(machine.prefix / "dosdevices"))
    if (fs::exists(drive) && fs::relative(drive, root).string().starts_with(".."))
      throw std::logic_error(drive.path().string() + " leads out of the test's folder");
  return {machine.prefix.string(), machine.data.string(), machine.program.string()};
}
