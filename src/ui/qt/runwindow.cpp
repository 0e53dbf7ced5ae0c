// The window's entry: what the program calls of the library that holds it.
#include "ui/loadform.h"
#include "ui/qt/loadwindow.h"
#include "ui/qt/qtscreen.h"

#include <QApplication>

#include <cstdio>

namespace {

char** arguments;  // the process's own

// Qt would end the process when a display does not answer.
void handlefatal(QtMsgType type, const QMessageLogContext&, const QString& text) {
  std::fprintf(stderr, "%s\n", qPrintable(text));
  if (type == QtFatalMsg)
    restartwithoutdisplay(arguments);
}

}  // namespace

extern "C" int runwindow(Files& files, System& system, char** argv) {
  arguments = argv;
  int onlyname = 1;  // the arguments are the program's, not Qt's
  const QtMessageHandler usual = qInstallMessageHandler(handlefatal);
  QApplication application(onlyname, argv);
  qInstallMessageHandler(usual);
  QApplication::setDesktopFileName("vora-map-updater");

  QtScreen screen;
  Form1 form(files, system, screen);
  screen.open(form);
  loadform(form);
  return QApplication::exec();
}
