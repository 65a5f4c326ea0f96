#include "util/wildcard.h"

#include <gtest/gtest.h>

namespace pairwell {
namespace {

TEST(WildcardTest, StarDotStarMatchesNamesWithAndWithoutExtension) {
  // "README" has an empty extension, which "*" accepts.
  EXPECT_TRUE(MatchesSpec("README", "*.*"));
  // "a.b.c" splits into base "A.B" and extension "C".
  EXPECT_TRUE(MatchesSpec("a.b.c", "*.*"));
}

TEST(WildcardTest, StarDotTxtLooksOnlyAtTheLastExtension) {
  EXPECT_TRUE(MatchesSpec("Notes.TXT", "*.txt"));
  EXPECT_FALSE(MatchesSpec("notes.txt.bak", "*.txt"));
}

TEST(WildcardTest, EmptyListAndEmptyListPieces) {
  EXPECT_TRUE(MatchesSpec("anything.at.all", ""));
  EXPECT_TRUE(MatchesSpec("README", ""));
  EXPECT_TRUE(MatchesSpec("", ""));

  // A trailing ";" leaves an empty last pattern, which matches nothing.
  EXPECT_TRUE(MatchesSpec("a.doc", "*.doc;"));
  EXPECT_FALSE(MatchesSpec("a.txt", "*.doc;"));
  EXPECT_FALSE(MatchesSpec("README", "*.doc;"));
  EXPECT_FALSE(MatchesSpec("", "*.doc;"));

  // A leading empty piece is skipped.
  EXPECT_TRUE(MatchesSpec("a.doc", ";*.doc"));
}

TEST(WildcardTest, StarAtEitherEndOfTheBase) {
  EXPECT_TRUE(MatchesSpec("DATA2024.TXT", "data*.txt"));
  EXPECT_TRUE(MatchesSpec("synclog.txt", "*log.txt"));
}

TEST(WildcardTest, InnerStarWithShortTailMatchesNoName) {
  // Base "A*B": the "*" is at 2, so the tail compared is the last 3
  // characters of the name's base, never equal in length to "B".
  for (const char* name : {"ab.txt", "axb.txt", "axyb.txt", "aXYZb.txt",
                           "b.txt", "a.txt", "a*b.txt", "a?b.txt"}) {
    EXPECT_FALSE(MatchesSpec(name, "a*b.txt")) << "name " << name;
  }
}

TEST(WildcardTest, ContainsFormSeveralStarsAndTheInnerStarLengthRule) {
  EXPECT_TRUE(MatchesSpec("MyTempFile", "*temp*"));

  // Base "*", extension "*~*": the extension must contain "~".
  EXPECT_TRUE(MatchesSpec("x.do~c", "*.*~*"));
  EXPECT_TRUE(MatchesSpec("x.~", "*.*~*"));
  EXPECT_FALSE(MatchesSpec("x~.doc", "*.*~*"));
  EXPECT_FALSE(MatchesSpec("x", "*.*~*"));

  // Several "*" without a "*" at both ends match nothing.
  for (const char* name : {"ab", "axby", "a*b*", "AB.x", "aab"}) {
    EXPECT_FALSE(MatchesSpec(name, "a*b*")) << "name " << name;
  }

  // "*" at 2 with three characters after it: pattern length 5 = 2 * 2 + 1.
  EXPECT_TRUE(MatchesSpec("AXBCD", "A*BCD"));
  EXPECT_TRUE(MatchesSpec("AXYBCD", "A*BCD"));

  // "*" at 2 with two characters after it: the 3-character tail taken from
  // the name can never equal "BC".
  for (const char* name : {"ABC", "AXBC", "AXYBC", "A*BC", "BC", "abc"}) {
    EXPECT_FALSE(MatchesSpec(name, "A*BC")) << "name " << name;
  }
}

TEST(WildcardTest, QuestionMarkStandsForExactlyOneCharacter) {
  EXPECT_TRUE(MatchesSpec("FILE1.TXT", "file?.txt"));
  EXPECT_FALSE(MatchesSpec("FILE.TXT", "file?.txt"));
  EXPECT_FALSE(MatchesSpec("FILE12.TXT", "file?.txt"));
}

TEST(WildcardTest, FolderPartOfTheNameIsIgnored) {
  EXPECT_TRUE(MatchesSpec("C:\\dir\\x.txt", "x.txt"));
  EXPECT_TRUE(MatchesSpec("C:\\dir\\x.txt", "*.txt"));
  // Neither the drive nor the folder is left to match against.
  EXPECT_FALSE(MatchesSpec("C:\\dir\\x.txt", "c*"));
  EXPECT_FALSE(MatchesSpec("C:\\dir\\x.txt", "dir*"));
}

TEST(WildcardTest, MatchesSpecTable) {
  const struct {
    const char* name;
    const char* spec;
    bool expected;
  } kCases[] = {
      // The folder part goes up to the last slash of either kind.
      {"dir/a.txt", "a.txt", true},     // "/" dropped: "A.TXT" equals pattern.
      {"dir\\a.txt", "a.txt", true},    // "\" dropped likewise.
      {"x/y\\z/a.txt", "a.txt", true},  // several levels, mixed slashes.
      {"/a.txt", "a.txt", true},        // a leading slash leaves "A.TXT".
      {"dir/a.txt", "dir*", false},     // base "A" is shorter than "DIR".
      {"a.b/c", "*.b", false},  // the dot was in the folder: extension "".
      {"dir/", "*", true},      // nothing left; "*" accepts empty parts.
      {"dir/", "?", false},     // nothing left for "?" to stand for.

      // Case is ignored for ASCII letters only.
      {"ReadMe.Txt", "README.TXT", true},       // upper-cased both sides.
      {"abc", "ABC", true},                     // no extension on either.
      {"\xC3\xA9.txt", "\xC3\x89.txt", false},  // e-acute bytes unchanged.
      {"\xC3\xA9.TXT", "\xC3\xA9.txt", true},   // same bytes, ASCII folded.

      // The empty pattern list.
      {"anything.at.all", "", true},  // an empty list accepts every name.
      {"", "", true},                 // even the empty name.

      // ";" lists.
      {"a.txt", "*.txt;*.doc", true},    // first piece matches.
      {"a.doc", "*.txt;*.doc", true},    // last piece matches.
      {"a.pdf", "*.txt;*.doc", false},   // no piece matches.
      {"a.doc", "*.doc;", true},         // the piece before ";" matches.
      {"a.txt", "*.doc;", false},        // empty last piece matches nothing.
      {"a.doc", ";*.doc", true},         // leading empty piece skipped.
      {"a.doc", "*.txt;;*.doc", true},   // empty middle piece skipped.
      {"a.doc", ";", false},             // only an empty last piece.
      {"a.doc", ";;", false},            // likewise.
      {"a", "*;", true},                 // "*" accepts "A" before the ";".
      {"a.txt", "*.txt ;*.doc", false},  // spaces kept: "TXT " is 4 long.
      {"a.doc", "*.txt ;*.doc", true},   // last piece "*.DOC" matches.

      // Split at the last ".".
      {"a.b.c", "a.b.*", true},  // base "A.B", extension "C" vs "*".
      {"a.b.c", "a.*", false},   // base "A.B" vs "A": lengths differ.
      {"a.b.c", "*.c", true},    // extension "C".
      {"a.b.c", "*.b", false},   // extension is "C", not "B".
      {"archive.tar.gz", "*.tar.gz", true},  // base "*.TAR" ends "ARCHIVE.TAR".
      {"archive.tgz", "*.tar.gz", false},    // extension "TGZ" vs "GZ".
      {".bashrc", "*.bashrc", true},         // name base "" against "*".
      {".bashrc", ".bashrc", true},          // empty pattern base becomes "*".
      {"x.bashrc", ".bashrc", true},  // likewise: ".BASHRC" is "*.BASHRC".
      {"notes.txt", ".txt", true},    // ".txt" means "*.txt".
      {"notes.doc", ".txt", false},   // extension "DOC" vs "TXT".
      {"file.", "file", true},        // name extension "" vs implied "*".
      {"file.", "file.", false},      // pattern extension "" is empty.
      {"file", "file.", false},       // likewise: nothing matches "FILE.".
      {"README", "*.", false},        // "*." has an empty extension.
      {"README", "readme", true},     // no "." on either side.
      {"a.txt", "a", true},           // pattern without "." implies ".*".
      {".", ".", false},              // pattern extension "" is empty.
      {"..", "*.*", true},            // name base ".", extension "".

      // "?" in a fixed part.
      {"file1.txt", "file?.txt", true},  // "?" takes the "1".
      {"file.txt", "file?.txt", false},  // 4 characters against 5.
      {"a.c", "?.?", true},              // one character on each side.
      {"ab.c", "?.?", false},            // base "AB" is 2 long.
      {"a", "?", true},                  // base "A"; extension "" vs "*".
      {"", "?", false},                  // empty base against "?".
      {"a?.txt", "a?.txt", true},        // "?" also takes a literal "?".
      {"a.txt", "?.tx?", true},          // "?" at the end of the extension.

      // Leading "*": the name's part must end with the rest.
      {"synclog.txt", "*log.txt", true},  // ends with "LOG".
      {"log.txt", "*log.txt", true},      // "*" stands for nothing.
      {"lo.txt", "*log.txt", false},      // "LO" is shorter than "LOG".
      {"logs.txt", "*log.txt", false},    // ends with "OGS".
      {"xlog.txt", "*l?g.txt", true},     // "?" inside the tail.
      {"", "*", true},                    // "*" alone accepts empty parts.

      // Trailing "*": the name's part must start with the rest.
      {"data2024.txt", "data*.txt", true},  // starts with "DATA".
      {"data.txt", "data*.txt", true},      // "*" stands for nothing.
      {"dat.txt", "data*.txt", false},      // "DAT" is shorter than "DATA".
      {"mydata.txt", "data*.txt", false},   // starts with "MYDA".
      {"x.backup", "x.b*", true},           // extension starts with "B".

      // One inner "*" at p: only a pattern of length 2p + 1 can match.
      {"axbcd", "a*bcd", true},    // p = 2, tail "BCD", head "A".
      {"abcd", "a*bcd", true},     // length 4 = pattern length - 1 suffices.
      {"bcd", "a*bcd", false},     // shorter than pattern length - 1.
      {"axbce", "a*bcd", false},   // tail "BCE" vs "BCD".
      {"xxbcd", "a*bcd", false},   // head "X" vs "A".
      {"azbcd", "?*bcd", true},    // "?" in the head.
      {"ab", "a*b", false},        // tail "AB" (all there is) vs "B".
      {"axb", "a*b", false},       // tail "AXB" vs "B".
      {"axxxxb", "a*b", false},    // tail "XXB" vs "B".
      {"abxyz", "ab*xyz", false},  // p = 3 needs 4 after "*": "BXYZ" vs "XYZ".
      {"abqxyzw", "ab*xyzw", true},  // p = 3, length 7: "XYZW", head "AB".
      {"abxyzw", "ab*xyzw", true},   // length 6 = pattern length - 1.
      {"axyzw", "ab*xyzw", false},   // length 5 < 6.
      {"a.txt", "a.t*xt", false},    // extension pattern "T*XT": p = 2, len 4.
      {"a.taxt", "a.t*axt", true},   // extension "TAXT": tail "AXT", head "T".

      // Several "*": only "*inner*" matches, by finding inner.
      {"MyTempFile", "*temp*", true},  // "TEMP" found at 3.
      {"temp", "*temp*", true},        // found at 1.
      {"atem", "*temp*", false},       // not found.
      {"te", "*temp*", false},         // text shorter than inner.
      {"mytampfile", "*t?mp*", true},  // "?" inside inner.
      {"anything.x", "**", true},      // empty inner; extension "*".
      {"", "**", true},                // even the empty name.
      {"a*b", "***", true},            // inner "*" is a literal "*".
      {"ab", "***", false},            // no literal "*" to find.
      {"xa*by", "*a*b*", true},        // inner "A*B" found literally.
      {"axb", "*a*b*", false},         // "*" inside inner is not a wildcard.
      {"a.b", "*.*.*", false},         // base "*.*" needs a "." in "A".
      {"a.b.c", "*.*.*", true},        // base "A.B" holds the ".".
      {"ab", "a*b*", false},           // does not start with "*".
      {"ab", "*a*b", false},           // does not end with "*".
      {"ab.txt", "a**.txt", false},    // "A**" does not start with "*".
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(MatchesSpec(c.name, c.spec), c.expected)
        << "name " << c.name << " spec " << c.spec;
  }
}

TEST(WildcardTest, WildMatchEdges) {
  // An empty pattern matches nothing, not even the empty text.
  EXPECT_FALSE(WildMatch("abc", ""));
  EXPECT_FALSE(WildMatch("", ""));
  EXPECT_TRUE(WildMatch("", "*"));
  EXPECT_TRUE(WildMatch("abc", "*"));
  EXPECT_TRUE(WildMatch("", "**"));
  // Case folding is MatchesSpec's job.
  EXPECT_FALSE(WildMatch("abc", "ABC"));
  EXPECT_TRUE(WildMatch("abc", "abc"));
  // A "*" leading or trailing needs the text to hold the whole rest.
  EXPECT_FALSE(WildMatch("ab", "*abc"));
  EXPECT_FALSE(WildMatch("ab", "abc*"));
  EXPECT_TRUE(WildMatch("abc", "*abc"));
  EXPECT_TRUE(WildMatch("abc", "abc*"));
}

TEST(WildcardTest, MatchFixedComparesPositionByPosition) {
  EXPECT_TRUE(MatchFixed("abc", "abc"));
  EXPECT_TRUE(MatchFixed("abc", "a?c"));
  EXPECT_TRUE(MatchFixed("abc", "???"));
  EXPECT_TRUE(MatchFixed("", ""));
  EXPECT_FALSE(MatchFixed("abc", "ab"));
  EXPECT_FALSE(MatchFixed("ab", "abc"));
  EXPECT_FALSE(MatchFixed("a", ""));
  EXPECT_FALSE(MatchFixed("", "?"));
  EXPECT_FALSE(MatchFixed("abc", "ABC"));
  // "*" is an ordinary character here.
  EXPECT_FALSE(MatchFixed("abc", "a*c"));
  EXPECT_TRUE(MatchFixed("a*c", "a*c"));
  // Only the pattern's "?" is a wildcard.
  EXPECT_FALSE(MatchFixed("?", "a"));
}

TEST(WildcardTest, FindWildReturnsTheFirstOneBasedPosition) {
  EXPECT_EQ(FindWild("abc", "abcd"), 0);  // text shorter than the part.
  EXPECT_EQ(FindWild("", "a"), 0);
  EXPECT_EQ(FindWild("abc", "a"), 1);      // first possible position.
  EXPECT_EQ(FindWild("abc", "c"), 3);      // last possible position.
  EXPECT_EQ(FindWild("xxab", "ab"), 3);    // last possible, longer part.
  EXPECT_EQ(FindWild("abc", "abc"), 1);    // first and last at once.
  EXPECT_EQ(FindWild("abcabc", "bc"), 2);  // the first of two.
  EXPECT_EQ(FindWild("abc", "?c"), 2);
  EXPECT_EQ(FindWild("abc", "???"), 1);
  EXPECT_EQ(FindWild("abc", "????"), 0);
  EXPECT_EQ(FindWild("abc", "x"), 0);
  EXPECT_EQ(FindWild("abc", "B"), 0);  // case-sensitive.
  EXPECT_EQ(FindWild("abc", ""), 1);   // an empty part fits at once.
  EXPECT_EQ(FindWild("", ""), 1);
}

TEST(WildcardTest, InStrLastReturnsTheLastOneBasedPosition) {
  EXPECT_EQ(InStrLast("abc", "abcd"), 0);  // part longer than the text.
  EXPECT_EQ(InStrLast("", "a"), 0);
  EXPECT_EQ(InStrLast("abcabc", "bc"), 5);  // the last of two.
  EXPECT_EQ(InStrLast("a.b.c", "."), 4);
  EXPECT_EQ(InStrLast("aaa", "aa"), 2);  // overlapping occurrences.
  EXPECT_EQ(InStrLast("abc", "a"), 1);
  EXPECT_EQ(InStrLast("abc", "c"), 3);
  EXPECT_EQ(InStrLast("abc", "abc"), 1);
  EXPECT_EQ(InStrLast("abc", "x"), 0);
  EXPECT_EQ(InStrLast("ABC", "b"), 0);  // case-sensitive.
  EXPECT_EQ(InStrLast("abc", "?"), 0);  // "?" is literal here.
  EXPECT_EQ(InStrLast("a?c", "?"), 2);
  EXPECT_EQ(InStrLast("abc", ""), 4);  // empty part: just past the end.
  EXPECT_EQ(InStrLast("", ""), 1);
}

}  // namespace
}  // namespace pairwell
