// The form in a window: a widget for each row of the layout, at its place.
#pragma once

#include "form/form1.h"
#include "ui/qt/widgets.h"

#include <QFocusFrame>
#include <QWidget>

#include <map>
#include <string_view>

class MainWindow : public QWidget {
public:
  // Mirrors the form as it is. The form must outlive the window.
  explicit MainWindow(Form1& form_in);

  // Shows a control as it is now.
  void refresh(const Control& control);

  // Adds to the end of a text box, after what the user has typed into it.
  void append(const Control& control, std::string_view text);

protected:
  void closeEvent(QCloseEvent* event) override;  // ends the program
  void resizeEvent(QResizeEvent* event) override;

private:
  void make_room() const;
  void place();

  Form1& form;
  std::map<const Control*, Mirror> mirrors;
};
