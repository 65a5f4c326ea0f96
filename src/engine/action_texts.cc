#include "engine/action_texts.h"

#include <cstdio>

#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/text.h"

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

bool NeedsConfirmation(const SyncFile& file) {
  return NeedsConfirmation(file.Owner(), file.ComputeConflictIndex()) ||
         file.EmptyCopyHeld();
}

ConflictCounts CountConflicts(const Synchronizer& set) {
  ConflictCounts counts;
  for (long i = 1; i <= set.WFileCount(); ++i) {
    const int c = set.WFile(i).ComputeConflictIndex();
    if (NeedsConfirmation(set.WFile(i))) {
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
  if (NeedsConfirmation(file)) {
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
      return NeedsConfirmation(file);
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

std::string KeptCopiesText(const Synchronizer& set) {
  const std::string days = CountText(set.VersionDays, "day", "days");
  const std::string versions = "kept for " + days + " in " +
                               std::string(kKeepFolderName) +
                               "/versions in each folder";
  const std::string archive =
      "archived in " + Trim(set.ArchivePath) + " (never removed)";
  const bool keeping = set.VersionDays > 0;
  const std::string undo = "; a run can be undone.";
  if (set.ArchiveDeleted && set.ArchiveOverwritten) {
    return "Replaced and deleted copies are " + archive + undo;
  }
  if (set.ArchiveDeleted || set.ArchiveOverwritten) {
    const std::string archived = set.ArchiveDeleted ? "Deleted" : "Replaced";
    const std::string other = set.ArchiveDeleted ? "replaced" : "deleted";
    return archived + " copies are " + archive + "; " + other +
           " copies are " + (keeping ? versions : "not kept") + undo;
  }
  if (!keeping) {
    return "Replaced and deleted copies are not kept (VersionDays=0): they "
           "are gone for good.";
  }
  return "Replaced and deleted copies are " + versions + undo;
}

}  // namespace pairwell
