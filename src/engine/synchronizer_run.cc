// The performing side of a sync set: folders and file actions.
#include <cerrno>
#include <memory>

#include "config/ini_file_section.h"
#include "engine/action_texts.h"
#include "engine/log_file.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

int Synchronizer::ErrorPolicy(const std::string& message, int error_number) {
  const std::string number = std::to_string(SystemErrorCode(error_number));
  const std::string code = " (code " + number + ")";
  const std::shared_ptr<const INIFileSection>& table = Run().error_handling;
  const std::string key = "Code" + number;
  if (table && table->FindVarIndex(key) > 0) {
    const std::string value = LTrim(table->FindVar(key));
    const char first = value.empty() ? ' ' : UpperChar(value[0]);
    if (first == 'A') {
      TheLog().PrintErrL(
          "Synchronization has been aborted automatically in response to the "
          "error: ",
          message, code);
      return kIdAbort;
    }
    if (first == 'I') {
      TheLog().PrintErrL(
          "The following error was ignored automatically: ", message, code);
      return kIdIgnore;
    }
  }
  // The question may wait long for the person: nothing more is written
  // meanwhile, and what the copies ahead took is given back.
  SettleCopies();
  return ShowErrToUser(
      message + "\n\nThe error was: " + ErrorText(error_number) + code +
          "\n\nWould you like to abort, try again (retry), or skip the action "
          "and continue (ignore)?",
      kMbAbortRetryIgnore);
}

void Synchronizer::CreateMissingFolders() {
  std::uint32_t sources = 0;
  for (int j = 1; j <= WPathCount(); ++j) {
    if (FolderTypeOf(WPathFlags(j)) == kFolderSource) sources |= 1u << (j - 1);
  }
  for (const auto& [rel, holders] : sub_folders_) {
    if ((holders & sources) == 0) continue;
    for (int j = 1; j <= WPathCount() && !StopFlag; ++j) {
      if (holders & (1u << (j - 1))) continue;
      const std::string path = CombinePath(WPath(j), rel);
      TheLog().PrintL("Creating folder ", path);
      if (Run().simulation_mode) continue;
      NoteWritten(j);
      if (WithErrorPolicy("Unable to create the following folder:\n\n" + path,
                          [&] { return MakeFolderIn(j, path); })) {
        ready_folders_.insert(path);
      }
    }
  }
}

void Synchronizer::RemoveLeftovers() {
  for (const std::string& path : leftovers_) {
    TheLog().PrintL("Removing the leftover of an interrupted copy: ", path);
    if (Run().simulation_mode) continue;
    const int error_number = DeleteFile(path);
    if (error_number != 0 && error_number != ENOENT) {
      TheLog().PrintErrL("Could not remove ", path, ": ",
                         ErrorText(error_number));
    }
  }
  leftovers_.clear();
}

int Synchronizer::MakeFolderIn(int d, const std::string& folder) {
  if (keeper_) {
    const int error_number = keeper_->NoteFolderCreated(d, folder);
    if (error_number != 0) return error_number;
  }
  return MakeDirectoryError(folder);
}

VersionKeeper::Settings Synchronizer::KeeperSettings() const {
  VersionKeeper::Settings settings;
  settings.set_name = Name;
  settings.keep_days = VersionDays;
  settings.archive_deleted = ArchiveDeleted;
  settings.archive_overwritten = ArchiveOverwritten;
  settings.archive_path = ArchivePath;
  settings.last_sync_date = LastSyncDate;
  settings.has_last_sync_moment = LastSyncMoment(&settings.last_sync_moment);
  return settings;
}

std::vector<std::string> Synchronizer::WorkingFolderPaths() const {
  std::vector<std::string> paths;
  for (int j = 1; j <= WPathCount(); ++j) paths.push_back(WPath(j));
  return paths;
}

std::vector<bool> Synchronizer::FoldersTheRunChanges() const {
  std::vector<bool> changes(static_cast<std::size_t>(WPathCount()), false);
  for (long i = 1; i <= WFileCount(); ++i) WFile(i).MarkChangedFolders(&changes);
  if (!SyncFolders) return changes;
  std::uint32_t sources = 0;
  for (int j = 1; j <= WPathCount(); ++j) {
    if (FolderTypeOf(WPathFlags(j)) == kFolderSource) sources |= 1u << (j - 1);
  }
  for (const auto& entry : sub_folders_) {
    const std::uint32_t holders = entry.second;
    if ((holders & sources) == 0) continue;
    for (int j = 1; j <= WPathCount(); ++j) {
      if ((holders & (1u << (j - 1))) == 0) changes[j - 1] = true;
    }
  }
  return changes;
}

bool Synchronizer::StartKeeping() {
  keeper_ = std::make_unique<VersionKeeper>(KeeperSettings(),
                                            WorkingFolderPaths());
  // A simulation says where a real run would keep what it replaces and
  // deletes; a real run says it with each of them.
  if (Run().simulation_mode) TheLog().PrintL(KeptCopiesText(*this));
  keeper_->Prune(TheLog(), Run().simulation_mode);
  if (!keeper_->Keeping()) {
    keeper_.reset();
    return true;
  }
  if (Run().simulation_mode) return true;
  const std::string problem = keeper_->Begin(FoldersTheRunChanges());
  if (problem.empty()) return true;
  keeper_.reset();
  TheLog().PrintL("Nothing was changed: ", problem);
  ShowErrToUser(problem, kMbOkOnly);
  aborted_ = true;
  StopFlag = true;
  return false;
}

void Synchronizer::LogKept(int j, const std::string& path, bool deleted) {
  if (!keeper_) return;
  TheLog().PrintL("Old copy kept as ", keeper_->KeptPath(j, path, deleted));
}

void Synchronizer::StartProgress() {
  progress_ = SyncProgress();
  for (long i = 1; i <= WFileCount(); ++i) WFile(i).CountCopies(&progress_);
  progress_.performing = true;
}

void Synchronizer::PerformFileActions() {
  RemoveLeftovers();
  if (SyncFolders) CreateMissingFolders();
  const long count = WFileCount();
  for (long i = 1; i <= count; ++i) {
    current_action_ = i;
    progress_.current_file = WFile(i).RelativeName();
    SyncMsg = "Performing actions " + std::to_string(i) + "/" +
              std::to_string(count) + "\nFor file: " + progress_.current_file;
    RefreshCopyProgress(0);
    ManageUI();
    if (StopFlag) break;
    SubmitCopiesAhead(i);
    WFile(i).PerformAction(false);
  }
}

void Synchronizer::PerformActions() {
  SyncMsg = "Performing actions";
  StartProgress();
  StartCopies();
  // Nothing is changed where the old copies cannot be kept.
  if (StartKeeping()) PerformFileActions();
  // What is left is the flush: no file is at hand any more.
  progress_.current_file.clear();
  FinishCopies();
  progress_.performing = false;
  SyncMsg =
      (StopFlag ? "Sync actions stopped - " : "Sync actions completed - ") +
      FormatGeneralDate(Now());
  TheLog().PrintL(SyncMsg);
  // The outcome is shown however soon it follows the last status.
  status_shown_ = false;
  ManageUI();
}

}  // namespace pairwell
