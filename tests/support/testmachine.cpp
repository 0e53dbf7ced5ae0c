// A small Windows machine in a throw-away folder, and the program on it.
#include "tests/support/testmachine.h"

#include "platform/prefix/registrytext.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

const char oldmap[] = "MAP\r\nversion 3\r\nshp Foo\r\nsize 7\r\nname Bar\r\nend\r\n";
const char convertedmap[] =
    "MAP\r\nversion 4\r\nship Foo\r\nsize 7\r\nextra 0\r\nname Bar\r\nend\r\n";
const char fixedmap[] = "MAP\r\nversion 4\r\nship  Foo\r\nsize 7\r\nextra 1\r\nname Bar\r\nend\r\n";

namespace {

constexpr char nt[] = "Software\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char session[] = "System\\CurrentControlSet\\Control\\Session Manager\\Environment";
constexpr char shell[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

void addvalue(const fs::path& hive, const std::string& key, const std::string& name,
              const std::string& text) {
  const std::string before = fs::exists(hive) ? readfile(hive) : "";
  writefile(hive, withvalue(before, key, name, {RegistryValue::Type::text, text}));
}

}  // namespace

TestMachine::TestMachine() {
  std::string pattern = (fs::temp_directory_path() / "vora-test-XXXXXX").string();
  const fs::path root = mkdtemp(pattern.data());
  prefix = root / "prefix";
  drivec = prefix / "drive_c";
  data = root / "data";
  program = root / "program";
  const fs::path user = drivec / "users" / "me";
  userfolder = user / "AppData/Local/Kettlewick Games/Vorakai";
  expansionfolder = user / "Documents/My Games/Kettlewick Games/Vorakai Tarnfall";
  for (const fs::path& folder :
       {drivec / "Program Files (x86)", user / "AppData/Local", user / "Documents", data, program})
    fs::create_directories(folder);
  machine = {prefix.string(), data.string(), program.string()};
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

void TestMachine::install(const std::string& edition, const VersionParts& release) {
  setregistry("Software\\Wow6432Node\\Orbwright\\Paxhollow\\" + edition, "Path",
              "C:\\Games\\" + edition);
  const char* name = edition == "voratarnfall" ? "Vorakai Tarnfall.exe" : "Vorakai.exe";
  writefile(drivec / "Games" / edition / name, Executable{release}.bytes());
}

void TestMachine::writedata() {
  const char old[] = "MAP\r\nver$1\r\nversion\r\nship$2\r\nshp\r\nsize\r\n";
  const char current[] = "MAP\r\nver$1\r\nversion 4\r\nship$3\r\nship &\r\nsize #\r\nextra 0\r\n";
  for (const std::string letter : {"v", "t"}) {
    writefile(data / (letter + "oldstruct3.txt"), old);
    writefile(data / (letter + "newstruct3.txt"), current);
    writefile(data / (letter + "newstruct0.txt"), "MAP\r\nversion 4\r\n");
  }
  writefile(data / "toldstructfix4.txt", "MAP\r\nship$3\r\nship\r\nsize\r\nextra\r\n");
  writefile(data / "tnewstructfix4.txt", "MAP\r\nship$3\r\nship &\r\nsize #\r\nextra 1\r\n");
  writefile(data / "targetvoraver.txt", "1.2.3.4\r\n\r\n\r\n\r\n5.6.7.8\r\n\r\nno\r\n");
  writefile(data / "original vora galaxies.txt",
            "own.galaxy\r\n\xC3\xA9toile.galaxy\r\na.galaxy \r\n");
}

std::string zpath(const fs::path& path) {
  std::string text = "Z:" + path.string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

void writefile(const fs::path& path, std::string_view text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string readfile(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::map<std::string, std::string> tree(const fs::path& folder) {
  std::map<std::string, std::string> found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder).string();
    if (entry.is_symlink())
      found[name] = "-> " + fs::read_symlink(entry.path()).string();
    else if (entry.is_regular_file())
      found[name] = readfile(entry.path());
  }
  return found;
}

Program::Program(const TestMachine& machine, const std::string& arguments, Disk& disk)
    : files(machine.machine, disk), system(machine.machine, arguments),
      form(files, system, screen) {}

int Program::run(const std::function<void()>& action) {
  try {
    action();
  } catch (const ProgramEnd& end) {
    return end.status;
  }
  return goeson;
}
