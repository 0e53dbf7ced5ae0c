// The entry of the window's library.
#include "ui/handlers.h"
#include "ui/qt/load_window.h"
#include "ui/qt/main_window.h"

#include <QApplication>

#include <string>

namespace {

char** arguments;        // the process's
std::string said_by_qt;  // since the start, each line after a CR LF

// Qt aborts the process when it cannot open the display. It has said why before, such as that a
// plugin is missing; its last message repeats it, and lists the plugins that there are.
void handle_message(QtMsgType type, const QMessageLogContext&, const QString& text) {
  for (const QString& line : text.split(u'\n', Qt::SkipEmptyParts))
    said_by_qt += "\r\nQt: " + line.trimmed().toStdString();
  if (type == QtFatalMsg)
    restart_without_display(arguments, said_by_qt);
}

}  // namespace

extern "C" int RUNWINDOW(Files& files, System& system, char** argv) {
  arguments = argv;
  int only_name = 1;  // none of the arguments is for Qt
  const QtMessageHandler usual = qInstallMessageHandler(handle_message);
  QApplication application(only_name, argv);
  qInstallMessageHandler(usual);
  QApplication::setDesktopFileName("vora-map-updater");

  MainWindow window;
  Form1 form(files, system, window);
  window.open(form);
  load_form(form);
  return QApplication::exec();
}
