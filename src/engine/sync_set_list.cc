#include "engine/sync_set_list.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace pairwell {

namespace {

void CheckSetIndex(int i, int count) {
  if (i < 1 || i > count) {
    throw std::out_of_range("sync set index " + std::to_string(i) +
                            " is outside 1.." + std::to_string(count));
  }
}

}  // namespace

Synchronizer& SyncSetList::Item(int i) const {
  CheckSetIndex(i, Count());
  return *sets_[static_cast<std::size_t>(i - 1)];
}

Synchronizer& SyncSetList::Add(std::unique_ptr<Synchronizer> set) {
  sets_.push_back(std::move(set));
  return *sets_.back();
}

void SyncSetList::Remove(int i) {
  CheckSetIndex(i, Count());
  sets_.erase(sets_.begin() + (i - 1));
}

void SyncSetList::Swap(int i, int j) {
  CheckSetIndex(i, Count());
  CheckSetIndex(j, Count());
  std::swap(sets_[static_cast<std::size_t>(i - 1)],
            sets_[static_cast<std::size_t>(j - 1)]);
}

}  // namespace pairwell
