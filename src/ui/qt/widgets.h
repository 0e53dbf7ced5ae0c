// The widgets that mirror the form's controls, one for each row of the layout.
#pragma once

#include "form/form1.h"
#include "ui/layout.h"
#include "ui/qt/fonts.h"

#include <QWidget>

#include <functional>

struct Mirror {
  const ControlLayout* row;
  QWidget* widget;
  std::function<void()> show;  // makes the widget show its control's text or rows
};

// Makes the widget of a row in `window`, which owns it. What the user does with the widget goes to
// the form's handlers.
Mirror make_mirror(const ControlLayout& row, Form1& form, QWidget* window);

// What the caption of a row's button or label may take.
Room room_for(const ControlLayout& row, const Form1& form, const QWidget& widget);

// The pixels on a widget's screen of a length in twips.
int pixels(int twips, const QWidget& widget);
