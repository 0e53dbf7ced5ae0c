// Fonts of the layout, and captions that fit.
#pragma once

#include "ui/layout.h"

#include <QFont>
#include <QString>

// A font of the layout or, where it is not installed, the installed one with the closest metrics.
QFont font_of(const Font& font);

// Whether `text` fits; a single line may be taller than its room.
bool fits(const QFont& font, const QString& text, const Room& room);

// `font` with the lettering in which `text` fits.
QFont fitted(const QFont& font, const QString& text, const Room& room);
