// A message with an OK button.
#pragma once

#include <QString>
#include <QWidget>

// Shows a text, which can be selected, and returns when it is answered. A long text scrolls.
void show_message(QWidget* parent, const QString& text);
