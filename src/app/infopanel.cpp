// The labels that tell on what kind of machine the program runs.
#include "app/infopanel.h"

#include "platform/osversion.h"
#include "platform/services.h"

void set_sysdrive(Form1& form) { form.sysdrive = form.system.environment("windir").substr(0, 2); }

void fill_info_panel(Form1& form) {
  const auto value = [&](const char* name) { return form.system.environment(name); };
  form.Label11.set_text(value("PROCESSOR_ARCHITECTURE") + " type");
  form.Label12.set_text(value("PROCESSOR_IDENTIFIER") + " ID");
  form.Label13.set_text(value("PROCESSOR_LEVEL") + " Level");
  form.Label14.set_text(value("PROCESSOR_REVISION") + " revision");
  form.Label15.set_text(getosshortname(form.system));
  form.Label16.set_text(is64bit(form.system, form.files, form.sysdrive) ? " 64 bit" : " 32 bit");
  form.Label17.set_text(value("NUMBER_OF_PROCESSORS") + " cores");
  form.Label18.set_text(value("OS") + " O.S.");
}
