#include "util/path.h"

#include <gtest/gtest.h>

namespace pairwell {
namespace {

TEST(PathTest, IsSlashAcceptsBothSlashes) {
  EXPECT_TRUE(IsSlash('/'));
  EXPECT_TRUE(IsSlash('\\'));
  EXPECT_FALSE(IsSlash(':'));
  EXPECT_FALSE(IsSlash('a'));
}

TEST(PathTest, CombinePathWalksTheRelativePart) {
  const struct {
    const char* base;
    const char* rel;
    const char* result;
  } kCases[] = {
      // ".." drops the base's last part; one trailing slash of the base goes.
      {"/a/b/", "../c", "/a/c"},
      {"C:\\a\\b\\", "..\\c", "C:\\a/c"},
      // A drive or a leading slash makes the part absolute.
      {"C:\\a", "D:\\x", "D:\\x"},
      {"/a", "/x/y", "/x/y"},
      {"/a", "\\x", "\\x"},
      // "." is skipped; empty parts from doubled slashes add nothing.
      {"/a", "./b//c/.", "/a/b/c"},
      // Trailing spaces of both are removed.
      {"/a  ", "b  ", "/a/b"},
      // An empty base takes the first part as it is.
      {"", "b/c", "b/c"},
      {"", "../b", "b"},
      // The root stays the root.
      {"/", "x", "/x"},
      {"/a", "../../x", "/x"},
      {"/a/b", "", "/a/b"},
      {"a", "..", ""},
      {"/a/b", "*", "/a/b/*"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(CombinePath(c.base, c.rel), c.result)
        << "base '" << c.base << "' rel '" << c.rel << "'";
  }
}

}  // namespace
}  // namespace pairwell
