#include "app/undo_driver.h"

#include "app/front_end.h"
#include "app/program.h"
#include "app/sync_driver.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/run_undo.h"
#include "engine/synchronizer.h"

namespace pairwell {

UndoResult PerformUndo(Program& program, RunUndo& undo,
                       const UndoOptions& options) {
  Synchronizer& set = undo.Set();
  RunState& state = program.Run();
  FrontEnd& ui = program.UI();
  // Files change from the start: the progress window asks before a stop.
  state.first_phase = false;
  state.busy = true;
  state.interactive = false;
  state.current_set = &set;
  state.error_handling = program.TheINIFile().Section("ErrorHandling");
  ui.EnableMainWindow(false);
  ui.ShowProgress("Undo - " + set.Name);
  PrepareLog(set, ui);
  const RunUndo::Outcome outcome = undo.Perform(options.force,
                                                options.simulate);
  set.TheLog().CloseLog();
  state.busy = false;
  state.current_set = nullptr;
  state.first_phase = true;
  ui.EnableMainWindow(true);

  UndoResult result;
  result.done = outcome.done;
  result.left = outcome.left;
  if (!outcome.started) {
    result.problem = "The run could not be undone: nothing was changed.";
    return result;
  }
  result.completed = !outcome.stopped;
  if (result.completed && !options.simulate) {
    result.completed = program.SaveLastSyncDates({&set});
  }
  return result;
}

}  // namespace pairwell
