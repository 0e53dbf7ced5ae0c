// The program's own operations on top of the machine: registry, special folders, folder tests.
#include "platform/services.h"

namespace {

constexpr std::uint32_t createflag = 0x8000;  // CSIDL_FLAG_CREATE
constexpr std::uint32_t localappdata = 0x1C;  // CSIDL_LOCAL_APPDATA
constexpr std::uint32_t documents = 0x05;     // CSIDL_PERSONAL
constexpr std::uint32_t ntfamily = 2;         // VER_PLATFORM_WIN32_NT

std::string specialfolder(System& system, std::uint32_t folder, const Tell& tell) {
  const FolderPath answer = system.folderpath(folder | createflag);
  if (answer.status == FolderPath::ok)
    return answer.path;
  if (answer.status == FolderPath::invalididentifier)
    tell("An invalid folder ID was specified");
  if (answer.status == FolderPath::doesnotexist)
    tell("The folder does not exist");
  return "";
}

std::string firstentry(Files& files, const std::string& path, Match match) {
  const auto name = files.lookup(path, match);
  return name ? *name : "";
}

}  // namespace

std::string regaccess(System& system, const std::string& mode, const std::string& valuepath,
                      const std::string& data, const std::string& type) {
  const std::string wanted = system.lowercase(mode);
  if (wanted == "write")
    system.regwrite(valuepath, data, type);
  if (wanted == "delete")
    system.regdelete(valuepath);
  return wanted == "read" ? system.regread(valuepath).value_or("") : "";
}

std::string getlocalappdata(System& system, const Tell& tell) {
  return specialfolder(system, localappdata, tell);
}

std::string getmydocs(System& system, const Tell& tell) {
  return specialfolder(system, documents, tell);
}

std::string App_Path(System& system) {
  const std::string folder = system.appfolder();
  return folder.ends_with('\\') ? folder : folder + "\\";
}

bool direxists(Files& files, const std::string& path) {
  return !firstentry(files, path, Match::filesandfolders).empty();
}

bool is64bit(System& system, Files& files, const std::string& sysdrive) {
  const auto version = system.osversion();
  return version && version->platform == ntfamily &&
         direxists(files, sysdrive + R"(\program files (x86)\.)");
}

std::string firstfile(Files& files, const std::string& path) {
  return firstentry(files, path, Match::files);
}
