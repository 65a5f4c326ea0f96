// One relative file name of a sync set across its working folders: the
// copy found in each folder, the situation they are in, and the action the
// run will take.
#ifndef PAIRWELL_ENGINE_SYNC_FILE_H_
#define PAIRWELL_ENGINE_SYNC_FILE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/name_arena.h"

namespace pairwell {

class Synchronizer;
struct SyncProgress;

// Action codes; the same numbers as the conflict types' resolutions.
constexpr std::int32_t kUndecided = 0;
constexpr std::int32_t kDoNothing = 1;
constexpr std::int32_t kDeleteAll = 2;
constexpr std::int32_t kUseNewest = 3;

// Action flags.
constexpr std::uint16_t kFlagCreate = 1;             // create missing copies
constexpr std::uint16_t kFlagOverwriteReadOnly = 2;  // overwrite read-only
constexpr std::uint16_t kFlagForceCopy = 4;          // copy over same copies
constexpr std::uint16_t kFlagProtectMerged = 8;      // keep newer merge-to
constexpr std::uint16_t kFlagDeleteReadOnly = 16;    // delete read-only
constexpr std::uint16_t kFlagNoEffect = 128;         // kept by CalcNoEffect

// Situation bits.
constexpr int kSituSyncDateExists = 1;
constexpr int kSituMissingFromSource = 16;
constexpr int kSituAllSame = 256;

// Two dates closer than this (in days, about two seconds) are equal.
constexpr double kDateTolerance = 2.31e-5;

// True when a and b are equal within kDateTolerance, strict bounds.
bool DatesEqual(double a, double b);

// One folder's copy of the file.
struct CopyRecord {
  double modify_date = 0;  // 0: the copy does not exist
  double create_date = 0;
  std::int32_t size = 0;
  std::uint16_t attributes = 0;
  std::uint64_t inode = 0;  // 0: unknown (not compared)
};

// Copies are indexed by working folder, 1..Synchronizer::WPathCount(); the
// records exist for 1..kMaxCopies (8) and another index throws
// std::out_of_range.
//
// A scan holds one per file, so a file is kept small: its name is its
// folder's number in the owner plus its last component in the owner's
// names, and a file of a two-folder set needs no memory of its own beyond
// the object.
class SyncFile {
 public:
  static constexpr int kMaxCopies = 8;

  // The owner must outlive the file; the name is kept in the owner's names.
  // Throws std::length_error for a last component over 65,535 bytes.
  SyncFile(Synchronizer* owner, const std::string& relative_name);
  // The file named by the owner's folder `folder` (FileFolder) and `leaf`,
  // a name in the owner's names of at most 65,535 bytes.
  SyncFile(Synchronizer* owner, std::uint32_t folder, NameRef leaf);
  SyncFile(SyncFile&&) = default;
  SyncFile(const SyncFile&) = delete;
  SyncFile& operator=(const SyncFile&) = delete;

  std::int32_t Action = kUndecided;
  // The folder whose copy a use-newest action copies to the others.
  std::int32_t SourceIndex = 1;
  std::uint16_t ActionFlags = 0;

  const Synchronizer& Owner() const { return *owner_; }
  std::string RelativeName() const;

  // The name as folder i spells it, where that differs in case from
  // RelativeName() (the tree matches names ignoring case).
  void SetSpelling(int i, const std::string& relative_name);

  // A file the run must not touch: a folder holds something under its name
  // (or a parent's) that the scan left out, such as a symbolic link.
  bool Blocked() const { return blocked_ != 0; }
  void SetBlocked() { blocked_ = 1; }
  const CopyRecord& Copy(int i) const;
  void SetCopy(int i, const CopyRecord& record);
  bool CopyExists(int i) const { return Copy(i).modify_date != 0; }

  // The working folder's path joined with the name as that folder spells
  // it (for a missing copy: as its parent folder there is spelled).
  std::string FullPath(int i) const;

  // Reads every copy's record again from the disk; a copy that is gone gets
  // modify date 0 (its other fields stay).
  void RefreshFileInfo();

  // The date copy i is judged by: its create date when the set uses create
  // dates, the create date is the later one and the archive bit is set;
  // else its modify date.
  double GetEffectiveDate(int i) const;

  // Equal effective dates (within the tolerance) and equal sizes.
  bool FilesSeemTheSame(int i, int j) const;

  // The situation code: 256 when every copy seems the same as the one
  // before it (unless force), else the states of the copies changed since
  // the last sync (bits 1-3) and of the unchanged ones (bits 5-7, 4 when
  // never synchronized), bit 4 when a source folder lacks the file, bit 0
  // when a last-sync date exists.
  int ComputeSituation(bool force) const;

  // 0 when all copies seem the same; else the 1-based index of the set's
  // first conflict type that accepts the situation; -1 when none does.
  int ComputeConflictIndex() const;

  // The copy with the latest effective date (ties keep the earlier folder),
  // among source folders first when source_only and any has a copy; 0 when
  // no copy exists.
  int GetNewestFileIndex(bool source_only) const;

