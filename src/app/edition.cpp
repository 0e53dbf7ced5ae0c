// The game's editions, and what changes when one is selected.
#include "app/edition.h"

#include "app/infofile.h"
#include "convert/originalmaps.h"
#include "platform/exeversion.h"
#include "platform/osversion.h"
#include "platform/services.h"

namespace {

struct EditionData {
  const char* letter;
  const char* userfolder;  // below `homefolder`
  const char* executable;
};

constexpr EditionData basedata = {baseletter, R"(\Kettlewick Games\Vorakai\)", "Vorakai.exe"};
constexpr EditionData expansiondata = {
    expansionletter, R"(\My Games\Kettlewick Games\Vorakai Tarnfall)", "Vorakai Tarnfall.exe"};

const EditionData& data(Edition edition) {
  return edition == Edition::base ? basedata : expansiondata;
}

void writebuttonselection(Form1& form, Edition edition) {
  const std::string own = App_Path(form.system);
  for (const std::string& line : {form.pathlist[1], form.pathlist[0], form.homefolder, own})
    writeinfo(form, line);
  writeinfo(form, "");
  if (edition == Edition::base) {
    writeinfo(form, firstfile(form.files, form.pathlist[1]));
    writeinfo(form, firstfile(form.files, form.pathlist[0]));
  }
  writeinfo(form, firstfile(form.files, own));
}

}  // namespace

std::string executable(const Form1& form, Edition edition) {
  return form.versionfolder + data(edition).executable;
}

void setgamepath(Form1& form, Edition edition) {
  if (edition == Edition::expansion) {
    form.gamepath = form.expansionpath;
    return;
  }
  for (const std::string& path : {form.basepath, form.bundlepath})
    if (path.size() > basepathlength)
      form.gamepath = path;
}

void setedition(Form1& form, Edition edition) {
  form.edition = data(edition).letter;
  if (edition == Edition::expansion)
    form.homefolder =
        getmydocs(form.system, [&](const std::string& text) { form.screen.messagebox(text); });
}

void setfolders(Form1& form, Edition edition, bool fallback) {
  setgamepath(form, edition);
  form.pathlist[1] = form.gamepath;
  form.pathlist[0] = form.homefolder + data(edition).userfolder;
  if (isvista(form.system) || iswin7(form.system))
    form.pathlist[1] = form.pathlist[0];
  if (fallback && firstfile(form.files, form.pathlist[0]).empty())
    form.pathlist[1] = App_Path(form.system);
}

void showroots(Form1& form) {
  form.Command4.settooltip(form.pathlist[1]);
  form.Command5.settooltip(form.pathlist[0]);
}

void selectedition(Form1& form, Edition edition) {
  form.Command6.setenabled(false);
  form.Command7.setenabled(false);
  setedition(form, edition);
  setfolders(form, edition, edition == Edition::base);
  showroots(form);
  writebuttonselection(form, edition);
  // A user folder that cannot be shown leaves the list where it is; the rest does not depend on it.
  static_cast<void>(form.Dir1.setpath(form.pathlist[0]));
  loadoriginalmaps(form);
  form.versionfolder = form.gamepath;
  writeinfo(form, form.versionfolder);
  form.foundversion = getexeversion(form.system, executable(form, edition));
  writeinfo(form, form.foundversion);
}
