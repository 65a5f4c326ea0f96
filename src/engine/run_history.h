// The runs of a set that can be put back: those whose journals are kept in
// the versions areas of the set's folders.
#ifndef PAIRWELL_ENGINE_RUN_HISTORY_H_
#define PAIRWELL_ENGINE_RUN_HISTORY_H_

#include <cstdint>
#include <string>
#include <vector>

#include "engine/run_journal.h"

namespace pairwell {

// One run, over the folders it changed.
struct RunSummary {
  std::string id;
  std::int64_t started = 0;  // POSIX seconds
  std::string undoes;        // for an undo: the run it put back
  // False when the run was cut short (a crash, a power cut) in a folder.
  bool ended = true;
  bool stopped = false;  // it ended through a stop or an abort
  long created = 0;
  long replaced = 0;
  long deleted = 0;
  long folders_created = 0;
  // Its journals, one per folder it changed, in the set's folder order.
  std::vector<std::string> journals;
};

// The versions area's journal of a run.
std::string JournalPath(const std::string& folder, const std::string& run_id);

// The runs of the set named set_name kept in the folders, newest first.
// Journals that cannot be read are passed over.
std::vector<RunSummary> ListRuns(const std::vector<std::string>& folders,
                                 const std::string& set_name);

// Reads the run's journal in each folder, in order: the journals of the run
// (empty when it has none). False, with why, when one cannot be read.
bool ReadRun(const RunSummary& run, std::vector<JournalContent>* journals,
             std::string* problem);

// Whether the set's run was pruned from one of the folders: when (POSIX
// seconds) in *pruned_at.
bool FindPrunedRun(const std::vector<std::string>& folders,
                   const std::string& set_name, const std::string& run_id,
                   std::int64_t* pruned_at);

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_RUN_HISTORY_H_
