// A text box that takes many lines at a time from the program, and typing from the user.
#include "ui/qt/textbox.h"

#include "ui/qt/texts.h"

#include <QTimer>

#include <utility>

TextBox::TextBox(QWidget* parent) : QPlainTextEdit(parent) {
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setTabChangesFocus(true);
  setUndoRedoEnabled(false);  // undoing would take away what the program has told
}

void TextBox::tell(Control& control) {
  connect(this, &QPlainTextEdit::textChanged, [this, &control] {
    addwaiting();
    control.typed(formtext(toPlainText()));
  });
}

void TextBox::add(std::string_view text) {
  if (waiting.empty())
    QTimer::singleShot(0, this, [this] { addwaiting(); });
  waiting += text;
}

void TextBox::addwaiting() {
  const QSignalBlocker nottyped(this);
  QTextCursor cursor(document());
  cursor.movePosition(QTextCursor::End);
  cursor.insertText(qtext(std::exchange(waiting, "")));
}
