// The form in a window: a widget for each row of the layout, at its place.
#include "ui/qt/main_window.h"

#include "ui/qt/text_box.h"
#include "ui/qt/texts.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QIcon>

namespace {

// A frame around the window's list or text box that has the focus, which many styles do not show.
void show_focus(QWidget* window) {
  auto* frame = new QFocusFrame(window);
  const auto follow = [frame, window](QWidget*, QWidget* now) {
    const bool ours = now && now->window() == window;
    frame->setWidget(ours ? qobject_cast<QAbstractScrollArea*>(now) : nullptr);
  };
  QObject::connect(qApp, &QApplication::focusChanged, frame, follow);
}

// Rounds the corners, not the sizes, so that neighbours stay neighbours on any screen.
QRect pixel_rect(const Place& place, const QWidget& widget) {
  const auto corner = [&](int left, int top) {
    return QPoint(pixels(left, widget), pixels(top, widget));
  };
  const QPoint end = corner(place.left + place.width, place.top + place.height);
  return {corner(place.left, place.top), end - QPoint(1, 1)};
}

}  // namespace

MainWindow::MainWindow(Form1& form_in) : form(form_in) {
  setWindowIcon(QIcon(":/vora-map-updater.png"));
  setMinimumSize(pixels(window_width, *this), pixels(window_height, *this));
  resize(minimumSize());
  for (const ControlLayout& row : ::layout())
    for (const Control* control : form.controls())
      if (control->name() == row.name)
        mirrors.emplace(control, make_mirror(row, form, this));
  for (const Control* control : form.controls())
    refresh(*control);
  show_focus(this);
  place();
}

void MainWindow::refresh(const Control& control) {
  const Mirror& mirror = mirrors.at(&control);
  mirror.show();
  mirror.widget->setEnabled(control.enabled());
  mirror.widget->setToolTip(plain_tip(control.tooltip()));
  const bool appears = control.visible() && mirror.widget->isHidden();
  mirror.widget->setVisible(control.visible());
  if (!appears || !isVisible())
    return;
  make_room();
  repaint();  // the work of a silent run may follow, which does not yield
}

// What appears takes room from the labels beside it.
void MainWindow::make_room() const {
  for (const auto& [control, mirror] : mirrors)
    if (mirror.row->sized_to_text)
      mirror.show();
}

void MainWindow::append(const Control& control, std::string_view text) {
  static_cast<TextBox*>(mirrors.at(&control).widget)->add(text);
}

void MainWindow::closeEvent(QCloseEvent*) { end_program(form); }

void MainWindow::resizeEvent(QResizeEvent*) { place(); }

void MainWindow::place() {
  const double twips = double(twips_per_inch) / logicalDpiX();
  for (const auto& [control, mirror] : mirrors) {
    const Place at = place_of(*mirror.row, qRound(width() * twips), qRound(height() * twips));
    const QRect rect = pixel_rect(at, *this);
    if (mirror.row->sized_to_text)
      mirror.widget->move(rect.topLeft());
    else
      mirror.widget->setGeometry(rect);
  }
}
