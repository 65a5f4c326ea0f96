// Puts a run of a set back: every folder as it was before the run, and the
// set's last-sync date as it was, so that the next plan proposes the same
// actions again. What the undo removes or replaces is kept in the versions
// areas as a run of its own, which can be undone in turn.
#ifndef PAIRWELL_ENGINE_RUN_UNDO_H_
#define PAIRWELL_ENGINE_RUN_UNDO_H_

#include <memory>
#include <string>
#include <vector>

#include "engine/run_history.h"
#include "engine/run_journal.h"

namespace pairwell {

class Synchronizer;
class VersionKeeper;

class RunUndo {
 public:
  // What one step of the run needs now.
  struct Item {
    enum class Action {
      kRemoveCreated,  // a copy the run put where there was none
      kPutBack,        // an old copy the run replaced or deleted
      kRemoveFolder,   // a folder the run made
      kMakeFolder,     // a folder the run (an undo) removed
    };
    enum class State {
      kReady,
      kChanged,  // the file changed since the run: left unless forced
      kNothing,  // nothing to do: the step never happened, or is undone
    };
    Action action = Action::kPutBack;
    State state = State::kReady;
    std::size_t journal = 0;  // index into the run's journals
    std::string path;         // the name in the synced folder
    JournalStep step;
  };

  explicit RunUndo(Synchronizer& set);
  ~RunUndo();
  RunUndo(const RunUndo&) = delete;
  RunUndo& operator=(const RunUndo&) = delete;

  Synchronizer& Set() const { return set_; }

  // The set's runs that can be put back, newest first.
  std::vector<RunSummary> Runs() const;

  // Loads the run (the newest when id is empty) and works out what putting
  // it back takes. "" when it can be done, else why not (nothing changes).
  std::string Load(const std::string& id);
  const RunSummary& Run() const { return run_; }
  const std::vector<Item>& Items() const { return items_; }
  // Files that changed since the run.
  long ChangedCount() const;
  // What undoing the run does, in a sentence: "Undoing this run puts back
  // 8 files and 6 folders; 1 changed since the run and is left unless you
  // tick the box below."
  std::string Summary(bool force) const;
  // One line saying what the item will do, or why it is left.
  std::string Describe(const Item& item, bool force) const;

  struct Outcome {
    bool started = false;  // false: the undo could not keep what it replaces
    bool stopped = false;  // through StopFlag or an abort answer
    long done = 0;         // steps made
    long left = 0;         // files left as they were
  };
  // Puts the run back, through the set's log, questions and stop flag.
  // Changed files are left (listed in the log) unless force, which keeps
  // their present content as a version. A simulation only logs. The set's
  // last-sync date is put back unless the undo was stopped or simulated.
  Outcome Perform(bool force, bool simulate);

 private:
  Item::State Assess(const Item& item) const;
  std::string FolderOf(const Item& item) const;
  // The steps of one item; false when it was given up.
  bool PutBack(const Item& item, bool present);
  bool RemoveCreated(const Item& item);
  bool RemoveFolder(const Item& item);
  bool MakeFolder(const Item& item);
  int KeeperIndex(const Item& item) const {
    return static_cast<int>(item.journal) + 1;
  }

  Synchronizer& set_;
  RunSummary run_;
  std::vector<JournalContent> journals_;
  std::vector<Item> items_;
  std::unique_ptr<VersionKeeper> keeper_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_RUN_UNDO_H_
