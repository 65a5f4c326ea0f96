#include "engine/string_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace pairwell {
namespace {

// An object a node may carry that is not a tree.
class Payload : public TreeObject {
 public:
  explicit Payload(int v) : value(v) {}
  int value;
};

// The keys of the tree in index order.
std::vector<std::string> Keys(const StringTree& tree) {
  std::vector<std::string> keys;
  for (long i = 1; i <= tree.Count(); ++i) keys.push_back(tree.ListStr(i));
  return keys;
}

// Adds every key in order and checks that each one was new.
void AddAll(StringTree* tree, const std::vector<std::string>& keys) {
  for (const std::string& key : keys) {
    bool found = true;
    tree->Add(key, &found);
    EXPECT_FALSE(found) << "key " << key;
  }
}

TEST(StringTreeTest, NewTreeIsEmpty) {
  StringTree tree;
  EXPECT_EQ(tree.Count(), 0);
}

TEST(StringTreeTest, FindOnEmptyTreeReturnsMinusOne) {
  StringTree tree;
  EXPECT_EQ(tree.Find("anything"), -1);
  EXPECT_EQ(tree.Find(""), -1);
}

TEST(StringTreeTest, AddOnEmptyTreeReturnsOneAndReportsNotFound) {
  StringTree tree;
  bool found = true;
  EXPECT_EQ(tree.Add("first", &found), 1);
  EXPECT_FALSE(found);
  EXPECT_EQ(tree.Count(), 1);
  EXPECT_EQ(tree.ListStr(1), "first");
}

TEST(StringTreeTest, AddOfSameKeyInOtherCaseFindsTheFirstNode) {
  StringTree tree;
  bool found = true;
  const long first = tree.Add("Readme.TXT", &found);
  EXPECT_FALSE(found);
  found = false;
  const long second = tree.Add("README.txt", &found);
  EXPECT_TRUE(found);
  EXPECT_EQ(second, first);
  EXPECT_EQ(tree.Count(), 1);
  EXPECT_EQ(tree.ListStr(first), "Readme.TXT");
}

TEST(StringTreeTest, AddOfExistingKeyLeavesItsNodeUnchanged) {
  StringTree tree;
  AddAll(&tree, {"alpha", "beta", "gamma"});
  auto payload = std::make_shared<Payload>(7);
  tree.SetListInt(2, 42);
  tree.SetListObj(2, payload);
  bool found = false;
  EXPECT_EQ(tree.Add("BETA", &found), 2);
  EXPECT_TRUE(found);
  EXPECT_EQ(tree.Count(), 3);
  EXPECT_EQ(tree.ListStr(2), "beta");
  EXPECT_EQ(tree.ListInt(2), 42);
  EXPECT_EQ(tree.ListObj(2), payload);
}

TEST(StringTreeTest, KeysAddedOutOfOrderAreKeptSortedIgnoringCase) {
  StringTree tree;
  AddAll(&tree, {"b", "A", "c"});
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"A", "b", "c"}));
}

TEST(StringTreeTest, KeysCompareUpperCasedNotLowerCased) {
  // "_" (0x5F) lies between the upper-case and the lower-case letters, so
  // the order shows which case the keys are folded to.
  StringTree tree;
  AddAll(&tree, {"_x", "b", "[", "a"});
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "b", "[", "_x"}));
}

TEST(StringTreeTest, ShorterKeySortsBeforeLongerKeyItBegins) {
  StringTree tree;
  AddAll(&tree, {"ABC", "ab", "abcd", "a"});
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "ab", "ABC", "abcd"}));
}

TEST(StringTreeTest, EmptyKeySortsFirst) {
  StringTree tree;
  AddAll(&tree, {"a", "", "0"});
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"", "0", "a"}));
  EXPECT_EQ(tree.Find(""), 1);
}

TEST(StringTreeTest, KeysCompareAsUnsignedBytes) {
  // A byte above 0x7F (a letter of the code page) sorts after every ASCII
  // character.
  StringTree tree;
  AddAll(&tree, {"\xE9t\xE9", "zoo", "Alpha"});
  EXPECT_EQ(Keys(tree),
            (std::vector<std::string>{"Alpha", "zoo", "\xE9t\xE9"}));
}

TEST(StringTreeTest, AddReturnsTheIndexWhereTheNodeWasInserted) {
  StringTree tree;
  bool found = true;
  EXPECT_EQ(tree.Add("m", &found), 1);
  EXPECT_EQ(tree.Add("z", &found), 2);
  EXPECT_EQ(tree.Add("a", &found), 1);
  EXPECT_EQ(tree.Add("p", &found), 3);
  EXPECT_FALSE(found);
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "m", "p", "z"}));
}

