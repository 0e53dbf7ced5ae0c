// The process: how it is set up before anything else happens, the signals that ask it to end, and
// the libraries that it loads while it runs.
#include "platform/prefix/process.h"

#include <csignal>
#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int interrupts[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t was_interrupted = 0;

// The second signal ends the process as if it were not handled.
void note_interrupt(int signal) {
  if (was_interrupted) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
  was_interrupted = 1;
}

void open_standard_descriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (::fcntl(descriptor, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != descriptor)
      std::_Exit(EXIT_FAILURE);
}

void keep_freed_memory() {
  constexpr int max_kept = 4 << 20;  // bytes of one text
  mallopt(M_MMAP_THRESHOLD, max_kept);
  mallopt(M_TRIM_THRESHOLD, 2 * max_kept);
}

}  // namespace

void set_up_process() {
  open_standard_descriptors();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGIO, SIG_IGN);
  keep_freed_memory();
}

void defer_interrupts(bool on) {
  for (const int signal : interrupts) {
    const auto before = std::signal(signal, on ? note_interrupt : SIG_DFL);
    if (before == SIG_IGN)
      std::signal(signal, SIG_IGN);
  }
}

bool interrupted() { return was_interrupted != 0; }

void restart_without(std::span<const char* const> variables, char** argv) {
  for (const char* const variable : variables)
    ::unsetenv(variable);
  ::execv("/proc/self/exe", argv);
  std::abort();
}

Result<void*> load_symbol(const std::string& library, const char* symbol) {
  void* const loaded = ::dlopen(library.c_str(), RTLD_NOW);
  void* const address = loaded ? ::dlsym(loaded, symbol) : nullptr;
  if (!address)
    return Failure{library, "load it", ::dlerror()};
  return address;
}

int stderr_columns() {
  constexpr int usual = 80;
  winsize size{};
  if (!::isatty(STDERR_FILENO))
    return 0;
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}
