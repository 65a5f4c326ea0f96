#include "app/sync_driver.h"

#include <algorithm>

#include "app/front_end.h"
#include "app/program.h"
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

bool AnyNeedsConfirmation(const Synchronizer& set) {
  for (long i = 1; i <= set.WFileCount(); ++i) {
    if (NeedsConfirmation(set.WFile(i))) {
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
    set.MarkSynchronized();
    return;
  }
  set.TheLog().PrintL("The last synchronization date stays as it was: ",
                      CountText(failed, "operation", "operations"),
                      " failed and ",
                      CountText(incomplete, "file is", "files are"),
                      " not in every source folder yet.");
}

// Whether the set may go on to its actions when they would delete most of a
// folder. Every warning is logged.
bool MassDeletionAllowed(Synchronizer& set, const RunState& state,
                         MassDeletion policy) {
  const std::vector<std::string> warnings = set.MassDeletionWarnings();
  if (warnings.empty()) return true;
  std::string text;
  for (const std::string& warning : warnings) {
    set.TheLog().PrintL("Warning: ", warning);
    text += warning + "\n";
  }
  if (policy == MassDeletion::kAllow || state.simulation_mode) return true;
  if (policy == MassDeletion::kRefuse) {
    set.ShowErrToUser(text + "\nNothing was changed.", kMbOkOnly);
    return false;
  }
  return set.ShowErrToUser(text + "\nDo you want to delete them?",
                           kMbYesNo | kMbExclamation | kMbDefaultButton2) ==
         kIdYes;
}

// A stop request cancels; an abort answer to an error aborts.
SetOutcome StoppedOutcome(const Synchronizer& set) {
  return set.Aborted() ? SetOutcome::kAborted : SetOutcome::kCancelled;
}

// Scan, warnings and confirmation, then the actions.
SetOutcome RunOneSet(Synchronizer& set, RunState& state, FrontEnd& ui,
                     MassDeletion mass_deletion) {
  if (!set.BuildActionList()) {
    return set.StopFlag ? StoppedOutcome(set) : SetOutcome::kFailed;
  }
  if (set.FutureDateCount > 0 && MsgBox(FutureDateQuestion(set, Now()),
                                        kMbYesNo | kMbQuestion) != kIdYes) {
    return SetOutcome::kCancelled;
  }
  if (state.interactive || AnyNeedsConfirmation(set)) {
    const Confirmation answer = ui.ConfirmActions(set);
    if (answer != Confirmation::kContinue) set.StopFlag = true;
    if (answer == Confirmation::kRefused) {
      return SetOutcome::kConfirmationRefused;
    }
    if (set.StopFlag) return SetOutcome::kCancelled;
  }
  if (!MassDeletionAllowed(set, state, mass_deletion)) {
    return SetOutcome::kMassDeletionRefused;
  }
  state.first_phase = false;
  state.busy = true;
  set.PerformActions();
  if (set.StopFlag) return StoppedOutcome(set);
  if (!state.simulation_mode) AdvanceLastSyncDate(set);
  return SetOutcome::kCompleted;
}

}  // namespace

void PrepareLog(Synchronizer& set, FrontEnd& ui) {
  LogFile& log = set.TheLog();
  ClearLogIfOld(set);
  log.CloseLog();
  // Without UseLogFile the log has no file and only echoes.
  log.SetPath(set.UseLogFile ? Trim(set.LogFileName) : std::string());
  log.EchoTextBox = ui.LogEcho();
  log.OpenLog();
}

const char* SetOutcomeName(SetOutcome outcome) {
  switch (outcome) {
    case SetOutcome::kCompleted:
      return "completed";
    case SetOutcome::kFailed:
      return "failed";
    case SetOutcome::kAborted:
      return "aborted";
    case SetOutcome::kCancelled:
      return "cancelled";
    case SetOutcome::kConfirmationRefused:
      return "confirmation refused";
    case SetOutcome::kMassDeletionRefused:
      return "mass deletion refused";
    case SetOutcome::kNotRun:
      break;
  }
  return "not run";
}

bool RunResult::AllCompleted() const {
  return std::all_of(outcomes.begin(), outcomes.end(),
                     [](SetOutcome o) { return o == SetOutcome::kCompleted; });
}

bool RunResult::Any(SetOutcome outcome) const {
  return std::find(outcomes.begin(), outcomes.end(), outcome) != outcomes.end();
}

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

RunResult RunSyncSets(Program& program, const std::vector<Synchronizer*>& sets,
                      const RunOptions& options) {
  RunState& state = program.Run();
  FrontEnd& ui = program.UI();
  state.first_phase = true;
  state.interactive = options.interactive;
  state.busy = false;
  state.error_handling = program.TheINIFile().Section("ErrorHandling");
  ui.EnableMainWindow(false);
  RunResult result;
  result.outcomes.assign(sets.size(), SetOutcome::kNotRun);
  std::vector<const Synchronizer*> dated;
  const std::size_t n = sets.size();
  for (std::size_t k = 1; k <= n; ++k) {
    Synchronizer& set = *sets[k - 1];
    state.current_set = &set;
    state.busy = false;
    std::string caption = "Sync Status - " + set.Name;
    if (n > 1) {
      caption += " (" + std::to_string(k) + " of " + std::to_string(n) + ")";
    }
    ui.ShowProgress(caption);
    PrepareLog(set, ui);
    set.SetCopyThreads(options.copy_threads);
    const double date_before = set.LastSyncDate;
    const SetOutcome outcome = RunOneSet(set, state, ui, options.mass_deletion);
    result.outcomes[k - 1] = outcome;
    result.skipped_operations += set.IgnoredErrors();
    if (set.LastSyncDate != date_before) dated.push_back(&set);
    set.FreeSyncData();
    set.TheLog().CloseLog();
    if (outcome != SetOutcome::kCompleted) break;
  }
  state.busy = false;
  state.current_set = nullptr;
  // Nothing was changed: the progress window has nothing to show.
  if (state.first_phase) ui.HideProgress();
  state.first_phase = true;
  ui.EnableMainWindow(true);
  if (options.save_last_sync_dates && !dated.empty()) {
    result.dates_saved = program.SaveLastSyncDates(dated);
  }
  return result;
}

}  // namespace pairwell
