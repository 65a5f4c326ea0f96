#include "app/sync_plan.h"

#include "engine/sync_file.h"
#include "engine/synchronizer.h"

namespace pairwell {

SyncPlan::SyncPlan(Synchronizer& set)
    : set_(set), was_dry_run_(set.DryRun), ok_(false) {
  set_.DryRun = true;
  ok_ = set_.BuildActionList();
  if (!ok_) return;
  for (long i = 1; i <= set_.WFileCount(); ++i) set_.WFile(i).CalcNoEffect();
}

SyncPlan::~SyncPlan() {
  set_.FreeSyncData();
  set_.DryRun = was_dry_run_;
}

}  // namespace pairwell
