#include "engine/run_state.h"

namespace pairwell {

RunState& TheRunState() {
  static RunState state;
  return state;
}

}  // namespace pairwell
