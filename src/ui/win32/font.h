// A font of the layout, for a monitor, and captions that fit their room.
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

// `stretch`: the letters' width in hundredths of their own.
FontHandle make_font(const Font& font, UINT dpi, int stretch = 100);

// What a caption may take: a width in pixels, and where it is broken into lines a height as well.
struct Room {
  int width;
  int height;
  bool wraps;
};

bool fits(HFONT font, const std::wstring& text, const Room& room);

// `font` in the lettering in which `text` fits.
FontHandle make_fitting_font(const Font& font, UINT dpi, const std::wstring& text,
                             const Room& room);

// The font that a control shows its text in.
HFONT font_of(HWND control);

// The pixels that a line of text takes.
int text_width(HFONT font, const std::wstring& text);
