// File helpers for the fault tests: writing files with given dates,
// reading them back, describing whole trees, and the configuration file
// the runs use.
#ifndef PAIRWELL_TESTS_FAULTS_FAULT_FILES_H_
#define PAIRWELL_TESTS_FAULTS_FAULT_FILES_H_

#include <sys/types.h>
#include <time.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace pairwell {

// Whether the last component of a path names the temporary file a copy is
// written to before it is renamed over its destination.
bool IsPartialCopy(const std::string& path);

// Writes the file with the given bytes, modification time and permission
// bits; false when any step fails.
bool WriteFileAt(const std::string& path, const std::string& bytes,
                 time_t modified, mode_t mode = 0644);

// A file's bytes in short: enough to tell two versions apart.
struct Digest {
  std::uint64_t size = 0;
  std::uint64_t hash = 0;

  bool operator==(const Digest& other) const {
    return size == other.size && hash == other.hash;
  }
};

// Hashed piece by piece, so that a file's digest needs no room for the
// whole file: DigestOfFile(path) equals DigestOf(ReadFileBytes(path)).
Digest DigestOf(const std::string& bytes);
// The digest of the file's bytes; an empty digest when it cannot be read.
Digest DigestOfFile(const std::string& path);

// One entry of a tree as a sync could leave it.
struct TreeEntry {
  bool is_folder = false;
  Digest digest;
  std::int64_t mtime_ns = 0;
  mode_t mode = 0;
};

// The entry at path, read in full; false when nothing is there.
bool ReadEntry(const std::string& path, TreeEntry* entry);

// "<size> bytes dated <seconds> mode 0<octal>", for messages.
std::string DescribeEntry(const TreeEntry& entry);

// Whether the relative name lies in the area where runs keep old copies.
bool InVersionsArea(const std::string& name);

// Relative path -> entry for everything under root, leftover temporary
// copies and the versions area left out.
std::map<std::string, TreeEntry> SnapshotTree(const std::string& root);

// How two trees differ: missing and extra entries, and files whose bytes,
// modification time or permission bits differ; empty when they are alike.
// Folder dates are not compared: each folder is written at its own moment.
std::vector<std::string> TreeDifferences(const std::string& left,
                                         const std::string& right);
// The same for two snapshots, named left and right in the differences.
std::vector<std::string> SnapshotDifferences(
    const std::map<std::string, TreeEntry>& a,
    const std::map<std::string, TreeEntry>& b, const std::string& left,
    const std::string& right);

// The names of the leftover temporary copies anywhere under root, relative.
std::vector<std::string> PartialCopiesUnder(const std::string& root);

// "YYYY-MM-DD HH:MM:SS" in local time: how a set records its last sync.
std::string LocalDateText(time_t when);

// The shipped configuration (with its conflict catalogue) followed by the
// given set sections.
std::string IniWithSets(const std::string& sets);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_FAULTS_FAULT_FILES_H_
