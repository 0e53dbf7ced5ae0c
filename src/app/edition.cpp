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

// Sets the edition letter, for the expansion `homefolder`, and `gamepath` to the edition's folder:
// for the base edition the bundle's, else the base game's; unchanged when neither is registered.
void set_edition(Form1& form, Edition edition) {
  form.edition = data(edition).letter;
  if (edition == Edition::expansion) {
    form.homefolder =
        getmydocs(form.system, [&](const std::string& text) { show_trouble(form, text); });
    form.gamepath = form.expansionpath;
    return;
  }
  for (const std::string& path : {form.basepath, form.bundlepath})
    if (is_base_registered(path))
      form.gamepath = path;
}

// Sets both search roots. With `fallback` the program's own folder becomes program space when there
// is no file at the user space root.
void set_roots(Form1& form, Edition edition, bool fallback) {
  form.pathlist[1] = form.gamepath;
  form.pathlist[0] = form.homefolder + data(edition).user_folder;
  if (isvista(form.system) || iswin7(form.system))
    form.pathlist[1] = form.pathlist[0];
  if (fallback && first_file(form.files, form.pathlist[0]).empty())
    form.pathlist[1] = App_Path(form.system);
}

// Shows the search roots as the tool tips of their buttons, and writes to the diagnostic file what
// was selected, at start-up with labels.
void show_selection(Form1& form, Edition edition, bool labelled) {
  form.Command4.set_tooltip(form.pathlist[1]);
  form.Command5.set_tooltip(form.pathlist[0]);
  const std::string own = App_Path(form.system);
  const auto write = [&](const char* label, const std::string& text) {
    write_info(form, (labelled ? label : "") + text);
  };
  write("pathlist(1)", form.pathlist[1]);
  write("pathlist(0)", form.pathlist[0]);
  write("home ", form.homefolder);
  write("App_Path()", own);
  write("", "");
  if (labelled || edition == Edition::base) {
    write("Dir(pathlist(1))", first_file(form.files, form.pathlist[1]));
    write("Dir(pathlist(0))", first_file(form.files, form.pathlist[0]));
  }
  write("Dir(App_Path())", first_file(form.files, own));
}

}  // namespace

std::string executable(const Form1& form, Edition edition) {
  return form.versionfolder + data(edition).executable;
}

bool is_base_registered(const std::string& path) { return length_in_characters(path) > 4; }

void set_versionfolder(Form1& form) {
  form.versionfolder = form.gamepath;
  form.installfolder = form.gamepath;
  write_info(form, form.versionfolder);
}

void read_release_of(Form1& form, Edition edition) {
  form.foundversion = getexeversion(form.system, executable(form, edition));
}

void select_at_startup(Form1& form, Edition edition) {
  const bool expansion = edition == Edition::expansion;
  set_edition(form, edition);
  if (!expansion || !form.debugmode)
    set_roots(form, edition, true);
  show_selection(form, edition, true);
  loadoriginalmaps(form);
  if (!expansion)
    return;
  // Also read the release of the base game's executable, for the diagnostic file.
  set_versionfolder(form);
  read_release_of(form, Edition::base);
  write_info(form, form.foundversion);
}

void selectedition(Form1& form, Edition edition) {
  form.Command6.set_enabled(false);
  form.Command7.set_enabled(false);
  set_edition(form, edition);
  set_roots(form, edition, edition == Edition::base);
  show_selection(form, edition, false);
  // When the user folder cannot be shown the list stays as it is; nothing else depends on it.
  static_cast<void>(form.Dir1.set_path(form.pathlist[0]));
  loadoriginalmaps(form);
  set_versionfolder(form);
  read_release_of(form, edition);
  write_info(form, form.foundversion);
}
