// A message with an OK button.
#include "ui/qt/messagebox.h"

#include "form/form1.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

QLabel* textlabel(const QString& text) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);  // it holds names that strangers gave
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  return label;
}

}  // namespace

void showmessage(QWidget* parent, const QString& text) {
  QDialog dialog(parent);
  dialog.setWindowTitle(programtitle);
  auto* area = new QScrollArea;
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  area->setWidget(textlabel(text));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  auto* column = new QVBoxLayout(&dialog);
  column->addWidget(area);
  column->addWidget(buttons);
  buttons->button(QDialogButtonBox::Ok)->setFocus();
  dialog.exec();
}
