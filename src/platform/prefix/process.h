// The process: how it is set up before anything else happens, the signals that ask it to end, and
// the libraries that it loads while it runs.
#pragma once

#include "platform/result.h"

#include <span>
#include <string>

// Sets the process up; call it first of all. Standard descriptors that are closed are opened on
// /dev/null: else a map could get one of them, and with it what is written to stderr. SIGPIPE and
// SIGXFSZ are ignored, so that the call that caused them fails and is reported, and SIGIO, which
// tells that another program waits for a lease. Freed memory is kept for the next map, since page
// faults on fresh memory cost more than the work on a map.
void set_up_process();

// While `on`, the first SIGINT, SIGTERM or SIGHUP does not end the process but makes `interrupted`
// true. A signal that was ignored at the start stays so.
void defer_interrupts(bool on);
bool interrupted();

// Starts the program again in the place of this process, with the same arguments and without those
// environment variables. Ends the process if that fails.
[[noreturn]] void restart_without(std::span<const char* const> variables, char** argv);

// The address of `symbol` in the library with that POSIX path, which is loaded and never unloaded.
// A failure has the system's reason.
Result<void*> load_symbol(const std::string& library, const char* symbol);

// The width in columns of the terminal that stderr is; 0 if it is none.
int stderr_columns();
