// A text box to which the program appends many lines, and in which the user types.
#include "ui/qt/text_box.h"

#include "ui/qt/texts.h"

#include <QTimer>

#include <utility>

TextBox::TextBox(QWidget* parent) : QPlainTextEdit(parent) {
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setTabChangesFocus(true);
  setUndoRedoEnabled(false);  // undoing would remove what the program has appended
}

void TextBox::report_typing_to(Control& control) {
  connect(this, &QPlainTextEdit::textChanged, [this, &control] {
    insert_pending();
    control.store_typed(form_text(toPlainText()));
  });
}

void TextBox::add(std::string_view text) {
  if (pending.empty())
    QTimer::singleShot(0, this, [this] { insert_pending(); });
  pending += text;
}

void TextBox::insert_pending() {
  const QSignalBlocker not_typed(this);
  QTextCursor cursor(document());
  cursor.movePosition(QTextCursor::End);
  cursor.insertText(to_qt(std::exchange(pending, "")));
}
