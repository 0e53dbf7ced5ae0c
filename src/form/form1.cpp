// The window as plain data: its controls, and the values that its procedures share.
#include "form/form1.h"

#include "engine/numbers.h"
#include "platform/printable.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <set>
#include <utility>

void Form1::set_caption(std::string new_caption) {
  own_caption = std::move(new_caption);
  screen.show_caption(own_caption);
}

void end_program(Form1& form) {
  form.screen.end(form.trouble ? 1 : 0);
  std::abort();  // never reached; not every compiler sees that the call above does not return
}

void end_with_message(Form1& form, const std::string& text) {
  show_trouble(form, text);
  end_program(form);
}

void end_out_of_memory(Form1& form) {
  try {
    report_trouble(form, out_of_memory_message);
  } catch (const std::bad_alloc&) {
    form.trouble = true;
    std::fprintf(stderr, "%s\n", out_of_memory_message);  // needs no memory
  }
  end_program(form);
}

void end_interrupted(Form1& form, long converted) {
  form.trouble = true;
  form.screen.print_error("Interrupted: " + std::to_string(converted) +
                          " maps were converted, the rest is as it was.");
  end_program(form);
}

void show_trouble(Form1& form, const std::string& text) {
  form.trouble = true;
  if (form.unattended && form.screen.has_boxes())
    form.screen.print_error(text);
  form.screen.message_box(text);
}

std::string in_box(const Form1& form, const std::string& text) {
  return form.unattended || !form.screen.has_boxes() ? printable(text) : text;
}

std::string advise_folder(System& system, const std::string& file) {
  const std::string folder = system.installed_folder(file);
  return "Start the program in the folder that holds its data files" +
         (folder.empty() ? "." : ": " + printable(folder));
}

void report_trouble(Form1& form, const std::string& text) {
  if (!form.unattended)
    return show_trouble(form, text);
  form.trouble = true;
  form.screen.print_error(text);
}

void report_trouble(Form1& form, const Failure& failure) {
  report_trouble(form, printable(failure.text()));
}

void report_troubles(Form1& form, const std::string& one, const std::string& many,
                     const std::vector<Failure>& failures) {
  std::set<std::string> known;
  std::string lines;
  for (const Failure& failure : failures)
    if (const auto [line, added] = known.insert(printable(failure.text())); added)
      lines += "\r\n" + *line;
  if (!known.empty())
    report_trouble(form,
                   (known.size() == 1 ? one : std::to_string(known.size()) + " " + many) + lines);
}

void next_stage(Form1& form) {
  form.Label8.set_text(std::to_string(whole_part(numeric_value(form.Label8.text())) + 1));
}
