// The command line: its only option is the silent run.
#include "app/command_line.h"

#include "platform/printable.h"

#include <algorithm>
#include <ranges>

namespace {

constexpr const char* silent_arguments[] = {"-s", "/s", "/silent", "-silent"};

// The text split at every single space; no pieces for the empty text.
std::vector<std::string> pieces(const std::string& text) {
  std::vector<std::string> result;
  for (const auto piece : std::views::split(text, ' '))
    result.emplace_back(piece.begin(), piece.end());
  return result;
}

bool asks_for_silence(System& system, const std::string& piece) {
  return std::ranges::count(silent_arguments, system.lowercase(piece)) > 0;
}

void switch_silent(Form1& form) {
  for (Control* command :
       {&form.Command1, &form.Command2, &form.Command3, &form.Command4, &form.Command5})
    command->set_enabled(false);
  form.Label19.set_visible(true);
  form.silentmode = true;
}

// A batch file cannot answer a box: what it says is on stderr, too.
[[noreturn]] void reject(Form1& form, const std::string& piece) {
  const std::string message = "Invalid argument: ";
  form.trouble = true;
  form.screen.print_error(message + printable(piece) +
                          "\r\nUsage: vora-map-updater [/silent] (see " + form.system.manual() +
                          ")");
  if (form.screen.has_boxes())
    form.screen.message_box(message + piece);
  end_program(form);
}

}  // namespace

bool will_be_silent(System& system) {
  return std::ranges::any_of(pieces(system.argument_text()), [&](const std::string& piece) {
    return asks_for_silence(system, piece);
  });
}

void examine_arguments(Form1& form) {
  for (const std::string& piece : pieces(form.system.argument_text())) {
    if (!asks_for_silence(form.system, piece))
      reject(form, piece);
    switch_silent(form);
  }
}
