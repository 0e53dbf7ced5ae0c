// Fonts of the layout, and captions that fit.
#include "ui/qt/fonts.h"

#include <QFontMetrics>
#include <QStringList>

#include <cstring>

namespace {

// The font itself, then its substitutes, the narrowest first.
QStringList families(const char* name) {
  if (std::strcmp(name, "Arial Narrow") == 0)
    return {"Arial Narrow", "Liberation Sans Narrow", "Nimbus Sans Narrow",
            "DejaVu Sans Condensed"};
  return {name,    "Microsoft Sans Serif", "Liberation Sans",
          "Arimo", "Nimbus Sans",          "DejaVu Sans Condensed"};
}

}  // namespace

QFont font_of(const Font& font) {
  QFont result(families(font.name));
  result.setPointSizeF(font.points);
  result.setBold(font.bold);
  result.setItalic(font.italic);
  return result;
}

bool fits(const QFont& font, const QString& text, const Room& room) {
  const QFontMetrics metrics(font);
  if (metrics.horizontalAdvance(text) <= room.width)
    return true;
  const QRect whole(0, 0, room.width, room.height);
  return room.wraps && whole.contains(metrics.boundingRect(whole, Qt::TextWordWrap, text));
}

QFont fitted(const QFont& font, const QString& text, const Room& room) {
  const auto with_lettering = [&](const Lettering& lettering) {
    QFont result = font;
    result.setPointSizeF(lettering.points);
    if (lettering.stretch != 100)  // which would also widen a font that is narrow by itself
      result.setStretch(lettering.stretch);
    return result;
  };
  return with_lettering(fit_lettering(font.pointSizeF(), [&](const Lettering& lettering) {
    return fits(with_lettering(lettering), text, room);
  }));
}
