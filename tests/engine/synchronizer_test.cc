#include "engine/synchronizer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "config/ini_file_section.h"
#include "support/recording_user_interface.h"
#include "support/scoped_time_zone.h"
#include "support/section_entries.h"
#include "support/test_dates.h"
#include "util/date_time.h"

namespace pairwell {
namespace {

constexpr char kIniError[] = "An error was detected in the INI file.";

void Fill(INIFileSection* section, const Entries& entries) {
  for (const auto& entry : entries) section->AddVar(entry.first, entry.second);
}

double Date(int year, int month, int day, int hour = 0, int minute = 0,
            int second = 0) {
  return MakeDate(year, month, day, hour, minute, second);
}

// A small catalogue: a comment, three usable types and one without pattern.
//   "Changed in one": copies state 1 (bit 1 set, bits 2-3 clear).
//   "Missing": missing from a source folder (bit 4).
//   "All same": state 0 everywhere, nothing missing.
const Entries kCatalogue = {
    {";", " conflict types for the tests"},
    {"Changed in one", "??1 \"Changed in one folder\" USENEWEST* DONOTHING"},
    {"+Missing", "?1? DELETEALL USENEWEST*"},
    {"*All same", "000 DONOTHING*"},
    {"Words only", "DONOTHING* \"This entry has no pattern\""},
};

class SynchronizerTest : public ::testing::Test {
 protected:
  // Reads the catalogue, then the set section built from `entries`.
  void ReadSet(Synchronizer* set, const Entries& entries) {
    INIFileSection types("Conflict Types");
    Fill(&types, kCatalogue);
    set->ReadConflictInfo(types);
    INIFileSection section("Sec: Test");
    Fill(&section, entries);
    set->ReadFromINI(section);
  }

  Entries Written(const Synchronizer& set) {
    INIFileSection section("Sec: Test");
    set.WriteToINI(section);
    return EntriesOf(section);
  }

  // The value written under `key`, or "<absent>".
  std::string WrittenValue(const Synchronizer& set, const std::string& key) {
    for (const auto& entry : Written(set)) {
      if (entry.first == key) return entry.second;
    }
    return "<absent>";
  }

