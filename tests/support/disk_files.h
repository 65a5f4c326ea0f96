// Small file helpers for tests on real folders.
#ifndef PAIRWELL_TESTS_SUPPORT_DISK_FILES_H_
#define PAIRWELL_TESTS_SUPPORT_DISK_FILES_H_

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace pairwell {

// Creates one folder (its parent must exist); fails the test otherwise.
void MakeFolder(const std::string& path);

// Writes the file with the given bytes, permission bits and modification
// time (seconds since the epoch); fails the test when it cannot.
void Put(const std::string& path, const std::string& content,
         std::int64_t seconds, long nanoseconds = 0, mode_t mode = 0644);

// The file's bytes; "" when it cannot be read.
std::string Read(const std::string& path);

// Whether anything (a link included) stands at the path.
bool Exists(const std::string& path);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_DISK_FILES_H_
