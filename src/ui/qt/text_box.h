// A text box to which the program appends many lines, and in which the user types.
#pragma once

#include "form/control.h"

#include <QPlainTextEdit>

#include <string>
#include <string_view>

class TextBox : public QPlainTextEdit {
public:
  explicit TextBox(QWidget* parent);

  // Stores in `control` what the user types. The control must outlive the box's last event.
  void report_typing_to(Control& control);

  // Appends text. It appears when messages are next processed: laying it out at once is ten times
  // faster than line by line.
  void add(std::string_view text);

private:
  void insert_pending();

  std::string pending;  // added, not yet laid out
};