  RecordingUserInterface ui_;
};

TEST_F(SynchronizerTest, NewSetHasObjectDefaults) {
  Synchronizer set;
  EXPECT_EQ(set.Name, "Untitled");
  EXPECT_TRUE(set.Recursive);
  EXPECT_FALSE(set.SyncFolders);
  EXPECT_EQ(set.DefActionFlags, 8);
  EXPECT_TRUE(set.WarnFutureDate);
  EXPECT_TRUE(set.UseCreateDate);
  EXPECT_FALSE(set.ClearArchiveOnCopy);
  EXPECT_TRUE(set.MatchCDateOnCopy);
  EXPECT_FALSE(set.UseLogFile);
  EXPECT_EQ(set.LogFileName, "");
  EXPECT_FALSE(set.ClearLogDaily);
  EXPECT_TRUE(set.SmartSync);
  EXPECT_TRUE(set.AllowSmartDeletes);
  EXPECT_EQ(set.LastSyncDate, 0);
  EXPECT_FALSE(set.ArchiveDeleted);
  EXPECT_FALSE(set.ArchiveOverwritten);
  EXPECT_EQ(set.ArchivePath, "");
  EXPECT_EQ(set.FileSpec, "");
  EXPECT_EQ(set.ExcludeSpec, "");
  EXPECT_EQ(set.FolderSpec, "");
  EXPECT_EQ(set.FolderExcludeSpec, "");
  EXPECT_FALSE(set.QuietMode);
  EXPECT_FALSE(set.StopFlag);
  EXPECT_EQ(set.FutureDateCount, 0);
  EXPECT_EQ(set.SyncMsg, "");
  EXPECT_EQ(set.Log(), nullptr);
}

TEST_F(SynchronizerTest, NewSetHasNoFoldersTypesOrWorkingData) {
  Synchronizer set;
  EXPECT_EQ(set.PathCount(), 0);
  EXPECT_EQ(set.ConflictTypeCount(), 0);
  EXPECT_EQ(set.WPathCount(), 0);
  EXPECT_EQ(set.WRootTree().Count(), 0);
}

TEST_F(SynchronizerTest, MissingKeysTakeTheFileDefaultsNotTheNewSetOnes) {
  Synchronizer set;
  // Every field starts away from the value a missing key gives.
  set.Recursive = false;
  set.SyncFolders = false;
  set.DefActionFlags = 1;
  set.WarnFutureDate = false;
  set.UseCreateDate = false;
  set.ClearArchiveOnCopy = true;
  set.MatchCDateOnCopy = false;
  set.UseLogFile = true;
  set.LogFileName = "x";
  set.ClearLogDaily = true;
  set.SmartSync = false;
  set.AllowSmartDeletes = false;
  set.LastSyncDate = 5;
  set.ArchiveDeleted = true;
  set.ArchiveOverwritten = true;
  set.ArchivePath = "x";
  set.FileSpec = "x";
  set.ExcludeSpec = "x";
  set.FolderSpec = "x";
  set.FolderExcludeSpec = "x";
  ReadSet(&set, {});
  EXPECT_EQ(set.PathCount(), 0);
  EXPECT_TRUE(set.Recursive);
  EXPECT_TRUE(set.SyncFolders);
  EXPECT_EQ(set.DefActionFlags, 8);
  EXPECT_TRUE(set.WarnFutureDate);
  EXPECT_TRUE(set.UseCreateDate);
  EXPECT_FALSE(set.ClearArchiveOnCopy);
  EXPECT_TRUE(set.MatchCDateOnCopy);
  EXPECT_FALSE(set.UseLogFile);
  EXPECT_EQ(set.LogFileName, "SyncLog.txt");
  EXPECT_FALSE(set.ClearLogDaily);
  EXPECT_TRUE(set.SmartSync);
  EXPECT_TRUE(set.AllowSmartDeletes);
  EXPECT_EQ(set.LastSyncDate, 0);
  EXPECT_FALSE(set.ArchiveDeleted);
  EXPECT_FALSE(set.ArchiveOverwritten);
  EXPECT_EQ(set.ArchivePath, "SyncLog.txt");
  EXPECT_EQ(set.FileSpec, "*.*");
  EXPECT_EQ(set.ExcludeSpec, "");
  EXPECT_EQ(set.FolderSpec, "");
  EXPECT_EQ(set.FolderExcludeSpec, "");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SynchronizerTest, SectionWithoutFileSpecLoadsEveryFileUnlikeANewSet) {
  Synchronizer added;
  EXPECT_EQ(added.FileSpec, "");
  EXPECT_EQ(added.LogFileName, "");
  Synchronizer loaded;
  ReadSet(&loaded, {{"Dir1", "C:\\A"}});
  EXPECT_EQ(loaded.FileSpec, "*.*");
  EXPECT_EQ(loaded.LogFileName, "SyncLog.txt");
}

TEST_F(SynchronizerTest, SectionWithoutArchivePathLoadsTheLogFileName) {
  Synchronizer set;
  ReadSet(&set, {{"LogFileName", "other.txt"}});
  EXPECT_EQ(set.ArchivePath, "SyncLog.txt");
  EXPECT_EQ(set.LogFileName, "other.txt");
}

TEST_F(SynchronizerTest, KeyPresentWithEmptyValueIsNotMissing) {
  Synchronizer set;
  ReadSet(&set, {{"FileSpec", ""},
                 {"ArchivePath", ""},
                 {"LogFileName", ""},
                 {"Recursive", ""},
                 {"DefActionFlags", ""}});
  EXPECT_EQ(set.FileSpec, "");
  EXPECT_EQ(set.ArchivePath, "");
  EXPECT_EQ(set.LogFileName, "");
  EXPECT_FALSE(set.Recursive);
  EXPECT_EQ(set.DefActionFlags, 0);
}

TEST_F(SynchronizerTest, EveryOptionIsReadFromItsKey) {
  Synchronizer set;
  ReadSet(&set, {{"Recursive", "False"},
                 {"SyncFolders", "False"},
                 {"DefActionFlags", "19"},
                 {"WarnFutureDate", "False"},
                 {"UseCreateDate", "False"},
                 {"ClearArchiveOnCopy", "True"},
                 {"MatchCDateOnCopy", "False"},
                 {"UseLogFile", "True"},
                 {"LogFileName", "D:\\logs\\sync.log"},
                 {"ClearLogDaily", "True"},
                 {"SmartSync", "False"},
                 {"AllowSmartDeletes", "False"},
                 {"LastSyncDate", "2021-06-15 08:30:00"},
                 {"ArchiveDeleted", "True"},
                 {"ArchiveOverwritten", "True"},
                 {"ArchivePath", "D:\\archive"},
                 {"FileSpec", "*.doc;*.txt"},
                 {"ExcludeSpec", "*.tmp"},
                 {"FolderSpec", "Work*"},
                 {"FolderExcludeSpec", "Temp"}});
  EXPECT_FALSE(set.Recursive);
  EXPECT_FALSE(set.SyncFolders);
  EXPECT_EQ(set.DefActionFlags, 19);
  EXPECT_FALSE(set.WarnFutureDate);
  EXPECT_FALSE(set.UseCreateDate);
  EXPECT_TRUE(set.ClearArchiveOnCopy);
  EXPECT_FALSE(set.MatchCDateOnCopy);
  EXPECT_TRUE(set.UseLogFile);
  EXPECT_EQ(set.LogFileName, "D:\\logs\\sync.log");
  EXPECT_TRUE(set.ClearLogDaily);
  EXPECT_FALSE(set.SmartSync);
  EXPECT_FALSE(set.AllowSmartDeletes);
  EXPECT_DOUBLE_EQ(set.LastSyncDate, Date(2021, 6, 15, 8, 30, 0));
  EXPECT_TRUE(set.ArchiveDeleted);
  EXPECT_TRUE(set.ArchiveOverwritten);
  EXPECT_EQ(set.ArchivePath, "D:\\archive");
  EXPECT_EQ(set.FileSpec, "*.doc;*.txt");
  EXPECT_EQ(set.ExcludeSpec, "*.tmp");
  EXPECT_EQ(set.FolderSpec, "Work*");
  EXPECT_EQ(set.FolderExcludeSpec, "Temp");
}

TEST_F(SynchronizerTest, ReadingLeavesTheNameAlone) {
  Synchronizer set;
  set.Name = "Docs";
  ReadSet(&set, {{"Name", "Other"}});
  EXPECT_EQ(set.Name, "Docs");
}

TEST_F(SynchronizerTest, BooleanTextIsTrueForTrueOrNonZeroNumber) {
  struct Case {
    std::string text;
    bool value;
  } cases[] = {
      {" yes", false}, {"yes", false},   {"on", false},  {"False", false},
      {"0", false},    {" 0 ", false},   {"", false},    {"T", false},
      {"2", true},     {" true ", true}, {"TRUE", true}, {"true", true},
      {"-1", true},    {"1", true},      {"0.5", true},  {" 7 ", true},
  };
  for (const Case& c : cases) {
    Synchronizer set;
    // One key whose missing default is true, one whose default is false.
    ReadSet(&set, {{"Recursive", c.text}, {"ClearArchiveOnCopy", c.text}});
    EXPECT_EQ(set.Recursive, c.value) << "text \"" << c.text << "\"";
    EXPECT_EQ(set.ClearArchiveOnCopy, c.value) << "text \"" << c.text << "\"";
  }
}

TEST_F(SynchronizerTest, DefActionFlagsTakesTheNumericValueOfTheText) {
  struct Case {
    std::string text;
    int value;
  } cases[] = {
      {"24", 24}, {" 12 ", 12}, {"abc", 0}, {"", 0}, {"True", 0}, {"0", 0},
  };
  for (const Case& c : cases) {
    Synchronizer set;
    ReadSet(&set, {{"DefActionFlags", c.text}});
    EXPECT_EQ(set.DefActionFlags, c.value) << "text \"" << c.text << "\"";
  }
}

TEST_F(SynchronizerTest, FoldersAreReadWithTheirFlags) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\Work\\Docs"},
                 {"Dir1Flags", "21"},
                 {"Dir2", "E:\\Backup\\Docs"},
                 {"Dir2Flags", "5"}});
  ASSERT_EQ(set.PathCount(), 2);
  EXPECT_EQ(set.Path(1), "C:\\Work\\Docs");
  EXPECT_EQ(set.PathFlags(1), 21);
  EXPECT_EQ(set.Path(2), "E:\\Backup\\Docs");
  EXPECT_EQ(set.PathFlags(2), 5);
}

