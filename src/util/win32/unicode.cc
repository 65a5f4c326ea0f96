#include "util/win32/unicode.h"

#include <cwchar>

#include "util/win32/win32_api.h"

namespace pairwell {

namespace {

bool NarrowChars(const wchar_t* wide, int length, DWORD flags,
                 std::string* text) {
  text->clear();
  if (length == 0) return true;
  const int size = WideCharToMultiByte(CP_UTF8, flags, wide, length, nullptr, 0,
                                       nullptr, nullptr);
  if (size <= 0) return false;
  text->resize(static_cast<std::size_t>(size));
  if (WideCharToMultiByte(CP_UTF8, flags, wide, length, &(*text)[0], size,
                          nullptr, nullptr) != size) {
    text->clear();
    return false;
  }
  return true;
}

}  // namespace

bool Widen(const std::string& text, std::wstring* wide) {
  wide->clear();
  if (text.empty()) return true;
  const int length = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS,
                                       text.data(), length, nullptr, 0);
  if (size <= 0) return false;
  wide->resize(static_cast<std::size_t>(size));
  if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length,
                          &(*wide)[0], size) != size) {
    wide->clear();
    return false;
  }
  return true;
}

bool Narrow(const std::wstring& wide, std::string* text) {
  return NarrowChars(wide.data(), static_cast<int>(wide.size()),
                     WC_ERR_INVALID_CHARS, text);
}

bool Narrow(const wchar_t* wide, std::string* text) {
  return NarrowChars(wide, static_cast<int>(std::wcslen(wide)),
                     WC_ERR_INVALID_CHARS, text);
}

std::string NarrowForDisplay(const std::wstring& wide) {
  std::string text;
  NarrowChars(wide.data(), static_cast<int>(wide.size()), 0, &text);
  return text;
}

}  // namespace pairwell
