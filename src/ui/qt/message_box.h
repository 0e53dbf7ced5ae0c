// A message with an OK button.
#pragma once

#include <QString>
#include <QWidget>

// Shows plain text, which can be selected and scrolls when it is long. Returns when the user has
// answered.
void show_message(QWidget* parent, const QString& text);