TEST_F(SynchronizerTest, MissingFolderFlagsDefaultToFour) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\A"}, {"Dir2", "C:\\B"}, {"Dir2Flags", "abc"}});
  ASSERT_EQ(set.PathCount(), 2);
  EXPECT_EQ(set.PathFlags(1), 4);
  EXPECT_EQ(set.PathFlags(2), 0);
}

TEST_F(SynchronizerTest, GapInFolderNumbersEndsTheList) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\A"}, {"Dir3", "C:\\C"}, {"Dir3Flags", "5"}});
  ASSERT_EQ(set.PathCount(), 1);
  EXPECT_EQ(set.Path(1), "C:\\A");
}

TEST_F(SynchronizerTest, SetWithoutDir1HasNoFolders) {
  Synchronizer set;
  ReadSet(&set, {{"Dir2", "C:\\B"}});
  EXPECT_EQ(set.PathCount(), 0);
}

TEST_F(SynchronizerTest, FolderKeysMatchCaseAndHaveNoLeadingZeros) {
  for (const std::string key : {"dir1", "DIR1", "Dir01", "Dir 1"}) {
    Synchronizer set;
    ReadSet(&set, {{key, "C:\\A"}});
    EXPECT_EQ(set.PathCount(), 0) << "key " << key;
  }
}

TEST_F(SynchronizerTest, TenFoldersAllLoadAndPathAddThenAddsNothing) {
  Entries entries;
  for (int i = 1; i <= 10; ++i) {
    entries.emplace_back("Dir" + std::to_string(i),
                         "C:\\F" + std::to_string(i));
  }
  Synchronizer set;
  ReadSet(&set, entries);
  ASSERT_EQ(set.PathCount(), 10);
  EXPECT_EQ(set.Path(10), "C:\\F10");
  EXPECT_EQ(set.PathFlags(10), 4);
  set.PathAdd("C:\\F11");
  EXPECT_EQ(set.PathCount(), 10);
  EXPECT_EQ(WrittenValue(set, "Dir10"), "C:\\F10");
  EXPECT_EQ(WrittenValue(set, "Dir10Flags"), "4");
}

TEST_F(SynchronizerTest, FolderTypeThreeIsKeptAsReadAndWrittenBack) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\A"}, {"Dir1Flags", "7"}});
  ASSERT_EQ(set.PathCount(), 1);
  EXPECT_EQ(set.PathFlags(1), 7);
  EXPECT_EQ(set.PathFlags(1) & kFolderTypeMask, 3);
  EXPECT_EQ(WrittenValue(set, "Dir1Flags"), "7");
}

