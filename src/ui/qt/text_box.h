// A text box to which the program appends many lines, and in which the user types.
#pragma once

#include "form/control.h"
#include "ui/qt/texts.h"

#include <QPlainTextEdit>
#include <QTimer>

#include <string>
#include <string_view>
#include <utility>

class TextBox : public QPlainTextEdit {
public:
  explicit TextBox(QWidget* parent) : QPlainTextEdit(parent) {
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);  // undoing would remove what the program has appended
  }

  // Stores in `control` what the user types. The control must outlive the box's last event.
  void report_typing_to(Control& control) {
    connect(this, &QPlainTextEdit::textChanged, [this, &control] {
      insert_pending();
      control.store_typed(form_text(toPlainText()));
    });
  }

  // Appends text. It appears when messages are next processed: laying it out at once is ten times
  // faster than line by line.
  void add(std::string_view text) {
    if (pending.empty())
      QTimer::singleShot(0, this, [this] { insert_pending(); });
    pending += text;
  }

private:
  void insert_pending() {
    const QSignalBlocker not_typed(this);
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(to_qt(std::exchange(pending, "")));
  }

  std::string pending;  // added, not yet laid out
};
