// The front end with a window.
#include "ui/qt/qtscreen.h"

#include "ui/qt/messagebox.h"
#include "ui/qt/texts.h"
#include "ui/standarderror.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

namespace {

// How long a window may take to appear before the program goes on without having seen it.
constexpr int appearancemilliseconds = 1000;
constexpr int pollmilliseconds = 5;

}  // namespace

void QtScreen::show() {
  window->show();
  const QDeadlineTimer deadline(appearancemilliseconds);
  while (!window->windowHandle()->isExposed() && !deadline.hasExpired()) {
    QCoreApplication::processEvents();
    QThread::msleep(pollmilliseconds);
  }
  QCoreApplication::processEvents();
}

void QtScreen::showcaption(const std::string& caption) { window->setWindowTitle(qtext(caption)); }

void QtScreen::messagebox(const std::string& text) { showmessage(window.get(), qtext(text)); }

void QtScreen::standarderror(const std::string& text) { writestandarderror(text); }

void QtScreen::processmessages() { QCoreApplication::processEvents(); }

void QtScreen::end(int status) {
  std::fflush(nullptr);
  std::_Exit(status);
}