TEST_F(SynchronizerTest, ClearLogDailyIsReadButNeverWritten) {
  Synchronizer set;
  ReadSet(&set, {{"ClearLogDaily", "True"}});
  EXPECT_TRUE(set.ClearLogDaily);
  EXPECT_EQ(WrittenValue(set, "ClearLogDaily"), "<absent>");

  INIFileSection section("Sec: Test");
  set.WriteToINI(section);
  Synchronizer reloaded;
  reloaded.ReadFromINI(section);
  EXPECT_FALSE(reloaded.ClearLogDaily);
}

TEST_F(SynchronizerTest, LastSyncDateIsReadFromNumberOrDateText) {
  struct Case {
    std::string text;
    double date;
  } cases[] = {
      {"45000.5", 45000.5},
      {"1", 1},
      {"2023-01-02 15:04:05", Date(2023, 1, 2, 15, 4, 5)},
      {"1/2/2023 3:04:05 PM", Date(2023, 1, 2, 15, 4, 5)},
      {"12/31/1999 12:00:00 AM", Date(1999, 12, 31)},
      {"12/31/1999 12:30:00 PM", Date(1999, 12, 31, 12, 30, 0)},
      {"1/2/2023", Date(2023, 1, 2)},
      {"2023-01-02", Date(2023, 1, 2)},
  };
  for (const Case& c : cases) {
    Synchronizer set;
    ReadSet(&set, {{"LastSyncDate", c.text}});
    EXPECT_DOUBLE_EQ(set.LastSyncDate, c.date) << "text \"" << c.text << "\"";
  }
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SynchronizerTest, UnreadableLastSyncDateMeansNever) {
  for (const std::string text : {"", "garbage", "13/45/2023",
                                 "2023-02-30 10:00:00", "yesterday", "12abc"}) {
    Synchronizer set;
    set.LastSyncDate = 100;
    ReadSet(&set, {{"LastSyncDate", text}});
    EXPECT_EQ(set.LastSyncDate, 0) << "text \"" << text << "\"";
  }
  Synchronizer missing;
  missing.LastSyncDate = 100;
  ReadSet(&missing, {});
  EXPECT_EQ(missing.LastSyncDate, 0);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SynchronizerTest, WriteToINIWritesEveryKeyInOrder) {
  Synchronizer set;
  ReadSet(&set, {});
  set.Name = "Docs";
  set.PathAdd("C:\\Work\\Docs");
  set.PathAdd("E:\\Backup\\Docs");
  set.SetPathFlags(2, 5);
  set.Recursive = false;
  set.SyncFolders = true;
  set.DefActionFlags = 9;
  set.WarnFutureDate = false;
  set.UseCreateDate = true;
  set.ClearArchiveOnCopy = true;
  set.MatchCDateOnCopy = false;
  set.UseLogFile = true;
  set.LogFileName = "C:\\sync.log";
  set.ClearLogDaily = true;
  set.SmartSync = false;
  set.AllowSmartDeletes = true;
  set.LastSyncDate = Date(2022, 3, 4, 5, 6, 7);
  set.ArchiveDeleted = true;
  set.ArchiveOverwritten = false;
  set.ArchivePath = "C:\\Archive";
  set.FileSpec = "*.*";
  set.ExcludeSpec = "*.bak";
  set.FolderSpec = "";
  set.FolderExcludeSpec = "Temp;Cache";
  set.ConflictTypes(1).Action = 1;
  set.ConflictTypes(1).CreateDest = false;
  const Entries expected = {
      {"Dir1", "C:\\Work\\Docs"},
      {"Dir1Flags", "4"},
      {"Dir2", "E:\\Backup\\Docs"},
      {"Dir2Flags", "5"},
      {"Recursive", "False"},
      {"SyncFolders", "True"},
      {"DefActionFlags", "9"},
      {"WarnFutureDate", "False"},
      {"UseCreateDate", "True"},
      {"ClearArchiveOnCopy", "True"},
      {"MatchCDateOnCopy", "False"},
      {"UseLogFile", "True"},
      {"LogFileName", "C:\\sync.log"},
      {"SmartSync", "False"},
      {"AllowSmartDeletes", "True"},
      {"LastSyncDate", "2022-03-04 05:06:07"},
      {"LastSyncMoment", "2022-03-04T05:06:07+00:00"},
      {"ArchiveDeleted", "True"},
      {"ArchiveOverwritten", "False"},
      {"ArchivePath", "C:\\Archive"},
      {"FileSpec", "*.*"},
      {"ExcludeSpec", "*.bak"},
      {"FolderSpec", ""},
      {"FolderExcludeSpec", "Temp;Cache"},
      {"CR:Changed in one", "1"},
      {"CR:Missing", "3C+"},
      {"CR:All same", "1C"},
  };
  EXPECT_EQ(Written(set), expected);
}

