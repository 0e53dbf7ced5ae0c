// The layout's fonts on machines that have others.
#include "ui/qt/fonts.h"

#include <QFontMetrics>
#include <QStringList>

#include <cstring>

namespace {

// Each list goes from the font itself to the widest that will do.
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
  const QRect whole(QPoint(0, 0), room.size);
  const QRect needed =
      QFontMetrics(font).boundingRect(whole, room.wraps ? Qt::TextWordWrap : 0, text);
  return needed.width() <= room.size.width() && needed.height() <= room.size.height();
}

QFont fitted(const QFont& font, const QString& text, const Room& room) {
  const auto lettered = [&](const Lettering& lettering) {
    QFont result = font;
    result.setPointSizeF(lettering.points);
    result.setStretch(lettering.stretch);
    return result;
  };
  return lettered(fit_lettering(font.pointSizeF(), [&](const Lettering& lettering) {
    return fits(lettered(lettering), text, room);
  }));
}
