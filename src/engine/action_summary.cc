#include "engine/action_summary.h"

#include "engine/sync_file.h"

namespace pairwell {

void ActionSummary::Add(const SyncFile& file) {
  if (count_ == 0) {
    common_action_ = file.Action;
    common_copy_ = file.SourceIndex;
  } else {
    if (file.Action != common_action_) common_action_ = -1;
    if (file.SourceIndex != common_copy_) common_copy_ = -1;
  }
  ++count_;
  if (file.SourceIndex != file.GetNewestFileIndex(true)) all_newest_ = false;
  any_set_ = static_cast<std::uint16_t>(any_set_ | file.ActionFlags);
  any_clear_ = static_cast<std::uint16_t>(any_clear_ | ~file.ActionFlags);
}

int ActionSummary::CheckValue(std::uint16_t bit) const {
  const bool some_set = (any_set_ & bit) != 0;
  const bool some_clear = (any_clear_ & bit) != 0;
  if (some_set && some_clear) return kCheckMixed;
  return some_set ? kCheckSet : kCheckClear;
}

}  // namespace pairwell
