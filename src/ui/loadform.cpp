// Brings the form to life.
#include "ui/loadform.h"

#include "app/startup.h"
#include "ui/handlers.h"
#include "ui/layout.h"

#include <new>

namespace {

void show_current_folder(Form1& form) {
  // A current folder that is on no drive leaves the lists empty.
  static_cast<void>(form.Dir1.set_path("."));
  form.Drive1.fill(form.system.drives(), form.Dir1.path().substr(0, 2));
}

}  // namespace

void load_form(Form1& form) {
  try {
    apply_layout(form);
    connect_lists(form);
    show_current_folder(form);
    startup(form);
  } catch (const std::bad_alloc&) {
    end_out_of_memory(form);
  }
}
