// The window as plain data: its controls, and the values that its procedures share.
#include "form/form1.h"

#include "engine/numbers.h"

#include <cstdlib>

void Form1::set_caption(std::string new_caption) {
  own_caption = std::move(new_caption);
  screen.show_caption(own_caption);
}

void end_program(Form1& form) {
  form.screen.end(form.trouble ? 1 : 0);
  std::abort();  // never reached; not every compiler sees that the call above does not return
}

void end_with_message(Form1& form, const std::string& text) {
  form.trouble = true;
  form.screen.message_box(text);
  end_program(form);
}

void end_out_of_memory(Form1& form) {
  report_trouble(form, "The memory is not enough. Every map is as it was or converted.");
  end_program(form);
}

void report_trouble(Form1& form, const std::string& text) {
  form.trouble = true;
  if (form.silentmode)
    form.screen.print_error(text);
  else
    form.screen.message_box(text);
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
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F)
      shown += {'\\', 'x', digits[byte >> 4], digits[byte & 0xF]};
    else
      shown += c;
  }
  return shown;
}

void next_stage(Form1& form) {
  form.Label8.set_text(std::to_string(whole_part(numeric_value(form.Label8.text())) + 1));
}
