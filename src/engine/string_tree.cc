#include "engine/string_tree.h"

#include <stdexcept>

#include "util/text.h"

namespace pairwell {

long StringTree::Position(const std::string& key, bool* found) const {
  *found = false;
  if (nodes_.empty()) return 1;
  long lo = 1;
  long hi = Count();
  for (;;) {
    const long mid = (lo + hi) / 2;
    // Keys are compared upper-cased on the fly; no folded copy is kept.
    const int order = CompareNoCase(key, nodes_[mid - 1].str);
    if (order == 0) {
      *found = true;
      return mid;
    }
    if (order < 0) {
      if (mid == lo) return mid;
      hi = mid - 1;
    } else {
      if (mid == hi) return mid + 1;
      lo = mid + 1;
    }
  }
}

long StringTree::Find(const std::string& key) const {
  bool found = false;
  const long position = Position(key, &found);
  return found ? position : -1;
}

long StringTree::Add(const std::string& key, bool* found) {
  const long position = Position(key, found);
  if (!*found) {
    Node node;
    node.str = key;
    nodes_.insert(nodes_.begin() + (position - 1), std::move(node));
  }
  return position;
}

void StringTree::AddSorted(const std::vector<std::string>& keys) {
  if (keys.empty()) return;
  std::vector<Node> merged;
  merged.reserve(nodes_.size() + keys.size());
  std::size_t old_index = 0;
  for (const std::string& key : keys) {
    while (old_index < nodes_.size() &&
           CompareNoCase(nodes_[old_index].str, key) < 0) {
      merged.push_back(std::move(nodes_[old_index++]));
    }
    Node node;
    node.str = key;
    merged.push_back(std::move(node));
  }
  while (old_index < nodes_.size()) {
    merged.push_back(std::move(nodes_[old_index++]));
  }
  nodes_.swap(merged);
}

void StringTree::Remove(const std::string& key) {
  const long index = Find(key);
  if (index > 0) RemoveAt(index);
}

void StringTree::RemoveAt(long index) {
  At(index);
  nodes_.erase(nodes_.begin() + (index - 1));
}

StringTree::Node& StringTree::At(long index) {
  if (index < 1 || index > Count()) {
    throw std::out_of_range("tree index " + std::to_string(index) +
                            " is outside 1.." + std::to_string(Count()));
  }
  return nodes_[static_cast<std::size_t>(index - 1)];
}

const StringTree::Node& StringTree::At(long index) const {
  return const_cast<StringTree*>(this)->At(index);
}

const std::string& StringTree::ListStr(long index) const {
  return At(index).str;
}

std::int32_t StringTree::ListInt(long index) const { return At(index).num; }

void StringTree::SetListInt(long index, std::int32_t value) {
  At(index).num = value;
}

const std::shared_ptr<TreeObject>& StringTree::ListObj(long index) const {
  return At(index).obj;
}

void StringTree::SetListObj(long index, std::shared_ptr<TreeObject> object) {
  At(index).obj = std::move(object);
}

std::shared_ptr<StringTree> StringTree::SubTree(long index) const {
  return std::dynamic_pointer_cast<StringTree>(At(index).obj);
}

void StringTree::SetSubTree(long index, std::shared_ptr<StringTree> tree) {
  At(index).obj = std::move(tree);
}

}  // namespace pairwell
