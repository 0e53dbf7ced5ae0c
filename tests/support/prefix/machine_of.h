// The folder that a test's machine is kept in, for tests of such machines.
#pragma once

#include "platform/prefix/machine.h"
#include "tests/support/test_machine.h"

inline Machine machine_of(const TestMachine& machine) {
  return {machine.prefix.string(), machine.data.string(), machine.program.string()};
}
