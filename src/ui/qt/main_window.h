// The front end with a Qt window: a widget for each row of the layout, at its place.
#pragma once

#include "form/form1.h"
#include "ui/qt/widgets.h"

#include <QDeadlineTimer>
#include <QWidget>

#include <map>
#include <string>
#include <string_view>

class MainWindow : public QWidget, public Screen {
public:
  // Makes the widgets of `new_form`, whose screen is this window. Call it before any other
  // function.
  void open(Form1& new_form);

  // Returns when the window is on screen, or after a second if the display does not show it.
  void show() override;
  void show_caption(const std::string& caption) override;
  void refresh(const Control& control) override;
  void append(const Control& control, std::string_view text) override;
  void message_box(const std::string& text) override;
  void show_busy(bool busy) override;
  void process_messages() override;
  void show_alive() override;

  // Leaves the process without unwinding: no exception may pass through Qt's frames, and Qt's
  // objects are in use.
  [[noreturn]] void end(int status) override;

protected:
  void closeEvent(QCloseEvent* event) override;  // ends the program
  void resizeEvent(QResizeEvent* event) override;

private:
  void fit_on_screen();
  void arrange();  // gives the widgets their places, and the captions letters that fit there

  Form1* form = nullptr;
  QDeadlineTimer silence{0};  // within which the window need not show that it is alive
  std::map<const Control*, Mirror> mirrors;
  QWidget* const backstage = new QWidget(this, Qt::Window);  // of hidden widgets; never shown
};
