#include "engine/action_edits.h"

#include "engine/sync_file.h"
#include "engine/synchronizer.h"

namespace pairwell {

std::uint16_t FlagsThatMatter(bool copying, bool deleting, bool has_merge_to) {
  std::uint16_t flags = 0;
  if (copying) flags |= kFlagCreate | kFlagOverwriteReadOnly | kFlagForceCopy;
  if (deleting) flags |= kFlagDeleteReadOnly;
  if ((copying || deleting) && has_merge_to) flags |= kFlagProtectMerged;
  return flags;
}

bool HasMergeToFolder(const Synchronizer& set) {
  for (int j = 1; j <= set.WPathCount(); ++j) {
    if (FolderTypeOf(set.WPathFlags(j)) == kFolderMergeTo) return true;
  }
  return false;
}

void ApplyAction(SyncFile& file, std::int32_t action, bool take_newest) {
  file.Action = action;
  if (action == kUseNewest && take_newest) {
    file.SourceIndex = file.GetNewestFileIndex(true);
  }
  file.CalcNoEffect();
}

void ApplyActionFlag(SyncFile& file, std::uint16_t bit, bool set) {
  if (set) {
    file.ActionFlags = static_cast<std::uint16_t>(file.ActionFlags | bit);
  } else {
    file.ActionFlags = static_cast<std::uint16_t>(file.ActionFlags & ~bit);
  }
  file.CalcNoEffect();
}

void ResetToDefault(SyncFile& file) {
  file.ComputeDefAction();
  file.CalcNoEffect();
}

void RefreshFromDisk(SyncFile& file) {
  file.RefreshFileInfo();
  ResetToDefault(file);
}

bool PickSourceCopy(SyncFile& file, int j) {
  file.Action = kUseNewest;
  file.SourceIndex = j;
  return j == file.GetNewestFileIndex(true);
}

long FirstUndecidedFile(const Synchronizer& set) {
  for (long i = 1; i <= set.WFileCount(); ++i) {
    if (set.WFile(i).Action == kUndecided) return i;
  }
  return 0;
}

}  // namespace pairwell
