// The program's sync sets, in the order shown and stored.
#ifndef PAIRWELL_ENGINE_SYNC_SET_LIST_H_
#define PAIRWELL_ENGINE_SYNC_SET_LIST_H_

#include <memory>
#include <vector>

#include "engine/synchronizer.h"

namespace pairwell {

// Sets are numbered from 1 (the number shown and stored as "CurSyncSet");
// a number outside 1..Count() throws std::out_of_range. The list owns its
// sets; a set keeps its address while it is in the list.
class SyncSetList {
 public:
  SyncSetList() = default;
  SyncSetList(const SyncSetList&) = delete;
  SyncSetList& operator=(const SyncSetList&) = delete;

  int Count() const { return static_cast<int>(sets_.size()); }
  Synchronizer& Item(int i) const;

  // Appends the set and returns it.
  Synchronizer& Add(std::unique_ptr<Synchronizer> set);
  // Removes set i; later sets move down by one.
  void Remove(int i);
  // Exchanges the places of sets i and j.
  void Swap(int i, int j);
  void Clear() { sets_.clear(); }

 private:
  std::vector<std::unique_ptr<Synchronizer>> sets_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_SYNC_SET_LIST_H_
