// The layout's fonts on machines that have others.
#pragma once

#include "ui/layout.h"

#include <QFont>
#include <QSize>
#include <QString>

// A font of the layout; where it is not installed, the installed one that is closest in its
// metrics.
QFont fontof(const Font& font);

// Whether `text`, broken into lines at its blanks, fits into `size` pixels.
bool fits(const QFont& font, const QString& text, QSize size);

// `font`, made smaller until `text` fits, though never too small to read.
QFont fitted(QFont font, const QString& text, QSize size);
