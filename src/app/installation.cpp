// Finds the installed editions, and selects one when there is no choice.
#include "app/installation.h"

#include "app/edition.h"
#include "app/target.h"
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

// The only edition that was found, or the base edition when none was.
Edition found_edition(const Form1& form) {
  return form.expansiononly ? Edition::expansion : Edition::base;
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
  const std::string path = executable(form, found_edition(form));
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
  for (const std::string& path : {form.basepath, form.bundlepath})
    if (is_base_registered(path) && direxists(form.files, path))
      form.basefound = true;
  form.expansionfound = form.expansionregistered;
  form.bothfound = form.basefound && form.expansionfound;
  form.expansiononly = form.expansionfound && !form.basefound;
  if (form.basefound)
    form.Command6.set_enabled(true);
  if (form.expansionfound)
    form.Command7.set_enabled(true);
}

bool game_is_registered(System& system, Files& files) {
  const bool is_64bit = is64bit(system, files, system_drive(system));
  const auto path = [&](const char* edition) { return registered_path(system, is_64bit, edition); };
  return any_registered(path(base_key), path(bundle_key), path(expansion_key));
}

void decide_edition(Form1& form) {
  if (!form.bothfound)
    return select_at_startup(form, found_edition(form));
  form.Command6.set_visible(true);
  form.Command7.set_visible(true);
}

void read_release(Form1& form) {
  set_versionfolder(form);
  if (form.basefound || form.expansionfound)
    read_release_of(form, found_edition(form));
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
