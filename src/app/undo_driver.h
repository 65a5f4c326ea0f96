// Puts a run of a set back, as a run of its own: the progress window and
// the set's log, the questions about errors, and the set's last-sync date
// saved as it was before the run.
#ifndef PAIRWELL_APP_UNDO_DRIVER_H_
#define PAIRWELL_APP_UNDO_DRIVER_H_

#include <string>

namespace pairwell {

class Program;
class RunUndo;

struct UndoOptions {
  bool force = false;     // put back files changed since the run too
  bool simulate = false;  // log only
};

struct UndoResult {
  // Why nothing was done ("" when the undo ran).
  std::string problem;
  bool completed = false;  // not stopped, and the last-sync date saved
  long done = 0;
  long left = 0;  // files left as they were
};

// Performs the loaded undo (RunUndo::Load succeeded) of its set.
UndoResult PerformUndo(Program& program, RunUndo& undo,
                       const UndoOptions& options);

}  // namespace pairwell

#endif  // PAIRWELL_APP_UNDO_DRIVER_H_
