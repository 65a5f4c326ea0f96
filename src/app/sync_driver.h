// Runs sync sets one after another: scan, future-date warning, confirm
// window, actions, log, and the last-sync dates of the sets that completed.
#ifndef PAIRWELL_APP_SYNC_DRIVER_H_
#define PAIRWELL_APP_SYNC_DRIVER_H_

#include <string>
#include <vector>

namespace pairwell {

class Program;
class Synchronizer;

// How one set of a run ended.
enum class SetOutcome {
  kCompleted,             // every action was performed (or logged)
  kFailed,                // the scan refused (the person was told why)
  kAborted,               // an error was answered Abort
  kCancelled,             // the person stopped the run or declined to go on
  kConfirmationRefused,   // conflicts needed a confirmation nobody gave
  kNotRun,                // an earlier set did not complete
};

// A word for the outcome ("completed", "failed", ...).
const char* SetOutcomeName(SetOutcome outcome);

struct RunOptions {
  // Show the confirm window for every set (else only where a conflict
  // needs confirmation).
  bool interactive = false;
  // Write the LastSyncDate of each set that completed into the
  // configuration file as it is on disk (see Program::SaveLastSyncDates).
  bool save_last_sync_dates = true;
};

struct RunResult {
  // One outcome per set, in the order the sets were given.
  std::vector<SetOutcome> outcomes;
  // False when the last-sync dates could not be saved (the person was told).
  bool dates_saved = true;

  bool AllCompleted() const;
  bool Any(SetOutcome outcome) const;
};

// Runs the sets in order (the k-th of n is shown as "(k of n)"). The confirm
// window is asked for every set when interactive, else only where a file's
// conflict needs confirmation. A set that completes its actions without a
// stop, outside simulation mode, gets the moment its scan began as its
// LastSyncDate (unless an operation failed or a source still lacks a file).
// The first set that does not complete ends the run; the later ones are not
// run.
RunResult RunSyncSets(Program& program, const std::vector<Synchronizer*>& sets,
                      const RunOptions& options);

// The question asked when files are dated in the future: the count, at most
// nine full paths and "<more files...>", and "Continue anyway?".
std::string FutureDateQuestion(const Synchronizer& set, double now);

}  // namespace pairwell

#endif  // PAIRWELL_APP_SYNC_DRIVER_H_
