#include "engine/string_tree.h"

#include <stdexcept>
#include <utility>

#include "util/text.h"

namespace pairwell {

StringTree::StringTree() : names_(std::make_shared<NameArena>()) {}

StringTree::StringTree(std::shared_ptr<NameArena> names)
    : names_(std::move(names)) {}

long StringTree::Position(std::string_view key, bool* found) const {
  *found = false;
  if (nodes_.empty()) return 1;
  long lo = 1;
  long hi = Count();
  for (;;) {
    const long mid = (lo + hi) / 2;
    // Keys are compared upper-cased on the fly; no folded copy is kept.
    const int order = CompareNoCase(key, KeyOf(nodes_[mid - 1]));
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

long StringTree::Find(std::string_view key) const {
  bool found = false;
  const long position = Position(key, &found);
  return found ? position : -1;
}

long StringTree::Add(std::string_view key, bool* found) {
  const long position = Position(key, found);
  if (!*found) {
    Node node;
    node.key = names_->Add(key);
    nodes_.insert(nodes_.begin() + (position - 1), node);
  }
  return position;
}

void StringTree::AddSorted(const std::vector<std::string_view>& keys) {
  if (keys.empty()) return;
  std::vector<Node> merged;
  merged.reserve(nodes_.size() + keys.size());
  std::size_t old_index = 0;
  for (const std::string_view key : keys) {
    while (old_index < nodes_.size() &&
           CompareNoCase(KeyOf(nodes_[old_index]), key) < 0) {
      merged.push_back(nodes_[old_index++]);
    }
    Node node;
    node.key = names_->Add(key);
    merged.push_back(node);
  }
  merged.insert(merged.end(), nodes_.begin() + old_index, nodes_.end());
  nodes_.swap(merged);
}

void StringTree::Remove(std::string_view key) {
  const long index = Find(key);
  if (index > 0) RemoveAt(index);
}

void StringTree::RemoveAt(long index) {
  // The key's bytes stay in the arena until it is cleared.
  const Node& node = At(index);
  if (node.object != 0) objects_[node.object - 1].reset();
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

std::string StringTree::ListStr(long index) const {
  return std::string(Key(index));
}

std::string_view StringTree::Key(long index) const { return KeyOf(At(index)); }

NameRef StringTree::KeyRef(long index) const { return At(index).key; }

std::int32_t StringTree::ListInt(long index) const { return At(index).num; }

void StringTree::SetListInt(long index, std::int32_t value) {
  At(index).num = value;
}

const std::shared_ptr<TreeObject>& StringTree::ListObj(long index) const {
  static const std::shared_ptr<TreeObject> kNone;
  const Node& node = At(index);
  return node.object == 0 ? kNone : objects_[node.object - 1];
}

void StringTree::SetListObj(long index, std::shared_ptr<TreeObject> object) {
  Node& node = At(index);
  if (node.object == 0) {
    if (!object) return;
    objects_.push_back(std::move(object));
    node.object = static_cast<std::uint32_t>(objects_.size());
  } else {
    objects_[node.object - 1] = std::move(object);
  }
}

std::shared_ptr<StringTree> StringTree::SubTree(long index) const {
  return std::dynamic_pointer_cast<StringTree>(ListObj(index));
}

void StringTree::SetSubTree(long index, std::shared_ptr<StringTree> tree) {
  SetListObj(index, std::move(tree));
}

void StringTree::Clear() {
  nodes_.clear();
  objects_.clear();
  if (names_.use_count() == 1) names_->Clear();
}

}  // namespace pairwell
