// Path text routines. Both "/" and "\" count as slashes wherever a path is
// tested for one; paths are joined with "/" on every system, so that a
// file's relative name, its journal lines and the logs read the same on
// Windows (whose calls take either) as on POSIX.
#ifndef PAIRWELL_UTIL_PATH_H_
#define PAIRWELL_UTIL_PATH_H_

#include <string>

namespace pairwell {

constexpr char kPathSeparator = '/';

// True for "/" and "\".
bool IsSlash(char c);

// Joins a base path and a relative part. Trailing spaces of both are
// removed, and one trailing slash of the base. A part that starts with a
// slash or whose second character is ":" is returned as it is (it is already
// absolute). Otherwise the part is walked by its slash-separated components:
// "." is skipped, ".." drops the base's last component (a root "/" stays),
// anything else is appended after a separator, or becomes the base when the
// base is empty.
std::string CombinePath(const std::string& base, const std::string& rel);

// Joins a folder and a name (or relative path) as they are: no trimming,
// no "." or ".." walking, no drive rule. For names that come from a listing,
// which may end in a blank or hold a ":".
std::string JoinPath(const std::string& folder, const std::string& rel);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_PATH_H_
