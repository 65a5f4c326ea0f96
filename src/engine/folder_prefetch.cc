#include "engine/folder_prefetch.h"

#include <algorithm>
#include <chrono>
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
    : roots_(std::move(roots)),
      filter_(std::move(filter)),
      ready_(roots_.size()),
      done_(roots_.size(), false) {
  const std::size_t count = std::min<std::size_t>(
      static_cast<std::size_t>(std::max(threads, 0)), roots_.size());
  // Without a thread nothing is listed ahead: every Take says so at once.
  if (count == 0) done_.assign(roots_.size(), true);
  for (std::size_t t = 0; t < count; ++t) {
    threads_.emplace_back([this] { Work(); });
  }
}

FolderPrefetch::~FolderPrefetch() {
  stop_ = true;
  for (std::thread& thread : threads_) thread.join();
}

void FolderPrefetch::Work() {
  for (;;) {
    const std::size_t root = next_root_++;
    if (root >= roots_.size() || stop_) return;
    Walk(root);
  }
}

void FolderPrefetch::Walk(std::size_t root) {
  std::vector<std::string> to_list = {std::string()};
  while (!to_list.empty() && !stop_) {
    const std::string rel = std::move(to_list.back());
    to_list.pop_back();
    // Spelled as the scan spells it: the root joined with rel, without the
    // trailing separator.
    std::string path = JoinPath(roots_[root], rel);
    if (!rel.empty()) path.pop_back();
    Listing listing;
    listing.error_number =
        ListFolder(path, &listing.entries, &listing.left_out);
    std::vector<std::string> sub_folders = SubFolders(rel, listing);
    // Read in reverse, so that they come off the stack in the scan's order.
    to_list.insert(to_list.end(), sub_folders.rbegin(), sub_folders.rend());
    const std::lock_guard<std::mutex> lock(mutex_);
    ready_[root].emplace(rel, std::move(listing));
    listed_.notify_all();
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  done_[root] = true;
  listed_.notify_all();
}

std::vector<std::string> FolderPrefetch::SubFolders(
    const std::string& rel, const Listing& listing) const {
  std::vector<std::string> found;
  if (listing.error_number != 0) return found;
  // In the scan's order: of names equal ignoring case only the first is
  // read.
  std::vector<const FolderEntry*> rows;
  rows.reserve(listing.entries.size());
  for (const FolderEntry& entry : listing.entries) rows.push_back(&entry);
  std::sort(rows.begin(), rows.end(),
            [](const FolderEntry* a, const FolderEntry* b) {
              return ScanOrderLess(a->name, b->name);
            });
  const std::string* kept = nullptr;
  for (const FolderEntry* row : rows) {
    if (kept != nullptr && EqualsNoCase(*kept, row->name)) continue;
    kept = &row->name;
    if ((row->attributes & kAttrDirectory) != 0 && filter_(row->name)) {
      found.push_back(rel + row->name + kPathSeparator);
    }
  }
  return found;
}

bool FolderPrefetch::Take(std::size_t root, const std::string& rel,
                          Listing* listing,
                          const std::function<bool()>& keep_waiting) {
  using Clock = std::chrono::steady_clock;
  constexpr Clock::duration kPumpEvery = std::chrono::milliseconds(50);
  Clock::time_point next_pump = Clock::now() + kPumpEvery;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    const auto found = ready_[root].find(rel);
    if (found != ready_[root].end()) {
      *listing = std::move(found->second);
      ready_[root].erase(found);
      return true;
    }
    if (done_[root]) return false;
    listed_.wait_until(lock, next_pump);
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

}  // namespace pairwell
