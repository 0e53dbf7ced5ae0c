// The window as plain data: its controls, and the values that its procedures share.
#include "form/form1.h"

#include "engine/numbers.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

// The C1 controls and the marks, embeddings and isolates of bidirectional text in UTF-8, each by
// the first and the last character of a range.
constexpr std::pair<std::string_view, std::string_view> disturbing[] = {
    {"\xC2\x80", "\xC2\x9F"},         {"\xD8\x9C", "\xD8\x9C"},
    {"\xE2\x80\x8E", "\xE2\x80\x8F"}, {"\xE2\x80\xA8", "\xE2\x80\xAE"},
    {"\xE2\x81\xA6", "\xE2\x81\xA9"},
};

// How many bytes at the start of a text must not reach a terminal.
std::size_t disturbing_length(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte < 0x20 || byte == 0x7F)
    return 1;
  for (const auto& [first, last] : disturbing)
    if (const auto start = text.substr(0, first.size()); first <= start && start <= last)
      return first.size();
  return 0;
}

}  // namespace

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
  static const std::string message =
      "The memory is not enough. Every map is as it was or converted.";
  try {
    report_trouble(form, message);
  } catch (const std::bad_alloc&) {
    // Not even a message fits; the exit status remains.
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
  form.screen.message_box(text);
}

void report_trouble(Form1& form, const std::string& text) {
  if (!form.unattended)
    return show_trouble(form, text);
  form.trouble = true;
  form.screen.print_error(text);
}

void report_troubles(Form1& form, const std::string& heading,
                     const std::vector<Failure>& failures) {
  if (failures.empty())
    return;
  std::string text = heading;
  for (const Failure& failure : failures)
    text += "\r\n" + printable(failure.text());
  report_trouble(form, text);
}

std::string printable(std::string_view text) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string shown;
  while (!text.empty()) {
    const std::size_t length = disturbing_length(text);
    for (const char c : text.substr(0, length))
      shown += {'\\', 'x', digits[static_cast<unsigned char>(c) >> 4],
                digits[static_cast<unsigned char>(c) & 0xF]};
    if (length == 0)
      shown += text.front();
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}

void next_stage(Form1& form) {
  form.Label8.set_text(std::to_string(whole_part(numeric_value(form.Label8.text())) + 1));
}