TEST_F(SynchronizerTest, NewSetWritesItsDefaultsWithoutLastSyncDate) {
  Synchronizer set;
  const Entries expected = {
      {"Recursive", "True"},
      {"SyncFolders", "False"},
      {"DefActionFlags", "8"},
      {"WarnFutureDate", "True"},
      {"UseCreateDate", "True"},
      {"ClearArchiveOnCopy", "False"},
      {"MatchCDateOnCopy", "True"},
      {"UseLogFile", "False"},
      {"LogFileName", ""},
      {"SmartSync", "True"},
      {"AllowSmartDeletes", "True"},
      {"ArchiveDeleted", "False"},
      {"ArchiveOverwritten", "False"},
      {"ArchivePath", ""},
      {"FileSpec", ""},
      {"ExcludeSpec", ""},
      {"FolderSpec", ""},
      {"FolderExcludeSpec", ""},
  };
  EXPECT_EQ(Written(set), expected);
}

TEST_F(SynchronizerTest, LastSyncDateIsWrittenOnlyWhenLaterThanZero) {
  Synchronizer set;
  set.LastSyncDate = 0;
  EXPECT_EQ(WrittenValue(set, "LastSyncDate"), "<absent>");
  set.LastSyncDate = -3.5;
  EXPECT_EQ(WrittenValue(set, "LastSyncDate"), "<absent>");
  set.LastSyncDate = Date(2024, 2, 29, 23, 59, 58);
  EXPECT_EQ(WrittenValue(set, "LastSyncDate"), "2024-02-29 23:59:58");
}

TEST_F(SynchronizerTest, WrittenLastSyncDateReadsBackToTheSameMoment) {
  Synchronizer set;
  set.LastSyncDate = Date(2020, 11, 30, 17, 45, 12);
  INIFileSection section("Sec: Test");
  set.WriteToINI(section);
  Synchronizer reloaded;
  reloaded.ReadFromINI(section);
  EXPECT_NEAR(reloaded.LastSyncDate, set.LastSyncDate, 2.31e-5);
}

TEST_F(SynchronizerTest, WrittenSectionReadsBackToTheSameSettings) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\A"},
                 {"Dir1Flags", "21"},
                 {"Dir2", "C:\\B"},
                 {"Dir2Flags", "6"},
                 {"Recursive", "False"},
                 {"SyncFolders", "False"},
                 {"DefActionFlags", "25"},
                 {"FileSpec", "*.txt"},
                 {"ArchivePath", "C:\\Old"}});
  INIFileSection section("Sec: Test");
  set.WriteToINI(section);
  Synchronizer reloaded;
  ReadSet(&reloaded, EntriesOf(section));
  // Custom conflict settings lose their letters on the way back; they have
  // their own test.
  auto options = [](const Entries& entries) {
    Entries kept;
    for (const auto& entry : entries) {
      if (entry.first.compare(0, 3, "CR:") != 0) kept.push_back(entry);
    }
    return kept;
  };
  EXPECT_EQ(options(Written(reloaded)), options(EntriesOf(section)));
  EXPECT_EQ(options(EntriesOf(section)).size(), 22u);
}

TEST_F(SynchronizerTest, UpperCasePrefixAppliesCustomSettingIgnoringNameCase) {
  Synchronizer set;
  ReadSet(&set, {{"CR:changed IN ONE", "+C2"}});
  ASSERT_EQ(set.ConflictTypeCount(), 3);
  EXPECT_EQ(set.ConflictTypes(1).Action, 2);
  EXPECT_TRUE(set.ConflictTypes(1).CreateDest);
  EXPECT_FALSE(set.ConflictTypes(1).ListChecked);
  // The defaults stay as the catalogue gave them.
  EXPECT_EQ(set.ConflictTypes(1).DefAction, 3);
  EXPECT_TRUE(set.ConflictTypes(1).DefCreateDest);
}

TEST_F(SynchronizerTest, LowerCasePrefixIsIgnoredAndDroppedAtTheNextSave) {
  Synchronizer set;
  ReadSet(&set, {{"cr:Changed in one", "1"}, {"Cr:Missing", "+1"}});
  EXPECT_EQ(set.ConflictTypes(1).Action, 3);
  EXPECT_TRUE(set.ConflictTypes(1).CreateDest);
  EXPECT_EQ(set.ConflictTypes(2).Action, 3);
  const Entries written = Written(set);
  for (const auto& entry : written) {
    EXPECT_NE(entry.first, "cr:Changed in one");
    EXPECT_NE(entry.first, "Cr:Missing");
  }
  EXPECT_EQ(WrittenValue(set, "CR:Changed in one"), "3C");
}

TEST_F(SynchronizerTest, CustomSettingForUnknownTypeIsIgnored) {
  Synchronizer set;
  ReadSet(&set, {{"CR:No such type", "2"}, {"CR:", "2"}});
  ASSERT_EQ(set.ConflictTypeCount(), 3);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(set.ConflictTypes(i).Action, set.ConflictTypes(i).DefAction)
        << "type " << i;
  }
  EXPECT_EQ(WrittenValue(set, "CR:No such type"), "<absent>");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SynchronizerTest, CustomSettingAppliesToEveryTypeOfThatName) {
  INIFileSection types("Conflict Types");
  Fill(&types, {{"Twin", "1?1 DONOTHING*"}, {"TWIN", "N?N DONOTHING*"}});
  Synchronizer set;
  set.ReadConflictInfo(types);
  INIFileSection section("Sec: Test");
  section.AddVar("CR:twin", "2");
  set.ReadFromINI(section);
  ASSERT_EQ(set.ConflictTypeCount(), 2);
  EXPECT_EQ(set.ConflictTypes(1).Action, 2);
  EXPECT_EQ(set.ConflictTypes(2).Action, 2);
}

