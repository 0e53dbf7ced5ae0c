// The labels that tell on what kind of machine the program runs.
#include "app/infopanel.h"

#include "platform/osversion.h"
#include "platform/services.h"

void findsysdrive(Form1& form) { form.sysdrive = form.system.environment("windir").substr(0, 2); }

void fillinfopanel(Form1& form) {
  const auto value = [&](const char* name) { return form.system.environment(name); };
  form.Label11.settext(value("PROCESSOR_ARCHITECTURE") + " type");
  form.Label12.settext(value("PROCESSOR_IDENTIFIER") + " ID");
  form.Label13.settext(value("PROCESSOR_LEVEL") + " Level");
  form.Label14.settext(value("PROCESSOR_REVISION") + " revision");
  form.Label15.settext(getosshortname(form.system));
  form.Label16.settext(is64bit(form.system, form.files, form.sysdrive) ? " 64 bit" : " 32 bit");
  form.Label17.settext(value("NUMBER_OF_PROCESSORS") + " cores");
  form.Label18.settext(value("OS") + " O.S.");
}
