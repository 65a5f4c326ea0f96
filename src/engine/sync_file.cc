#include "engine/sync_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <stdexcept>

#include "config/ini_file_section.h"
#include "engine/log_file.h"
#include "engine/sync_progress.h"
#include "engine/synchronizer.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

bool DatesEqual(double a, double b) {
  return b - kDateTolerance < a && a < b + kDateTolerance;
}

namespace {

constexpr std::size_t kMaxLeafLength = 65535;

std::uint16_t CheckedLeafLength(std::size_t length) {
  if (length > kMaxLeafLength) {
    throw std::length_error("a file name of " + std::to_string(length) +
                            " bytes is longer than 65535");
  }
  return static_cast<std::uint16_t>(length);
}

}  // namespace

SyncFile::SyncFile(Synchronizer* owner, const std::string& relative_name)
    : extra_(0), blocked_(0), owner_(owner) {
  const std::string::size_type slash = relative_name.find_last_of("/\\");
  const std::string::size_type leaf_start =
      slash == std::string::npos ? 0 : slash + 1;
  const std::string_view leaf =
      std::string_view(relative_name).substr(leaf_start);
  leaf_length_ = CheckedLeafLength(leaf.size());
  folder_ = owner->FileFolderNumber(relative_name.substr(0, leaf_start));
  leaf_offset_ = owner->names_->Add(leaf).offset;
}

SyncFile::SyncFile(Synchronizer* owner, std::uint32_t folder, NameRef leaf)
    : leaf_length_(CheckedLeafLength(leaf.length)),
      folder_(folder),
      leaf_offset_(leaf.offset),
      extra_(0),
      blocked_(0),
      owner_(owner) {}

std::string_view SyncFile::Leaf() const {
  return owner_->names_->View(NameRef{leaf_offset_, leaf_length_});
}

std::string SyncFile::RelativeName() const {
  std::string name = owner_->FileFolder(folder_);
  name.append(Leaf());
  return name;
}

bool SyncFile::SpelledAs(std::uint32_t folder, std::string_view leaf) const {
  return folder == folder_ && Leaf() == leaf;
}

namespace {

void CheckCopyIndex(int i) {
  if (i < 1 || i > SyncFile::kMaxCopies) {
    throw std::out_of_range("copy index " + std::to_string(i) +
                            " is outside 1..8");
  }
}

}  // namespace

const CopyRecord& SyncFile::Copy(int i) const {
  static const CopyRecord kNoCopy;
  CheckCopyIndex(i);
  if (i <= kInlineCopies) return first_copies_[i - 1];
  const Extra* extra = FindExtra();
  const std::size_t k = static_cast<std::size_t>(i - kInlineCopies - 1);
  return extra != nullptr && k < extra->copies.size() ? extra->copies[k]
                                                      : kNoCopy;
}

CopyRecord& SyncFile::MutableCopy(int i) {
  CheckCopyIndex(i);
  if (i <= kInlineCopies) return first_copies_[i - 1];
  std::vector<CopyRecord>& copies = MutableExtra().copies;
  const std::size_t k = static_cast<std::size_t>(i - kInlineCopies - 1);
  if (k >= copies.size()) copies.resize(k + 1);
  return copies[k];
}

const SyncFile::Extra* SyncFile::FindExtra() const {
  return extra_ == 0 ? nullptr : &owner_->file_extras_[extra_ - 1];
}

SyncFile::Extra& SyncFile::MutableExtra() {
  if (extra_ == 0) {
    owner_->file_extras_.emplace_back();
    extra_ =
        static_cast<std::uint32_t>(owner_->file_extras_.size()) & 0x7FFFFFFFu;
  }
  return owner_->file_extras_[extra_ - 1];
}

void SyncFile::SetCopy(int i, const CopyRecord& record) {
  MutableCopy(i) = record;
}

int SyncFile::FolderType(int i) const {
  return FolderTypeOf(owner_->WPathFlags(i));
}

