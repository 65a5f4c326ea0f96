// Runs sync sets one after another: scan, future-date warning, confirm
// window, actions, log.
#ifndef PAIRWELL_ENGINE_SYNC_DRIVER_H_
#define PAIRWELL_ENGINE_SYNC_DRIVER_H_

#include <string>
#include <vector>

namespace pairwell {

class Synchronizer;

// Runs the sets in order (the k-th of n is shown as "(k of n)"). The confirm
// window is asked for every set when interactive, else only where a file's
// conflict needs confirmation. A set that completes its actions without a
// stop, outside simulation mode, gets the moment its scan began as its
// LastSyncDate. The first set that fails or is cancelled ends the run.
// Returns true when every set completed.
bool RunSyncSets(const std::vector<Synchronizer*>& sets, bool interactive);

// The question asked when files are dated in the future: the count, at most
// nine full paths and "<more files...>", and "Continue anyway?".
std::string FutureDateQuestion(const Synchronizer& set, double now);

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_SYNC_DRIVER_H_
