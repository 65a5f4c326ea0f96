// The texts and counts by which a set and a run's files are shown to the
// person: the folder labels, the status column, the action column, the
// statistics line and the details of each copy. The windows and the command
// line all use them.
#ifndef PAIRWELL_ENGINE_ACTION_TEXTS_H_
#define PAIRWELL_ENGINE_ACTION_TEXTS_H_

#include <cstdint>
#include <string>

namespace pairwell {

class Synchronizer;
class SyncFile;

// "Source folder", "Mirror to" or "Merge to" for a folder's flags.
std::string FolderTypeName(std::int32_t flags);

// The other folder flags in words: "enabled" or "disabled", then
// ", create base" and ", skip on error" where set.
std::string FolderFlagWords(std::int32_t flags);

// Whether a file's conflict index (SyncFile::ComputeConflictIndex) stands
// for a conflict, and one that needs the person's confirmation: an unknown
// situation (-1) always needs it; a known type is a conflict when it is
// configurable, and needs confirmation when it is also checked.
bool IsConflict(const Synchronizer& set, int conflict_index);
bool NeedsConfirmation(const Synchronizer& set, int conflict_index);
// Whether the file's action needs a person's confirmation: its conflict
// type asks for it, or an empty copy would replace one that holds data.
bool NeedsConfirmation(const SyncFile& file);

struct ConflictCounts {
  long need_confirmation = 0;
  long auto_handled = 0;
};

// Counts the run's files whose conflict needs confirmation and those whose
// conflict is handled automatically.
ConflictCounts CountConflicts(const Synchronizer& set);

// One letter per working folder ("N" newer than the last sync, "O" older,
// "_" absent) followed by "!!" for a conflict that needs confirmation or "!"
// for one handled automatically: "NO_!!".
std::string StatusText(const SyncFile& file);

// "Do Nothing", "Delete all", "Copy #2 (newest)", "<Undecided>", with
// " (no effect)" where the no-effect mark is set.
std::string ActionText(const SyncFile& file);

// "2 conflicts (requiring confirmation), 5 actions queued, 1 undecided, 40
// files total (Last sync: Nov 2, 2026 03:04PM)".
std::string StatsText(const Synchronizer& set, const ConflictCounts& counts);

// Where a run of the set keeps the copies it replaces or deletes: "Replaced
// and deleted copies are kept for 30 days in .pairwell/versions in each
// folder; a run can be undone.", or that they are archived, or not kept.
std::string KeptCopiesText(const Synchronizer& set);

// "1023 bytes", "1.50 KB", "1.00 MB".
std::string GetFileSizeString(std::int32_t size);

// One letter per attribute, in the order D H S R A.
std::string GetAttribString(std::uint16_t attributes);

// The confirm window's show modes, in the order of its list.
constexpr int kShowNeedConfirmation = 0;  // conflicts that need confirmation
constexpr int kShowAllConflicts = 1;
constexpr int kShowMarkedForAction = 2;  // neither undecided nor do-nothing
constexpr int kShowUndecided = 3;
constexpr int kShowAllFiles = 4;  // so is any other number

// Whether the file is listed under the show mode.
bool MatchesShowMode(const SyncFile& file, int mode);

// What a file's conflict index means to the person: "No conflict; all files
// match", "Conflict: " or "Conflict (automatically handled): " and the
// type's description, "No conflict" for a type that is none, or the
// unrecognized-situation notice.
std::string ConflictDescriptionText(const Synchronizer& set,
                                    int conflict_index);

// The detail columns of one copy of a file. A missing copy reads "Not found"
// with blank size and attributes; the create date is blank when it is 0
// whether the copy exists or not.
struct CopyDetails {
  std::string modify_date;  // "Nov 2, 2026 03:04PM"
  std::string create_date;  // "Nov 2, 2026 3:04PM": a one-digit hour
  std::string size;
  std::string attributes;
};
CopyDetails GetCopyDetails(const SyncFile& file, int j);

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_ACTION_TEXTS_H_
