// What a selection of a run's files has in common, as the confirm window
// shows it: one action, one copy, and each flag set, clear or mixed.
#ifndef PAIRWELL_ENGINE_ACTION_SUMMARY_H_
#define PAIRWELL_ENGINE_ACTION_SUMMARY_H_

#include <cstdint>

namespace pairwell {

class SyncFile;

// The state of a flag check box over several files.
constexpr int kCheckClear = 0;
constexpr int kCheckSet = 1;
constexpr int kCheckMixed = 2;

// What a selection of files has in common, folded one file at a time in
// list order.
class ActionSummary {
 public:
  void Add(const SyncFile& file);

  long Count() const { return count_; }
  // The first file's action, or -1 once another file's differs.
  std::int32_t CommonAction() const { return common_action_; }
  // The first file's source index, or -1 once another file's differs.
  std::int32_t CommonCopy() const { return common_copy_; }
  // Whether every file's source index is its newest copy.
  bool AllNewest() const { return all_newest_; }
  // The OR of the files' flags, and of their complements.
  std::uint16_t AnySet() const { return any_set_; }
  std::uint16_t AnyClear() const { return any_clear_; }
  // kCheckMixed when the bit is set in some files and clear in others,
  // kCheckSet when set in all, else kCheckClear.
  int CheckValue(std::uint16_t bit) const;

 private:
  long count_ = 0;
  std::int32_t common_action_ = -1;
  std::int32_t common_copy_ = -1;
  bool all_newest_ = true;
  std::uint16_t any_set_ = 0;
  std::uint16_t any_clear_ = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_ACTION_SUMMARY_H_