TEST_F(SynchronizerTest, CustomSettingAppliesToTypeWithoutConfiguration) {
  Synchronizer set;
  ReadSet(&set, {{"CR:All same", "2"}});
  EXPECT_EQ(set.ConflictTypes(3).Action, 2);
}

TEST_F(SynchronizerTest, CustomSettingLineIsWrittenForEveryConflictType) {
  Synchronizer set;
  ReadSet(&set, {{"CR:Missing", "C1"}});
  Entries custom;
  for (const auto& entry : Written(set)) {
    if (entry.first.compare(0, 3, "CR:") == 0) custom.push_back(entry);
  }
  const Entries expected = {
      {"CR:Changed in one", "3C"},
      {"CR:Missing", "1C"},
      {"CR:All same", "1C"},
  };
  EXPECT_EQ(custom, expected);
}

TEST_F(SynchronizerTest, SavedCustomSettingReadsBackWithOnlyItsNumber) {
  Synchronizer set;
  ReadSet(&set, {});
  // "Missing" is unchecked by its catalogue entry.
  EXPECT_EQ(WrittenValue(set, "CR:Missing"), "3C+");
  INIFileSection section("Sec: Test");
  set.WriteToINI(section);
  Synchronizer reloaded;
  ReadSet(&reloaded, EntriesOf(section));
  EXPECT_EQ(reloaded.ConflictTypes(2).Action, 3);
  EXPECT_FALSE(reloaded.ConflictTypes(2).CreateDest);
  EXPECT_TRUE(reloaded.ConflictTypes(2).ListChecked);
}

TEST_F(SynchronizerTest, ReadConflictInfoKeepsEntriesWithPatternsInOrder) {
  Synchronizer set;
  INIFileSection types("Conflict Types");
  Fill(&types, kCatalogue);
  set.ReadConflictInfo(types);
  ASSERT_EQ(set.ConflictTypeCount(), 3);
  EXPECT_EQ(set.ConflictTypes(1).Name, "Changed in one");
  EXPECT_EQ(set.ConflictTypes(1).Description, "Changed in one folder");
  EXPECT_EQ(set.ConflictTypes(1).Action, 3);
  EXPECT_EQ(set.ConflictTypes(1).AllowedActions, 11);
  EXPECT_EQ(set.ConflictTypes(2).Name, "Missing");
  EXPECT_FALSE(set.ConflictTypes(2).ListChecked);
  EXPECT_EQ(set.ConflictTypes(3).Name, "All same");
  EXPECT_FALSE(set.ConflictTypes(3).Configurable);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SynchronizerTest, ReadConflictInfoSkipsComments) {
  INIFileSection types("Conflict Types");
  types.AddVar(";", "110 DONOTHING*");
  types.AddVar("Real", "110 DONOTHING*");
  types.AddVar(";", "111");
  Synchronizer set;
  set.ReadConflictInfo(types);
  ASSERT_EQ(set.ConflictTypeCount(), 1);
  EXPECT_EQ(set.ConflictTypes(1).Name, "Real");
}

TEST_F(SynchronizerTest, ReadConflictInfoReplacesTheEarlierList) {
  Synchronizer set;
  INIFileSection first("Conflict Types");
  Fill(&first, kCatalogue);
  set.ReadConflictInfo(first);
  INIFileSection second("Conflict Types");
  second.AddVar("Only", "N?N USENEWEST*");
  set.ReadConflictInfo(second);
  ASSERT_EQ(set.ConflictTypeCount(), 1);
  EXPECT_EQ(set.ConflictTypes(1).Name, "Only");
}

TEST_F(SynchronizerTest, EntryWithMalformedFirstPatternIsNotAdded) {
  INIFileSection types("Conflict Types");
  Fill(&types, {{"Broken", "0x1 110 DONOTHING*"},
                {"Half", "110 0x1 DONOTHING*"},
                {"Fine", "111"}});
  Synchronizer set;
  set.ReadConflictInfo(types);
  ASSERT_EQ(set.ConflictTypeCount(), 2);
  EXPECT_EQ(set.ConflictTypes(1).Name, "Half");
  EXPECT_EQ(set.ConflictTypes(1).FlagSetCount(), 1);
  EXPECT_EQ(set.ConflictTypes(2).Name, "Fine");
  ASSERT_EQ(ui_.messages.size(), 3u);
  for (const RecordedMessage& m : ui_.messages) {
    EXPECT_EQ(m.text, kIniError);
    EXPECT_EQ(m.style, 16);
    EXPECT_EQ(m.caption, "Pairwell");
  }
}

