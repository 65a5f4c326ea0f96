// Sets scanned over real folders, for tests that then shape the copy
// records of their files.
#ifndef PAIRWELL_TESTS_SUPPORT_SCANNED_FOLDERS_H_
#define PAIRWELL_TESTS_SUPPORT_SCANNED_FOLDERS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "engine/sync_file.h"
#include "support/section_entries.h"
#include "support/test_dates.h"

namespace pairwell {

class Synchronizer;
class TempDir;

// Makes the folders "A", "B", ... in dir, one per folder type, each holding
// every name; gives them to the set (enabled, with those types), lets the
// set read the catalogue's conflict types and scans. Throws
// std::runtime_error when a folder cannot be made or the scan does not give
// exactly the names written.
void ScanFolders(Synchronizer& set, const TempDir& dir,
                 const std::vector<std::int32_t>& types,
                 const std::vector<std::string>& names,
                 const Entries& catalogue);

// Dates of the tests' situations, an hour apart on 2024-05-14: a copy
// older than the last sync, the last sync, and two newer copies. Functions
// rather than constants: a date is computed by the library, which must not
// be called before its own statics are set up.
inline double Old() { return MakeDate(2024, 5, 14, 9, 0); }
inline double SyncDate() { return MakeDate(2024, 5, 14, 10, 0); }
inline double Fresh() { return MakeDate(2024, 5, 14, 11, 0); }
inline double Fresher() { return MakeDate(2024, 5, 14, 12, 0); }

// A copy record of an existing copy, and of a missing one.
inline CopyRecord Present(double modify, std::int32_t size = 100,
                          std::uint16_t attributes = 0, double create = 0) {
  return CopyRecord{modify, create, size, attributes};
}
inline const CopyRecord kMissing{};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_SCANNED_FOLDERS_H_
