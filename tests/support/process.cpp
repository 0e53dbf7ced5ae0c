// The program itself, run on a test machine as a process of its own.
#include "tests/support/process.h"

#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

Process::Process(const TestMachine& machine, const std::function<void()>& before) {
  static int started = 0;
  output = machine.program / ("said" + std::to_string(++started));
  process = ::fork();
  if (process < 0)
    throw std::runtime_error("cannot start a process");
  if (process > 0)
    return;
  const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  ::dup2(file, STDOUT_FILENO);
  ::dup2(file, STDERR_FILENO);
  ::setenv("WINEPREFIX", machine.prefix.c_str(), 1);
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    ::unsetenv(name);
  // Opened first: `before` may become a user who cannot go where the program lies.
  const int program = ::open(PROGRAM, O_RDONLY);
  std::string name = "vora-map-updater", argument = "/silent";
  char* const arguments[] = {name.data(), argument.data(), nullptr};
  if (::chdir(machine.data.c_str()) == 0) {
    if (before)
      before();
    ::fexecve(program, arguments, ::environ);
  }
  ::_exit(127);
}

void Process::kill() const { ::kill(process, SIGKILL); }

Process::Ended Process::wait() {
  int status = 0;
  struct rusage usage {};
  ::wait4(process, &status, 0, &usage);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), usage.ru_maxrss,
          read_file(output)};
}

Process::Ended run_silently(const TestMachine& machine, const std::function<void()>& before) {
  return Process(machine, before).wait();
}
