// A text box that takes many lines at a time from the program, and typing from the user.
#pragma once

#include "form/control.h"

#include <QPlainTextEdit>

#include <string>
#include <string_view>

class TextBox : public QPlainTextEdit {
public:
  explicit TextBox(QWidget* parent);

  // Tells a control what the user types.
  void report_typing_to(Control& control);

  // Adds to the end. The text is seen when messages are processed next: laying it out once is
  // ten times faster than doing so line by line.
  void add(std::string_view text);

private:
  void insert_pending();

  std::string pending;  // added, but not yet laid out
};
