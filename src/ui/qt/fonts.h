// The layout's fonts on machines that have others.
#pragma once

#include "ui/layout.h"

#include <QFont>
#include <QSize>
#include <QString>

// A font of the layout; where it is not installed, the installed one that is closest in its
// metrics.
QFont font_of(const Font& font);

// What a caption may take: a size in pixels, and whether it may be broken into lines at its blanks.
struct Room {
  QSize size;
  bool wraps = false;
};

bool fits(const QFont& font, const QString& text, const Room& room);

// `font` in the lettering in which `text` fits.
QFont fitted(const QFont& font, const QString& text, const Room& room);
