// The game's editions, and what changes when one is selected.
#include "app/edition.h"

#include "app/target.h"
#include "convert/original_maps.h"
#include "platform/executable_release.h"
#include "platform/os_version.h"
#include "platform/path_rules.h"
#include "platform/registry_and_folders.h"

namespace {

struct EditionData {
  const char* letter;
  const char* user_folder;  // below `homefolder`
  const char* executable;
};

constexpr EditionData base_data = {base_letter, R"(\Kettlewick Games\Vorakai\)", "Vorakai.exe"};
constexpr EditionData expansion_data = {
    expansion_letter, R"(\My Games\Kettlewick Games\Vorakai Tarnfall)", "Vorakai Tarnfall.exe"};

const EditionData& data(Edition edition) {
  return edition == Edition::base ? base_data : expansion_data;
}

void write_button_selection(Form1& form, Edition edition) {
  const std::string own = App_Path(form.system);
  for (const std::string& line : {form.pathlist[1], form.pathlist[0], form.homefolder, own})
    write_info(form, line);
  write_info(form, "");
  if (edition == Edition::base) {
    write_info(form, first_file(form.files, form.pathlist[1]));
    write_info(form, first_file(form.files, form.pathlist[0]));
  }
  write_info(form, first_file(form.files, own));
}

}  // namespace

std::string executable(const Form1& form, Edition edition) {
  return form.versionfolder + data(edition).executable;
}

bool is_base_registered(const std::string& path) { return length_in_characters(path) > 4; }

void set_gamepath(Form1& form, Edition edition) {
  if (edition == Edition::expansion) {
    form.gamepath = form.expansionpath;
    return;
  }
  for (const std::string& path : {form.basepath, form.bundlepath})
    if (is_base_registered(path))
      form.gamepath = path;
}

void set_edition(Form1& form, Edition edition) {
  form.edition = data(edition).letter;
  if (edition == Edition::expansion)
    form.homefolder =
        getmydocs(form.system, [&](const std::string& text) { show_trouble(form, text); });
}

void set_folders(Form1& form, Edition edition, bool fallback) {
  set_gamepath(form, edition);
  form.pathlist[1] = form.gamepath;
  form.pathlist[0] = form.homefolder + data(edition).user_folder;
  if (isvista(form.system) || iswin7(form.system))
    form.pathlist[1] = form.pathlist[0];
  if (fallback && first_file(form.files, form.pathlist[0]).empty())
    form.pathlist[1] = App_Path(form.system);
}

void show_roots(Form1& form) {
  form.Command4.set_tooltip(form.pathlist[1]);
  form.Command5.set_tooltip(form.pathlist[0]);
}

void selectedition(Form1& form, Edition edition) {
  form.Command6.set_enabled(false);
  form.Command7.set_enabled(false);
  set_edition(form, edition);
  set_folders(form, edition, edition == Edition::base);
  show_roots(form);
  write_button_selection(form, edition);
  // When the user folder cannot be shown the list stays as it is; nothing else depends on it.
  static_cast<void>(form.Dir1.set_path(form.pathlist[0]));
  loadoriginalmaps(form);
  form.versionfolder = form.gamepath;
  write_info(form, form.versionfolder);
  form.foundversion = getexeversion(form.system, executable(form, edition));
  write_info(form, form.foundversion);
}