TEST(StringTreeTest, InsertionMovesLaterNodesUpWithAllTheirFields) {
  StringTree tree;
  AddAll(&tree, {"a", "c"});
  auto payload = std::make_shared<Payload>(3);
  tree.SetListInt(2, 30);
  tree.SetListObj(2, payload);
  bool found = true;
  EXPECT_EQ(tree.Add("B", &found), 2);
  EXPECT_EQ(tree.Find("c"), 3);
  EXPECT_EQ(tree.ListStr(3), "c");
  EXPECT_EQ(tree.ListInt(3), 30);
  EXPECT_EQ(tree.ListObj(3), payload);
  EXPECT_EQ(tree.ListInt(2), -1);
  EXPECT_EQ(tree.ListObj(2), nullptr);
}

TEST(StringTreeTest, FindLocatesEveryKeyOfALargeTreeIgnoringCase) {
  // Keys are added in a scrambled order so that every branch of the
  // halving search is taken.
  std::vector<std::string> keys;
  for (int i = 0; i < 100; ++i) {
    const int n = (i * 37) % 100;
    keys.push_back("File" + std::to_string(n / 10) + std::to_string(n % 10));
  }
  StringTree tree;
  AddAll(&tree, keys);
  ASSERT_EQ(tree.Count(), 100);
  std::vector<std::string> sorted = keys;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(Keys(tree), sorted);
  for (long i = 1; i <= tree.Count(); ++i) {
    std::string lower = tree.ListStr(i);
    for (char& c : lower) c = static_cast<char>(std::tolower(c));
    EXPECT_EQ(tree.Find(lower), i) << "key " << lower;
    EXPECT_EQ(tree.Find(tree.ListStr(i)), i) << "key " << tree.ListStr(i);
  }
  for (const std::string absent : {"File", "File005", "File99a", "A", "Z"}) {
    EXPECT_EQ(tree.Find(absent), -1) << "key " << absent;
  }
}

TEST(StringTreeTest, AddKeepsEveryKeyUniqueInALargeTree) {
  StringTree tree;
  for (int i = 0; i < 50; ++i) {
    bool found = true;
    tree.Add("k" + std::to_string((i * 7) % 50), &found);
  }
  ASSERT_EQ(tree.Count(), 50);
  for (int n = 0; n < 50; ++n) {
    const std::string key = "K" + std::to_string(n);
    bool found = false;
    const long index = tree.Add(key, &found);
    EXPECT_TRUE(found) << "key " << key;
    EXPECT_EQ(tree.ListStr(index), "k" + std::to_string(n)) << "key " << key;
  }
  EXPECT_EQ(tree.Count(), 50);
}

TEST(StringTreeTest, NewNodeHasNumberMinusOneAndNoObject) {
  StringTree tree;
  bool found = true;
  const long index = tree.Add("node", &found);
  EXPECT_EQ(tree.ListInt(index), -1);
  EXPECT_EQ(tree.ListObj(index), nullptr);
  EXPECT_EQ(tree.SubTree(index), nullptr);
}

TEST(StringTreeTest, ListIntKeepsTheNumberSet) {
  StringTree tree;
  AddAll(&tree, {"a", "b"});
  tree.SetListInt(1, 12345);
  tree.SetListInt(2, -2147483647 - 1);
  EXPECT_EQ(tree.ListInt(1), 12345);
  EXPECT_EQ(tree.ListInt(2), -2147483647 - 1);
}

TEST(StringTreeTest, SubTreeOfAnotherKindOfObjectIsNullWhileListObjGivesIt) {
  StringTree tree;
  bool found = true;
  const long index = tree.Add("file.txt", &found);
  auto payload = std::make_shared<Payload>(9);
  tree.SetListObj(index, payload);
  EXPECT_EQ(tree.SubTree(index), nullptr);
  ASSERT_EQ(tree.ListObj(index), payload);
  EXPECT_EQ(static_cast<Payload*>(tree.ListObj(index).get())->value, 9);
}

TEST(StringTreeTest, SubTreeAndListObjShareOneSlot) {
  StringTree tree;
  bool found = true;
  const long index = tree.Add("folder", &found);
  auto child = std::make_shared<StringTree>();
  tree.SetSubTree(index, child);
  EXPECT_EQ(tree.SubTree(index), child);
  EXPECT_EQ(tree.ListObj(index), child);

  // A tree stored through ListObj is a subtree as well.
  auto other = std::make_shared<StringTree>();
  tree.SetListObj(index, other);
  EXPECT_EQ(tree.SubTree(index), other);

  // Another object stored through ListObj replaces the tree.
  tree.SetListObj(index, std::make_shared<Payload>(1));
  EXPECT_EQ(tree.SubTree(index), nullptr);

  tree.SetSubTree(index, nullptr);
  EXPECT_EQ(tree.ListObj(index), nullptr);
}

