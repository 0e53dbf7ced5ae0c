// A machine to measure on.
#pragma once

#include "platform/prefix/machine.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// A machine in a throw-away folder, whose registry has about 2 MB of other programs' keys.
class Scratch {
public:
  Scratch() {
    std::string name = "/tmp/vora-bench-XXXXXX";
    machine.folder = ::mkdtemp(name.data());
    machine.current_folder = machine.program_folder = machine.folder;
    std::filesystem::create_directories(machine.folder + "/drive_c/maps");
    std::filesystem::create_directory(machine.folder + "/dosdevices");
    std::filesystem::create_symlink("../drive_c", machine.folder + "/dosdevices/c:");
    std::filesystem::create_symlink("..", machine.folder + "/dosdevices/z:");
    std::ofstream registry(machine.folder + "/system.reg");
    registry << "WINE REGISTRY Version 2\n";
    for (int i = 0; i < 20000; ++i)
      registry << "\n[Software\\\\Classes\\\\CLSID\\\\{" << i << "}] 1\n@=\"class " << i
               << "\"\n\"Threading\"=\"Both\"\n\"Version\"=\"1.0\"\n\"Icon\"=dword:00000001\n";
  }
  ~Scratch() { std::filesystem::remove_all(machine.folder); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  Machine machine;
};
