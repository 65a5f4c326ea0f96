// Lists the folders of a scan ahead of it, on threads of their own: while
// the set's thread reads one working folder, the others are listed, so a
// scan of several folders uses several cores. Only the listing moves (the
// system calls); the set's thread still takes every listing in the order it
// always did, so the files, their order and the log stay exactly the same.
#ifndef PAIRWELL_ENGINE_FOLDER_PREFETCH_H_
#define PAIRWELL_ENGINE_FOLDER_PREFETCH_H_

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
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

  // Walks each root on up to `threads` threads, reading the sub-folders
  // that the filter lets through. The filter must be safe to call from
  // several threads.
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
  bool Take(std::size_t root, const std::string& rel, Listing* listing,
            const std::function<bool()>& keep_waiting);

 private:
  void Work();
  void Walk(std::size_t root);
  // The sub-folders of a listing that the scan goes on to, as relative
  // names ending in a separator.
  std::vector<std::string> SubFolders(const std::string& rel,
                                      const Listing& listing) const;

  const std::vector<std::string> roots_;
  const FolderFilter filter_;
  std::atomic<std::size_t> next_root_{0};
  std::atomic<bool> stop_{false};
  std::mutex mutex_;
  std::condition_variable listed_;
  // Per root: listings not taken yet, by relative name; whether its walk
  // has ended.
  std::vector<std::map<std::string, Listing>> ready_;
  std::vector<bool> done_;
  std::vector<std::thread> threads_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_FOLDER_PREFETCH_H_
