// A small Windows machine in a throw-away folder.
#include "tests/support/test_machine.h"

#include "platform/prefix/prefix_files.h"
#include "platform/prefix/prefix_map.h"
#include "platform/prefix/prefix_system.h"
#include "platform/prefix/registry_text.h"
#include "tests/support/prefix/machine_of.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace {

constexpr char nt[] = "Software\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char session[] = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr char shell[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

void add_value(const fs::path& hive, const std::string& key, const std::string& name,
               const std::string& text) {
  const std::string before = fs::exists(hive) ? read_file(hive) : "";
  write_file(hive, with_value(before, key, name, text, "REG_SZ").value());
}

}  // namespace

TestMachine::TestMachine() {
  std::string pattern = (fs::temp_directory_path() / "vora-test-XXXXXX").string();
  const fs::path root = mkdtemp(pattern.data());
  prefix = root / "prefix";
  drive_c = prefix / "drive_c";
  data = root / "data";
  program = root / "program";
  fs::create_directories(drive_c / "Program Files (x86)");
  fs::create_directory(prefix / "dosdevices");
  fs::create_directory_symlink("../drive_c", prefix / "dosdevices/c:");
  fs::create_directory_symlink("../..", prefix / "dosdevices/z:");
  make_folders();
  set_version("6.3");
  set_registry(nt, "SystemRoot", "C:\\windows");
  set_registry(session, "windir", "C:\\windows");
  for (const char* name :
       {"PROCESSOR_ARCHITECTURE", "PROCESSOR_IDENTIFIER", "NUMBER_OF_PROCESSORS"})
    set_registry(session, name, "");  // else they are those of the tests' own processor
  add_value(prefix / "user.reg", shell, "Local AppData", "C:\\users\\me\\AppData\\Local");
  add_value(prefix / "user.reg", shell, "Personal", "C:\\users\\me\\Documents");
}

TestMachine::~TestMachine() {
  std::error_code ignored;
  fs::remove_all(prefix.parent_path(), ignored);
}

void TestMachine::set_registry(const std::string& key, const std::string& name,
                               const std::string& text) {
  add_value(prefix / "system.reg", key, name, text);
}

void TestMachine::set_version(const std::string& version) {
  set_registry(nt, "CurrentVersion", version);
}

bool TestMachine::hides_dots() const { return true; }

std::unique_ptr<Files> TestMachine::files() const {
  return std::make_unique<PrefixFiles>(machine_of(*this));
}

std::unique_ptr<System> TestMachine::system(const std::string& arguments) const {
  return std::make_unique<PrefixSystem>(machine_of(*this), arguments);
}

std::string z_path(const fs::path& path) {
  const fs::path inside = path.lexically_relative(fs::temp_directory_path());
  std::string text = "Z:\\" + inside.lexically_relative(*inside.begin()).string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}
