// A message with an OK button.
#include "ui/qt/message_box.h"

#include "form/form1.h"
#include "ui/layout.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

// Plain text: it may hold untrusted file names.
QPlainTextEdit* make_text(const QString& text, const QSize& work_area) {
  auto* box = new QPlainTextEdit(text);
  box->setReadOnly(true);
  box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box->setAccessibleName(program_title);
  const QFontMetrics metrics = box->fontMetrics();
  const int line = metrics.lineSpacing();
  const QRect wrapped(0, 0, message_width * line, 0);
  const QSize needed = metrics.boundingRect(wrapped, Qt::TextWordWrap, box->toPlainText()).size();
  const Extent size = message_field({needed.width(), needed.height()},
                                    {work_area.width(), work_area.height()}, line);
  box->setMinimumSize(size.width, size.height);
  return box;
}

}  // namespace

void show_message(QWidget* parent, const QString& text) {
  QDialog dialog(parent);
  dialog.setWindowTitle(program_title);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  auto* column = new QVBoxLayout(&dialog);
  column->addWidget(make_text(text, parent->screen()->availableSize()));
  column->addWidget(buttons);
  buttons->button(QDialogButtonBox::Ok)->setFocus();
  dialog.resize(dialog.minimumSizeHint());
  dialog.exec();
}
