// A sorted list of nodes keyed by strings that compare ignoring case; a
// node's object may be another StringTree, which makes the list a tree.
#ifndef PAIRWELL_ENGINE_STRING_TREE_H_
#define PAIRWELL_ENGINE_STRING_TREE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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
class StringTree : public TreeObject {
 public:
  StringTree() = default;
  StringTree(const StringTree&) = delete;
  StringTree& operator=(const StringTree&) = delete;

  long Count() const { return static_cast<long>(nodes_.size()); }

  // The index of the node whose key equals `key` ignoring case, or -1.
  long Find(const std::string& key) const;

  // The index of the node with that key. When there is none, a node is
  // inserted where the order wants it (later nodes move up by one) with the
  // key as given, number -1 and no object. *found tells which happened; an
  // existing node keeps its key as first given.
  long Add(const std::string& key, bool* found);

  // Inserts many new keys at once, in one pass over the nodes, so a folder
  // of many names costs no more per name than a small one. The keys must be
  // in ascending order ignoring case, unique, and none may be present yet.
  // New nodes get number -1 and no object.
  void AddSorted(const std::vector<std::string>& keys);

  // Removes the node with that key; nothing when there is none.
  void Remove(const std::string& key);
  // Removes the node; later nodes move down by one.
  void RemoveAt(long index);

  const std::string& ListStr(long index) const;
  std::int32_t ListInt(long index) const;
  void SetListInt(long index, std::int32_t value);
  const std::shared_ptr<TreeObject>& ListObj(long index) const;
  void SetListObj(long index, std::shared_ptr<TreeObject> object);

  // The node's object as a StringTree; null when it holds none or holds
  // another kind of object.
  std::shared_ptr<StringTree> SubTree(long index) const;
  void SetSubTree(long index, std::shared_ptr<StringTree> tree);

  void Clear() { nodes_.clear(); }

 private:
  struct Node {
    std::string str;
    std::int32_t num = -1;
    std::shared_ptr<TreeObject> obj;
  };

  // The 1-based position of the key: its node when *found, else where it
  // would be inserted.
  long Position(const std::string& key, bool* found) const;
  Node& At(long index);
  const Node& At(long index) const;

  std::vector<Node> nodes_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_STRING_TREE_H_
