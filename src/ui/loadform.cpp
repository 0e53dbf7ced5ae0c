// Brings the form to life.
#include "ui/loadform.h"

#include "app/startup.h"
#include "ui/handlers.h"
#include "ui/layout.h"

#include <new>

namespace {

void showcurrentfolder(Form1& form) {
  // A current folder that is on no drive leaves the lists empty.
  static_cast<void>(form.Dir1.setpath("."));
  form.Drive1.fill(form.system.drives(), form.Dir1.path().substr(0, 2));
}

}  // namespace

void loadform(Form1& form) {
  try {
    applylayout(form);
    connectlists(form);
    showcurrentfolder(form);
    startup(form);
  } catch (const std::bad_alloc&) {
    endoutofmemory(form);
  }
}
