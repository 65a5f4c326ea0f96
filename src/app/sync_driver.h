// Runs sync sets one after another: scan, future-date warning, confirm
// window, actions, log, and the last-sync dates of the sets that completed.
#ifndef PAIRWELL_APP_SYNC_DRIVER_H_
#define PAIRWELL_APP_SYNC_DRIVER_H_

#include <string>
#include <vector>

namespace pairwell {

class FrontEnd;
class Program;
class Synchronizer;

// Opens the set's log for a run: cleared when old and the set asks for it,
// written to the set's log file when it keeps one, echoed by the front end.
void PrepareLog(Synchronizer& set, FrontEnd& ui);

// How one set of a run ended.
enum class SetOutcome {
  kCompleted,            // every action was performed (or logged)
  kFailed,               // the scan refused (the person was told why)
  kAborted,              // an error was answered Abort
  kCancelled,            // the person stopped the run or declined to go on
  kConfirmationRefused,  // conflicts needed a confirmation nobody gave
  kMassDeletionRefused,  // deleting most of a folder was not allowed
  kNotRun,               // an earlier set did not complete
};

// A word for the outcome ("completed", "failed", ...).
const char* SetOutcomeName(SetOutcome outcome);

// What to do when a set's actions would delete more than half of the files
// of a folder (and at least Synchronizer::kMassDeletionMinimum of them).
enum class MassDeletion {
  kAsk,     // ask, No being the default (quiet mode answers No)
  kAllow,   // go on (the warnings are logged)
  kRefuse,  // say so and change nothing
};

struct RunOptions {
  // Show the confirm window for every set (else only where a conflict
  // needs confirmation).
  bool interactive = false;
  // Write the LastSyncDate of each set that completed into the
  // configuration file as it is on disk (see Program::SaveLastSyncDates).
  bool save_last_sync_dates = true;
  MassDeletion mass_deletion = MassDeletion::kAsk;
  // The threads that write each set's copies (Synchronizer::SetCopyThreads);
  // 0 for the default.
  int copy_threads = 0;
};

struct RunResult {
  // One outcome per set, in the order the sets were given.
  std::vector<SetOutcome> outcomes;
  // False when the last-sync dates could not be saved (the person was told).
  bool dates_saved = true;
  // Operations that failed and were ignored, or were skipped because their
  // file changed since the scan, over all the sets run.
  long skipped_operations = 0;

  bool AllCompleted() const;
  bool Any(SetOutcome outcome) const;
};

// Runs the sets in order (the k-th of n is shown as "(k of n)"). The confirm
// window is asked for every set when interactive, else only where a file's
// conflict needs confirmation; then a mass deletion is dealt with as the
// options say (a simulation only logs it). A set that completes its actions
// without a stop, outside simulation mode, gets the moment its scan began as
// its LastSyncDate (unless an operation failed or a source still lacks a file).
// The first set that does not complete ends the run; the later ones are not
// run.
RunResult RunSyncSets(Program& program, const std::vector<Synchronizer*>& sets,
                      const RunOptions& options);

// The question asked when files are dated in the future: the count, at most
// nine full paths and "<more files...>", and "Continue anyway?".
std::string FutureDateQuestion(const Synchronizer& set, double now);

}  // namespace pairwell

#endif  // PAIRWELL_APP_SYNC_DRIVER_H_
