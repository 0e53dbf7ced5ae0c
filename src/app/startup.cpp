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

void start_info(Form1& form) {
  const bool wide = is64bit(form.system, form.files, form.sysdrive);
  create_info(form);
  write_info(form, getosshortname(form.system) + ", 64 bit ?" + (wide ? "True" : "False"));
  write_info(form, form.Label11.text() + form.Label17.text() + form.Label12.text());
  write_info(form, "");
}

void set_homefolder(Form1& form) {
  form.homefolder =
      getlocalappdata(form.system, [&](const std::string& text) { form.screen.message_box(text); });
  write_info(form, form.homefolder);
}

[[noreturn]] void run_silently(Form1& form) {
  findgalaxies(form);
  fixgalaxies(form);
  end_program(form);
}

}  // namespace

void startup(Form1& form) {
  form.screen.show();
  set_sysdrive(form);
  read_target(form);
  fill_info_panel(form);
  start_info(form);
  set_homefolder(form);
  form.File1.set_pattern("*.galaxy");
  find_installations(form);
  decide_edition(form);
  read_release(form);
  check_release(form);
  examine_arguments(form);
  if (form.silentmode)
    run_silently(form);
  form.Command2.set_enabled(false);
}
