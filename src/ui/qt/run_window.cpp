// The window's entry: what the program calls of the library that holds it.
#include "ui/handlers.h"
#include "ui/qt/load_window.h"
#include "ui/qt/qt_screen.h"

#include <QApplication>

#include <cstdio>

namespace {

char** arguments;  // the process's own

// Qt would end the process when a display does not answer.
void handle_fatal(QtMsgType type, const QMessageLogContext&, const QString& text) {
  std::fprintf(stderr, "%s\n", qPrintable(text));
  if (type == QtFatalMsg)
    restart_without_display(arguments);
}

}  // namespace

extern "C" int run_window(Files& files, System& system, char** argv) {
  arguments = argv;
  int only_name = 1;  // the arguments are the program's, not Qt's
  const QtMessageHandler usual = qInstallMessageHandler(handle_fatal);
  QApplication application(only_name, argv);
  qInstallMessageHandler(usual);
  QApplication::setDesktopFileName("vora-map-updater");

  QtScreen screen;
  Form1 form(files, system, screen);
  screen.open(form);
  load_form(form);
  return QApplication::exec();
}