void SyncFile::SetSpelling(int i, const std::string& relative_name) {
  Copy(i);
  if (extra_ != 0) {
    for (auto& spelling : MutableExtra().spellings) {
      if (spelling.first == i) {
        spelling.second = relative_name;
        return;
      }
    }
  }
  if (relative_name != RelativeName()) {
    MutableExtra().spellings.emplace_back(i, relative_name);
  }
}

std::string SyncFile::FullPath(int i) const {
  if (const Extra* extra = FindExtra()) {
    for (const auto& spelling : extra->spellings) {
      if (spelling.first == i) {
        return JoinPath(owner_->WPath(i), spelling.second);
      }
    }
  }
  return JoinPath(owner_->WPath(i), owner_->SpellingIn(i, RelativeName()));
}

void SyncFile::RefreshFileInfo() {
  for (int i = 1; i <= owner_->WPathCount(); ++i) {
    FolderEntry entry;
    // The file itself is looked up: a refreshed file must not look deleted.
    if (GetItemInfo(FullPath(i), &entry) &&
        (entry.attributes & kAttrDirectory) == 0) {
      SetCopy(i, CopyRecord{entry.modify_date, entry.create_date, entry.size,
                            entry.attributes, entry.inode});
    } else {
      CopyRecord gone = Copy(i);
      gone.modify_date = 0;
      SetCopy(i, gone);
    }
  }
}

double SyncFile::GetEffectiveDate(int i) const {
  const CopyRecord& copy = Copy(i);
  if (owner_->UseCreateDate && copy.create_date > copy.modify_date &&
      (copy.attributes & kAttrArchive) != 0) {
    return copy.create_date;
  }
  return copy.modify_date;
}

bool SyncFile::FilesSeemTheSame(int i, int j) const {
  return DatesEqual(GetEffectiveDate(i), GetEffectiveDate(j)) &&
         Copy(i).size == Copy(j).size;
}

int SyncFile::ComputeState(bool later) const {
  const double last_sync = owner_->EfLastSyncDate();
  auto qualifies = [&](int i) {
    return FolderType(i) == kFolderSource && CopyExists(i) &&
           (GetEffectiveDate(i) > last_sync) == later;
  };
  int state = 4;
  const int count = owner_->WPathCount();
  for (int i = 1; i <= count; ++i) {
    if (!qualifies(i)) continue;
    state &= ~4;
    for (int j = i + 1; j <= count; ++j) {
      if (!qualifies(j)) continue;
      state |= DatesEqual(GetEffectiveDate(i), GetEffectiveDate(j)) ? 2 : 1;
    }
  }
  return state;
}

int SyncFile::ComputeSituation(bool force) const {
  int code = kSituAllSame;
  for (int i = 1; i <= owner_->WPathCount(); ++i) {
    if (FolderType(i) == kFolderSource && !CopyExists(i)) {
      code = kSituMissingFromSource;
      break;
    }
    // Only neighbours are compared: all are the same when each seems the
    // same as the one before it.
    if (i > 1 && code != 0 && !FilesSeemTheSame(i - 1, i)) code = 0;
  }
  if (!force && (code & kSituAllSame) != 0) return kSituAllSame;
  code |= ComputeState(true) * 2;
  if (owner_->EfLastSyncDate() > 0) {
    code |= ComputeState(false) * 32 | kSituSyncDateExists;
  } else {
    code |= 4 * 32;
  }
  return code;
}

int SyncFile::ComputeConflictIndex() const {
  const int situation = ComputeSituation(false);
  if ((situation & kSituAllSame) != 0) return 0;
  return owner_->GetConflictForSitu(situation);
}

int SyncFile::GetNewestFileIndex(bool source_only) const {
  double best_date = 0;
  int best = 0;
  for (int i = 1; i <= owner_->WPathCount(); ++i) {
    if (source_only && FolderType(i) != kFolderSource) continue;
    const double date = GetEffectiveDate(i);
    if (CopyExists(i) && date > best_date) {
      best_date = date;
      best = i;
    }
  }
  if (best == 0 && source_only) return GetNewestFileIndex(false);
  return best;
}

