// Operations that the program builds on the machine: registry, special folders, folder tests.
#include "platform/registry_and_folders.h"

namespace {

std::string special_folder(System& system, std::uint32_t folder, const ShowMessage& show_message) {
  const FolderPath answer = system.folder_path(folder | Csidl::create);
  if (answer.status == FolderPath::ok)
    return answer.path;
  if (answer.status == FolderPath::invalid_identifier)
    show_message("An invalid folder ID was specified");
  if (answer.status == FolderPath::does_not_exist)
    show_message("The folder does not exist");
  return "";
}

std::string first_entry(Files& files, const std::string& path, Match match) {
  const auto name = files.lookup(path, match);
  return name ? *name : "";
}

}  // namespace

std::string regaccess(System& system, const std::string& mode, const std::string& value_path,
                      const std::string& data, const std::string& type) {
  const std::string wanted = system.lowercase(mode);
  if (wanted == "write")
    system.reg_write(value_path, data, type);
  if (wanted == "delete")
    system.reg_delete(value_path);
  return wanted == "read" ? system.reg_read(value_path).value_or("") : "";
}

std::string getlocalappdata(System& system, const ShowMessage& show_message) {
  return special_folder(system, Csidl::local_app_data, show_message);
}

std::string getmydocs(System& system, const ShowMessage& show_message) {
  return special_folder(system, Csidl::documents, show_message);
}

std::string App_Path(System& system) {
  const std::string folder = system.app_folder();
  return folder.ends_with('\\') ? folder : folder + "\\";
}

bool direxists(Files& files, const std::string& path) {
  return !first_entry(files, path, Match::files_and_folders).empty();
}

std::string system_drive(System& system) { return system.environment("windir").substr(0, 2); }

bool is64bit(System& system, Files& files, const std::string& sysdrive) {
  const auto version = system.os_version();
  return version && version->platform == OsVersion::nt_family &&
         direxists(files, sysdrive + R"(\program files (x86)\.)");
}

std::string first_file(Files& files, const std::string& path) {
  return first_entry(files, path, Match::files);
}
