#include "engine/synchronizer.h"

#include <stdexcept>

#include "config/ini_file_section.h"
#include "util/date_time.h"
#include "util/text.h"

namespace pairwell {

namespace {

void CheckIndex(int i, int count, const char* what) {
  if (i < 1 || i > count) {
    throw std::out_of_range(std::string(what) + " index " + std::to_string(i) +
                            " is outside 1.." + std::to_string(count));
  }
}

// Empty text means never (0); a serial day number and the date layouts of
// ParseDateText are understood. False for any other text, and for a number
// outside the dates the program can hold.
bool ReadLastSyncDate(const std::string& text, double* date) {
  *date = 0;
  if (Trim(text).empty()) return true;
  double number = 0;
  if (ParseNumber(text, &number)) {
    if (!DateInRange(number)) return false;
    *date = number;
    return true;
  }
  return ParseDateText(text, date);
}

// "VersionDays": a whole number of days from 0 up. Anything else keeps the
// default: a slip of the keyboard must not make deletions final.
int ReadVersionDays(const std::string& text) {
  const std::string days = Trim(text);
  if (days.empty() || days.size() > 6 ||
      days.find_first_not_of("0123456789") != std::string::npos) {
    return Synchronizer::kDefaultVersionDays;
  }
  return std::stoi(days);
}

bool SameSecond(double a, double b) {
  return FormatGeneralDate(a) == FormatGeneralDate(b);
}

}  // namespace

Synchronizer::Synchronizer()
    : names_(std::make_shared<NameArena>()),
      file_folders_(1),
      root_tree_(std::make_shared<StringTree>(names_)) {}

Synchronizer::Folder& Synchronizer::At(std::vector<Folder>& list, int i) {
  CheckIndex(i, static_cast<int>(list.size()), "folder");
  return list[static_cast<std::size_t>(i - 1)];
}

const Synchronizer::Folder& Synchronizer::At(const std::vector<Folder>& list,
                                             int i) {
  CheckIndex(i, static_cast<int>(list.size()), "folder");
  return list[static_cast<std::size_t>(i - 1)];
}

const std::string& Synchronizer::Path(int i) const {
  return At(folders_, i).path;
}

void Synchronizer::SetPath(int i, const std::string& path) {
  At(folders_, i).path = path;
}

std::int32_t Synchronizer::PathFlags(int i) const {
  return At(folders_, i).flags;
}

void Synchronizer::SetPathFlags(int i, std::int32_t flags) {
  At(folders_, i).flags = flags;
}

void Synchronizer::PathAdd(const std::string& path) {
  if (PathCount() >= kMaxFolders) return;
  folders_.push_back(Folder{path, kFolderEnabled});
}

void Synchronizer::PathRemove(int i) {
  At(folders_, i);
  folders_.erase(folders_.begin() + (i - 1));
}

void Synchronizer::Clear() { folders_.clear(); }

void Synchronizer::SetPathFlag(int i, std::int32_t bits) {
  At(folders_, i).flags |= bits;
}

void Synchronizer::ClearPathFlag(int i, std::int32_t bits) {
  At(folders_, i).flags &= ~bits;
}

ConflictDescriptor& Synchronizer::ConflictTypes(int i) {
  CheckIndex(i, ConflictTypeCount(), "conflict type");
  return conflict_types_[static_cast<std::size_t>(i - 1)];
}

const ConflictDescriptor& Synchronizer::ConflictTypes(int i) const {
  CheckIndex(i, ConflictTypeCount(), "conflict type");
  return conflict_types_[static_cast<std::size_t>(i - 1)];
}

void Synchronizer::SetConflictTypes(int i, const ConflictDescriptor& type) {
  ConflictTypes(i).CopyFrom(type);
}

const std::string& Synchronizer::WPath(int i) const {
  return At(work_folders_, i).path;
}

std::int32_t Synchronizer::WPathFlags(int i) const {
  return At(work_folders_, i).flags;
}

int Synchronizer::GetConflictForSitu(int situation) const {
  for (int i = 1; i <= ConflictTypeCount(); ++i) {
    if (ConflictTypes(i).MatchesSitu(situation)) return i;
  }
  return -1;
}

void Synchronizer::ReadConflictInfo(const INIFileSection& section) {
  conflict_types_.clear();
  for (long i = 1; i <= section.VarCount(); ++i) {
    if (section.VarName(i) == INIFileSection::kComment) continue;
    ConflictDescriptor type;
    type.ReadFromINI(section.VarName(i), section.VarValue(i));
    if (type.FlagSetCount() > 0) conflict_types_.push_back(type);
  }
}

void Synchronizer::ReadFolders(const INIFileSection& section) {
  folders_.clear();
  // The list ends at the first missing number; no limit applies here.
  for (int i = 1;; ++i) {
    const std::string key = "Dir" + std::to_string(i);
    if (section.FindVarIndex(key) < 0) break;
    folders_.push_back(
        Folder{section.FindVar(key),
               LeadingInteger(section.FindVar2(key + "Flags", "4"))});
  }
}

void Synchronizer::ReadOptions(const INIFileSection& section) {
  // These defaults are those of a section missing the key, not those of a
  // new set: an older file without "FileSpec" meant every file.
  auto flag = [&](const char* key, const char* missing) {
    return StrToBool(section.FindVar2(key, missing));
  };
  Recursive = flag("Recursive", "True");
  SyncFolders = flag("SyncFolders", "True");
  DefActionFlags = LeadingInteger(section.FindVar2("DefActionFlags", "8"));
  WarnFutureDate = flag("WarnFutureDate", "True");
  UseCreateDate = flag("UseCreateDate", "True");
  ClearArchiveOnCopy = flag("ClearArchiveOnCopy", "False");
  MatchCDateOnCopy = flag("MatchCDateOnCopy", "True");
  UseLogFile = flag("UseLogFile", "False");
  LogFileName = section.FindVar2("LogFileName", "SyncLog.txt");
  ClearLogDaily = flag("ClearLogDaily", "False");
  SmartSync = flag("SmartSync", "True");
  AllowSmartDeletes = flag("AllowSmartDeletes", "True");
  ReadLastSync(section);
  ArchiveDeleted = flag("ArchiveDeleted", "False");
  ArchiveOverwritten = flag("ArchiveOverwritten", "False");
  // The log file's default name stands here too; older files relied on it.
  ArchivePath = section.FindVar2("ArchivePath", "SyncLog.txt");
  FileSpec = section.FindVar2("FileSpec", "*.*");
  ExcludeSpec = section.FindVar2("ExcludeSpec", "");
  FolderSpec = section.FindVar2("FolderSpec", "");
  FolderExcludeSpec = section.FindVar2("FolderExcludeSpec", "");
  VersionDays = ReadVersionDays(section.FindVar2("VersionDays", ""));
}

void Synchronizer::ReadLastSync(const INIFileSection& section) {
  const std::string text = section.FindVar2("LastSyncDate", "");
  unusable_last_sync_date_.clear();
  has_last_sync_moment_ = false;
  if (!ReadLastSyncDate(text, &LastSyncDate)) {
    // Kept, so that every run refuses until somebody clears it.
    unusable_last_sync_date_ = text;
    return;
  }
  // The moment, where it still stands for the date beside it (a date edited
  // by hand wins), gives the date in the present time zone.
  std::int64_t moment = 0;
  double written = 0;
  if (LastSyncDate <= 0 ||
      !ParseMoment(section.FindVar2("LastSyncMoment", ""), &moment, &written) ||
      !SameSecond(written, LastSyncDate)) {
    return;
  }
  const double local = FileTimeToDate(moment, 0);
  if (local <= 0 || !DateInRange(local)) return;
  LastSyncDate = local;
  last_sync_moment_ = moment;
  has_last_sync_moment_ = true;
}

bool Synchronizer::LastSyncMoment(std::int64_t* moment) const {
  if (!has_last_sync_moment_ || LastSyncDate <= 0) return false;
  *moment = last_sync_moment_;
  return true;
}

void Synchronizer::RestoreLastSync(double date, bool has_moment,
                                   std::int64_t moment) {
  LastSyncDate = date > 0 ? date : 0;
  unusable_last_sync_date_.clear();
  has_last_sync_moment_ = has_moment && date > 0;
  last_sync_moment_ = moment;
  // The moment gives the date in the present time zone.
  if (has_last_sync_moment_) LastSyncDate = FileTimeToDate(moment, 0);
}

void Synchronizer::SetLastSyncDate(double date) {
  LastSyncDate = date;
  unusable_last_sync_date_.clear();
  has_last_sync_moment_ = false;
}

void Synchronizer::MarkSynchronized() {
  LastSyncDate = scan_started_;
  unusable_last_sync_date_.clear();
  last_sync_moment_ = scan_started_moment_;
  has_last_sync_moment_ = true;
}

void Synchronizer::WriteLastSync(INIFileSection& section) const {
  if (LastSyncDate <= 0) {
    if (!unusable_last_sync_date_.empty()) {
      section.AddVar("LastSyncDate", unusable_last_sync_date_);
    } else if (section.FindVarIndex("LastSyncDate") > 0) {
      // Never again (an undone first run): an empty date reads as never.
      section.AddVar("LastSyncDate", "");
      if (section.FindVarIndex("LastSyncMoment") > 0) {
        section.AddVar("LastSyncMoment", "");
      }
    }
    return;
  }
  std::int64_t moment = last_sync_moment_;
  // The date may have been set without its moment: the moment of that local
  // time then stands for it.
  if (!has_last_sync_moment_ ||
      !SameSecond(FileTimeToDate(moment, 0), LastSyncDate)) {
    long nanoseconds = 0;
    DateToFileTime(LastSyncDate, &moment, &nanoseconds);
  }
  section.AddVar("LastSyncDate", FormatGeneralDate(LastSyncDate));
  section.AddVar("LastSyncMoment", FormatMoment(moment));
}

void Synchronizer::ReadCustomConflictConfig(const INIFileSection& section) {
  static const std::string kPrefix = "CR:";
  for (long i = 1; i <= section.VarCount(); ++i) {
    const std::string& key = section.VarName(i);
    if (!StartsWith(key, kPrefix)) continue;
    const std::string type_name = key.substr(kPrefix.size());
    for (ConflictDescriptor& type : conflict_types_) {
      if (EqualsNoCase(type.Name, type_name)) {
        type.StringToCustomConfig(section.VarValue(i));
      }
    }
  }
}

void Synchronizer::ReadFromINI(const INIFileSection& section) {
  ReadFolders(section);
  ReadOptions(section);
  ReadCustomConflictConfig(section);
}

void Synchronizer::WriteToINI(INIFileSection& section) const {
  for (int i = 1; i <= PathCount(); ++i) {
    const std::string key = "Dir" + std::to_string(i);
    section.AddVar(key, Path(i));
    section.AddVar(key + "Flags", std::to_string(PathFlags(i)));
  }
  section.AddVar("Recursive", BoolToStr(Recursive));
  section.AddVar("SyncFolders", BoolToStr(SyncFolders));
  section.AddVar("DefActionFlags", std::to_string(DefActionFlags));
  section.AddVar("WarnFutureDate", BoolToStr(WarnFutureDate));
  section.AddVar("UseCreateDate", BoolToStr(UseCreateDate));
  section.AddVar("ClearArchiveOnCopy", BoolToStr(ClearArchiveOnCopy));
  section.AddVar("MatchCDateOnCopy", BoolToStr(MatchCDateOnCopy));
  section.AddVar("UseLogFile", BoolToStr(UseLogFile));
  section.AddVar("LogFileName", LogFileName);
  // ClearLogDaily is deliberately not written: the option lasts until the
  // next save only.
  section.AddVar("SmartSync", BoolToStr(SmartSync));
  section.AddVar("AllowSmartDeletes", BoolToStr(AllowSmartDeletes));
  WriteLastSync(section);
  section.AddVar("ArchiveDeleted", BoolToStr(ArchiveDeleted));
  section.AddVar("ArchiveOverwritten", BoolToStr(ArchiveOverwritten));
  section.AddVar("ArchivePath", ArchivePath);
  section.AddVar("FileSpec", FileSpec);
  section.AddVar("ExcludeSpec", ExcludeSpec);
  section.AddVar("FolderSpec", FolderSpec);
  section.AddVar("FolderExcludeSpec", FolderExcludeSpec);
  // Only where it was changed: files written before it existed stay as
  // they were.
  if (VersionDays != kDefaultVersionDays) {
    section.AddVar("VersionDays", std::to_string(VersionDays));
  }
  for (const ConflictDescriptor& type : conflict_types_) {
    section.AddVar("CR:" + type.Name, type.CustomConfigToString());
  }
}

}  // namespace pairwell
