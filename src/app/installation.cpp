// Finds the installed editions, and selects one where there is no choice.
#include "app/installation.h"

#include "app/edition.h"
#include "app/infofile.h"
#include "convert/originalmaps.h"
#include "platform/exeversion.h"
#include "platform/services.h"

namespace {

// The expansion's folder text must be longer than this to count as registered.
constexpr std::size_t expansionpathlength = 3;

// An edition's installation folder in the registry, "\" appended.
std::string registeredpath(Form1& form, bool wide, const std::string& edition) {
  const std::string software =
      wide ? R"(HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node)" : R"(HKEY_LOCAL_MACHINE\SOFTWARE)";
  const std::string value = software + R"(\Orbwright\Paxhollow\)" + edition + R"(\Path)";
  return regaccess(form.system, "read", value, "Path", "string") + "\\";
}

void findbase(Form1& form, const std::string& path) {
  if (path.size() <= basepathlength || !direxists(form.files, path))
    return;
  form.Command6.setenabled(true);
  form.basefound = true;
}

void findexpansion(Form1& form) {
  if (!form.expansionregistered || !direxists(form.files, form.expansionpath))
    return;
  form.Command7.setenabled(true);
  form.expansionfound = true;
}

void setfound(Form1& form) {
  form.bothfound = form.basefound && form.expansionfound;
  form.expansiononly = form.expansionfound && !form.basefound;
  if (form.expansiononly)
    setgamepath(form, Edition::expansion);
  else if (form.basefound && !form.bothfound)
    setgamepath(form, Edition::base);
}

void writestartupselection(Form1& form) {
  const std::string own = App_Path(form.system);
  writeinfo(form, "pathlist(1)" + form.pathlist[1]);
  writeinfo(form, "pathlist(0)" + form.pathlist[0]);
  writeinfo(form, "home " + form.homefolder);
  writeinfo(form, "App_Path()" + own);
  writeinfo(form, "");
  writeinfo(form, "Dir(pathlist(1))" + firstfile(form.files, form.pathlist[1]));
  writeinfo(form, "Dir(pathlist(0))" + firstfile(form.files, form.pathlist[0]));
  writeinfo(form, "Dir(App_Path())" + firstfile(form.files, own));
}

void setversionfolder(Form1& form) {
  form.versionfolder = form.gamepath;
  form.installfolder = form.gamepath;
  writeinfo(form, form.versionfolder);
}

void readreleaseof(Form1& form, Edition edition) {
  form.foundversion = getexeversion(form.system, executable(form, edition));
}

void select(Form1& form, Edition edition) {
  const bool expansion = edition == Edition::expansion;
  setedition(form, edition);
  if (!expansion || !form.debugmode)
    setfolders(form, edition, true);
  showroots(form);
  writestartupselection(form);
  loadoriginalmaps(form);
  if (!expansion)
    return;
  // The base game's executable too, for the diagnostic file.
  setversionfolder(form);
  readreleaseof(form, Edition::base);
  writeinfo(form, form.foundversion);
}

}  // namespace

void findinstallations(Form1& form) {
  const bool wide = is64bit(form.system, form.files, form.sysdrive);
  form.expansionpath = registeredpath(form, wide, "voratarnfall");
  form.expansionregistered =
      form.expansionpath.size() > expansionpathlength && direxists(form.files, form.expansionpath);
  form.basepath = registeredpath(form, wide, "vora");
  form.bundlepath = registeredpath(form, wide, "vorazendrel");
  findbase(form, form.basepath);
  findbase(form, form.bundlepath);
  findexpansion(form);
  setfound(form);
}

void decideedition(Form1& form) {
  if (form.bothfound) {
    form.Command6.setvisible(true);
    form.Command7.setvisible(true);
    return;
  }
  select(form, form.expansionfound ? Edition::expansion : Edition::base);
}

void readrelease(Form1& form) {
  setversionfolder(form);
  if (form.expansionfound)
    readreleaseof(form, Edition::expansion);
  if (form.basefound)
    readreleaseof(form, Edition::base);
  writeinfo(form, "voraversion" + form.foundversion);
}
