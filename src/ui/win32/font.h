// A font of the layout, for a monitor.
#pragma once

#include "ui/layout.h"

#include <memory>

#include <windows.h>

struct DeleteFont {
  using pointer = HFONT;
  void operator()(HFONT font) const { DeleteObject(font); }
};
using FontHandle = std::unique_ptr<HFONT, DeleteFont>;

FontHandle makefont(const Font& font, UINT dpi);
