// A message with an OK button.
#pragma once

#include <QString>
#include <QWidget>

// Shows plain text, which can be selected, in a box that fits the screen of `parent`: a long text
// scrolls. Returns when the user has answered.
void show_message(QWidget* parent, const QString& text);
