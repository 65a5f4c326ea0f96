#include "engine/name_arena.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace pairwell {

NameRef NameArena::Add(std::string_view name) {
  if (name.empty()) return NameRef{};
  if (name.size() > UINT32_MAX) throw std::length_error("name too long");
  const bool own_block = name.size() > kBlockSize;
  if (own_block || used_ + name.size() > kBlockSize) {
    if (blocks_.size() >= (std::size_t{1} << (32 - kBlockBits))) {
      throw std::length_error("too many names for one scan");
    }
    const std::size_t size = own_block ? name.size() : kBlockSize;
    // The name may lie in an older block: blocks never move, so it is
    // still there while the new one is filled.
    blocks_.emplace_back(new char[size]);
    used_ = 0;
  }
  char* block = blocks_.back().get();
  std::memcpy(block + used_, name.data(), name.size());
  const NameRef ref{
      static_cast<std::uint32_t>(((blocks_.size() - 1) << kBlockBits) | used_),
      static_cast<std::uint32_t>(name.size())};
  // After an own block, the next name starts a new one.
  used_ = own_block ? kBlockSize : used_ + name.size();
  return ref;
}

std::string_view NameArena::View(NameRef ref) const {
  if (ref.length == 0) return std::string_view();
  const char* block = blocks_[ref.offset >> kBlockBits].get();
  return std::string_view(block + (ref.offset & (kBlockSize - 1)), ref.length);
}

void NameArena::Clear() {
  blocks_.clear();
  used_ = kBlockSize;
}

}  // namespace pairwell
