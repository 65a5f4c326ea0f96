#include "engine/folder_prefetch.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "util/path.h"
#include "util/text.h"

namespace pairwell {

bool ScanOrderLess(const std::string& a, const std::string& b) {
  const int order = CompareNoCase(a, b);
  return order != 0 ? order < 0 : a < b;
}

FolderPrefetch::FolderPrefetch(std::vector<std::string> roots,
                               FolderFilter filter, int threads)
    : roots_(std::move(roots)), filter_(std::move(filter)) {
  // Without a thread nothing is listed ahead: every Take says so at once.
  if (threads <= 0) return;
  for (std::size_t root = 0; root < roots_.size(); ++root) {
    sequence_.emplace_back(root, std::string());
  }
  for (int t = 0; t < threads; ++t) {
    threads_.emplace_back([this] { Work(); });
  }
}

FolderPrefetch::~FolderPrefetch() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void FolderPrefetch::Work() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    if (stop_) return;
    const Sequence::iterator next = NextToList();
    if (next != sequence_.end()) {
      List(next, lock);
      continue;
    }
    const bool waiting_left = std::any_of(
        sequence_.begin(), sequence_.end(),
        [](const Folder& folder) { return folder.state == State::kWaiting; });
    // Only a listing under way can still add folders.
    if (!waiting_left && listing_now_ == 0) return;
    changed_.wait(lock);
  }
}

FolderPrefetch::Sequence::iterator FolderPrefetch::NextToList() {
  bool first = true;
  for (auto it = sequence_.begin(); it != sequence_.end(); ++it) {
    if (it->dropped) continue;
    if (it->state != State::kWaiting) {
      first = false;
      continue;
    }
    // The first folder of all is the one the scan waits for: it never
    // waits for the bound.
    if (first || (held_entries_ < kMaxHeldEntries &&
                  held_folders_ + listing_now_ < kMaxHeldFolders)) {
      return it;
    }
    return sequence_.end();
  }
  return sequence_.end();
}

void FolderPrefetch::List(Sequence::iterator folder,
                          std::unique_lock<std::mutex>& lock) {
  folder->state = State::kListing;
  ++listing_now_;
  const std::size_t root = folder->root;
  const std::string rel = folder->rel;
  lock.unlock();
  // Spelled as the scan spells it: the root joined with rel, without the
  // trailing separator.
  std::string path = JoinPath(roots_[root], rel);
  if (!rel.empty()) path.pop_back();
  Listing listing;
  listing.error_number = ListFolder(path, &listing.entries, &listing.left_out);
  // Sorted here, on this thread, so that the scan finds the rows in its
  // order and need not sort them itself.
  std::sort(listing.entries.begin(), listing.entries.end(),
            [](const FolderEntry& a, const FolderEntry& b) {
              return ScanOrderLess(a.name, b.name);
            });
  const std::vector<std::string> sub_folders = SubFolders(rel, listing);
  lock.lock();
  --listing_now_;
  if (folder->dropped) {
    sequence_.erase(folder);
  } else {
    const Sequence::iterator after = std::next(folder);
    for (const std::string& sub : sub_folders) {
      sequence_.emplace(after, root, sub);
    }
    held_entries_ += listing.entries.size();
    ++held_folders_;
    folder->listing = std::move(listing);
    folder->state = State::kListed;
  }
  changed_.notify_all();
}

std::vector<std::string> FolderPrefetch::SubFolders(
    const std::string& rel, const Listing& listing) const {
  std::vector<std::string> found;
  if (listing.error_number != 0) return found;
  // Of names equal ignoring case only the first is read; the rows are in
  // the scan's order.
  const std::string* kept = nullptr;
  for (const FolderEntry& row : listing.entries) {
    if (kept != nullptr && EqualsNoCase(*kept, row.name)) continue;
    kept = &row.name;
    if ((row.attributes & kAttrDirectory) != 0 && filter_(row.name)) {
      found.push_back(rel + row.name + kPathSeparator);
    }
  }
  return found;
}

void FolderPrefetch::Release(const Folder& folder) {
  if (folder.state != State::kListed) return;
  held_entries_ -= folder.listing.entries.size();
  --held_folders_;
}

void FolderPrefetch::DropBefore(Sequence::iterator end) {
  for (auto it = sequence_.begin(); it != end;) {
    if (it->state == State::kListing) {
      it->dropped = true;
      ++it;
    } else {
      Release(*it);
      it = sequence_.erase(it);
    }
  }
}

bool FolderPrefetch::Take(std::size_t root, const std::string& rel,
                          Listing* listing,
                          const std::function<bool()>& keep_waiting) {
  using Clock = std::chrono::steady_clock;
  constexpr Clock::duration kPumpEvery = std::chrono::milliseconds(50);
  Clock::time_point next_pump = Clock::now() + kPumpEvery;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    // Normally the first folder: the walk lists in the scan's order.
    const auto found =
        std::find_if(sequence_.begin(), sequence_.end(), [&](const Folder& f) {
          return !f.dropped && f.root == root && f.rel == rel;
        });
    if (found == sequence_.end()) return false;
    if (found->state == State::kListed) {
      Release(*found);
      *listing = std::move(found->listing);
      DropBefore(found);
      sequence_.erase(found);
      changed_.notify_all();
      return true;
    }
    changed_.wait_until(lock, next_pump);
    // Other folders' listings wake the wait too; the person's events are
    // let through on time all the same.
    if (Clock::now() >= next_pump) {
      lock.unlock();
      const bool wait_on = keep_waiting();
      lock.lock();
      if (!wait_on) return false;
      next_pump = Clock::now() + kPumpEvery;
    }
  }
}

std::size_t FolderPrefetch::HeldFolders() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return held_folders_;
}

std::size_t FolderPrefetch::HeldEntries() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return held_entries_;
}

}  // namespace pairwell
