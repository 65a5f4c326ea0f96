#include "engine/action_texts.h"

#include <cstdio>

#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "util/date_time.h"
#include "util/file_system.h"

namespace pairwell {

std::string FolderTypeName(std::int32_t flags) {
  static const char* const kNames[] = {"Source folder", "Mirror to",
                                       "Merge to"};
  return kNames[FolderTypeOf(flags)];
}

std::string FolderFlagWords(std::int32_t flags) {
  std::string words = (flags & kFolderEnabled) ? "enabled" : "disabled";
  if (flags & kFolderAllowBaseCreation) words += ", create base";
  if (flags & kFolderSkipOnError) words += ", skip on error";
  return words;
}

bool IsConflict(const Synchronizer& set, int conflict_index) {
  if (conflict_index < 0) return true;
  return conflict_index > 0 && set.ConflictTypes(conflict_index).Configurable;
}

bool NeedsConfirmation(const Synchronizer& set, int conflict_index) {
  if (conflict_index < 0) return true;
  return IsConflict(set, conflict_index) &&
         set.ConflictTypes(conflict_index).ListChecked;
}

ConflictCounts CountConflicts(const Synchronizer& set) {
  ConflictCounts counts;
  for (long i = 1; i <= set.WFileCount(); ++i) {
    const int c = set.WFile(i).ComputeConflictIndex();
    if (NeedsConfirmation(set, c)) {
      ++counts.need_confirmation;
    } else if (IsConflict(set, c)) {
      ++counts.auto_handled;
    }
  }
  return counts;
}

std::string StatusText(const SyncFile& file) {
  const Synchronizer& set = file.Owner();
  std::string status;
  for (int j = 1; j <= set.WPathCount(); ++j) {
    const double date = file.GetEffectiveDate(j);
    if (date > set.EfLastSyncDate()) {
      status += 'N';
    } else {
      status += date == 0 ? '_' : 'O';
    }
  }
  const int c = file.ComputeConflictIndex();
  if (NeedsConfirmation(set, c)) {
    status += "!!";
  } else if (IsConflict(set, c)) {
    status += "!";
  }
  return status;
}

std::string ActionText(const SyncFile& file) {
  const bool no_effect = (file.ActionFlags & kFlagNoEffect) != 0;
  switch (file.Action) {
    case kDoNothing:
      return "Do Nothing";
    case kDeleteAll:
      return no_effect ? "Delete all (no effect)" : "Delete all";
    case kUseNewest: {
      std::string text = "Copy #" + std::to_string(file.SourceIndex);
      if (no_effect) {
        text += " (no effect)";
      } else if (file.SourceIndex == file.GetNewestFileIndex(true)) {
        text += " (newest)";
      }
      return text;
    }
    default:
      return "<Undecided>";
  }
}

std::string StatsText(const Synchronizer& set, const ConflictCounts& counts) {
  long queued = 0;
  long undecided = 0;
  for (long i = 1; i <= set.WFileCount(); ++i) {
    const std::int32_t action = set.WFile(i).Action;
    if (action == kUndecided) {
      ++undecided;
    } else if (action != kDoNothing) {
      ++queued;
    }
  }
  const long need = counts.need_confirmation;
  const long automatic = counts.auto_handled;
  std::string text;
  if (need != 0 && automatic != 0) {
    text += std::to_string(need + automatic) + " conflicts, ";
  } else if (need != 0) {
    text += std::to_string(need) + " conflicts (requiring confirmation), ";
  } else if (automatic >= 1) {
    text += std::to_string(automatic) + " conflicts (automatically handled), ";
  }
  if (queued > 0) text += std::to_string(queued) + " actions queued, ";
  if (undecided > 0) text += std::to_string(undecided) + " undecided, ";
  text += std::to_string(set.WFileCount()) + " files total";
  if (set.EfLastSyncDate() > 0) {
    text += " (Last sync: " +
            FormatDate(set.EfLastSyncDate(), "mmm d, yyyy hh:nnAMPM") + ")";
  }
  return text;
}

namespace {

// The value with two decimals, halves rounded up ("1.13" for 1.125), and a
// "." whatever the locale says.
std::string TwoDecimals(double value) {
  const long long hundredths = static_cast<long long>(value * 100 + 0.5);
  char text[32];
  std::snprintf(text, sizeof text, "%lld.%02lld", hundredths / 100,
                hundredths % 100);
  return text;
}

}  // namespace

std::string GetFileSizeString(std::int32_t size) {
  if (size < 1024) return std::to_string(size) + " bytes";
  if (size < 1048576) return TwoDecimals(size / 1024.0) + " KB";
  return TwoDecimals(size / 1048576.0) + " MB";
}

std::string GetAttribString(std::uint16_t attributes) {
  std::string text;
  if (attributes & kAttrDirectory) text += 'D';
  if (attributes & kAttrHidden) text += 'H';
  if (attributes & kAttrSystem) text += 'S';
  if (attributes & kAttrReadOnly) text += 'R';
  if (attributes & kAttrArchive) text += 'A';
  return text;
}

bool MatchesShowMode(const SyncFile& file, int mode) {
  switch (mode) {
    case kShowNeedConfirmation:
      return NeedsConfirmation(file.Owner(), file.ComputeConflictIndex());
    case kShowAllConflicts:
      return IsConflict(file.Owner(), file.ComputeConflictIndex());
    case kShowMarkedForAction:
      return file.Action != kUndecided && file.Action != kDoNothing;
    case kShowUndecided:
      return file.Action == kUndecided;
    default:
      return true;
  }
}

std::string ConflictDescriptionText(const Synchronizer& set,
                                    int conflict_index) {
  if (conflict_index == 0) return "No conflict; all files match";
  if (conflict_index < 0) {
    return "Unrecognized situation (INI file is missing or incomplete)";
  }
  const ConflictDescriptor& type = set.ConflictTypes(conflict_index);
  if (!type.Configurable) return "No conflict";
  if (type.ListChecked) return "Conflict: " + type.Description;
  return "Conflict (automatically handled): " + type.Description;
}

CopyDetails GetCopyDetails(const SyncFile& file, int j) {
  const CopyRecord& copy = file.Copy(j);
  CopyDetails details;
  if (copy.modify_date == 0) {
    details.modify_date = "Not found";
  } else {
    details.modify_date = FormatDate(copy.modify_date, "mmm d, yyyy hh:nnAMPM");
    details.size = GetFileSizeString(copy.size);
    details.attributes = GetAttribString(copy.attributes);
  }
  if (copy.create_date != 0) {
    details.create_date = FormatDate(copy.create_date, "mmm d, yyyy h:nnAMPM");
  }
  return details;
}

void ActionSummary::Add(const SyncFile& file) {
  if (count_ == 0) {
    common_action_ = file.Action;
    common_copy_ = file.SourceIndex;
  } else {
    if (file.Action != common_action_) common_action_ = -1;
    if (file.SourceIndex != common_copy_) common_copy_ = -1;
  }
  ++count_;
  if (file.SourceIndex != file.GetNewestFileIndex(true)) all_newest_ = false;
  any_set_ = static_cast<std::uint16_t>(any_set_ | file.ActionFlags);
  any_clear_ = static_cast<std::uint16_t>(any_clear_ | ~file.ActionFlags);
}

int ActionSummary::CheckValue(std::uint16_t bit) const {
  const bool some_set = (any_set_ & bit) != 0;
  const bool some_clear = (any_clear_ & bit) != 0;
  if (some_set && some_clear) return kCheckMixed;
  return some_set ? kCheckSet : kCheckClear;
}

std::uint16_t FlagsThatMatter(bool copying, bool deleting, bool has_merge_to) {
  std::uint16_t flags = 0;
  if (copying) flags |= kFlagCreate | kFlagOverwriteReadOnly | kFlagForceCopy;
  if (deleting) flags |= kFlagDeleteReadOnly;
  if ((copying || deleting) && has_merge_to) flags |= kFlagProtectMerged;
  return flags;
}

bool HasMergeToFolder(const Synchronizer& set) {
  for (int j = 1; j <= set.WPathCount(); ++j) {
    if ((set.WPathFlags(j) & kFolderTypeMask) == kFolderMergeTo) return true;
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
