// The widgets that mirror the form's controls, one for each row of the layout.
#pragma once

#include "form/form1.h"
#include "ui/layout.h"

#include <QWidget>

#include <functional>

struct Mirror {
  const ControlLayout* row;
  QWidget* widget;
  std::function<void()> show;  // makes the widget show its control's text or rows
};

// Makes the widget of a row in `window`, which owns it. It passes what the user does to the form's
// handlers.
Mirror make_mirror(const ControlLayout& row, Form1& form, QWidget* window);
