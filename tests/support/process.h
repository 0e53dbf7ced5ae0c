// The program itself, run on a test machine as a process of its own.
#pragma once

#include "tests/support/test_machine.h"

#include <functional>
#include <string>

#include <sys/types.h>

class Process {
public:
  struct Ended {
    int status;      // the exit status, or minus the signal that ended the process
    long kilobytes;  // of memory at most
    std::string said;
  };

  // Starts "/silent". `before` runs in the new process before the program does.
  explicit Process(const TestMachine& machine, const std::function<void()>& before = {});

  void kill() const;
  Ended wait();

private:
  std::filesystem::path output;
  pid_t process;
};

// Starts "/silent" and waits for its end.
Process::Ended run_silently(const TestMachine& machine, const std::function<void()>& before = {});
