// A message with an OK button.
#include "ui/qt/message_box.h"

#include "form/form1.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The largest size of the text, in line heights; a longer one scrolls.
constexpr QSize max_lines(40, 24);

// As large as its text, up to `max_lines`. Plain text: it may hold untrusted file names.
QPlainTextEdit* make_text(const QString& text) {
  auto* box = new QPlainTextEdit(text);
  box->setReadOnly(true);
  box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box->setAccessibleName(program_title);
  const QFontMetrics metrics = box->fontMetrics();
  const int line = metrics.lineSpacing();
  const QRect most(QPoint(0, 0), max_lines * line);
  const QSize needed = metrics.boundingRect(most, Qt::TextWordWrap, box->toPlainText()).size();
  box->setMinimumSize((needed + QSize(3, 2) * line).boundedTo(most.size()));
  return box;
}

}  // namespace

void show_message(QWidget* parent, const QString& text) {
  QDialog dialog(parent);
  dialog.setWindowTitle(program_title);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  auto* column = new QVBoxLayout(&dialog);
  column->addWidget(make_text(text));
  column->addWidget(buttons);
  buttons->button(QDialogButtonBox::Ok)->setFocus();
  dialog.resize(dialog.minimumSizeHint());
  dialog.exec();
}
