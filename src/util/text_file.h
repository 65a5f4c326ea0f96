// Whole-file reading and safe whole-file replacement.
#ifndef PAIRWELL_UTIL_TEXT_FILE_H_
#define PAIRWELL_UTIL_TEXT_FILE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace pairwell {

// Reads the file's bytes into *content. On failure returns false with the
// system error number in *error_number; *content then holds what was read.
bool ReadTextFile(const std::string& path, std::string* content,
                  int* error_number);

// Replaces the file's content: writes a temporary file in the same folder,
// flushes it to disk and renames it over the path, so the old file stays
// whole until the new one is complete. An existing file's permission bits are
// kept. Throws std::system_error (with the path in its message) on failure,
// after removing the temporary file.
void ReplaceFileContent(const std::string& path, const std::string& content);

// Removes the temporary files that a ReplaceFileContent of this path left
// when its process died (a crash, a power cut), those last written before
// the POSIX time `before`: a newer one may be another process's save in
// progress. Returns the paths removed.
std::vector<std::string> RemoveStaleReplacements(const std::string& path,
                                                 std::int64_t before);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_TEXT_FILE_H_
