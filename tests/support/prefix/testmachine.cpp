// A small Windows machine in a throw-away folder.
#include "tests/support/testmachine.h"

#include "platform/prefix/prefixfiles.h"
#include "platform/prefix/prefixmapfolder.h"
#include "platform/prefix/prefixsystem.h"
#include "platform/prefix/registrytext.h"
#include "tests/support/prefix/machineof.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>

namespace fs = std::filesystem;

namespace {

constexpr char nt[] = "Software\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char session[] = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr char shell[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

void addvalue(const fs::path& hive, const std::string& key, const std::string& name,
              const std::string& text) {
  const std::string before = fs::exists(hive) ? readfile(hive) : "";
  writefile(hive, withvalue(before, key, name, {RegistryValue::Type::text, text}));
}

// What the steps work with, and themselves.
struct Opened {
  explicit Opened(const fs::path& path)
      : folder(openpath(systemdisk(), path.parent_path().string() + "/", O_RDONLY | O_DIRECTORY)),
        map{path.filename(), openpath(systemdisk(), path.string(), O_RDONLY), {}, {}} {
    names.refresh(folder);
    describe(map.handle, map.status);
    map.stamp = PrefixMapFolder::stamp(map.status);
  }

  Handle folder;
  MapFile map;
  FolderNames names;
};
class OpenedMapFolder : Opened, public PrefixMapFolder {
public:
  explicit OpenedMapFolder(const fs::path& path)
      : Opened(path), PrefixMapFolder(Opened::folder, Opened::names, Opened::map) {}
};

}  // namespace

TestMachine::TestMachine() {
  std::string pattern = (fs::temp_directory_path() / "vora-test-XXXXXX").string();
  const fs::path root = mkdtemp(pattern.data());
  prefix = root / "prefix";
  drivec = prefix / "drive_c";
  data = root / "data";
  program = root / "program";
  fs::create_directories(drivec / "Program Files (x86)");
  makefolders();
  setversion("6.3");
  setregistry(nt, "SystemRoot", "C:\\windows");
  setregistry(session, "windir", "C:\\windows");
  addvalue(prefix / "user.reg", shell, "Local AppData", "C:\\users\\me\\AppData\\Local");
  addvalue(prefix / "user.reg", shell, "Personal", "C:\\users\\me\\Documents");
}

TestMachine::~TestMachine() {
  std::error_code ignored;
  fs::remove_all(prefix.parent_path(), ignored);
}

void TestMachine::setregistry(const std::string& key, const std::string& name,
                              const std::string& text) {
  addvalue(prefix / "system.reg", key, name, text);
}

void TestMachine::setversion(const std::string& version) {
  setregistry(nt, "CurrentVersion", version);
}

std::unique_ptr<Files> TestMachine::files() const {
  return std::make_unique<PrefixFiles>(machineof(*this));
}

std::unique_ptr<System> TestMachine::system(const std::string& arguments) const {
  return std::make_unique<PrefixSystem>(machineof(*this), arguments);
}

std::unique_ptr<MapFolder> TestMachine::mapfolder(const fs::path& map) const {
  return std::make_unique<OpenedMapFolder>(map);
}

std::string zpath(const fs::path& path) {
  std::string text = "Z:" + path.string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}