TEST_F(SynchronizerTest, GetConflictForSituReturnsTheFirstOfTwoMatches) {
  // Situation 18: copies state 1 and missing from a source folder, which
  // both "Changed in one" and "Missing" accept.
  Synchronizer set;
  ReadSet(&set, {});
  EXPECT_TRUE(set.ConflictTypes(1).MatchesSitu(18));
  EXPECT_TRUE(set.ConflictTypes(2).MatchesSitu(18));
  EXPECT_EQ(set.GetConflictForSitu(18), 1);
  EXPECT_EQ(set.GetConflictForSitu(2), 1);
  EXPECT_EQ(set.GetConflictForSitu(16), 2);
  EXPECT_EQ(set.GetConflictForSitu(0), 3);

  INIFileSection reversed("Conflict Types");
  Fill(&reversed,
       {{"Missing", "?1? DELETEALL*"}, {"Changed in one", "??1 USENEWEST*"}});
  set.ReadConflictInfo(reversed);
  EXPECT_EQ(set.GetConflictForSitu(18), 1);
  EXPECT_EQ(set.ConflictTypes(1).Name, "Missing");
}

TEST_F(SynchronizerTest, GetConflictForSituReturnsMinusOneWhenNoneMatches) {
  Synchronizer set;
  EXPECT_EQ(set.GetConflictForSitu(0), -1);
  ReadSet(&set, {});
  // Copies state 3, nothing missing: none of the three accepts it.
  EXPECT_EQ(set.GetConflictForSitu(3 * 2), -1);
}

TEST_F(SynchronizerTest, EfLastSyncDateIsZeroWithoutSmartSync) {
  Synchronizer set;
  set.LastSyncDate = 44000.25;
  set.SmartSync = true;
  EXPECT_EQ(set.EfLastSyncDate(), 44000.25);
  set.SmartSync = false;
  EXPECT_EQ(set.EfLastSyncDate(), 0);
  EXPECT_EQ(set.LastSyncDate, 44000.25);
}

TEST_F(SynchronizerTest, PathAddAppendsEnabledSourceFolders) {
  Synchronizer set;
  set.PathAdd("C:\\One");
  set.PathAdd("C:\\Two");
  ASSERT_EQ(set.PathCount(), 2);
  EXPECT_EQ(set.Path(1), "C:\\One");
  EXPECT_EQ(set.Path(2), "C:\\Two");
  EXPECT_EQ(set.PathFlags(1), 4);
  EXPECT_EQ(set.PathFlags(2), 4);
}

TEST_F(SynchronizerTest, PathAddStopsAtEightFoldersSilently) {
  Synchronizer set;
  for (int i = 1; i <= 9; ++i) set.PathAdd("C:\\F" + std::to_string(i));
  ASSERT_EQ(set.PathCount(), 8);
  EXPECT_EQ(set.Path(8), "C:\\F8");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(SynchronizerTest, PathRemoveMovesLaterFoldersDown) {
  Synchronizer set;
  set.PathAdd("C:\\A");
  set.PathAdd("C:\\B");
  set.PathAdd("C:\\C");
  set.SetPathFlags(3, 17);
  set.PathRemove(2);
  ASSERT_EQ(set.PathCount(), 2);
  EXPECT_EQ(set.Path(1), "C:\\A");
  EXPECT_EQ(set.Path(2), "C:\\C");
  EXPECT_EQ(set.PathFlags(2), 17);
  set.PathRemove(1);
  ASSERT_EQ(set.PathCount(), 1);
  EXPECT_EQ(set.Path(1), "C:\\C");
}

TEST_F(SynchronizerTest, SetPathAndFlagsReplaceTheFolderEntry) {
  Synchronizer set;
  set.PathAdd("C:\\A");
  set.SetPath(1, "D:\\Z");
  set.SetPathFlags(1, 26);
  EXPECT_EQ(set.Path(1), "D:\\Z");
  EXPECT_EQ(set.PathFlags(1), 26);
}

TEST_F(SynchronizerTest, SetPathFlagOrsAndClearPathFlagMasksBits) {
  Synchronizer set;
  set.PathAdd("C:\\A");
  set.SetPathFlag(1, kFolderAllowBaseCreation | kFolderSkipOnError);
  EXPECT_EQ(set.PathFlags(1), 4 | 8 | 16);
  set.SetPathFlag(1, 4);
  EXPECT_EQ(set.PathFlags(1), 28);
  set.ClearPathFlag(1, kFolderEnabled);
  EXPECT_EQ(set.PathFlags(1), 24);
  set.ClearPathFlag(1, 1 | 8);
  EXPECT_EQ(set.PathFlags(1), 16);
  set.SetPathFlag(1, kFolderMergeTo);
  EXPECT_EQ(set.PathFlags(1) & kFolderTypeMask, kFolderMergeTo);
}

TEST_F(SynchronizerTest, ClearRemovesOnlyTheFolders) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\A"}, {"Dir2", "C:\\B"}, {"FileSpec", "*.c"}});
  set.Clear();
  EXPECT_EQ(set.PathCount(), 0);
  EXPECT_EQ(set.FileSpec, "*.c");
  EXPECT_EQ(set.ConflictTypeCount(), 3);
  set.PathAdd("C:\\New");
  EXPECT_EQ(set.Path(1), "C:\\New");
}

