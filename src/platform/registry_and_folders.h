// Operations that the program builds on the machine: registry, special folders, folder tests.
#pragma once

#include "platform/files.h"
#include "platform/system.h"

#include <functional>
#include <string>

// Shows a message to the user and returns when it has been answered.
using ShowMessage = std::function<void(const std::string&)>;

// Reads, writes or deletes a registry value: `mode` is "read", "write" or "delete" in any case,
// anything else does nothing. Reading returns the value; the other modes and every failure return
// the empty text. `data` and `type` are for "write" only.
std::string regaccess(System& system, const std::string& mode, const std::string& value_path,
                      const std::string& data, const std::string& type);

// The user's local application data and documents folders, made when they are missing. Empty on
// failure; an invalid identifier and a missing folder are reported.
std::string getlocalappdata(System& system, const ShowMessage& show_message);
std::string getmydocs(System& system, const ShowMessage& show_message);

// The program's own folder, ending in "\".
std::string App_Path(System& system);

// Whether `path` matches a file or a folder.
bool direxists(Files& files, const std::string& path);

// The system drive's letter and colon.
std::string system_drive(System& system);

// Whether the machine has a 64-bit Windows. `sysdrive` is its letter and colon.
bool is64bit(System& system, Files& files, const std::string& sysdrive);

// The name of the first normal file that `path` matches; empty when there is none.
std::string first_file(Files& files, const std::string& path);
