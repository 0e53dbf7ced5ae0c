// Fonts of the layout on a monitor of so many dots per inch, and captions that fit.
#include "ui/win32/font.h"

#include "platform/windows/wide_text.h"

#include <cmath>

namespace {

constexpr double points_per_inch = 72;

struct DeleteContext {
  using pointer = HDC;
  void operator()(HDC context) const { DeleteDC(context); }
};
using ContextHandle = std::unique_ptr<HDC, DeleteContext>;

// A device context of the screen in which a font is measured.
ContextHandle measuring_context(HFONT font) {
  ContextHandle context(CreateCompatibleDC(nullptr));
  SelectObject(context.get(), font);
  return context;
}

// `width`: of an average letter in pixels; 0 for the font's own.
FontHandle font_of_width(const Font& font, int dpi, LONG width) {
  LOGFONTW wanted{};
  // Negative: the height of the letters, without the space between lines.
  wanted.lfHeight = -static_cast<LONG>(std::lround(font.points * dpi / points_per_inch));
  wanted.lfWidth = width;
  wanted.lfWeight = font.bold ? FW_BOLD : FW_NORMAL;
  wanted.lfItalic = font.italic;
  wanted.lfCharSet = DEFAULT_CHARSET;
  // No bitmap font of that name: it has a single code page and a few sizes.
  wanted.lfOutPrecision = OUT_TT_ONLY_PRECIS;
  wanted.lfPitchAndFamily = VARIABLE_PITCH | FF_SWISS;  // where the named font is missing
  widen(font.name).copy(wanted.lfFaceName, LF_FACESIZE - 1);
  return FontHandle(CreateFontIndirectW(&wanted));
}

}  // namespace

FontHandle make_font(const Font& font, int dpi, int stretch) {
  FontHandle own = font_of_width(font, dpi, 0);
  TEXTMETRICW metrics{};
  if (stretch == 100 || !GetTextMetricsW(measuring_context(own.get()).get(), &metrics))
    return own;
  return font_of_width(font, dpi, std::lround(metrics.tmAveCharWidth * stretch / 100.0));
}

bool fits(HFONT font, const std::wstring& text, const Room& room) {
  if (text_width(font, text) <= room.width)
    return true;
  const SIZE needed = text_size(font, text, room.width);
  return room.wraps && needed.cx <= room.width && needed.cy <= room.height;
}

FontHandle make_fitting_font(const Font& font, int dpi, const std::wstring& text,
                             const Room& room) {
  FontHandle made;
  fit_lettering(font.points, [&](const Lettering& lettering) {
    Font tried = font;
    tried.points = lettering.points;
    made = make_font(tried, dpi, lettering.stretch);
    return fits(made.get(), text, room);
  });
  return made;
}

HFONT font_of(HWND control) {
  return reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
}

SIZE text_size(HFONT font, const std::wstring& text, int width) {
  RECT needed{0, 0, width, 0};
  DrawTextW(measuring_context(font).get(), text.c_str(), static_cast<int>(text.size()), &needed,
            DT_CALCRECT | DT_NOPREFIX | DT_WORDBREAK);
  return {needed.right, needed.bottom};
}

int text_width(HFONT font, const std::wstring& text) {
  SIZE size{};
  GetTextExtentPoint32W(measuring_context(font).get(), text.c_str(), static_cast<int>(text.size()),
                        &size);
  return size.cx;
}
