#include "engine/sync_driver.h"

#include "config/module.h"
#include "engine/action_texts.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "util/date_time.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

void PrepareLog(Synchronizer& set) {
  LogFile& log = set.TheLog();
  ClearLogIfOld(set);
  log.CloseLog();
  // Without UseLogFile the log has no file and only echoes.
  log.SetPath(set.UseLogFile ? Trim(set.LogFileName) : std::string());
  log.EchoTextBox = UI().LogEcho();
  log.OpenLog();
}

bool AnyNeedsConfirmation(const Synchronizer& set) {
  for (long i = 1; i <= set.WFileCount(); ++i) {
    if (NeedsConfirmation(set, set.WFile(i).ComputeConflictIndex())) {
      return true;
    }
  }
  return false;
}

// The last-sync date says that every folder was alike at that moment. Where
// an operation failed or a source still lacks a file, that is not so, and
// the file would look deleted next time: the date then stays.
void AdvanceLastSyncDate(Synchronizer& set) {
  const long failed = set.IgnoredErrors();
  const long incomplete = set.IncompleteFiles();
  if (failed == 0 && incomplete == 0) {
    // Files changed while the run went on count as changed next time.
    set.LastSyncDate = set.ScanStarted();
    return;
  }
  set.TheLog().PrintL("The last synchronization date stays as it was: ", failed,
                      " operations failed and ", incomplete,
                      " files are not in every source folder yet.");
}

// Scan, warnings and confirmation, then the actions; true when the set
// completed.
bool RunOneSet(Synchronizer& set, RunState& state) {
  if (!set.BuildActionList()) return false;
  if (set.FutureDateCount > 0 && MsgBox(FutureDateQuestion(set, Now()),
                                        kMbYesNo | kMbQuestion) != kIdYes) {
    return false;
  }
  if (state.interactive || AnyNeedsConfirmation(set)) {
    if (!UI().ConfirmActions(set)) set.StopFlag = true;
    if (set.StopFlag) return false;
  }
  state.first_phase = false;
  state.busy = true;
  set.PerformActions();
  if (set.StopFlag) return false;
  if (!state.simulation_mode) AdvanceLastSyncDate(set);
  return true;
}

}  // namespace

std::string FutureDateQuestion(const Synchronizer& set, double now) {
  std::string text = std::to_string(set.FutureDateCount) +
                     " files were found with dates in the future.  These "
                     "files are:\n";
  int listed = 0;
  for (long i = 1; i <= set.WFileCount(); ++i) {
    const SyncFile& file = set.WFile(i);
    for (int j = 1; j <= set.WPathCount(); ++j) {
      if (!file.CopyExists(j) || file.GetEffectiveDate(j) <= now) continue;
      if (listed == 9) {
        text += "\n<more files...>";
        return text + "\nContinue anyway?";
      }
      text += "\n" + file.FullPath(j);
      ++listed;
      break;
    }
  }
  return text + "\nContinue anyway?";
}

bool RunSyncSets(const std::vector<Synchronizer*>& sets, bool interactive) {
  RunState& state = TheRunState();
  state.first_phase = true;
  state.interactive = interactive;
  state.busy = false;
  state.error_handling = TheINIFile().Section("ErrorHandling");
  UI().EnableMainWindow(false);
  bool ok = true;
  const std::size_t n = sets.size();
  for (std::size_t k = 1; k <= n && ok; ++k) {
    Synchronizer& set = *sets[k - 1];
    state.current_set = &set;
    state.busy = false;
    std::string caption = "Sync Status - " + set.Name;
    if (n > 1) {
      caption += " (" + std::to_string(k) + " of " + std::to_string(n) + ")";
    }
    UI().ShowProgress(caption);
    PrepareLog(set);
    ok = RunOneSet(set, state);
    set.FreeSyncData();
    set.TheLog().CloseLog();
  }
  state.busy = false;
  state.current_set = nullptr;
  // Nothing was changed: the progress window has nothing to show.
  if (state.first_phase) UI().HideProgress();
  state.first_phase = true;
  UI().EnableMainWindow(true);
  return ok;
}

}  // namespace pairwell
