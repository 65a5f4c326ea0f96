#include "util/win32/long_path.h"

#include <vector>

#include "util/win32/unicode.h"
#include "util/win32/win32_api.h"

namespace pairwell {

namespace {

bool IsDriveLetter(wchar_t c) {
  return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z');
}

// "C:\..." or "\\server\share...": a path that names one place whatever the
// current folder or drive.
bool FullyQualified(const std::wstring& path) {
  if (path.size() >= 3 && IsDriveLetter(path[0]) && path[1] == L':' &&
      path[2] == L'\\') {
    return true;
  }
  return path.size() >= 3 && path[0] == L'\\' && path[1] == L'\\' &&
         path[2] != L'\\';
}

// Whether a component is "." or "..", which only GetFullPathNameW resolves.
bool HasDotComponent(const std::wstring& path) {
  std::wstring::size_type start = 0;
  while (start <= path.size()) {
    std::wstring::size_type end = path.find(L'\\', start);
    if (end == std::wstring::npos) end = path.size();
    const std::wstring part = path.substr(start, end - start);
    if (part == L"." || part == L"..") return true;
    start = end + 1;
  }
  return false;
}

bool FullPath(const std::wstring& path, std::wstring* full) {
  std::vector<wchar_t> buffer(MAX_PATH);
  for (;;) {
    const DWORD length =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(buffer.size()),
                         buffer.data(), nullptr);
    if (length == 0) return false;
    if (length < buffer.size()) {
      full->assign(buffer.data(), length);
      return true;
    }
    buffer.resize(length + 1);
  }
}

// Makes runs of "\" single after the first `keep` characters.
void SquashSlashes(std::wstring* path, std::wstring::size_type keep) {
  std::wstring out = path->substr(0, keep);
  for (std::wstring::size_type i = keep; i < path->size(); ++i) {
    if ((*path)[i] == L'\\' && out.size() >= keep && !out.empty() &&
        out.back() == L'\\') {
      continue;
    }
    out.push_back((*path)[i]);
  }
  *path = out;
}

}  // namespace

bool LongPath(const std::string& path, std::wstring* wide) {
  wide->clear();
  if (path.find('\0') != std::string::npos || path.empty()) return false;
  std::wstring given;
  if (!Widen(path, &given)) return false;
  for (wchar_t& c : given) {
    if (c == L'/') c = L'\\';
  }
  if (given.compare(0, 4, L"\\\\?\\") == 0 ||
      given.compare(0, 4, L"\\\\.\\") == 0) {
    *wide = given;
    return true;
  }
  std::wstring full = given;
  if (!FullyQualified(full) || HasDotComponent(full)) {
    if (!FullPath(given, &full) || !FullyQualified(full)) return false;
  }
  if (full[0] == L'\\') {
    // "\\server\share\x" becomes "\\?\UNC\server\share\x".
    SquashSlashes(&full, 2);
    *wide = L"\\\\?\\UNC\\" + full.substr(2);
  } else {
    SquashSlashes(&full, 3);
    *wide = L"\\\\?\\" + full;
  }
  return true;
}

std::wstring WithoutLongPrefix(const std::wstring& path) {
  if (path.compare(0, 8, L"\\\\?\\UNC\\") == 0) {
    return L"\\\\" + path.substr(8);
  }
  if (path.compare(0, 4, L"\\\\?\\") == 0) return path.substr(4);
  return path;
}

}  // namespace pairwell
