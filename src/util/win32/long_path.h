// Paths as the wide Windows file calls take them.
#ifndef PAIRWELL_UTIL_WIN32_LONG_PATH_H_
#define PAIRWELL_UTIL_WIN32_LONG_PATH_H_

#include <string>

namespace pairwell {

// The path in the form handed to the wide Windows file calls: "/" turned
// into "\", doubled slashes made single, and the "\\?\" prefix ("\\?\UNC\"
// for "\\server\share"), which lifts the 260-character limit and passes
// names to the file system as they are. A relative path, a drive-relative
// "C:x" and a path with "." or ".." components are made absolute by
// GetFullPathNameW first: the prefix stops Windows from resolving them. A
// path that has the prefix already ("\\?\", "\\.\") is only turned to
// UTF-16. False for text that is not UTF-8 or holds a NUL.
bool LongPath(const std::string& path, std::wstring* wide);

// The path as a person would write it: without a "\\?\" prefix, which
// GetModuleFileNameW and GetFinalPathNameByHandleW may give.
std::wstring WithoutLongPrefix(const std::wstring& path);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_WIN32_LONG_PATH_H_
