// What happens when the window is created, before it takes any input.
#include "app/startup.h"

#include "app/command_line.h"
#include "app/installation.h"
#include "app/target.h"
#include "convert/conversion.h"
#include "discover/search.h"
#include "platform/os_version.h"
#include "platform/printable.h"
#include "platform/registry_and_folders.h"

namespace {

// The labels that say on what kind of machine the program runs.
void fill_info_panel(Form1& form, bool is_64bit) {
  const auto value = [&](const char* name) { return form.system.environment(name); };
  form.Label11.set_text(value("PROCESSOR_ARCHITECTURE") + " type");
  form.Label12.set_text(value("PROCESSOR_IDENTIFIER") + " ID");
  form.Label13.set_text(value("PROCESSOR_LEVEL") + " Level");
  form.Label14.set_text(value("PROCESSOR_REVISION") + " revision");
  form.Label15.set_text(getosshortname(form.system));
  form.Label16.set_text(is_64bit ? " 64 bit" : " 32 bit");
  form.Label17.set_text(value("NUMBER_OF_PROCESSORS") + " cores");
  form.Label18.set_text(value("OS") + " O.S.");
}

void start_info(Form1& form, bool is_64bit) {
  create_info(form);
  write_info(form, getosshortname(form.system) + ", 64 bit ?" + (is_64bit ? "True" : "False"));
  write_info(form, form.Label11.text() + form.Label17.text() + form.Label12.text());
  write_info(form, "");
}

void set_homefolder(Form1& form) {
  form.homefolder =
      getlocalappdata(form.system, [&](const std::string& text) { show_trouble(form, text); });
  write_info(form, form.homefolder);
}

void report_unread_registry(Form1& form) {
  const std::string reason = form.system.explain_unread_user();
  if (!reason.empty())
    report_trouble(form,
                   "Your part of the registry cannot be read, so your maps may not be found: " +
                       printable(reason));
}

// On several Wine prefixes a player could not tell whose drives these are.
void name_machine(Form1& form) {
  const std::string folder = form.system.machine_folder();
  if (!folder.empty())
    form.Drive1.set_tooltip("Wine prefix: " + folder);
}

// Without game, maps and templates the program was started at the wrong place.
void report_nothing_to_do(Form1& form) {
  const std::string templates = form.edition + "newstruct0.txt";
  if (form.basefound || form.expansionfound || form.foundlist.size() > 1 ||
      !first_file(form.files, templates).empty())
    return;
  report_trouble(form, "Nothing was done: there is no game, no map and no template here. " +
                           advise_folder(form.system, templates));
}

[[noreturn]] void run_silently(Form1& form) {
  findgalaxies(form);
  report_nothing_to_do(form);
  fixgalaxies(form);
  end_program(form);
}

}  // namespace

void startup(Form1& form) {
  form.screen.show();
  form.unattended = will_be_silent(form.system);
  form.sysdrive = system_drive(form.system);
  name_machine(form);
  read_target(form);
  const bool is_64bit = is64bit(form.system, form.files, form.sysdrive);
  fill_info_panel(form, is_64bit);
  start_info(form, is_64bit);
  set_homefolder(form);
  report_unread_registry(form);
  form.File1.set_pattern("*.galaxy");
  find_installations(form, is_64bit);
  decide_edition(form);
  read_release(form);
  check_release(form);
  examine_arguments(form);
  if (form.silentmode)
    run_silently(form);
  form.Command2.set_enabled(false);
}