TEST_F(SynchronizerTest, SetConflictTypesCopiesTheDescriptor) {
  Synchronizer set;
  ReadSet(&set, {});
  ConflictDescriptor edited;
  edited.CopyFrom(set.ConflictTypes(2));
  edited.Action = 2;
  edited.CreateDest = false;
  edited.ListChecked = true;
  set.SetConflictTypes(2, edited);
  EXPECT_EQ(set.ConflictTypes(2).Action, 2);
  EXPECT_FALSE(set.ConflictTypes(2).CreateDest);
  EXPECT_TRUE(set.ConflictTypes(2).ListChecked);
  EXPECT_EQ(set.ConflictTypes(2).Name, "Missing");
  EXPECT_EQ(WrittenValue(set, "CR:Missing"), "2");
}

TEST_F(SynchronizerTest, IndexOutsideTheListsThrowsOutOfRange) {
  Synchronizer set;
  ReadSet(&set, {{"Dir1", "C:\\A"}, {"Dir2", "C:\\B"}});
  for (int i : {0, -1, 3}) {
    SCOPED_TRACE("folder index " + std::to_string(i));
    EXPECT_THROW(set.Path(i), std::out_of_range);
    EXPECT_THROW(set.SetPath(i, "x"), std::out_of_range);
    EXPECT_THROW(set.PathFlags(i), std::out_of_range);
    EXPECT_THROW(set.SetPathFlags(i, 4), std::out_of_range);
    EXPECT_THROW(set.SetPathFlag(i, 8), std::out_of_range);
    EXPECT_THROW(set.ClearPathFlag(i, 8), std::out_of_range);
    EXPECT_THROW(set.PathRemove(i), std::out_of_range);
  }
  EXPECT_EQ(set.PathCount(), 2);
  for (int i : {0, 4}) {
    SCOPED_TRACE("conflict type index " + std::to_string(i));
    EXPECT_THROW(set.ConflictTypes(i), std::out_of_range);
    EXPECT_THROW(set.SetConflictTypes(i, ConflictDescriptor()),
                 std::out_of_range);
  }
  EXPECT_THROW(set.WPath(1), std::out_of_range);
  EXPECT_THROW(set.WPathFlags(1), std::out_of_range);
}

// Runs in Tokyo unless a test moves on.
class TimeZoneTest : public SynchronizerTest {
 protected:
  static void UseZone(const char* zone) { ScopedTimeZone::Set(zone); }

  ScopedTimeZone zone_{"JST-9"};
};

TEST_F(TimeZoneTest, LastSyncMomentKeepsTheDateAcrossTimeZones) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  Synchronizer set;
  set.SetLastSyncDate(Date(2026, 11, 23, 13, 0, 5));
  EXPECT_EQ(WrittenValue(set, "LastSyncDate"), "2026-11-23 13:00:05");
  EXPECT_EQ(WrittenValue(set, "LastSyncMoment"), "2026-11-23T13:00:05+09:00");
  INIFileSection section("Sec: Test");
  set.WriteToINI(section);

  UseZone("PST8");
  Synchronizer later;
  later.ReadFromINI(section);
  EXPECT_EQ(FormatGeneralDate(later.LastSyncDate), "2026-11-22 20:00:05");
  // Written again in this zone, the text follows the zone; the moment stays.
  EXPECT_EQ(WrittenValue(later, "LastSyncDate"), "2026-11-22 20:00:05");
  EXPECT_EQ(WrittenValue(later, "LastSyncMoment"), "2026-11-22T20:00:05-08:00");
}

TEST_F(TimeZoneTest, DateEditedByHandWinsOverTheMomentBesideIt) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  Synchronizer set;
  ReadSet(&set, {{"LastSyncDate", "2026-01-02 03:04:05"},
                 {"LastSyncMoment", "2025-06-01T00:00:00+09:00"}});
  EXPECT_EQ(FormatGeneralDate(set.LastSyncDate), "2026-01-02 03:04:05");
  EXPECT_EQ(WrittenValue(set, "LastSyncMoment"), "2026-01-02T03:04:05+09:00");
  // A moment that is not one is ignored the same way.
  ReadSet(&set, {{"LastSyncDate", "2026-01-02 03:04:05"},
                 {"LastSyncMoment", "soon"}});
  EXPECT_EQ(FormatGeneralDate(set.LastSyncDate), "2026-01-02 03:04:05");
}

TEST_F(TimeZoneTest, MomentWithoutADateMeansNeverSynchronized) {
  Synchronizer set;
  ReadSet(&set, {{"LastSyncMoment", "2026-01-02T03:04:05+09:00"}});
  EXPECT_EQ(set.LastSyncDate, 0);
  EXPECT_EQ(WrittenValue(set, "LastSyncMoment"), "<absent>");
  EXPECT_EQ(set.UnusableLastSyncDate(), "");
}

}  // namespace
}  // namespace pairwell
