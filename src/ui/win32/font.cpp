// A font of the layout, for a monitor.
#include "ui/win32/font.h"

#include "platform/windows/wide.h"

#include <cmath>

namespace {

constexpr double pointsperinch = 72;

}  // namespace

FontHandle makefont(const Font& font, UINT dpi) {
  LOGFONTW wanted{};
  // A negative height is that of the letters, without the space between lines.
  wanted.lfHeight = -static_cast<LONG>(std::lround(font.points * dpi / pointsperinch));
  wanted.lfWeight = font.bold ? FW_BOLD : FW_NORMAL;
  wanted.lfItalic = font.italic;
  wanted.lfCharSet = DEFAULT_CHARSET;
  // Not the bitmap font of that name, which has the letters of one code page in a few sizes.
  wanted.lfOutPrecision = OUT_TT_ONLY_PRECIS;
  widen(font.name).copy(wanted.lfFaceName, LF_FACESIZE - 1);
  return FontHandle(CreateFontIndirectW(&wanted));
}
