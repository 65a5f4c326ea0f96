// The files of a scan, in blocks of a few thousand: no heap object per
// file, no list that copies every file as it grows, and a file never moves
// once added.
#ifndef PAIRWELL_ENGINE_SYNC_FILE_LIST_H_
#define PAIRWELL_ENGINE_SYNC_FILE_LIST_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "engine/sync_file.h"

namespace pairwell {

class SyncFileList {
 public:
  std::size_t Count() const { return count_; }
  // 0-based; the caller checks the index.
  SyncFile& At(std::size_t index) const {
    return blocks_[index >> kBlockBits][index & (kBlockSize - 1)];
  }

  template <typename... Args>
  SyncFile& Add(Args&&... args) {
    if ((count_ & (kBlockSize - 1)) == 0) {
      blocks_.emplace_back();
      blocks_.back().reserve(kBlockSize);
    }
    // Within its reserve a block never reallocates, so files stay put.
    blocks_.back().emplace_back(std::forward<Args>(args)...);
    ++count_;
    return blocks_.back().back();
  }

  void Clear() {
    blocks_.clear();
    count_ = 0;
  }

 private:
  static constexpr unsigned kBlockBits = 12;
  static constexpr std::size_t kBlockSize = std::size_t{1} << kBlockBits;

  // mutable: a const list still hands out its files to be changed, as the
  // set's WFile always has.
  mutable std::vector<std::vector<SyncFile>> blocks_;
  std::size_t count_ = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_SYNC_FILE_LIST_H_