void SyncFile::ComputeDefAction() {
  ActionFlags = static_cast<std::uint16_t>(owner_->DefActionFlags);
  if (blocked_) {
    Action = kUndecided;
    return;
  }
  const int conflict = ComputeConflictIndex();
  if (conflict < 1) {
    ActionFlags |= kFlagCreate;
    Action = conflict == 0 ? kDoNothing : kUndecided;
    return;
  }
  const ConflictDescriptor& type = owner_->ConflictTypes(conflict);
  ActionFlags &= static_cast<std::uint16_t>(~kFlagCreate);
  if (type.CreateDest) ActionFlags |= kFlagCreate;
  // The type's default resolution decides, not the set's custom one.
  Action = type.DefAction;
  if (Action == kUseNewest) {
    SourceIndex = GetNewestFileIndex(true);
    if (DataCopyAtRisk() != 0) Action = kUndecided;
  }
  // Without smart deletes, a deletion that only the last-sync date can
  // justify (a source still has the file) is left to the person.
  if (Action == kDeleteAll && !owner_->AllowSmartDeletes &&
      (ComputeSituation(false) & kSituSyncDateExists) != 0 && HasSourceCopy()) {
    Action = kUndecided;
  }
}

int SyncFile::DataCopyAtRisk() const {
  const int s = GetNewestFileIndex(true);
  if (s < 1 || Copy(s).size != 0) return 0;
  for (int j = 1; j <= owner_->WPathCount(); ++j) {
    if (j != s && CopyExists(j) && Copy(j).size != 0 &&
        DatesEqual(GetEffectiveDate(j), GetEffectiveDate(s))) {
      return j;
    }
  }
  return 0;
}

bool SyncFile::EmptyCopyHeld() const {
  if (blocked_) return false;
  const int conflict = ComputeConflictIndex();
  return conflict > 0 &&
         owner_->ConflictTypes(conflict).DefAction == kUseNewest &&
         DataCopyAtRisk() != 0;
}

bool SyncFile::HasSourceCopy() const {
  for (int i = 1; i <= owner_->WPathCount(); ++i) {
    if (FolderType(i) == kFolderSource && CopyExists(i)) return true;
  }
  return false;
}

void SyncFile::CalcNoEffect() {
  if (PerformAction(true) == 0) {
    ActionFlags |= kFlagNoEffect;
  } else {
    ActionFlags &= static_cast<std::uint16_t>(~kFlagNoEffect);
  }
}

bool SyncFile::KeptReadOnly(int j) const {
  return CopyExists(j) &&
         (Copy(j).attributes & (kAttrReadOnly | kAttrSystem)) != 0 &&
         (ActionFlags & kFlagOverwriteReadOnly) == 0;
}

bool SyncFile::CopyNeeded(int j, int s) const {
  const bool exists = CopyExists(j);
  if (KeptReadOnly(j)) return false;
  if (!exists && (ActionFlags & kFlagCreate) == 0) return false;
  if (FolderType(j) == kFolderMergeTo &&
      (ActionFlags & kFlagProtectMerged) != 0 &&
      GetEffectiveDate(s) < GetEffectiveDate(j)) {
    return false;
  }
  return true;
}

bool SyncFile::Deletable(int j) const {
  if (!CopyExists(j) || FolderType(j) == kFolderMergeTo) return false;
  return (Copy(j).attributes & (kAttrReadOnly | kAttrSystem)) == 0 ||
         (ActionFlags & kFlagDeleteReadOnly) != 0;
}

