// Small file helpers for tests on real folders.
#ifndef PAIRWELL_TESTS_SUPPORT_DISK_FILES_H_
#define PAIRWELL_TESTS_SUPPORT_DISK_FILES_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace pairwell {

// Creates one folder (its parent must exist); fails the test otherwise.
void MakeFolder(const std::string& path);

// Writes the file with the given bytes, permission bits and modification
// time (seconds since the epoch); fails the test when it cannot. Windows
// keeps only what KeptMode and KeptNanoseconds say.
void Put(const std::string& path, const std::string& content,
         std::int64_t seconds, long nanoseconds = 0, int mode = 0644);

// The file's bytes; "" when it cannot be read.
std::string Read(const std::string& path);

// Whether anything (a link included) stands at the path.
bool Exists(const std::string& path);

// What a test compares before and after: bytes, modification time (to the
// nanosecond) and permission bits (as ModeOf reads them).
struct FileState {
  std::string content;
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  int mode = 0;

  bool operator==(const FileState& other) const {
    return content == other.content && seconds == other.seconds &&
           nanoseconds == other.nanoseconds && mode == other.mode;
  }
};

// Prints the first 40 bytes, the size, the time and the mode.
std::ostream& operator<<(std::ostream& out, const FileState& state);

// The file's state; an empty state when it is missing.
FileState StateOf(const std::string& path);

// The folder's entries ("." and ".." left out, and the area where runs
// keep old copies), sorted.
std::vector<std::string> Entries(const std::string& folder);

// The names in the folder that an unfinished copy would leave.
std::vector<std::string> PartialFiles(const std::string& folder);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_DISK_FILES_H_
