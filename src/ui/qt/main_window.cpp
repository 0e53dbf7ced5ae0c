// The front end with a Qt window: a widget for each row of the layout, at its place.
#include "ui/qt/main_window.h"

#include "ui/handlers.h"
#include "ui/qt/combo_box_access.h"
#include "ui/qt/key_guard.h"
#include "ui/qt/message_box.h"
#include "ui/qt/text_box.h"
#include "ui/qt/texts.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QFocusFrame>
#include <QIcon>
#include <QScreen>
#include <QThread>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int max_appearance_ms = 1000;
constexpr int poll_interval_ms = 5;
constexpr int longest_silence_ms = 200;

// Frames the list or text box that has the focus; many styles do not show it.
void frame_focus(QWidget* window) {
  auto* frame = new QFocusFrame(window);
  const auto follow = [frame, window](QWidget*, QWidget* now) {
    const bool ours = now && now->window() == window;
    frame->setWidget(ours ? qobject_cast<QAbstractScrollArea*>(now) : nullptr);
  };
  QObject::connect(qApp, &QApplication::focusChanged, frame, follow);
}

}  // namespace

void MainWindow::open(Form1& new_form) {
  form = &new_form;
  ComboBoxAccess::install();
  setWindowIcon(QIcon(":/vora-map-updater.png"));
  const auto size_of = [this](int across, int down) {
    return QSize(pixels(across, logicalDpiX()), pixels(down, logicalDpiX()));
  };
  setMinimumSize(size_of(smallest_width, smallest_height));
  resize(size_of(window_width, window_height));
  fit_on_screen();
  for (const ControlLayout& row : ::layout())
    mirrors.emplace(&control_of(row, *form), make_mirror(row, *form, this));
  frame_focus(this);
  guard_keys(this);
}

void MainWindow::show() {
  QWidget::show();
  const QDeadlineTimer deadline(max_appearance_ms);
  while (!windowHandle()->isExposed() && !deadline.hasExpired()) {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    QThread::msleep(poll_interval_ms);
  }
  fit_on_screen();
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

// Shrinks the window to the screen, its frame included as soon as there is one.
void MainWindow::fit_on_screen() {
  resize(size().boundedTo(screen()->availableSize() - (frameSize() - size())));
}

void MainWindow::show_caption(const std::string& caption) { setWindowTitle(to_qt(caption)); }

void MainWindow::refresh(const Control& control) {
  const Mirror& mirror = mirrors.at(&control);
  const bool appears = control.visible() && mirror.widget->isHidden();
  // A screen reader finds even the hidden widgets of the window.
  if (QWidget* place = control.visible() ? this : backstage; mirror.widget->parentWidget() != place)
    mirror.widget->setParent(place);
  mirror.show();
  mirror.widget->setAccessibleName(to_qt(accessible_name(*mirror.row, *form)));
  mirror.widget->setEnabled(control.enabled());
  mirror.widget->setToolTip(plain_tip(control.tooltip()));
  mirror.widget->setVisible(control.visible());
  if (!appears || !isVisible())
    return;
  arrange();  // it takes room from the labels beside it
  repaint();  // at once: a silent run may follow, which does not yield
}

void MainWindow::append(const Control& control, std::string_view text) {
  static_cast<TextBox*>(mirrors.at(&control).widget)->add(text);
}

void MainWindow::message_box(const std::string& text) {
  pause_keys();
  QApplication::setOverrideCursor(Qt::ArrowCursor);  // not busy while it waits for the user
  show_message(this, to_qt(text));
  QApplication::restoreOverrideCursor();
}

void MainWindow::show_busy(bool busy) {
  if (busy)
    QApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QApplication::restoreOverrideCursor();
}

void MainWindow::process_messages() { QCoreApplication::processEvents(); }

// A window manager offers to end a program that does not answer its ping.
void MainWindow::show_alive() {
  if (!silence.hasExpired())
    return;
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  silence.setRemainingTime(longest_silence_ms);
}

void MainWindow::end(int status) {
  std::fflush(nullptr);
  std::_Exit(status);
}

void MainWindow::closeEvent(QCloseEvent*) { close_window(*form); }

void MainWindow::resizeEvent(QResizeEvent*) { arrange(); }

void MainWindow::arrange() {
  for (const auto& [control, mirror] : mirrors) {
    if (mirror.row->has_caption())
      mirror.show();
    const Place at = place_of(*mirror.row, width(), height(), logicalDpiX());
    if (mirror.row->sized_to_text)
      mirror.widget->move(at.left, at.top);
    else
      mirror.widget->setGeometry(at.left, at.top, at.width, at.height);
  }
}
