#include "support/run_files.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "app/program.h"
#include "app/sync_driver.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"

namespace pairwell {

void BuildSilently(Synchronizer& set, const RecordingUserInterface& ui) {
  ASSERT_TRUE(set.BuildActionList());
  ASSERT_TRUE(ui.messages.empty()) << ui.messages.front().text;
}

SyncFile& FileNamed(Synchronizer& set, const std::string& relative_name) {
  for (long i = 1; i <= set.WFileCount(); ++i) {
    if (set.WFile(i).RelativeName() == relative_name) return set.WFile(i);
  }
  ADD_FAILURE() << "no file " << relative_name << " in the run";
  throw std::runtime_error("missing file");
}

bool RunSets(Program& program, const std::vector<Synchronizer*>& sets,
             bool interactive) {
  RunOptions options;
  options.interactive = interactive;
  options.save_last_sync_dates = false;
  return RunSyncSets(program, sets, options).AllCompleted();
}

}  // namespace pairwell
