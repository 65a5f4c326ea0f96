// What a sync of one set would do, worked out without changing anything.
#ifndef PAIRWELL_APP_SYNC_PLAN_H_
#define PAIRWELL_APP_SYNC_PLAN_H_

namespace pairwell {

class Synchronizer;

// Builds the set's action list as a dry run: no folder is created, no file
// touched; a missing folder that a real run would create takes part as an
// empty one. Every file's no-effect mark is computed. While the plan lives,
// the set's working data (WFile, WPath) is the plan; when it goes, the data
// is freed and the set is as it was before (DryRun included), so a real run
// may follow.
class SyncPlan {
 public:
  explicit SyncPlan(Synchronizer& set);
  ~SyncPlan();
  SyncPlan(const SyncPlan&) = delete;
  SyncPlan& operator=(const SyncPlan&) = delete;

  // False when the scan refused (the person has been told why) or was
  // stopped.
  bool ok() const { return ok_; }

 private:
  Synchronizer& set_;
  bool was_dry_run_;
  bool ok_;
};

}  // namespace pairwell

#endif  // PAIRWELL_APP_SYNC_PLAN_H_
