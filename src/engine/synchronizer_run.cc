// The performing side of a sync set: folders and file actions.
#include <cerrno>
#include <memory>

#include "config/ini_file_section.h"
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
  const std::string code = " (code " + std::to_string(error_number) + ")";
  const std::shared_ptr<const INIFileSection>& table = Run().error_handling;
  const std::string key = "Code" + std::to_string(error_number);
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
                          [&] { return MakeDirectoryError(path); })) {
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

void Synchronizer::StartProgress() {
  progress_ = SyncProgress();
  for (long i = 1; i <= WFileCount(); ++i) WFile(i).CountCopies(&progress_);
  progress_.performing = true;
}

void Synchronizer::PerformActions() {
  SyncMsg = "Performing actions";
  StartProgress();
  StartCopies();
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
  // What is left is the flush: no file is at hand any more.
  progress_.current_file.clear();
  FinishCopies();
  progress_.performing = false;
  progress_.current_file.clear();
  SyncMsg =
      (StopFlag ? "Sync actions stopped - " : "Sync actions completed - ") +
      FormatGeneralDate(Now());
  TheLog().PrintL(SyncMsg);
  // The outcome is shown however soon it follows the last status.
  status_shown_ = false;
  ManageUI();
}

}  // namespace pairwell
