// Finds the installed editions, and selects one when there is no choice.
#include "app/installation.h"

#include "app/edition.h"
#include "app/target.h"
#include "convert/original_maps.h"
#include "platform/executable_release.h"
#include "platform/path_rules.h"
#include "platform/printable.h"
#include "platform/registry_and_folders.h"

namespace {

// The registry's names of the game and its editions.
constexpr char product_key[] = "Paxhollow";
constexpr char base_key[] = "vora";
constexpr char bundle_key[] = "vorazendrel";
constexpr char expansion_key[] = "voratarnfall";

// An edition's installation folder in the registry, with "\" appended.
std::string registered_path(System& system, bool is_64bit, const std::string& edition) {
  const std::string software =
      is_64bit ? R"(HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node)" : R"(HKEY_LOCAL_MACHINE\SOFTWARE)";
  const std::string value = software + R"(\Orbwright\)" + product_key + "\\" + edition + R"(\Path)";
  return regaccess(system, "read", value, "Path", "string") + "\\";
}

// Whether the expansion counts as registered, by its folder text, which ends in "\".
bool is_expansion_registered(const std::string& path) { return length_in_characters(path) > 3; }

bool any_registered(const std::string& base, const std::string& bundle,
                    const std::string& expansion) {
  return is_base_registered(base) || is_base_registered(bundle) ||
         is_expansion_registered(expansion);
}

void find_base(Form1& form, const std::string& path) {
  if (!is_base_registered(path) || !direxists(form.files, path))
    return;
  form.Command6.set_enabled(true);
  form.basefound = true;
}

void find_expansion(Form1& form) {
  if (!form.expansionregistered || !direxists(form.files, form.expansionpath))
    return;
  form.Command7.set_enabled(true);
  form.expansionfound = true;
}

void set_found(Form1& form) {
  form.bothfound = form.basefound && form.expansionfound;
  form.expansiononly = form.expansionfound && !form.basefound;
  if (form.expansiononly)
    set_gamepath(form, Edition::expansion);
  else if (form.basefound && !form.bothfound)
    set_gamepath(form, Edition::base);
}

void write_startup_selection(Form1& form) {
  const std::string own = App_Path(form.system);
  write_info(form, "pathlist(1)" + form.pathlist[1]);
  write_info(form, "pathlist(0)" + form.pathlist[0]);
  write_info(form, "home " + form.homefolder);
  write_info(form, "App_Path()" + own);
  write_info(form, "");
  write_info(form, "Dir(pathlist(1))" + first_file(form.files, form.pathlist[1]));
  write_info(form, "Dir(pathlist(0))" + first_file(form.files, form.pathlist[0]));
  write_info(form, "Dir(App_Path())" + first_file(form.files, own));
}

void set_versionfolder(Form1& form) {
  form.versionfolder = form.gamepath;
  form.installfolder = form.gamepath;
  write_info(form, form.versionfolder);
}

void read_release_of(Form1& form, Edition edition) {
  form.foundversion = getexeversion(form.system, executable(form, edition));
}

void select(Form1& form, Edition edition) {
  const bool expansion = edition == Edition::expansion;
  set_edition(form, edition);
  if (!expansion || !form.debugmode)
    set_folders(form, edition, true);
  show_roots(form);
  write_startup_selection(form);
  loadoriginalmaps(form);
  if (!expansion)
    return;
  // Also read the release of the base game's executable, for the diagnostic file.
  set_versionfolder(form);
  read_release_of(form, Edition::base);
  write_info(form, form.foundversion);
}

std::string mismatch_message(const Form1& form, const std::string& target) {
  const auto shown = [&](const std::string& text) { return in_box(form, text); };
  return "found vora version :" + shown(form.foundversion) + ":\r\n" +
         " need vora version :" + shown(target) + ":\r\n" + "in the default location of\r\n" +
         shown(form.installfolder) + "\r\n" + "local apps is\r\n" + shown(form.homefolder) +
         ":\r\n" + "and the vora user directory is\r\n" + shown(form.pathlist[1]);
}

// Why no edition was found; empty if one was, or if there is no more to say.
std::string explain_missing_game(Form1& form) {
  if (form.basefound || form.expansionfound)
    return "";
  const bool registered = any_registered(form.basepath, form.bundlepath, form.expansionpath);
  const std::string reason = registered ? "the folder that the game is registered in is missing"
                                        : form.system.explain_unregistered("the game");
  return reason.empty() ? "" : "No game was found: " + printable(reason);
}

// Why the release of the game is empty; empty if it is not, or if there is no more to say.
std::string explain_missing_release(Form1& form) {
  if (!form.basefound && !form.expansionfound)
    return explain_missing_game(form);
  if (!form.foundversion.empty())
    return "";
  const std::string path =
      executable(form, form.expansiononly ? Edition::expansion : Edition::base);
  const auto content = form.files.read(path);
  return "The game's release is not known: " +
         printable(content ? path + ": it is no program with a version" : content.failure().text());
}

void print_missing_game(Form1& form) {
  if (const std::string reason = explain_missing_game(form); !reason.empty())
    form.screen.print_error(reason);
}

}  // namespace

void find_installations(Form1& form, bool is_64bit) {
  form.expansionpath = registered_path(form.system, is_64bit, expansion_key);
  form.expansionregistered =
      is_expansion_registered(form.expansionpath) && direxists(form.files, form.expansionpath);
  form.basepath = registered_path(form.system, is_64bit, base_key);
  form.bundlepath = registered_path(form.system, is_64bit, bundle_key);
  find_base(form, form.basepath);
  find_base(form, form.bundlepath);
  find_expansion(form);
  set_found(form);
}

bool game_is_registered(System& system, Files& files) {
  const bool is_64bit = is64bit(system, files, system_drive(system));
  const auto path = [&](const char* edition) { return registered_path(system, is_64bit, edition); };
  return any_registered(path(base_key), path(bundle_key), path(expansion_key));
}

void decide_edition(Form1& form) {
  if (form.bothfound) {
    form.Command6.set_visible(true);
    form.Command7.set_visible(true);
    return;
  }
  select(form, form.expansionfound ? Edition::expansion : Edition::base);
}

void read_release(Form1& form) {
  set_versionfolder(form);
  if (form.expansionfound)
    read_release_of(form, Edition::expansion);
  if (form.basefound)
    read_release_of(form, Edition::base);
  write_info(form, "voraversion" + form.foundversion);
}

void check_release(Form1& form) {
  const auto required = required_release(form);
  if (!required)
    return print_missing_game(form);
  if (form.foundversion == *required)
    return;
  if (const std::string reason = explain_missing_release(form); !reason.empty())
    show_trouble(form, reason);
  end_with_message(form, mismatch_message(form, *required));
}
