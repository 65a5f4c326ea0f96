// The names of a scan, each kept once in large blocks and referred to by a
// 32-bit offset and length: a million names cost their bytes plus eight
// bytes each, not a heap string each.
#ifndef PAIRWELL_ENGINE_NAME_ARENA_H_
#define PAIRWELL_ENGINE_NAME_ARENA_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace pairwell {

// Where a name is kept in its NameArena. The empty name needs no bytes.
struct NameRef {
  std::uint32_t offset = 0;  // block index << kBlockBits | position in it
  std::uint32_t length = 0;
};

class NameArena {
 public:
  NameArena() = default;
  NameArena(const NameArena&) = delete;
  NameArena& operator=(const NameArena&) = delete;

  // Keeps a copy of the name (which may be one of this arena's own). Throws
  // std::length_error when the blocks' offsets run out (4 GiB of names).
  NameRef Add(std::string_view name);
  // Valid until Clear(); the bytes never move.
  std::string_view View(NameRef ref) const;
  void Clear();

 private:
  static constexpr unsigned kBlockBits = 16;
  static constexpr std::size_t kBlockSize = std::size_t{1} << kBlockBits;

  // A name longer than a block gets a block of its own, at position 0.
  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t used_ = kBlockSize;  // in the last block; full before the first
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_NAME_ARENA_H_
