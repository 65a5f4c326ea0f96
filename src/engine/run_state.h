// The state of synchronization runs that every set of the program shares:
// the windows read it and the engine polls it. The program owns one and
// connects each set to it. One user-interface thread: no locks.
#ifndef PAIRWELL_ENGINE_RUN_STATE_H_
#define PAIRWELL_ENGINE_RUN_STATE_H_

#include <memory>

namespace pairwell {

class INIFileSection;
class Synchronizer;

struct RunState {
  // Runs log every operation and change no file.
  bool simulation_mode = false;
  // Set from the start of a run until a set begins performing actions:
  // stopping then changes nothing ("Cancel").
  bool first_phase = true;
  // Set while a set performs its actions: stopping asks first ("Abort").
  bool busy = false;
  // The run shows the confirm window for every set.
  bool interactive = false;
  // The set being run; null between runs.
  Synchronizer* current_set = nullptr;
  // The "ErrorHandling" section that answers errors for the person; null
  // when there is none.
  std::shared_ptr<const INIFileSection> error_handling;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_RUN_STATE_H_
