// A small Windows machine to be thrown away, and the program on it: a machine in a folder, or on
// Windows the one that the tests run on, under Wine.
#pragma once

#include "form/form1.h"
#include "platform/files.h"
#include "platform/replacing.h"
#include "platform/system.h"
#include "tests/support/recording_screen.h"
#include "tools/executable.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>

// A 64-bit Windows newer than 7, with a user and without the game. The program's folder and the
// current one, where the data files are, lie outside its drive C:, on drive Z:. A test has one at a
// time.
class TestMachine {
public:
  TestMachine();
  ~TestMachine();
  TestMachine(const TestMachine&) = delete;
  TestMachine& operator=(const TestMachine&) = delete;

  std::filesystem::path prefix;  // the folder that holds the machine; empty on Windows
  std::filesystem::path drive_c, program;
  std::filesystem::path data;              // the current folder of the programs made from now on
  std::filesystem::path user_folder;       // the base edition's user space
  std::filesystem::path expansion_folder;  // the expansion's

  // Sets a text value below HKEY_LOCAL_MACHINE.
  void set_registry(const std::string& key, const std::string& name, const std::string& text);
  void set_version(const std::string& version);  // of Windows, such as "6.1"

  // Registers an edition ("vora", "vorazendrel" or "voratarnfall") in C:\Games\<edition> and puts
  // its executable there.
  void install(const std::string& edition, const VersionParts& release);

  // Installs the base edition beside the data files, with a user space that has three old maps.
  void install_with_maps();

  // Whether a name that begins with a dot is hidden: in a machine in a folder and under Wine 8 it
  // is, under Wine 10 it is not.
  bool hides_dots() const;

  // What a program on the machine works with; `arguments` is its command line.
  std::unique_ptr<Files> files() const;
  std::unique_ptr<System> system(const std::string& arguments) const;

  // A small set of data files for format version 4, with templates for version 3 and the
  // expansion's fix pass; the target releases are 1.2.3.4 and 5.6.7.8.
  void write_data();

private:
  void make_folders();
};

// The maps that `write_data` is for, and what becomes of them.
extern const char old_map[];        // of version 3
extern const char converted_map[];  // by the first pass
extern const char fixed_map[];      // by the expansion's fix pass after it

// Replaces a map by itself; `map` may be a path to open.
Result<Done> replace_map(Files& files, std::unique_ptr<OpenMap> map, Replacement replacement);
Result<Done> replace_map(Files& files, const std::string& path, Replacement replacement);

// The Windows path of a path on drive Z:.
std::string z_path(const std::filesystem::path& path);

void write_file(const std::filesystem::path& path, std::string_view text);
std::string read_file(const std::filesystem::path& path);

// The names below a folder, relative to it, folders left out, each with its file's content; links
// have their target.
using Tree = std::map<std::string, std::string>;
Tree tree(const std::filesystem::path& folder);

// The program on a machine.
struct Program {
  explicit Program(const TestMachine& machine, const std::string& arguments = "");
  Program(std::unique_ptr<Files> files_in, std::unique_ptr<System> system_in);

  const std::unique_ptr<Files> own_files;
  const std::unique_ptr<System> own_system;
  Files& files = *own_files;
  RecordingScreen screen;
  Form1 form{files, *own_system, screen};

  // Runs `action`. The exit status when it ended the program, -1 when it returned.
  static constexpr int returned = -1;
  int run(const std::function<void()>& action);
};