TEST(StringTreeTest, SubTreesHoldTheirOwnNodes) {
  StringTree root;
  bool found = true;
  const long index = root.Add("Docs", &found);
  root.SetSubTree(index, std::make_shared<StringTree>());
  root.SubTree(index)->Add("Letter.doc", &found);
  root.SubTree(index)->Add("Budget.xls", &found);
  EXPECT_EQ(root.Count(), 1);
  ASSERT_NE(root.SubTree(root.Find("DOCS")), nullptr);
  EXPECT_EQ(Keys(*root.SubTree(root.Find("DOCS"))),
            (std::vector<std::string>{"Budget.xls", "Letter.doc"}));
}

TEST(StringTreeTest, RemoveDeletesTheNodeWithTheKeyIgnoringCase) {
  StringTree tree;
  AddAll(&tree, {"a", "Readme", "z"});
  tree.Remove("README");
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "z"}));
  EXPECT_EQ(tree.Find("readme"), -1);
}

TEST(StringTreeTest, RemoveOfAbsentKeyLeavesTreeUnchanged) {
  StringTree tree;
  AddAll(&tree, {"a", "b", "c"});
  tree.SetListInt(2, 5);
  tree.Remove("bb");
  tree.Remove("");
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(tree.ListInt(2), 5);

  StringTree empty;
  empty.Remove("a");
  EXPECT_EQ(empty.Count(), 0);
}

TEST(StringTreeTest, RemoveAtMovesLaterNodesDownWithAllTheirFields) {
  StringTree tree;
  AddAll(&tree, {"a", "b", "c", "d"});
  auto payload = std::make_shared<Payload>(4);
  tree.SetListInt(3, 33);
  tree.SetListObj(3, payload);
  tree.SetListInt(4, 44);
  tree.RemoveAt(2);
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "c", "d"}));
  EXPECT_EQ(tree.ListInt(2), 33);
  EXPECT_EQ(tree.ListObj(2), payload);
  EXPECT_EQ(tree.ListInt(3), 44);
  EXPECT_EQ(tree.Find("d"), 3);
}

TEST(StringTreeTest, RemoveAtFirstAndLastNodes) {
  StringTree tree;
  AddAll(&tree, {"a", "b", "c"});
  tree.RemoveAt(3);
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "b"}));
  tree.RemoveAt(1);
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"b"}));
  tree.RemoveAt(1);
  EXPECT_EQ(tree.Count(), 0);
}

TEST(StringTreeTest, ClearRemovesEveryNode) {
  StringTree tree;
  AddAll(&tree, {"a", "b", "c"});
  tree.Clear();
  EXPECT_EQ(tree.Count(), 0);
  EXPECT_EQ(tree.Find("a"), -1);
  bool found = true;
  EXPECT_EQ(tree.Add("b", &found), 1);
  EXPECT_FALSE(found);
}

TEST(StringTreeTest, IndexOutsideTheNodesThrowsOutOfRange) {
  StringTree tree;
  AddAll(&tree, {"a", "b"});
  auto payload = std::make_shared<Payload>(0);
  for (long index : {0L, -1L, 3L}) {
    SCOPED_TRACE("index " + std::to_string(index));
    EXPECT_THROW(tree.ListStr(index), std::out_of_range);
    EXPECT_THROW(tree.ListInt(index), std::out_of_range);
    EXPECT_THROW(tree.SetListInt(index, 1), std::out_of_range);
    EXPECT_THROW(tree.ListObj(index), std::out_of_range);
    EXPECT_THROW(tree.SetListObj(index, payload), std::out_of_range);
    EXPECT_THROW(tree.SubTree(index), std::out_of_range);
    EXPECT_THROW(tree.SetSubTree(index, nullptr), std::out_of_range);
    EXPECT_THROW(tree.RemoveAt(index), std::out_of_range);
  }
  EXPECT_EQ(Keys(tree), (std::vector<std::string>{"a", "b"}));
}

TEST(StringTreeTest, RemoveAtOnEmptyTreeThrowsOutOfRange) {
  StringTree tree;
  EXPECT_THROW(tree.RemoveAt(1), std::out_of_range);
  EXPECT_THROW(tree.ListStr(1), std::out_of_range);
}

