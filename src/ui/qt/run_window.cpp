// The entry of the window's library.
#include "ui/handlers.h"
#include "ui/qt/load_window.h"
#include "ui/qt/main_window.h"

#include <QApplication>

namespace {

char** arguments;  // the process's

// Qt aborts the process when it cannot open the display, after several messages of its own.
void handle_fatal(QtMsgType type, const QMessageLogContext&, const QString&) {
  if (type == QtFatalMsg)
    restart_without_display(arguments);
}

}  // namespace

extern "C" int RUNWINDOW(Files& files, System& system, char** argv) {
  arguments = argv;
  int only_name = 1;  // none of the arguments is for Qt
  const QtMessageHandler usual = qInstallMessageHandler(handle_fatal);
  QApplication application(only_name, argv);
  qInstallMessageHandler(usual);
  QApplication::setDesktopFileName("vora-map-updater");

  MainWindow window;
  Form1 form(files, system, window);
  window.open(form);
  load_form(form);
  return QApplication::exec();
}
