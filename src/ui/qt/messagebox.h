// A message with an OK button.
#pragma once

#include <QString>
#include <QWidget>

// Shows a text, which can be selected, and returns when it is answered. A long text scrolls.
void showmessage(QWidget* parent, const QString& text);