TEST(StringTreeTest, AddSortedMergesNewKeysIntoTheirPlaces) {
  StringTree tree;
  bool found = false;
  tree.Add("b", &found);
  tree.Add("D", &found);
  tree.SetListInt(1, 7);
  tree.SetListInt(2, 8);
  tree.AddSorted({"a", "C", "e"});
  ASSERT_EQ(tree.Count(), 5);
  const char* const kOrder[] = {"a", "b", "C", "D", "e"};
  for (long i = 1; i <= 5; ++i) {
    EXPECT_EQ(tree.ListStr(i), kOrder[i - 1]) << "index " << i;
  }
  // Old nodes keep their fields; new ones start empty.
  EXPECT_EQ(tree.ListInt(2), 7);
  EXPECT_EQ(tree.ListInt(4), 8);
  EXPECT_EQ(tree.ListInt(1), -1);
  EXPECT_EQ(tree.ListObj(3), nullptr);
  EXPECT_EQ(tree.Find("c"), 3);
}

TEST(StringTreeTest, AddSortedIntoAnEmptyTreeAndWithNothing) {
  StringTree tree;
  tree.AddSorted({});
  EXPECT_EQ(tree.Count(), 0);
  tree.AddSorted({"x", "Y"});
  EXPECT_EQ(tree.Count(), 2);
  EXPECT_EQ(tree.Find("y"), 2);
}

TEST(StringTreeTest, AddSortedGivesTheSameTreeAsAddingOneByOne) {
  StringTree one_by_one;
  StringTree merged;
  std::vector<std::string> first;
  std::vector<std::string> second;
  for (int i = 0; i < 2000; ++i) {
    const std::string key = "k" + std::to_string(100000 + i * 7 % 2000);
    (i % 3 == 0 ? second : first).push_back(key);
    bool found = false;
    one_by_one.Add(key, &found);
  }
  std::sort(first.begin(), first.end());
  std::sort(second.begin(), second.end());
  merged.AddSorted(std::vector<std::string_view>(first.begin(), first.end()));
  merged.AddSorted(std::vector<std::string_view>(second.begin(), second.end()));
  ASSERT_EQ(merged.Count(), one_by_one.Count());
  for (long i = 1; i <= merged.Count(); ++i) {
    ASSERT_EQ(merged.ListStr(i), one_by_one.ListStr(i)) << "index " << i;
  }
}

// A sub-tree keeps its keys with its root's: a name stored once is seen by
// both, and clearing the root leaves a sub-tree someone still holds intact.
TEST(StringTreeTest, SubTreeSharesItsRootsNamesAndOutlivesItsClear) {
  StringTree root;
  auto sub = std::make_shared<StringTree>(root.SharedNames());
  bool found = false;
  root.Add("folder", &found);
  root.SetSubTree(1, sub);
  sub->Add("Leaf.txt", &found);
  EXPECT_EQ(root.Names().View(sub->KeyRef(1)), "Leaf.txt");
  root.Clear();
  EXPECT_EQ(root.Count(), 0);
  EXPECT_EQ(sub->ListStr(1), "Leaf.txt");
  EXPECT_EQ(sub->Find("LEAF.TXT"), 1);
}

TEST(StringTreeTest, RemovedNodesObjectIsReleased) {
  StringTree tree;
  auto payload = std::make_shared<Payload>(7);
  bool found = false;
  tree.Add("a", &found);
  tree.SetListObj(1, payload);
  EXPECT_EQ(payload.use_count(), 2);
  tree.RemoveAt(1);
  EXPECT_EQ(payload.use_count(), 1);
  tree.Add("a", &found);
  EXPECT_EQ(tree.ListObj(1), nullptr);
}

TEST(StringTreeTest, KeysOfEveryLengthKeepTheirBytes) {
  StringTree tree;
  std::vector<std::string> keys;
  // Enough to fill several blocks of names, with some longer than a block.
  for (int i = 0; i < 20000; ++i) {
    keys.push_back("key" + std::to_string(100000 + i) +
                   std::string(static_cast<std::size_t>(i % 37), 'x'));
  }
  keys.push_back(std::string(70000, 'L'));
  keys.push_back(std::string(200000, 'M') + "\xff");
  bool found = false;
  for (const std::string& key : keys) tree.Add(key, &found);
  ASSERT_EQ(tree.Count(), static_cast<long>(keys.size()));
  for (const std::string& key : keys) {
    const long index = tree.Find(key);
    ASSERT_GT(index, 0) << key.substr(0, 20);
    EXPECT_EQ(tree.ListStr(index), key);
  }
}

}  // namespace
}  // namespace pairwell
