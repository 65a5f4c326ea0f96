#include "util/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pairwell {
namespace {

using Words = std::vector<std::string>;

TEST(CommandLineTest, BlanksOutsideQuotesSeparateWords) {
  EXPECT_EQ(SplitCommandLine("  -q\t/x  \"a b\" c\"d e\"f "),
            (Words{"-q", "/x", "a b", "cd ef"}));
  EXPECT_EQ(SplitCommandLine(""), Words{});
  EXPECT_EQ(SplitCommandLine("   "), Words{});
}

TEST(CommandLineTest, QuotesAreRemovedAndAnEmptyQuotedWordStays) {
  EXPECT_EQ(SplitCommandLine("\"\" x"), (Words{"", "x"}));
  EXPECT_EQ(SplitCommandLine("\"unclosed word"), (Words{"unclosed word"}));
}

TEST(CommandLineTest, AtMostSixteenWordsAreTaken) {
  std::string line;
  for (int i = 1; i <= 20; ++i) line += "w" + std::to_string(i) + " ";
  const Words words = SplitCommandLine(line);
  ASSERT_EQ(words.size(), 16u);
  EXPECT_EQ(words.front(), "w1");
  EXPECT_EQ(words.back(), "w16");
}

TEST(CommandLineTest, JoinedArgumentsSplitBackTheSame) {
  const Words args = {"-q", "a b", "", "tab\there", "/x"};
  EXPECT_EQ(SplitCommandLine(JoinCommandLine(args)), args);
}

}  // namespace
}  // namespace pairwell
