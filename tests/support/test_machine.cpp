// What the tests' machines have in common, and the program on one.
#include "tests/support/test_machine.h"

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

const char old_map[] = "MAP\r\nversion 3\r\nshp Foo\r\nsize 7\r\nname Bar\r\nend\r\n";
const char converted_map[] =
    "MAP\r\nversion 4\r\nship Foo\r\nsize 7\r\nextra 0\r\nname Bar\r\nend\r\n";
const char fixed_map[] =
    "MAP\r\nversion 4\r\nship  Foo\r\nsize 7\r\nextra 1\r\nname Bar\r\nend\r\n";

Result<Done> replace_map(Files& files, std::unique_ptr<OpenMap> map, Replacement replacement) {
  ReplacementBatch batch(files);
  auto done = batch.add(std::move(map), std::move(replacement));
  return done ? batch.commit().front() : done;
}

Result<Done> replace_map(Files& files, const std::string& path, Replacement replacement) {
  auto opened = files.open_map(path);
  return opened ? replace_map(files, *std::move(opened), std::move(replacement)) : opened.failure();
}

void TestMachine::make_folders() {
  const fs::path user = drive_c / "users" / "me";
  user_folder = user / "AppData/Local/Kettlewick Games/Vorakai";
  expansion_folder = user / "Documents/My Games/Kettlewick Games/Vorakai Tarnfall";
  for (const fs::path& folder : {user / "AppData/Local", user / "Documents", data, program})
    fs::create_directories(folder);
}

void TestMachine::install(const std::string& edition, const VersionParts& release) {
  set_registry("Software\\Wow6432Node\\Orbwright\\Paxhollow\\" + edition, "Path",
               "C:\\Games\\" + edition);
  const char* name = edition == "voratarnfall" ? "Vorakai Tarnfall.exe" : "Vorakai.exe";
  write_file(drive_c / "Games" / edition / name, Executable{release}.bytes());
}

void TestMachine::install_with_maps() {
  write_data();
  install("vora", {1, 2, 3, 4});
  write_file(user_folder / "settings.txt", "");
  for (const char* name : {"a.galaxy", "b.galaxy", "sub/c.galaxy"})
    write_file(user_folder / name, old_map);
}

void TestMachine::write_data() {
  const char old[] = "MAP\r\nver$1\r\nversion\r\nship$2\r\nshp\r\nsize\r\n";
  const char current[] = "MAP\r\nver$1\r\nversion 4\r\nship$3\r\nship &\r\nsize #\r\nextra 0\r\n";
  for (const std::string letter : {"v", "t"}) {
    write_file(data / (letter + "oldstruct3.txt"), old);
    write_file(data / (letter + "newstruct3.txt"), current);
    write_file(data / (letter + "newstruct0.txt"), "MAP\r\nversion 4\r\n");
  }
  write_file(data / "toldstructfix4.txt", "MAP\r\nship$3\r\nship\r\nsize\r\nextra\r\n");
  write_file(data / "tnewstructfix4.txt", "MAP\r\nship$3\r\nship &\r\nsize #\r\nextra 1\r\n");
  write_file(data / "targetvoraver.txt", "1.2.3.4\r\n\r\n\r\n\r\n5.6.7.8\r\n\r\nno\r\n");
  write_file(data / "original vora galaxies.txt",
             "own.galaxy\r\n\xC3\xA9toile.galaxy\r\na.galaxy \r\n");
}

void write_file(const fs::path& path, std::string_view text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string read_file(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

Tree tree(const fs::path& folder) {
  Tree found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().lexically_relative(folder).generic_string();
    if (entry.is_symlink())
      found[name] = "-> " + fs::read_symlink(entry.path()).string();
    else if (entry.is_regular_file())
      found[name] = read_file(entry.path());
  }
  return found;
}

Program::Program(const TestMachine& machine, const std::string& arguments)
    : Program(machine.files(), machine.system(arguments)) {}

Program::Program(std::unique_ptr<Files> files_in, std::unique_ptr<System> system_in)
    : own_files(std::move(files_in)), own_system(std::move(system_in)) {}

int Program::run(const std::function<void()>& action) {
  try {
    action();
  } catch (const ProgramEnd& end) {
    return end.status;
  }
  return returned;
}
