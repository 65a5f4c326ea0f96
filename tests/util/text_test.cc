#include "util/text.h"

#include <gtest/gtest.h>

namespace pairwell {
namespace {

TEST(TextTest, TrimRemovesOnlySpaces) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(LTrim("  a "), "a ");
  EXPECT_EQ(RTrim("  a "), "  a");
  EXPECT_EQ(Trim("\ta\t"), "\ta\t");
  EXPECT_EQ(Trim("   "), "");
}

TEST(TextTest, UpperCaseAndCompareIgnoreAsciiCaseOnly) {
  EXPECT_EQ(UpperCase("abc-Z\xc3\xa9"), "ABC-Z\xc3\xa9");
  EXPECT_EQ(CompareNoCase("readme.txt", "README.TXT"), 0);
  EXPECT_LT(CompareNoCase("a", "B"), 0);
  EXPECT_GT(CompareNoCase("b", "A"), 0);
  EXPECT_LT(CompareNoCase("ab", "abc"), 0);
  // Bytes above 127 sort after every ASCII character.
  EXPECT_LT(CompareNoCase("z", "\xc3\xa9"), 0);
  EXPECT_TRUE(EqualsNoCase("Sec: A", "SEC: a"));
  EXPECT_FALSE(EqualsNoCase("a", "ab"));
}

TEST(TextTest, LeadingNumberReadsTheNumberAtTheStart) {
  const struct {
    const char* text;
    double value;
  } kCases[] = {{"8", 8},      {" 12abc", 12}, {"abc", 0},    {"", 0},
                {"-3", -3},    {"+4", 4},      {"2.5x", 2.5}, {".5", 0.5},
                {"1e3", 1000}, {"1e", 1},      {"3C+", 3},    {"- 1", 0}};
  for (const auto& c : kCases) {
    EXPECT_DOUBLE_EQ(LeadingNumber(c.text), c.value) << "text " << c.text;
  }
  EXPECT_EQ(LeadingInteger("7.9"), 7);
  EXPECT_EQ(LeadingInteger("-7.9"), -7);
  EXPECT_EQ(LeadingInteger("1e20"), 2147483647);
  EXPECT_EQ(LeadingInteger("-1e20"), -2147483647 - 1);
}

TEST(TextTest, ParseNumberNeedsTheWholeText) {
  double value = -1;
  EXPECT_TRUE(ParseNumber(" 45000.5 ", &value));
  EXPECT_DOUBLE_EQ(value, 45000.5);
  EXPECT_FALSE(ParseNumber("8abc", &value));
  EXPECT_FALSE(ParseNumber("", &value));
  EXPECT_FALSE(ParseNumber("-", &value));
  EXPECT_DOUBLE_EQ(value, 45000.5);
}

TEST(TextTest, StrToBoolFollowsTheConfigurationRules) {
  const struct {
    const char* text;
    bool value;
  } kCases[] = {{"True", true},  {" true ", true}, {"TRUE", true},
                {"2", true},     {"-1", true},     {"0.5", true},
                {"yes", false},  {" yes", false},  {"on", false},
                {"", false},     {"0", false},     {"False", false},
                {"1abc", false}, {"0.0", false}};
  for (const auto& c : kCases) {
    EXPECT_EQ(StrToBool(c.text), c.value) << "text '" << c.text << "'";
  }
  EXPECT_STREQ(BoolToStr(true), "True");
  EXPECT_STREQ(BoolToStr(false), "False");
}

TEST(TextTest, CountTextFitsTheNounToTheCount) {
  EXPECT_EQ(CountText(0, "file", "files"), "0 files");
  EXPECT_EQ(CountText(1, "file", "files"), "1 file");
  EXPECT_EQ(CountText(2, "copy", "copies"), "2 copies");
  EXPECT_EQ(CountText(-1, "day", "days"), "-1 days");
  EXPECT_EQ(CountText(10000000000LL, "byte", "bytes"), "10000000000 bytes");
}

}  // namespace
}  // namespace pairwell
