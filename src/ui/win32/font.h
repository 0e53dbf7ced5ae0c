// Fonts of the layout on a monitor of so many dots per inch, and captions that fit.
#pragma once

#include "ui/layout.h"

#include <memory>
#include <string>

#include <windows.h>

struct DeleteFont {
  using pointer = HFONT;
  void operator()(HFONT font) const { DeleteObject(font); }
};
using FontHandle = std::unique_ptr<HFONT, DeleteFont>;

// `stretch`: the letters' width in percent of the font's own.
FontHandle make_font(const Font& font, int dpi, int stretch = 100);

// Whether `text` fits; a single line may be taller than its room.
bool fits(HFONT font, const std::wstring& text, const Room& room);

// `font` with the lettering in which `text` fits.
FontHandle make_fitting_font(const Font& font, int dpi, const std::wstring& text, const Room& room);

// The font of a control.
HFONT font_of(HWND control);

// The size in pixels of a text whose lines wrap at a width; a word may be wider.
SIZE text_size(HFONT font, const std::wstring& text, int width);

// The width of a line of text in pixels.
int text_width(HFONT font, const std::wstring& text);
