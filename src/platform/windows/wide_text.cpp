// Converts between the program's UTF-8 and what Windows takes.
#include "platform/windows/wide_text.h"

#include <windows.h>

namespace {

std::wstring decode(UINT code_page, std::string_view text) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(code_page, 0, text.data(), size, wide.data(), length);
  return wide;
}

std::string encode(UINT code_page, DWORD flags, std::wstring_view text, BOOL* lossy) {
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(code_page, flags, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(code_page, flags, text.data(), size, bytes.data(), length, nullptr, lossy);
  return bytes;
}

}  // namespace

std::wstring widen(std::string_view text) { return decode(CP_UTF8, text); }

std::string narrow(std::wstring_view text) { return encode(CP_UTF8, 0, text, nullptr); }

bool is_utf8(std::string_view text) {
  return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                             static_cast<int>(text.size()), nullptr, 0) > 0;
}

std::string from_code_page(std::string_view text) { return narrow(decode(CP_ACP, text)); }

std::optional<std::string> to_code_page(std::string_view text) {
  if (GetACP() == CP_UTF8)
    return std::string(text);  // UTF-8 lacks no character
  BOOL lossy = FALSE;
  std::string bytes = encode(CP_ACP, WC_NO_BEST_FIT_CHARS, widen(text), &lossy);
  return lossy ? std::nullopt : std::optional(std::move(bytes));
}

std::optional<std::string> code_page_path(const std::string& path) {
  if (auto name = to_code_page(path))
    return name;
  const std::wstring wide = widen(path);
  const std::wstring name = system_text(
      [&](wchar_t* text, DWORD size) { return GetShortPathNameW(wide.c_str(), text, size); });
  return name.empty() ? std::nullopt : to_code_page(narrow(name));
}

std::wstring system_text(const AskText& ask) {
  std::wstring text(ask(nullptr, 0), L'\0');
  text.resize(ask(text.data(), static_cast<unsigned long>(text.size())));
  return text;
}
