// What happens when the window is created, before it takes any input.
#include "app/startup.h"

#include "app/commandline.h"
#include "app/infofile.h"
#include "app/infopanel.h"
#include "app/installation.h"
#include "app/target.h"
#include "convert/conversion.h"
#include "discover/search.h"
#include "platform/osversion.h"
#include "platform/services.h"

namespace {

void startinfo(Form1& form) {
  const bool wide = is64bit(form.system, form.files, form.sysdrive);
  createinfo(form);
  writeinfo(form, getosshortname(form.system) + ", 64 bit ?" + (wide ? "True" : "False"));
  writeinfo(form, form.Label11.text() + form.Label17.text() + form.Label12.text());
  writeinfo(form, "");
}

void sethomefolder(Form1& form) {
  form.homefolder =
      getlocalappdata(form.system, [&](const std::string& text) { form.screen.messagebox(text); });
  writeinfo(form, form.homefolder);
}

[[noreturn]] void runsilently(Form1& form) {
  findgalaxies(form);
  fixgalaxies(form);
  endprogram(form);
}

}  // namespace

void startup(Form1& form) {
  form.screen.show();
  findsysdrive(form);
  readtarget(form);
  fillinfopanel(form);
  startinfo(form);
  sethomefolder(form);
  form.File1.setpattern("*.galaxy");
  findinstallations(form);
  decideedition(form);
  readrelease(form);
  checkrelease(form);
  examinearguments(form);
  if (form.silentmode)
    runsilently(form);
  form.Command2.setenabled(false);
}
