#include "engine/conflict_descriptor.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/recording_user_interface.h"

namespace pairwell {
namespace {

constexpr char kIniError[] = "An error was detected in the INI file.";

// One state code of a pattern word, with what it stands for.
struct StateCodeCase {
  char code;
  int value;
  int mask;
  std::vector<int> states;  // the states 0..4 it accepts
};

// Every state code, letters in both cases.
const std::vector<StateCodeCase>& StateCodes() {
  static const std::vector<StateCodeCase> kCases = {
      {'0', 0, 7, {0}},
      {'1', 1, 7, {1}},
      {'2', 0, 6, {0, 1}},
      {'3', 2, 7, {2}},
      {'4', 3, 7, {3}},
      {'5', 2, 6, {2, 3}},
      {'6', 0, 5, {0, 2}},
      {'M', 0, 5, {0, 2}},
      {'m', 0, 5, {0, 2}},
      {'7', 1, 5, {1, 3}},
      {'D', 1, 5, {1, 3}},
      {'d', 1, 5, {1, 3}},
      {'8', 0, 4, {0, 1, 2, 3}},
      {'S', 0, 4, {0, 1, 2, 3}},
      {'s', 0, 4, {0, 1, 2, 3}},
      {'N', 4, 7, {4}},
      {'n', 4, 7, {4}},
      {'H', 0, 1, {0, 2, 4}},
      {'h', 0, 1, {0, 2, 4}},
      {'!', 0, 2, {0, 1, 4}},
      {'?', 0, 0, {0, 1, 2, 3, 4}},
  };
  return kCases;
}

bool Accepts(const StateCodeCase& c, int state) {
  for (int s : c.states) {
    if (s == state) return true;
  }
  return false;
}

class ConflictDescriptorTest : public ::testing::Test {
 protected:
  ConflictDescriptor Read(const std::string& name, const std::string& value) {
    ConflictDescriptor type;
    type.ReadFromINI(name, value);
    return type;
  }

  // Checks that exactly `count` messages were shown, each the INI error.
  void ExpectIniErrors(std::size_t count) {
    ASSERT_EQ(ui_.messages.size(), count);
    for (const RecordedMessage& m : ui_.messages) {
      EXPECT_EQ(m.text, kIniError);
      EXPECT_EQ(m.style, 16);
      EXPECT_EQ(m.caption, "Pairwell");
    }
  }

