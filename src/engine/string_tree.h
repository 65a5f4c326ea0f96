// A sorted list of nodes keyed by strings that compare ignoring case; a
// node's object may be another StringTree, which makes the list a tree.
#ifndef PAIRWELL_ENGINE_STRING_TREE_H_
#define PAIRWELL_ENGINE_STRING_TREE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/name_arena.h"

namespace pairwell {

// Base of every object a node can carry.
class TreeObject {
 public:
  virtual ~TreeObject() = default;
};

// Nodes are indexed from 1 to Count(); an index outside that range throws
// std::out_of_range. Invariant: nodes are in ascending order of their
// upper-cased keys, compared byte by byte, and no two keys are equal after
// upper-casing.
//
// A node takes 16 bytes: its key lives in a NameArena that a tree may share
// with its sub-trees (and the scan's files), and only nodes that carry an
// object have a slot for it.
class StringTree : public TreeObject {
 public:
  // A tree with a name store of its own.
  StringTree();
  // A tree keeping its keys in `names` (a sub-tree shares its root's).
  explicit StringTree(std::shared_ptr<NameArena> names);
  StringTree(const StringTree&) = delete;
  StringTree& operator=(const StringTree&) = delete;

  long Count() const { return static_cast<long>(nodes_.size()); }

  // The index of the node whose key equals `key` ignoring case, or -1.
  long Find(std::string_view key) const;

  // The index of the node with that key. When there is none, a node is
  // inserted where the order wants it (later nodes move up by one) with the
  // key as given, number -1 and no object. *found tells which happened; an
  // existing node keeps its key as first given.
  long Add(std::string_view key, bool* found);

  // Inserts many new keys at once, in one pass over the nodes, so a folder
  // of many names costs no more per name than a small one. The keys must be
  // in ascending order ignoring case, unique, and none may be present yet.
  // New nodes get number -1 and no object.
  void AddSorted(const std::vector<std::string_view>& keys);

  // Removes the node with that key; nothing when there is none.
  void Remove(std::string_view key);
  // Removes the node; later nodes move down by one.
  void RemoveAt(long index);

  std::string ListStr(long index) const;
  // The key without a copy, valid until the tree's names are cleared.
  std::string_view Key(long index) const;
  // Where the key is kept in Names().
  NameRef KeyRef(long index) const;
  const NameArena& Names() const { return *names_; }
  const std::shared_ptr<NameArena>& SharedNames() const { return names_; }

  std::int32_t ListInt(long index) const;
  void SetListInt(long index, std::int32_t value);
  const std::shared_ptr<TreeObject>& ListObj(long index) const;
  void SetListObj(long index, std::shared_ptr<TreeObject> object);

  // The node's object as a StringTree; null when it holds none or holds
  // another kind of object.
  std::shared_ptr<StringTree> SubTree(long index) const;
  void SetSubTree(long index, std::shared_ptr<StringTree> tree);

  // Removes every node; the keys' bytes go too unless sub-trees still
  // share them.
  void Clear();

 private:
  struct Node {
    NameRef key;
    std::int32_t num = -1;
    std::uint32_t object = 0;  // 1-based slot in objects_; 0: none
  };

  // The 1-based position of the key: its node when *found, else where it
  // would be inserted.
  long Position(std::string_view key, bool* found) const;
  Node& At(long index);
  const Node& At(long index) const;
  std::string_view KeyOf(const Node& node) const {
    return names_->View(node.key);
  }

  std::shared_ptr<NameArena> names_;
  std::vector<Node> nodes_;
  std::vector<std::shared_ptr<TreeObject>> objects_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_STRING_TREE_H_
