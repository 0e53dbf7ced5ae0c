// The process: how it is set up before anything else happens, and the signals that ask it to end.
#pragma once

// Sets the process up; call it first of all.
// - Descriptors 0 to 2 that are closed are opened on /dev/null: else a map could get one of them,
// and
//   with it what is written to stderr.
// - SIGPIPE and SIGXFSZ are ignored: the call that they belong to fails and is reported.
// - Freed memory stays in the process, so that the next map reuses it: getting memory from the
// system
//   page by page costs more than converting a map.
void set_up_process();

// While `on`, the first SIGINT, SIGTERM or SIGHUP does not end the process but makes `interrupted`
// true. A signal that was ignored at the start stays so.
void defer_interrupts(bool on);
bool interrupted();