long SyncFile::PerformAction(bool count_only) {
  long operations = 0;
  if (blocked_) return 0;
  const int count = owner_->WPathCount();
  if (Action == kDeleteAll) {
    for (int j = 1; j <= count; ++j) {
      if (!count_only && owner_->StopFlag) break;
      if (!Deletable(j)) continue;
      ++operations;
      if (!count_only) DeleteIn(j);
    }
  } else if (Action == kUseNewest) {
    const int s = SourceIndex;
    // A source index outside the folders (no copy left anywhere) has
    // nothing to copy.
    if (s < 1 || s > count) return 0;
    for (int j = 1; j <= count; ++j) {
      if (!count_only && owner_->StopFlag) break;
      if (CopiesOver(j)) {
        ++operations;
        if (!count_only) CopyOver(s, j);
      } else if (!count_only && j != s && !SeemsSameAsSource(j) &&
                 KeptReadOnly(j)) {
        owner_->TheLog().PrintL("Skipped: ", FullPath(j),
                                " is read-only and the action does not "
                                "overwrite read-only files");
      }
    }
  }
  return operations;
}

void SyncFile::CountCopies(SyncProgress* progress) const {
  const long copies = static_cast<long>(CopyDestinations().size());
  if (copies == 0) return;
  progress->files_total += copies;
  progress->bytes_total += copies * CopySize(SourceIndex);
}

void SyncFile::MarkChangedFolders(std::vector<bool>* changes) const {
  if (blocked_) return;
  if (Action == kDeleteAll) {
    for (int j = 1; j <= owner_->WPathCount(); ++j) {
      if (Deletable(j)) (*changes)[static_cast<std::size_t>(j - 1)] = true;
    }
  }
  for (int d : CopyDestinations()) {
    (*changes)[static_cast<std::size_t>(d - 1)] = true;
  }
}

std::vector<int> SyncFile::CopyDestinations() const {
  std::vector<int> folders;
  const int s = SourceIndex;
  if (blocked_ || Action != kUseNewest || s < 1 || s > owner_->WPathCount()) {
    return folders;
  }
  for (int j = 1; j <= owner_->WPathCount(); ++j) {
    if (CopiesOver(j)) folders.push_back(j);
  }
  return folders;
}

bool SyncFile::SeemsSameAsSource(int j) const {
  const int s = SourceIndex;
  return CopyExists(s) && FilesSeemTheSame(s, j) &&
         (ActionFlags & kFlagForceCopy) == 0;
}

bool SyncFile::CopiesOver(int j) const {
  return j != SourceIndex && !SeemsSameAsSource(j) &&
         CopyNeeded(j, SourceIndex);
}

std::int64_t SyncFile::CopySize(int s) const {
  const std::int32_t recorded = Copy(s).size;
  if (recorded != kSizeCap) return recorded;
  const std::int64_t on_disk = FileSize(FullPath(s));
  return on_disk < 0 ? recorded : on_disk;
}

bool SyncFile::MakeDestinationFolder(int d) {
  const std::string path = FullPath(d);
  const std::string::size_type slash = path.find_last_of("/\\");
  const std::string folder =
      slash == std::string::npos ? std::string(".") : path.substr(0, slash);
  if (owner_->ready_folders_.count(folder) != 0) return true;
  if (!owner_->WithErrorPolicy(
          "Unable to create the following folder:\n\n" + folder,
          [&] { return owner_->MakeFolderIn(d, folder); })) {
    return false;
  }
  owner_->ready_folders_.insert(folder);
  return true;
}

bool SyncFile::SameAsScanned(int j) const {
  return OnDiskAsRecorded(FullPath(j), Copy(j));
}

bool SyncFile::OnDiskAsRecorded(const std::string& path,
                                const CopyRecord& seen) {
  FolderEntry now;
  const bool exists =
      GetItemInfo(path, &now) && (now.attributes & kAttrDirectory) == 0;
  const bool existed = seen.modify_date != 0;
  if (!exists) return !existed;
  // Another file renamed into its place may have the same size and date.
  return existed && now.size == seen.size &&
         DatesEqual(now.modify_date, seen.modify_date) &&
         (seen.inode == 0 || now.inode == seen.inode);
}