  // Sets the action, source index and flags from the file's conflict type.
  // Without the set's AllowSmartDeletes, a deletion decided by the last-sync
  // date becomes undecided.
  void ComputeDefAction();

  // Sets kFlagNoEffect when the action would change nothing, else clears
  // it; no other bit changes.
  void CalcNoEffect();

  // Whether folder j must receive copy s: not when copy j is read-only or
  // system without kFlagOverwriteReadOnly, not when copy j is missing
  // without kFlagCreate, and not in a merge-to folder under
  // kFlagProtectMerged whose copy is newer than the source.
  bool CopyNeeded(int j, int s) const;
  // Whether copy j is read-only (or system) and the action may not
  // overwrite it.
  bool KeptReadOnly(int j) const;

  // Whether copy j may be deleted: it exists, is not in a merge-to folder
  // (those only receive), and is neither read-only nor system unless
  // kFlagDeleteReadOnly is set.
  bool Deletable(int j) const;

  // The number of copy and delete operations the action needs. With
  // count_only false the operations are also carried out.
  long PerformAction(bool count_only);

  // Adds the copies that PerformAction(false) would make now, and their
  // sources' sizes, to the progress totals.
  void CountCopies(SyncProgress* progress) const;

  // The folders, in order, that PerformAction(false) would copy copy
  // SourceIndex over now (empty unless the action is use-newest).
  std::vector<int> CopyDestinations() const;
  // Marks (index - 1) the working folders whose copy the action changes.
  void MarkChangedFolders(std::vector<bool>* changes) const;

  // The folder of a copy that holds data and has the same date as the
  // empty copy that use-newest would copy over it; 0 when there is none. An
  // empty copy dated like a full one is what a power cut or a pulled drive
  // leaves of a copy, so a person chooses: a default use-newest stays
  // undecided and needs confirmation.
  int DataCopyAtRisk() const;
  // Whether DataCopyAtRisk held back the default action of the file's
  // conflict type.
  bool EmptyCopyHeld() const;

 private:
  // The state (0..4) of the source copies whose effective date is (later)
  // or is not (!later) after the set's effective last-sync date.
  int ComputeState(bool later) const;
  int FolderType(int i) const;
  bool HasSourceCopy() const;
  // Whether a use-newest action copies its source over copy j: not over
  // itself, not over a copy that seems the same (unless forced), and only
  // where CopyNeeded.
  bool CopiesOver(int j) const;
  bool SeemsSameAsSource(int j) const;
  // The bytes a copy of copy s moves: its recorded size, or its size on disk
  // for a file the scan could only record capped.
  std::int64_t CopySize(int s) const;
  // Copies copy s over folder d, and deletes the copy in folder j, through
  // the set's log, simulation mode and error policy. An abort stops the set
  // (its StopFlag). A copy moves the owner's progress on by its bytes.
  void CopyOver(int s, int d);
  void DeleteIn(int j);
  // CopyOver's work: up to a copy written beside the destination, which the
  // owner puts in place once it is on the disk (or at once, outside
  // PerformActions).
  void WriteCopy(int s, int d);
  // What is left once the owner has put copy s in place over folder d.
  void FinishCopy(int s, int d);
  // Whether copy j on disk is still what the scan saw (present with the
  // same size and date, or still absent); if not, logs and notes the skip.
  bool UnchangedSinceScan(int j);
  // Whether copy j is on disk as the scan saw it: size, modification date and
  // file (inode), or still absent.
  bool SameAsScanned(int j) const;
  // The same for any path and record; touches nothing else, so a copy's
  // worker thread may call it.
  static bool OnDiskAsRecorded(const std::string& path, const CopyRecord& seen);
  // Logs copy j as skipped because it changed since the scan.
  void SkipChanged(int j);
  // Makes sure the folder that holds copy d exists; false when the copy is
  // to be given up.
  bool MakeDestinationFolder(int d);
  // Copy i's record, to be changed.
  CopyRecord& MutableCopy(int i);
  // Whether the name as the scan met it in a folder is the file's own: the
  // same folder spelling and last component.
  bool SpelledAs(std::uint32_t folder, std::string_view leaf) const;
  // The name's last component, in the owner's names.
  std::string_view Leaf() const;

  friend class Synchronizer;

  // Nearly every set has two folders: their records live in the file.
  static constexpr int kInlineCopies = 2;
  // What few files need, kept by the owner: the records of folders 3 and
  // up (as far as one was set), and the folders that spell the name
  // otherwise.
  struct Extra {
    std::vector<CopyRecord> copies;
    std::vector<std::pair<int, std::string>> spellings;
  };
  const Extra* FindExtra() const;
  Extra& MutableExtra();

  // Packed behind the public fields, to make 96 bytes in all with the two
  // records. A name's last component is at most 65,535 bytes (file systems
  // allow 255).
  std::uint16_t leaf_length_ = 0;
  std::uint32_t folder_ = 0;
  std::uint32_t leaf_offset_ = 0;
  std::uint32_t extra_ : 31;  // 1-based in the owner's extras; 0: none
  std::uint32_t blocked_ : 1;
  Synchronizer* owner_;
  CopyRecord first_copies_[kInlineCopies];
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_SYNC_FILE_H_
