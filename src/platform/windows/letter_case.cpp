// Letter case as Windows defines it.
#include "platform/letter_case.h"

#include "platform/windows/wide_text.h"

#include <windows.h>

std::string lowercase(std::string_view text) {
  std::wstring wide = widen(text);
  const int size = static_cast<int>(wide.size());
  LCMapStringW(LOCALE_INVARIANT, LCMAP_LOWERCASE, wide.data(), size, wide.data(), size);
  return narrow(wide);
}
