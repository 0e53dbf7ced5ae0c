// Loads the form, and defines what its buttons and lists do.
#include "ui/handlers.h"

#include "app/edition.h"
#include "app/startup.h"
#include "convert/conversion.h"
#include "convert/original_maps.h"
#include "discover/search.h"
#include "ui/layout.h"

#include <new>
#include <utility>

namespace {

// Points the directory list at a folder, or reports why it cannot be shown.
bool show_folder(Form1& form, const std::string& path) {
  const auto shown = form.Dir1.set_path(path);
  if (!shown)
    form.screen.message_box(shown.failure().text());
  return bool(shown);
}

// Shows the search root of a button.
void show_root(Form1& form, const Control& button, const std::string& root) {
  if (root.empty())
    form.screen.message_box("No folder is known yet for " + button.text() + ".");
  else
    show_folder(form, root);
}

void Command1_Click(Form1& form) {
  findgalaxies(form);
  warn_of_missing_list(form);
  form.Command1.set_enabled(false);
  form.Command2.set_enabled(true);
}

void Command2_Click(Form1& form) {
  fixgalaxies(form);
  form.Command1.set_enabled(true);
  form.Command2.set_enabled(false);
}

void Command3_Click(Form1& form) { end_program(form); }
void Command4_Click(Form1& form) { show_root(form, form.Command4, form.pathlist[1]); }
void Command5_Click(Form1& form) { show_root(form, form.Command5, form.pathlist[0]); }

// Maps may have been searched for before: they are converted as those of the edition.
void choose_edition(Form1& form, Edition edition) {
  selectedition(form, edition);
  warn_of_missing_list(form);
}

void Command6_Click(Form1& form) { choose_edition(form, Edition::base); }
void Command7_Click(Form1& form) { choose_edition(form, Edition::expansion); }

void Dir1_Change(Form1& form) {
  form.dirpath = form.Dir1.path();
  form.File1.set_path(form.dirpath);
}

void Drive1_Change(Form1& form) {
  form.rootpath = form.Drive1.text().substr(0, 2) + "\\";
  form.dirpath = form.rootpath;
  if (show_folder(form, form.dirpath)) {
    form.File1.set_path(form.dirpath);
    return;
  }
  // The drive is not ready: all three lists stay at the folder that they show.
  form.dirpath = form.Dir1.path();
  form.Drive1.set_text(form.dirpath.substr(0, 2));
}

constexpr std::pair<Control Form1::*, void (*)(Form1&)> click_handlers[] = {
    {&Form1::Command1, Command1_Click}, {&Form1::Command2, Command2_Click},
    {&Form1::Command3, Command3_Click}, {&Form1::Command4, Command4_Click},
    {&Form1::Command5, Command5_Click}, {&Form1::Command6, Command6_Click},
    {&Form1::Command7, Command7_Click},
};

// Does what the user asked for. No exception may pass through a front end's own frames.
template <class Work> void within_memory(Form1& form, const Work& work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    end_out_of_memory(form);
  }
}

}  // namespace

void press(Form1& form, const Control& button) {
  if (!button.enabled() || form.converting || (form.searching && &button != &form.Command3))
    return;
  for (const auto& [own, click] : click_handlers)
    if (&(form.*own) == &button)
      within_memory(form, [&] { click(form); });
}

Control& focus_after(Form1& form) {
  return form.Command1.enabled() ? form.Command1 : form.Command2;
}

void close_window(Form1& form) {
  if (form.silentmode)
    form.trouble = true;
  end_program(form);
}

void open_folder(Form1& form, const std::string& path) {
  if (!form.searching && !form.converting)
    within_memory(form, [&] { show_folder(form, path); });
}

void select_drive(Form1& form, const std::string& drive) {
  if (form.searching || form.converting || drive == form.Drive1.text())
    return;
  within_memory(form, [&] {
    form.Drive1.set_text(drive);
    Drive1_Change(form);
  });
}

void load_form(Form1& form) {
  within_memory(form, [&] {
    apply_layout(form);
    form.Dir1.changed = [&form] { Dir1_Change(form); };
    // The lists stay empty when the current folder cannot be listed.
    static_cast<void>(form.Dir1.set_path("."));
    form.Drive1.drives = form.system.drives();
    form.Drive1.set_text(form.Dir1.path().substr(0, 2));
    startup(form);
  });
}