void SyncFile::SkipChanged(int j) {
  // Somebody worked on it while the run went on: what was decided no longer
  // fits it.
  owner_->TheLog().PrintL("Skipped: ", FullPath(j), " changed since the scan");
  owner_->NoteSkipped();
}

bool SyncFile::UnchangedSinceScan(int j) {
  if (SameAsScanned(j)) return true;
  SkipChanged(j);
  return false;
}

void SyncFile::CopyOver(int s, int d) {
  WriteCopy(s, d);
  // Done whatever became of it: the counts reach the totals at the end.
  owner_->CopyTurnEnded(CopySize(s));
}

void SyncFile::WriteCopy(int s, int d) {
  const std::string source = FullPath(s);
  const std::string dest = FullPath(d);
  owner_->TheLog().PrintL("Copy ", dest, " from ", source);
  if (CopyExists(d)) owner_->LogKept(d, dest, false);
  if (owner_->Run().simulation_mode) return;
  if (!MakeDestinationFolder(d)) {
    owner_->CancelCopyAhead(d);
    return;
  }
  const bool read_only =
      CopyExists(d) && (Copy(d).attributes & (kAttrReadOnly | kAttrSystem));
  std::string temp;
  int old_mode = -1;
  // The copy checks the destination against the scan just before it starts
  // (on its worker), and the set again just before the rename.
  bool changed = false;
  const bool copied = owner_->WithErrorPolicy(
      "Unable to perform the copy operation:\n\n" + source + " -> " + dest,
      [&] {
        // A read-only copy is made writable first, once it is known to be
        // the one the scan saw.
        if (read_only) {
          changed = !SameAsScanned(d);
          if (changed) return 0;
          // The mode it had is what its kept copy gets back by an undo.
          if (old_mode < 0) old_mode = FileMode(dest);
          ClearReadOnly(dest);
        }
        const int result = owner_->AwaitCopy(*this, s, d, &temp);
        changed = result == kDestinationChanged;
        return changed ? 0 : result;
      });
  if (changed) {
    SkipChanged(d);
    return;
  }
  if (!copied) {
    if (owner_->StopFlag && !owner_->Aborted()) {
      owner_->TheLog().PrintL("Copy stopped: ", dest, " stays as it was");
    }
    return;
  }
  owner_->PlaceWhenFlushed(*this, s, d, temp, old_mode);
}

void SyncFile::FinishCopy(int s, int d) {
  // The copy keeps the source's modification time and permissions; the
  // creation date is left (POSIX cannot set one), and on Windows the
  // archive attribute.
  const std::string dest = FullPath(d);
  if (owner_->MatchCDateOnCopy && !SetCreationTime(dest, Copy(s).create_date)) {
    owner_->TheLog().PrintErrL("Error setting creation time of ", dest);
  }
  if (owner_->ClearArchiveOnCopy) {
    for (int j : {d, s}) {
      if (ClearArchiveAttribute(FullPath(j)) != 0) {
        owner_->TheLog().PrintErrL("Error clearing the archive attribute of ",
                                   FullPath(j));
      } else {
        MutableCopy(j).attributes &= ~kAttrArchive;
      }
    }
  }
  MutableCopy(d) = Copy(s);
}

void SyncFile::DeleteIn(int j) {
  const std::string path = FullPath(j);
  owner_->TheLog().PrintL("Deleting ", path);
  owner_->LogKept(j, path, true);
  if (owner_->Run().simulation_mode) return;
  if (!UnchangedSinceScan(j)) return;
  owner_->NoteWritten(j);
  VersionKeeper* const keeper = owner_->Keeper();
  if (owner_->WithErrorPolicy("Unable to delete the following file:\n\n" + path,
                              [&] {
                                return keeper != nullptr
                                           ? keeper->MoveDeleted(j, path)
                                           : DeleteFile(path);
                              })) {
    MutableCopy(j).modify_date = 0;
  }
}

}  // namespace pairwell
