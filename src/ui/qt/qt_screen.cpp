// The front end with a window.
#include "ui/qt/qt_screen.h"

#include "ui/qt/message_box.h"
#include "ui/qt/texts.h"
#include "ui/write_stderr.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

namespace {

// How long a window may take to appear before the program goes on without having seen it.
constexpr int max_appearance_ms = 1000;
constexpr int poll_interval_ms = 5;

}  // namespace

void QtScreen::show() {
  window->show();
  const QDeadlineTimer deadline(max_appearance_ms);
  while (!window->windowHandle()->isExposed() && !deadline.hasExpired()) {
    QCoreApplication::processEvents();
    QThread::msleep(poll_interval_ms);
  }
  QCoreApplication::processEvents();
}

void QtScreen::show_caption(const std::string& caption) { window->setWindowTitle(to_qt(caption)); }

void QtScreen::message_box(const std::string& text) { show_message(window.get(), to_qt(text)); }

void QtScreen::print_error(const std::string& text) { write_stderr(text); }

void QtScreen::process_messages() { QCoreApplication::processEvents(); }

void QtScreen::end(int status) {
  std::fflush(nullptr);
  std::_Exit(status);
}