  RecordingUserInterface ui_;
};

TEST_F(ConflictDescriptorTest, NewDescriptorHasNoPatternAndMatchesNothing) {
  ConflictDescriptor type;
  EXPECT_EQ(type.FlagSetCount(), 0);
  for (int situation = 0; situation < 512; ++situation) {
    EXPECT_FALSE(type.MatchesSitu(situation)) << "situation " << situation;
  }
}

TEST_F(ConflictDescriptorTest, StateCodeInFirstPlaceTestsBitsFiveToSeven) {
  for (const StateCodeCase& c : StateCodes()) {
    const std::string word = std::string(1, c.code) + "??";
    const ConflictDescriptor type = Read("Type", word);
    ASSERT_EQ(type.FlagSetCount(), 1) << "pattern " << word;
    EXPECT_EQ(type.Flags(1), c.value * 32) << "pattern " << word;
    EXPECT_EQ(type.FlagMask(1), c.mask * 32) << "pattern " << word;
  }
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, StateCodeInThirdPlaceTestsBitsOneToThree) {
  for (const StateCodeCase& c : StateCodes()) {
    const std::string word = std::string("??") + c.code;
    const ConflictDescriptor type = Read("Type", word);
    ASSERT_EQ(type.FlagSetCount(), 1) << "pattern " << word;
    EXPECT_EQ(type.Flags(1), c.value * 2) << "pattern " << word;
    EXPECT_EQ(type.FlagMask(1), c.mask * 2) << "pattern " << word;
  }
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, StateCodesAcceptTheirListedStates) {
  for (const StateCodeCase& c : StateCodes()) {
    const std::string first = std::string(1, c.code) + "??";
    const std::string third = std::string("??") + c.code;
    const ConflictDescriptor synced = Read("Synced", first);
    const ConflictDescriptor copies = Read("Copies", third);
    for (int state = 0; state <= 4; ++state) {
      // The other bits are set to show that the pattern ignores them.
      EXPECT_EQ(synced.MatchesSitu(state * 32 | 1 | 16 | 6), Accepts(c, state))
          << "pattern " << first << " state " << state;
      EXPECT_EQ(copies.MatchesSitu(state * 2 | 1 | 16 | 96), Accepts(c, state))
          << "pattern " << third << " state " << state;
    }
  }
}

TEST_F(ConflictDescriptorTest, MiddleCharacterTestsBitFour) {
  struct Case {
    std::string word;
    int value;
    int mask;
  } cases[] = {
      {"?0?", 0, 16},
      {"?1?", 16, 16},
      {"???", 0, 0},
  };
  for (const Case& c : cases) {
    const ConflictDescriptor type = Read("Type", c.word);
    ASSERT_EQ(type.FlagSetCount(), 1) << "pattern " << c.word;
    EXPECT_EQ(type.Flags(1), c.value) << "pattern " << c.word;
    EXPECT_EQ(type.FlagMask(1), c.mask) << "pattern " << c.word;
  }
  EXPECT_TRUE(Read("T", "?1?").MatchesSitu(16));
  EXPECT_FALSE(Read("T", "?1?").MatchesSitu(0));
  EXPECT_TRUE(Read("T", "?0?").MatchesSitu(0));
  EXPECT_FALSE(Read("T", "?0?").MatchesSitu(16));
  EXPECT_TRUE(Read("T", "???").MatchesSitu(16));
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, PatternCombinesItsThreeParts) {
  struct Case {
    std::string word;
    int value;
    int mask;
  } cases[] = {
      {"N1H", 4 * 32 | 16, 7 * 32 | 16 | 1 * 2},
      {"101", 1 * 32 | 1 * 2, 7 * 32 | 16 | 7 * 2},
      {"5?d", 2 * 32 | 1 * 2, 6 * 32 | 5 * 2},
      {"s0!", 0, 4 * 32 | 16 | 2 * 2},
      {"4?3", 3 * 32 | 2 * 2, 7 * 32 | 7 * 2},
  };
  for (const Case& c : cases) {
    const ConflictDescriptor type = Read("Type", c.word);
    ASSERT_EQ(type.FlagSetCount(), 1) << "pattern " << c.word;
    EXPECT_EQ(type.Flags(1), c.value) << "pattern " << c.word;
    EXPECT_EQ(type.FlagMask(1), c.mask) << "pattern " << c.word;
  }
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, MalformedPatternShowsErrorAndIsDropped) {
  for (const std::string word :
       {"9??", "X??", "a??", "#??", "??9", "??x", "??*", "?2?", "?x?", "?N?",
        "?!?", "abc", "9?9x", "1x1?"}) {
    ui_.messages.clear();
    const ConflictDescriptor type = Read("Type", word);
    EXPECT_EQ(type.FlagSetCount(), 0) << "pattern " << word;
    ASSERT_EQ(ui_.messages.size(), 1u) << "pattern " << word;
    EXPECT_EQ(ui_.messages[0].text, kIniError) << "pattern " << word;
    EXPECT_EQ(ui_.messages[0].style, 16) << "pattern " << word;
    EXPECT_EQ(ui_.messages[0].caption, "Pairwell") << "pattern " << word;
  }
}

TEST_F(ConflictDescriptorTest, FourthCharacterOfAPatternIsIgnored) {
  const ConflictDescriptor plain = Read("Type", "1?1");
  for (const std::string word : {"1?1x", "1?19", "1?1*", "1?1?"}) {
    const ConflictDescriptor type = Read("Type", word);
    ASSERT_EQ(type.FlagSetCount(), 1) << "pattern " << word;
    EXPECT_EQ(type.Flags(1), plain.Flags(1)) << "pattern " << word;
    EXPECT_EQ(type.FlagMask(1), plain.FlagMask(1)) << "pattern " << word;
  }
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, ErrorMarkDropsEveryLaterPatternOfTheEntry) {
  const ConflictDescriptor type = Read("Type", "0x1 110");
  EXPECT_EQ(type.FlagSetCount(), 0);
  ExpectIniErrors(2);
}

TEST_F(ConflictDescriptorTest, PatternsBeforeTheErrorAreKept) {
  const ConflictDescriptor type = Read("Type", "110 0x1 111 N?N");
  ASSERT_EQ(type.FlagSetCount(), 1);
  EXPECT_EQ(type.Flags(1), 1 * 32 | 16);
  EXPECT_EQ(type.FlagMask(1), 7 * 32 | 16 | 7 * 2);
  ExpectIniErrors(3);
}

TEST_F(ConflictDescriptorTest, ErrorMarkLeavesKeywordsAndDescriptionAlone) {
  const ConflictDescriptor type =
      Read("Type", "1?1 ?x? DELETEALL* \"Some words here\"");
  EXPECT_EQ(type.FlagSetCount(), 1);
  EXPECT_EQ(type.DefAction, 2);
  EXPECT_EQ(type.AllowedActions, 5);
  EXPECT_EQ(type.Description, "Some words here");
  ExpectIniErrors(1);
}

TEST_F(ConflictDescriptorTest, ErrorMarkEndsWithTheEntry) {
  Read("Bad", "0x1");
  const ConflictDescriptor good = Read("Good", "110");
  EXPECT_EQ(good.FlagSetCount(), 1);
  ExpectIniErrors(1);
}

TEST_F(ConflictDescriptorTest, FifthPatternIsDroppedSilently) {
  const ConflictDescriptor type = Read("Type", "000 1?1 N1N 3?5 ???");
  ASSERT_EQ(type.FlagSetCount(), 4);
  const std::uint16_t values[] = {0, 1 * 32 | 1 * 2, 4 * 32 | 16 | 4 * 2,
                                  2 * 32 | 2 * 2};
  const std::uint16_t masks[] = {7 * 32 | 16 | 7 * 2, 7 * 32 | 7 * 2,
                                 7 * 32 | 16 | 7 * 2, 7 * 32 | 6 * 2};
  for (int i = 1; i <= 4; ++i) {
    EXPECT_EQ(type.Flags(i), values[i - 1]) << "pattern " << i;
    EXPECT_EQ(type.FlagMask(i), masks[i - 1]) << "pattern " << i;
  }
  // "???" would have matched every situation.
  EXPECT_FALSE(type.MatchesSitu(2 * 32 | 1 * 2));
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, MalformedPatternPastTheLimitStillShowsError) {
  const ConflictDescriptor type = Read("Type", "000 001 003 004 005 0x1");
  EXPECT_EQ(type.FlagSetCount(), 4);
  ExpectIniErrors(1);
}

TEST_F(ConflictDescriptorTest, PlainNameIsConfigurableAndChecked) {
  ConflictDescriptor type;
  type.Configurable = false;
  type.ListChecked = false;
  type.ReadFromINI("Changed in both", "1?1");
  EXPECT_EQ(type.Name, "Changed in both");
  EXPECT_TRUE(type.Configurable);
  EXPECT_TRUE(type.ListChecked);
}

TEST_F(ConflictDescriptorTest, StarPrefixMakesTypeNotConfigurable) {
  const ConflictDescriptor type = Read("*Fixed", "1?1");
  EXPECT_EQ(type.Name, "Fixed");
  EXPECT_FALSE(type.Configurable);
  EXPECT_TRUE(type.ListChecked);
}

TEST_F(ConflictDescriptorTest, PlusPrefixMakesTypeUnchecked) {
  const ConflictDescriptor type = Read("+Quiet", "1?1");
  EXPECT_EQ(type.Name, "Quiet");
  EXPECT_TRUE(type.Configurable);
  EXPECT_FALSE(type.ListChecked);
}

TEST_F(ConflictDescriptorTest, PlusAfterStarIsPartOfTheName) {
  const ConflictDescriptor type = Read("*+Odd", "1?1");
  EXPECT_EQ(type.Name, "+Odd");
  EXPECT_FALSE(type.Configurable);
  EXPECT_TRUE(type.ListChecked);
}

TEST_F(ConflictDescriptorTest, StarAfterPlusIsPartOfTheName) {
  const ConflictDescriptor type = Read("+*Odd", "1?1");
  EXPECT_EQ(type.Name, "*Odd");
  EXPECT_TRUE(type.Configurable);
  EXPECT_FALSE(type.ListChecked);
}

TEST_F(ConflictDescriptorTest, OnlyOnePrefixCharacterIsRemoved) {
  EXPECT_EQ(Read("**Twice", "1?1").Name, "*Twice");
  EXPECT_EQ(Read("++Twice", "1?1").Name, "+Twice");
}

TEST_F(ConflictDescriptorTest, StarredKeywordBecomesTheDefault) {
  const ConflictDescriptor type = Read("Type", "1?1 DoNothing*");
  EXPECT_EQ(type.DefAction, 1);
  EXPECT_EQ(type.Action, 1);
  EXPECT_EQ(type.AllowedActions, 1 | 2);
}

TEST_F(ConflictDescriptorTest, LaterStarredKeywordWins) {
  const ConflictDescriptor type = Read("Type", "1?1 USENEWEST* DELETEALL*");
  EXPECT_EQ(type.DefAction, 2);
  EXPECT_EQ(type.Action, 2);
  EXPECT_EQ(type.AllowedActions, 13);
}

TEST_F(ConflictDescriptorTest, KeywordsWithoutStarOnlyAllowTheirResolution) {
  const ConflictDescriptor type =
      Read("Type", "1?1 donothing DeleteAll usenewest");
  EXPECT_EQ(type.DefAction, 0);
  EXPECT_EQ(type.Action, 0);
  EXPECT_EQ(type.AllowedActions, 15);
}

TEST_F(ConflictDescriptorTest, KeywordsMapToTheirResolutionCodes) {
  struct Case {
    std::string word;
    int action;
  } cases[] = {
      {"DONOTHING*", 1}, {"DELETEALL*", 2}, {"USENEWEST*", 3},
      {"donothing*", 1}, {"deleteall*", 2}, {"UseNewest*", 3},
  };
  for (const Case& c : cases) {
    const ConflictDescriptor type = Read("Type", "1?1 " + c.word);
    EXPECT_EQ(type.DefAction, c.action) << "keyword " << c.word;
    EXPECT_EQ(type.AllowedActions, 1 | (1 << c.action)) << "keyword " << c.word;
  }
}

TEST_F(ConflictDescriptorTest, UnknownWordBeforeAnyKeywordIsHarmless) {
  const ConflictDescriptor type = Read("Type", "1?1 Whatever Maybe*");
  EXPECT_EQ(type.DefAction, 0);
  EXPECT_EQ(type.Action, 0);
  EXPECT_EQ(type.AllowedActions, 1);
}

TEST_F(ConflictDescriptorTest, UnknownWordRepeatsTheLastKnownKeyword) {
  const ConflictDescriptor type =
      Read("Type", "1?1 USENEWEST* DELETEALL Whatever*");
  EXPECT_EQ(type.DefAction, 2);
  EXPECT_EQ(type.Action, 2);
  EXPECT_EQ(type.AllowedActions, 13);
}

TEST_F(ConflictDescriptorTest, LoneStarRepeatsTheLastKnownKeywordAsDefault) {
  const ConflictDescriptor type = Read("Type", "1?1 DONOTHING USENEWEST *");
  EXPECT_EQ(type.DefAction, 3);
  EXPECT_EQ(type.AllowedActions, 11);
}

TEST_F(ConflictDescriptorTest, ReadingStartsFromOneAllowedActionAndCreateDest) {
  ConflictDescriptor type;
  type.AllowedActions = 15;
  type.DefCreateDest = false;
  type.CreateDest = false;
  type.ReadFromINI("Type", "1?1 DELETEALL");
  EXPECT_EQ(type.AllowedActions, 5);
  EXPECT_TRUE(type.DefCreateDest);
  EXPECT_TRUE(type.CreateDest);
}

TEST_F(ConflictDescriptorTest, ReadingAppliesTheDefaults) {
  ConflictDescriptor type;
  type.Action = 3;
  type.ReadFromINI("Type", "1?1 DONOTHING*");
  EXPECT_EQ(type.Action, 1);
  EXPECT_TRUE(type.CreateDest);
}

TEST_F(ConflictDescriptorTest, QuotedWordWithBlankIsTheDescription) {
  const ConflictDescriptor type =
      Read("Type", "1?1 \"The file changed in two folders.\" DONOTHING*");
  EXPECT_EQ(type.Description, "The file changed in two folders.");
  EXPECT_EQ(type.FlagSetCount(), 1);
  EXPECT_EQ(type.DefAction, 1);
}

TEST_F(ConflictDescriptorTest, DescriptionEscapeBecomesLineBreak) {
  const ConflictDescriptor type = Read("Type", "1?1 \"Line one\\nLine two\"");
  EXPECT_EQ(type.Description, "Line one\r\nLine two");
}

TEST_F(ConflictDescriptorTest,
       DescriptionCarriageReturnEscapeBecomesLineBreak) {
  const ConflictDescriptor type = Read("Type", "1?1 \"One\\rTwo \\n\\nThree\"");
  EXPECT_EQ(type.Description, "One\r\nTwo \r\n\r\nThree");
}

TEST_F(ConflictDescriptorTest, DescriptionKeepsOtherBackslashes) {
  const ConflictDescriptor type = Read("Type", "1?1 \"C:\\temp and \\t\"");
  EXPECT_EQ(type.Description, "C:\\temp and \\t");
}

TEST_F(ConflictDescriptorTest, LaterDescriptionReplacesEarlierOne) {
  const ConflictDescriptor type =
      Read("Type", "\"First words\" 1?1 \"Second words\"");
  EXPECT_EQ(type.Description, "Second words");
}

TEST_F(ConflictDescriptorTest, WordWithoutBlankIsNotADescription) {
  const ConflictDescriptor type = Read("Type", "1?1 \"NoBlanksHere\"");
  EXPECT_EQ(type.Description, "");
  EXPECT_EQ(type.AllowedActions, 1);
}

TEST_F(ConflictDescriptorTest, QuotesAreRemovedBeforeAWordIsClassified) {
  const ConflictDescriptor type = Read("Type", "\"1?1\" \"USENEWEST*\"");
  ASSERT_EQ(type.FlagSetCount(), 1);
  EXPECT_EQ(type.Flags(1), 1 * 32 | 1 * 2);
  EXPECT_EQ(type.DefAction, 3);
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest,
       ThreeCharacterQuotedWordIsAPatternEvenWithBlank) {
  const ConflictDescriptor type = Read("Type", "\"a b\"");
  EXPECT_EQ(type.FlagSetCount(), 0);
  EXPECT_EQ(type.Description, "");
  ExpectIniErrors(1);
}

TEST_F(ConflictDescriptorTest, TabsSeparateWords) {
  const ConflictDescriptor type = Read("Type", "1?1\t000\tDELETEALL*");
  EXPECT_EQ(type.FlagSetCount(), 2);
  EXPECT_EQ(type.DefAction, 2);
}

TEST_F(ConflictDescriptorTest, WordsPastTheSixteenthAreNotRead) {
  // The word splitter takes sixteen words at most.
  const ConflictDescriptor type =
      Read("Type", "000 a b c d e f g h i j k l m n o DELETEALL* 1?1");
  EXPECT_EQ(type.FlagSetCount(), 1);
  EXPECT_EQ(type.DefAction, 0);
  EXPECT_EQ(type.AllowedActions, 1);
}

TEST_F(ConflictDescriptorTest,
       EntryWithOnlyKeywordsAndDescriptionHasNoPattern) {
  const ConflictDescriptor type =
      Read("Type", "DONOTHING* USENEWEST \"Only some words\"");
  EXPECT_EQ(type.FlagSetCount(), 0);
  EXPECT_EQ(type.DefAction, 1);
  EXPECT_EQ(type.Description, "Only some words");
  EXPECT_FALSE(type.MatchesSitu(0));
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, EmptyValueGivesNoPatternAndNoMessage) {
  const ConflictDescriptor type = Read("Type", "");
  EXPECT_EQ(type.FlagSetCount(), 0);
  EXPECT_EQ(type.AllowedActions, 1);
  EXPECT_EQ(type.DefAction, 0);
  ExpectIniErrors(0);
}

TEST_F(ConflictDescriptorTest, UseDefaultsCopiesTheDefaultsIntoTheSettings) {
  ConflictDescriptor type;
  type.DefAction = 2;
  type.DefCreateDest = false;
  type.Action = 3;
  type.CreateDest = true;
  type.UseDefaults();
  EXPECT_EQ(type.Action, 2);
  EXPECT_FALSE(type.CreateDest);

  type.DefCreateDest = true;
  type.UseDefaults();
  EXPECT_TRUE(type.CreateDest);
}

TEST_F(ConflictDescriptorTest, CopyFromCopiesEveryField) {
  const ConflictDescriptor source =
      Read("+Source", "1?1 N0N DELETEALL* USENEWEST \"Two words\"");
  ConflictDescriptor source_with_settings;
  source_with_settings.CopyFrom(source);
  source_with_settings.Action = 3;
  source_with_settings.CreateDest = false;
  source_with_settings.DefCreateDest = false;
  source_with_settings.Configurable = false;

  ConflictDescriptor target = Read("*Target", "000 001 003 004 DONOTHING*");
  target.CopyFrom(source_with_settings);
  EXPECT_EQ(target.Name, "Source");
  EXPECT_FALSE(target.Configurable);
  EXPECT_FALSE(target.ListChecked);
  EXPECT_EQ(target.DefAction, 2);
  EXPECT_EQ(target.Action, 3);
  EXPECT_FALSE(target.DefCreateDest);
  EXPECT_FALSE(target.CreateDest);
  EXPECT_EQ(target.AllowedActions, 13);
  EXPECT_EQ(target.Description, "Two words");
  ASSERT_EQ(target.FlagSetCount(), 2);
  for (int i = 1; i <= 4; ++i) {
    EXPECT_EQ(target.Flags(i), source.Flags(i)) << "pattern " << i;
    EXPECT_EQ(target.FlagMask(i), source.FlagMask(i)) << "pattern " << i;
  }
  EXPECT_FALSE(target.MatchesSitu(0));  // "000" is gone
  EXPECT_TRUE(target.MatchesSitu(4 * 32 | 4 * 2));
}

TEST_F(ConflictDescriptorTest, FlagsIndexOutsideOneToFourThrowsOutOfRange) {
  const ConflictDescriptor type = Read("Type", "1?1");
  for (int i : {0, -1, 5, 100}) {
    EXPECT_THROW(type.Flags(i), std::out_of_range) << "index " << i;
    EXPECT_THROW(type.FlagMask(i), std::out_of_range) << "index " << i;
  }
  // Slots past the patterns in use are still within range.
  EXPECT_NO_THROW(type.Flags(4));
  EXPECT_NO_THROW(type.FlagMask(4));
}

TEST_F(ConflictDescriptorTest, MatchesSituWhenAnyPatternAccepts) {
  const ConflictDescriptor type = Read("Type", "N?? ?1?");
  EXPECT_TRUE(type.MatchesSitu(4 * 32));       // first pattern only
  EXPECT_TRUE(type.MatchesSitu(16));           // second pattern only
  EXPECT_TRUE(type.MatchesSitu(4 * 32 | 16));  // both
  EXPECT_FALSE(type.MatchesSitu(3 * 32));      // neither
}

TEST_F(ConflictDescriptorTest, MatchesSituIgnoresBitsZeroAndEight) {
  const ConflictDescriptor type = Read("Type", "101");
  const int situation = 1 * 32 | 1 * 2;
  EXPECT_TRUE(type.MatchesSitu(situation));
  EXPECT_TRUE(type.MatchesSitu(situation | 1));
  EXPECT_TRUE(type.MatchesSitu(situation | 256));
  EXPECT_TRUE(type.MatchesSitu(situation | 257));
  EXPECT_FALSE(type.MatchesSitu(situation | 16));
}

TEST_F(ConflictDescriptorTest, AllSameSituationMatchesPatternsAllowingZero) {
  for (const std::string word :
       {"000", "202", "?0?", "S0S", "H0H", "!0!", "606", "m0m", "???", "0?0"}) {
    EXPECT_TRUE(Read("Type", word).MatchesSitu(256)) << "pattern " << word;
  }
  for (const std::string word :
       {"?1?", "N??", "??1", "1?1", "3?3", "D??", "??4", "5??"}) {
    EXPECT_FALSE(Read("Type", word).MatchesSitu(256)) << "pattern " << word;
  }
}

TEST_F(ConflictDescriptorTest, CustomConfigToStringWritesNumberThenLetters) {
  struct Case {
    int action;
    bool create_dest;
    bool list_checked;
    std::string text;
  } cases[] = {
      {3, false, true, "3"},   {3, true, true, "3C"}, {2, true, false, "2C+"},
      {0, false, false, "0+"}, {1, true, true, "1C"},
  };
  for (const Case& c : cases) {
    ConflictDescriptor type;
    type.Action = c.action;
    type.CreateDest = c.create_dest;
    type.ListChecked = c.list_checked;
    EXPECT_EQ(type.CustomConfigToString(), c.text) << "expected " << c.text;
  }
}

TEST_F(ConflictDescriptorTest, StringToCustomConfigReadsLettersBeforeNumber) {
  struct Case {
    std::string text;
    int action;
    bool create_dest;
    bool list_checked;
  } cases[] = {
      {"+C2", 2, true, false},     {"C3", 3, true, true},
      {"+1", 1, false, false},     {"2", 2, false, true},
      {"  +C3  ", 3, true, false}, {"C+3", 3, true, true},
      {"2.9", 2, false, true},     {"abc", 0, false, true},
      {"3C+", 3, false, true},     {"+2C", 2, false, false},
  };
  for (const Case& c : cases) {
    ConflictDescriptor type;
    type.Action = 7;
    type.CreateDest = !c.create_dest;
    type.ListChecked = !c.list_checked;
    type.StringToCustomConfig(c.text);
    EXPECT_EQ(type.Action, c.action) << "text \"" << c.text << "\"";
    EXPECT_EQ(type.CreateDest, c.create_dest) << "text \"" << c.text << "\"";
    EXPECT_EQ(type.ListChecked, c.list_checked) << "text \"" << c.text << "\"";
  }
}

TEST_F(ConflictDescriptorTest, StringToCustomConfigWithoutNumberKeepsAction) {
  struct Case {
    std::string text;
    bool create_dest;
    bool list_checked;
  } cases[] = {
      {"", false, true}, {"   ", false, true}, {"+", false, false},
      {"C", true, true}, {"+C", true, false},
  };
  for (const Case& c : cases) {
    ConflictDescriptor type;
    type.Action = 3;
    type.CreateDest = !c.create_dest;
    type.ListChecked = !c.list_checked;
    type.StringToCustomConfig(c.text);
    EXPECT_EQ(type.Action, 3) << "text \"" << c.text << "\"";
    EXPECT_EQ(type.CreateDest, c.create_dest) << "text \"" << c.text << "\"";
    EXPECT_EQ(type.ListChecked, c.list_checked) << "text \"" << c.text << "\"";
  }
}

TEST_F(ConflictDescriptorTest, WrittenCustomConfigReadsBackWithOnlyItsNumber) {
  ConflictDescriptor written;
  written.Action = 3;
  written.CreateDest = true;
  written.ListChecked = false;
  const std::string text = written.CustomConfigToString();
  ASSERT_EQ(text, "3C+");

  ConflictDescriptor read;
  read.CreateDest = true;
  read.ListChecked = false;
  read.StringToCustomConfig(text);
  EXPECT_EQ(read.Action, 3);
  EXPECT_FALSE(read.CreateDest);
  EXPECT_TRUE(read.ListChecked);
}

TEST_F(ConflictDescriptorTest, StringToCustomConfigLeavesDefaultsAlone) {
  ConflictDescriptor type = Read("Type", "1?1 DONOTHING* USENEWEST");
  type.StringToCustomConfig("+3");
  EXPECT_EQ(type.Action, 3);
  EXPECT_EQ(type.DefAction, 1);
  EXPECT_TRUE(type.DefCreateDest);
  type.UseDefaults();
  EXPECT_EQ(type.Action, 1);
  EXPECT_TRUE(type.CreateDest);
}

}  // namespace
}  // namespace pairwell
