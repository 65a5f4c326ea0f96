// Lists the folders of a scan ahead of it, on threads of their own: while
// the set's thread joins one folder's names into its tree, the next folders
// are listed, on as many cores as there are threads. Only the listing moves
// (the system calls); the set's thread still takes every listing in the
// order it always did, so the files, their order and the log stay exactly
// the same.
//
// The folders are listed in that same order: every root's folders depth
// first, sub-folders in the scan's order, one root after another. How far
// the listing runs ahead is bounded (kMaxHeldEntries, kMaxHeldFolders), so
// a tree of a million files is never held listed in memory at once.
#ifndef PAIRWELL_ENGINE_FOLDER_PREFETCH_H_
#define PAIRWELL_ENGINE_FOLDER_PREFETCH_H_

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "util/file_system.h"

namespace pairwell {

// The order in which a scan takes a folder's names: ignoring case, then by
// bytes, so that names equal ignoring case come next to each other, the
// first by bytes first.
bool ScanOrderLess(const std::string& a, const std::string& b);

class FolderPrefetch {
 public:
  // One folder's listing, as ListFolder gives it.
  struct Listing {
    int error_number = 0;
    std::vector<FolderEntry> entries;
    std::vector<LeftOutEntry> left_out;
  };

  // Whether the scan will read the sub-folder `name` of a listing (after
  // the rows equal ignoring case have been dropped).
  using FolderFilter = std::function<bool(const std::string& name)>;

  // Listings taken by nobody yet that the threads may hold: the rows, and
  // the folders. The folder the scan needs next is listed regardless.
  static constexpr std::size_t kMaxHeldEntries = 16384;
  static constexpr std::size_t kMaxHeldFolders = 64;

  // Walks the roots, in order, on `threads` threads, reading the
  // sub-folders that the filter lets through. The filter must be safe to
  // call from several threads.
  FolderPrefetch(std::vector<std::string> roots, FolderFilter filter,
                 int threads);
  // Stops the walks and waits for the threads.
  ~FolderPrefetch();
  FolderPrefetch(const FolderPrefetch&) = delete;
  FolderPrefetch& operator=(const FolderPrefetch&) = delete;

  // Takes the listing of the folder rel (relative, ending in a separator
  // below the top level) of root `root` (0-based). Waits for it, calling
  // keep_waiting about every 50 ms; false when keep_waiting said no or the
  // walk does not list that folder (the caller then lists it itself).
  // Folders the walk listed before it and that were not taken are dropped:
  // the scan has passed them.
  bool Take(std::size_t root, const std::string& rel, Listing* listing,
            const std::function<bool()>& keep_waiting);

  // The listed folders and rows held right now (for tests).
  std::size_t HeldFolders();
  std::size_t HeldEntries();

 private:
  enum class State { kWaiting, kListing, kListed };
  struct Folder {
    Folder(std::size_t root_index, std::string relative)
        : root(root_index), rel(std::move(relative)) {}
    std::size_t root;
    std::string rel;
    State state = State::kWaiting;
    // Passed by the scan while being listed: the thread removes it.
    bool dropped = false;
    Listing listing;
  };
  using Sequence = std::list<Folder>;

  void Work();
  // The folder a thread may list now, or the end. Called locked.
  Sequence::iterator NextToList();
  // Lists the folder with the lock released, then files the listing and its
  // sub-folders (right after it, in the scan's order). Called locked.
  void List(Sequence::iterator folder, std::unique_lock<std::mutex>& lock);
  // Removes folders the scan has passed, up to `end`. Called locked.
  void DropBefore(Sequence::iterator end);
  void Release(const Folder& folder);
  // The sub-folders of a listing that the scan goes on to, as relative
  // names ending in a separator.
  std::vector<std::string> SubFolders(const std::string& rel,
                                      const Listing& listing) const;

  const std::vector<std::string> roots_;
  const FolderFilter filter_;
  std::mutex mutex_;
  std::condition_variable changed_;
  // The folders still to be taken, in the order the scan takes them.
  Sequence sequence_;
  std::size_t held_entries_ = 0;
  std::size_t held_folders_ = 0;
  std::size_t listing_now_ = 0;
  bool stop_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_FOLDER_PREFETCH_H_
