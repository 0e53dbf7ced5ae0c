// The one window as plain data: its controls and the values that its procedures share.
#include "form/form1.h"

#include "form/text.h"

#include <cstdlib>

void Form1::setcaption(std::string newcaption) {
  owncaption = std::move(newcaption);
  screen.showcaption(owncaption);
}

void endprogram(Form1& form) {
  form.screen.end(form.trouble ? 1 : 0);
  std::abort();  // never reached, but the compiler does not see that through a virtual call
}

void endwithmessage(Form1& form, const std::string& text) {
  form.trouble = true;
  form.screen.messagebox(text);
  endprogram(form);
}

void endoutofmemory(Form1& form) {
  telltrouble(form, "The memory is not enough. Every map is as it was or converted.");
  endprogram(form);
}

void telltrouble(Form1& form, const std::string& text) {
  form.trouble = true;
  if (form.silentmode)
    form.screen.standarderror(text);
  else
    form.screen.messagebox(text);
}

void telltroubles(Form1& form, const std::string& heading, const std::vector<Failure>& failures) {
  if (failures.empty())
    return;
  std::string text = heading;
  for (const Failure& failure : failures)
    text += "\r\n" + printable(failure.text());
  telltrouble(form, text);
}

void nextstage(Form1& form) {
  form.Label8.settext(std::to_string(wholepart(numericvalue(form.Label8.text())) + 1));
}
