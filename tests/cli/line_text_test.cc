#include "cli/line_text.h"

#include <gtest/gtest.h>

#include <string>

namespace pairwell {
namespace {

TEST(LineTextTest, CharCountCountsAUtf8SequenceOnce) {
  EXPECT_EQ(CharCount(""), 0u);
  EXPECT_EQ(CharCount("abc"), 3u);
  EXPECT_EQ(CharCount("gr\xC3\xBC\xC3\x9F"
                      "e"),
            5u);  // "grüße"
  EXPECT_EQ(CharCount("\xE2\x82\xAC"
                      "1"),
            2u);  // "€1"
}

TEST(LineTextTest, ShortTextStaysWhole) {
  EXPECT_EQ(ShortenMiddle("sub/name.txt", 12), "sub/name.txt");
  EXPECT_EQ(ShortenMiddle("sub/name.txt", 40), "sub/name.txt");
}

TEST(LineTextTest, LongTextLosesItsMiddleAndKeepsTheEnd) {
  EXPECT_EQ(ShortenMiddle("folder/another/deeper/file.txt", 15),
            "folder...le.txt");
  EXPECT_EQ(CharCount(ShortenMiddle(std::string(300, 'x'), 79)), 79u);
}

TEST(LineTextTest, ShorteningKeepsUtf8SequencesWhole) {
  // Twelve two-byte characters in ten columns: four, "...", and three.
  std::string text;
  for (int i = 0; i < 12; ++i) text += "\xC3\xA9";  // "é"
  const std::string shortened = ShortenMiddle(text, 10);
  EXPECT_EQ(shortened,
            "\xC3\xA9\xC3\xA9\xC3\xA9...\xC3\xA9\xC3\xA9\xC3\xA9"
            "\xC3\xA9");
  EXPECT_EQ(CharCount(shortened), 10u);
}

TEST(LineTextTest, TooFewColumnsForTheEllipsisCutTheEnd) {
  EXPECT_EQ(ShortenMiddle("abcdef", 3), "abc");
  EXPECT_EQ(ShortenMiddle("abcdef", 0), "");
}

TEST(LineTextTest, FitLineShowsControlCharactersAsQuestionMarks) {
  EXPECT_EQ(FitLine("a\nb\rc\td\x1B[2Je\x7F", 40), "a?b?c?d?[2Je?");
  EXPECT_EQ(FitLine("line\none two three four", 10), "lin...four");
}

}  // namespace
}  // namespace pairwell
