#include "engine/action_texts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "config/ini_file_section.h"
#include "engine/action_edits.h"
#include "engine/action_summary.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
#include "support/scanned_folders.h"
#include "support/section_entries.h"
#include "support/temp_dir.h"
#include "support/test_dates.h"
#include "util/date_time.h"
#include "util/file_system.h"

namespace pairwell {
namespace {

double Date(int year, int month, int day, int hour = 0, int minute = 0) {
  return MakeDate(year, month, day, hour, minute);
}


// Without a last-sync date, for three source folders:
//   1 "Changed" (checked): all dates differ;
//   2 "Missing" (not checked): missing from a source folder;
//   3 "Sizes" (not configurable): equal dates, sizes differ.
// Two equal dates and one different match no type.
const Entries kCatalogue = {
    {"Changed", "N01 USENEWEST*"},
    {"+Missing", "N1? DELETEALL*"},
    {"*Sizes", "N03 DONOTHING*"},
};

std::vector<CopyRecord> Same() {
  return {Present(Fresh()), Present(Fresh()), Present(Fresh())};
}
std::vector<CopyRecord> Changed() {
  return {Present(Old()), Present(Fresh()), Present(Fresher())};
}
std::vector<CopyRecord> MissingOne() {
  return {Present(Fresh()), kMissing, Present(Fresh())};
}
std::vector<CopyRecord> Sizes() {
  return {Present(Fresh(), 1), Present(Fresh(), 2), Present(Fresh(), 1)};
}
std::vector<CopyRecord> Unmatched() {
  return {Present(Fresh()), Present(Fresh()), Present(Fresher())};
}

// A sync set over real folders "A", "B", ... (one per folder type given)
// under a temporary folder, each holding the files f1.txt .. fN.txt; after
// the scan the run has those N files.
class ScannedSet {
 public:
  ScannedSet(const std::vector<std::int32_t>& types, int files,
             const Entries& catalogue = {}) {
    std::vector<std::string> names;
    for (int f = 1; f <= files; ++f) {
      names.push_back("f" + std::to_string(f) + ".txt");
    }
    ScanFolders(set, dir, types, names, catalogue);
  }

  SyncFile& file(long i) { return set.WFile(i); }

  // Gives every working folder of file i its copy record, in folder order.
  void SetCopies(long i, const std::vector<CopyRecord>& copies) {
    if (static_cast<int>(copies.size()) != set.WPathCount()) {
      throw std::invalid_argument("one record per folder is needed");
    }
    for (std::size_t k = 0; k < copies.size(); ++k) {
      file(i).SetCopy(static_cast<int>(k + 1), copies[k]);
    }
  }

  TempDir dir;
  Synchronizer set;
};

const std::vector<std::int32_t> kThreeSources = {kFolderSource, kFolderSource,
                                                 kFolderSource};

class ActionTextsTest : public ::testing::Test {
 protected:
  RecordingUserInterface ui_;
};

// --- Conflicts ----------------------------------------------------------

TEST_F(ActionTextsTest, ConflictIndexMeaning) {
  ScannedSet s(kThreeSources, 1, kCatalogue);
  const struct {
    int index;
    bool conflict;
    bool needs_confirmation;
  } kCases[] = {
      {-1, true, true}, {0, false, false}, {1, true, true},
      {2, true, false}, {3, false, false},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(IsConflict(s.set, c.index), c.conflict) << "index " << c.index;
    EXPECT_EQ(NeedsConfirmation(s.set, c.index), c.needs_confirmation)
        << "index " << c.index;
  }
}

TEST_F(ActionTextsTest, NonConfigurableTypeIsNoConflictEvenWhenChecked) {
  ScannedSet s(kThreeSources, 1, kCatalogue);
  ASSERT_FALSE(s.set.ConflictTypes(3).Configurable);
  ASSERT_TRUE(s.set.ConflictTypes(3).ListChecked);
  EXPECT_FALSE(IsConflict(s.set, 3));
  EXPECT_FALSE(NeedsConfirmation(s.set, 3));
}

TEST_F(ActionTextsTest, CountConflictsSortsFilesByTheirType) {
  ScannedSet s(kThreeSources, 6, kCatalogue);
  s.SetCopies(1, Same());
  s.SetCopies(2, Changed());
  s.SetCopies(3, Changed());
  s.SetCopies(4, MissingOne());
  s.SetCopies(5, Sizes());
  s.SetCopies(6, Unmatched());
  const int expected_index[] = {0, 1, 1, 2, 3, -1};
  for (long i = 1; i <= 6; ++i) {
    ASSERT_EQ(s.file(i).ComputeConflictIndex(), expected_index[i - 1])
        << "file " << i;
  }
  const ConflictCounts counts = CountConflicts(s.set);
  // Two checked and one unmatched need confirmation; one is handled.
  EXPECT_EQ(counts.need_confirmation, 3);
  EXPECT_EQ(counts.auto_handled, 1);
}

TEST_F(ActionTextsTest, UncheckingATypeMovesItsFilesToAutomatic) {
  ScannedSet s(kThreeSources, 3, kCatalogue);
  s.SetCopies(1, Changed());
  s.SetCopies(2, Changed());
  s.SetCopies(3, Unmatched());
  s.set.ConflictTypes(1).StringToCustomConfig("+3");
  ASSERT_FALSE(s.set.ConflictTypes(1).ListChecked);
  const ConflictCounts counts = CountConflicts(s.set);
  EXPECT_EQ(counts.need_confirmation, 1);
  EXPECT_EQ(counts.auto_handled, 2);
}

TEST_F(ActionTextsTest, NonConfigurableTypeCountsNowhereEvenUnchecked) {
  ScannedSet s(kThreeSources, 2, kCatalogue);
  s.SetCopies(1, Sizes());
  s.SetCopies(2, Same());
  s.set.ConflictTypes(3).StringToCustomConfig("+1");
  ASSERT_FALSE(s.set.ConflictTypes(3).ListChecked);
  const ConflictCounts counts = CountConflicts(s.set);
  EXPECT_EQ(counts.need_confirmation, 0);
  EXPECT_EQ(counts.auto_handled, 0);
}

// --- Statistics line ----------------------------------------------------

TEST_F(ActionTextsTest, QuietSetShowsOnlyTheFileCount) {
  ScannedSet s(kThreeSources, 3, kCatalogue);
  for (long i = 1; i <= 3; ++i) ASSERT_EQ(s.file(i).Action, kDoNothing);
  EXPECT_EQ(StatsText(s.set, CountConflicts(s.set)), "3 files total");
}

TEST_F(ActionTextsTest, StatsLineHasEveryPartInOrder) {
  ScannedSet s(kThreeSources, 6, kCatalogue);
  s.SetCopies(1, Same());
  s.SetCopies(2, Changed());
  s.SetCopies(3, Changed());
  s.SetCopies(4, MissingOne());
  s.SetCopies(5, Sizes());
  s.SetCopies(6, Unmatched());
  const std::int32_t actions[] = {kDoNothing, kUseNewest, kDeleteAll,
                                  kUndecided, kUndecided, 7};
  for (long i = 1; i <= 6; ++i) s.file(i).Action = actions[i - 1];
  // Counted first: the types above are written for a set never synchronized.
  const ConflictCounts counts = CountConflicts(s.set);
  s.set.LastSyncDate = Date(2026, 11, 2, 15, 4);
  EXPECT_EQ(StatsText(s.set, counts),
            "4 conflicts, 3 actions queued, 2 undecided, 6 files total "
            "(Last sync: Nov 2, 2026 03:04PM)");
}

TEST_F(ActionTextsTest, StatsConflictPartByCounters) {
  ScannedSet s(kThreeSources, 2);
  s.file(1).Action = kDoNothing;
  s.file(2).Action = kDoNothing;
  const struct {
    long need;
    long automatic;
    std::string expected;
  } kCases[] = {
      {2, 1, "3 conflicts, 2 files total"},
      {2, 0, "2 conflicts (requiring confirmation), 2 files total"},
      {0, 1, "1 conflicts (automatically handled), 2 files total"},
      {0, 0, "2 files total"},
      {1500, 0, "1500 conflicts (requiring confirmation), 2 files total"},
      {1000, 234, "1234 conflicts, 2 files total"},
  };
  for (const auto& c : kCases) {
    ConflictCounts counts;
    counts.need_confirmation = c.need;
    counts.auto_handled = c.automatic;
    EXPECT_EQ(StatsText(s.set, counts), c.expected)
        << "need " << c.need << " automatic " << c.automatic;
  }
}

TEST_F(ActionTextsTest, DoNothingIsNeitherQueuedNorUndecided) {
  ScannedSet s(kThreeSources, 4);
  const struct {
    std::vector<std::int32_t> actions;
    std::string expected;
  } kCases[] = {
      {{1, 1, 1, 1}, "4 files total"},
      {{1, 2, 1, 1}, "1 actions queued, 4 files total"},
      {{3, 2, 1, 1}, "2 actions queued, 4 files total"},
      {{0, 1, 1, 1}, "1 undecided, 4 files total"},
      {{0, 0, 3, 9}, "2 actions queued, 2 undecided, 4 files total"},
  };
  for (const auto& c : kCases) {
    std::string input;
    for (std::size_t i = 0; i < c.actions.size(); ++i) {
      s.file(static_cast<long>(i + 1)).Action = c.actions[i];
      input += std::to_string(c.actions[i]) + " ";
    }
    EXPECT_EQ(StatsText(s.set, ConflictCounts{}), c.expected)
        << "actions " << input;
  }
}

TEST_F(ActionTextsTest, LastSyncDateIsShownInTwelveHourForm) {
  ScannedSet s(kThreeSources, 1);
  s.file(1).Action = kDoNothing;
  const struct {
    double date;
    std::string expected;
  } kCases[] = {
      {Date(2026, 11, 2, 15, 4),
       "1 files total (Last sync: Nov 2, 2026 03:04PM)"},
      {Date(2026, 1, 15, 9, 7),
       "1 files total (Last sync: Jan 15, 2026 09:07AM)"},
      {Date(2025, 3, 9, 0, 30),
       "1 files total (Last sync: Mar 9, 2025 12:30AM)"},
      {Date(2025, 12, 31, 12, 0),
       "1 files total (Last sync: Dec 31, 2025 12:00PM)"},
  };
  for (const auto& c : kCases) {
    s.set.LastSyncDate = c.date;
    EXPECT_EQ(StatsText(s.set, ConflictCounts{}), c.expected)
        << "date " << FormatGeneralDate(c.date);
  }
}

TEST_F(ActionTextsTest, LastSyncIsLeftOutWithoutSmartSync) {
  ScannedSet s(kThreeSources, 1);
  s.file(1).Action = kDoNothing;
  s.set.LastSyncDate = Date(2026, 11, 2, 15, 4);
  s.set.SmartSync = false;
  EXPECT_EQ(StatsText(s.set, ConflictCounts{}), "1 files total");
}

// --- Sizes and attributes -----------------------------------------------

TEST_F(ActionTextsTest, GetFileSizeString) {
  const struct {
    std::int32_t size;
    const char* expected;
  } kCases[] = {
      {0, "0 bytes"},
      {1, "1 bytes"},
      {-1, "-1 bytes"},
      {1023, "1023 bytes"},
      {1024, "1.00 KB"},
      {1536, "1.50 KB"},
      {1152, "1.13 KB"},  // halves round up
      {1179648, "1.13 MB"},
      {10240, "10.00 KB"},
      {1048575, "1024.00 KB"},
      {1048576, "1.00 MB"},
      {1572864, "1.50 MB"},
      {kSizeCap, "128.00 MB"},
      {std::numeric_limits<std::int32_t>::max(), "2048.00 MB"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(GetFileSizeString(c.size), c.expected) << "size " << c.size;
  }
}

TEST_F(ActionTextsTest, GetAttribString) {
  const struct {
    std::uint16_t attributes;
    const char* expected;
  } kCases[] = {
      {0, ""},
      {kAttrReadOnly, "R"},
      {kAttrHidden, "H"},
      {kAttrSystem, "S"},
      {kAttrDirectory, "D"},
      {kAttrArchive, "A"},
      {kAttrReadOnly | kAttrArchive | kAttrHidden, "HRA"},
      {kAttrArchive | kAttrDirectory, "DA"},
      {kAttrSystem | kAttrReadOnly, "SR"},
      {55, "DHSRA"},
      {8 | 64 | 128 | 256, ""},
      {0xFFFF, "DHSRA"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(GetAttribString(c.attributes), c.expected)
        << "attributes " << c.attributes;
  }
}

// --- Status column ------------------------------------------------------

TEST_F(ActionTextsTest, StatusOfNewOldAbsentFileInCheckedConflict) {
  ScannedSet s(kThreeSources, 1, {{"Gone", "?1? USENEWEST*"}});
  s.set.LastSyncDate = SyncDate();
  s.SetCopies(1, {Present(Fresh()), Present(Old()), kMissing});
  ASSERT_EQ(s.file(1).ComputeConflictIndex(), 1);
  EXPECT_EQ(StatusText(s.file(1)), "NO_!!");
}

TEST_F(ActionTextsTest, StatusConflictMarkFollowsTheType) {
  const struct {
    Entries catalogue;
    std::string expected;
  } kCases[] = {
      {{{"Gone", "?1? USENEWEST*"}}, "NO_!!"},
      {{{"+Gone", "?1? USENEWEST*"}}, "NO_!"},
      {{{"*Gone", "?1? USENEWEST*"}}, "NO_"},
      {{{"*+Gone", "?1? USENEWEST*"}}, "NO_"},
      {{{"Other", "?0? DONOTHING*"}}, "NO_!!"},
      {{}, "NO_!!"},
  };
  for (const auto& c : kCases) {
    ScannedSet s(kThreeSources, 1, c.catalogue);
    s.set.LastSyncDate = SyncDate();
    s.SetCopies(1, {Present(Fresh()), Present(Old()), kMissing});
    std::string input;
    for (const auto& entry : c.catalogue) {
      input += entry.first + "=" + entry.second + " ";
    }
    EXPECT_EQ(StatusText(s.file(1)), c.expected) << "catalogue " << input;
  }
}

TEST_F(ActionTextsTest, StatusOfAllSameFileHasNoMark) {
  ScannedSet s(kThreeSources, 1, {{"Any", "??? DELETEALL*"}});
  s.set.LastSyncDate = SyncDate();
  s.SetCopies(1, {Present(Old()), Present(Old()), Present(Old())});
  EXPECT_EQ(StatusText(s.file(1)), "OOO");
}

TEST_F(ActionTextsTest, WithoutLastSyncEveryPresentCopyIsNew) {
  ScannedSet s({kFolderSource, kFolderMirrorTo, kFolderMergeTo}, 1,
               {{"*Any", "??? DONOTHING*"}});
  s.SetCopies(1, {Present(Old()), kMissing, Present(Fresh())});
  EXPECT_EQ(StatusText(s.file(1)), "N_N");
  s.set.LastSyncDate = SyncDate();
  s.set.SmartSync = false;
  EXPECT_EQ(StatusText(s.file(1)), "N_N");
}

TEST_F(ActionTextsTest, StatusComparesEffectiveDatesWithTheLastSync) {
  ScannedSet s(kThreeSources, 1, {{"*Any", "??? DONOTHING*"}});
  s.set.LastSyncDate = SyncDate();
  s.set.UseCreateDate = true;
  // A copy dated at the last sync is old; a copy created after it and
  // archived counts by its create date.
  s.SetCopies(1,
              {Present(SyncDate()), Present(Old(), 100, kAttrArchive, Fresh()),
               Present(Old(), 100, 0, Fresh())});
  EXPECT_EQ(StatusText(s.file(1)), "ONO");
}

// --- Action column ------------------------------------------------------

TEST_F(ActionTextsTest, ActionText) {
  ScannedSet s(kThreeSources, 1);
  // Copy 3 is the newest.
  s.SetCopies(1, {Present(Old()), Present(Fresh()), Present(Fresher())});
  const struct {
    std::int32_t action;
    std::int32_t source;
    std::uint16_t flags;
    const char* expected;
  } kCases[] = {
      {kDoNothing, 1, 0, "Do Nothing"},
      {kDoNothing, 1, kFlagNoEffect, "Do Nothing"},
      {kDeleteAll, 1, 0, "Delete all"},
      {kDeleteAll, 1, kFlagCreate | kFlagDeleteReadOnly, "Delete all"},
      {kDeleteAll, 1, kFlagNoEffect, "Delete all (no effect)"},
      {kUseNewest, 3, 0, "Copy #3 (newest)"},
      {kUseNewest, 2, 0, "Copy #2"},
      {kUseNewest, 1, kFlagCreate, "Copy #1"},
      {kUseNewest, 3, kFlagNoEffect, "Copy #3 (no effect)"},
      {kUseNewest, 2, kFlagNoEffect | kFlagCreate, "Copy #2 (no effect)"},
      {kUndecided, 1, 0, "<Undecided>"},
      {kUndecided, 3, kFlagNoEffect, "<Undecided>"},
      {5, 1, 0, "<Undecided>"},
      {-1, 1, 0, "<Undecided>"},
  };
  for (const auto& c : kCases) {
    s.file(1).Action = c.action;
    s.file(1).SourceIndex = c.source;
    s.file(1).ActionFlags = c.flags;
    EXPECT_EQ(ActionText(s.file(1)), c.expected)
        << "action " << c.action << " source " << c.source << " flags "
        << c.flags;
  }
}

TEST_F(ActionTextsTest, NoEffectTakesPrecedenceOverNewest) {
  ScannedSet s(kThreeSources, 1);
  s.SetCopies(1, Same());
  s.file(1).Action = kUseNewest;
  s.file(1).SourceIndex = 1;
  s.file(1).ActionFlags = kFlagCreate;
  ASSERT_EQ(s.file(1).GetNewestFileIndex(true), 1);
  EXPECT_EQ(ActionText(s.file(1)), "Copy #1 (newest)");
  s.file(1).CalcNoEffect();
  EXPECT_EQ(ActionText(s.file(1)), "Copy #1 (no effect)");
}

// --- Confirm window rules -------------------------------------------------

// kCatalogue with descriptions, in the same order.
const Entries kDescribed = {
    {"Changed", "N01 USENEWEST* \"Every copy changed.\""},
    {"+Missing", "N1? DELETEALL* \"A source lacks the file.\""},
    {"*Sizes", "N03 DONOTHING* \"Only the sizes differ.\""},
};

TEST_F(ActionTextsTest, MatchesShowModeByConflictAndAction) {
  ScannedSet s(kThreeSources, 5, kCatalogue);
  s.SetCopies(1, Same());        // 0
  s.SetCopies(2, Changed());     // 1, checked
  s.SetCopies(3, MissingOne());  // 2, handled automatically
  s.SetCopies(4, Sizes());       // 3, no conflict
  s.SetCopies(5, Unmatched());   // -1
  const std::int32_t actions[] = {kDoNothing, kUseNewest, kDeleteAll,
                                  kUndecided, kUndecided};
  for (long i = 1; i <= 5; ++i) s.file(i).Action = actions[i - 1];
  const struct {
    int mode;
    std::vector<bool> listed;  // files 1..5
  } kCases[] = {
      {kShowNeedConfirmation, {false, true, false, false, true}},
      {kShowAllConflicts, {false, true, true, false, true}},
      {kShowMarkedForAction, {false, true, true, false, false}},
      {kShowUndecided, {false, false, false, true, true}},
      {kShowAllFiles, {true, true, true, true, true}},
      {-1, {true, true, true, true, true}},
      {7, {true, true, true, true, true}},
  };
  for (const auto& c : kCases) {
    for (long i = 1; i <= 5; ++i) {
      EXPECT_EQ(MatchesShowMode(s.file(i), c.mode), c.listed[i - 1])
          << "mode " << c.mode << " file " << i;
    }
  }
}

TEST_F(ActionTextsTest, DoNothingIsNotMarkedForAction) {
  ScannedSet s(kThreeSources, 1, kCatalogue);
  s.SetCopies(1, Changed());
  s.file(1).Action = kDoNothing;
  EXPECT_FALSE(MatchesShowMode(s.file(1), kShowMarkedForAction));
  EXPECT_FALSE(MatchesShowMode(s.file(1), kShowUndecided));
  s.file(1).Action = 9;
  EXPECT_TRUE(MatchesShowMode(s.file(1), kShowMarkedForAction));
}

TEST_F(ActionTextsTest, ConflictDescriptionText) {
  ScannedSet s(kThreeSources, 1, kDescribed);
  EXPECT_EQ(ConflictDescriptionText(s.set, 0), "No conflict; all files match");
  EXPECT_EQ(ConflictDescriptionText(s.set, -1),
            "Unrecognized situation (INI file is missing or incomplete)");
  EXPECT_EQ(ConflictDescriptionText(s.set, 1), "Conflict: Every copy changed.");
  EXPECT_EQ(ConflictDescriptionText(s.set, 2),
            "Conflict (automatically handled): A source lacks the file.");
  EXPECT_EQ(ConflictDescriptionText(s.set, 3), "No conflict");
  s.set.ConflictTypes(1).StringToCustomConfig("+3");
  EXPECT_EQ(ConflictDescriptionText(s.set, 1),
            "Conflict (automatically handled): Every copy changed.");
}

TEST_F(ActionTextsTest, CopyDetailsOfPresentAndMissingCopies) {
  ScannedSet s(kThreeSources, 1);
  s.SetCopies(1, {Present(Date(2026, 11, 2, 15, 4), 1536,
                          kAttrReadOnly | kAttrArchive | kAttrHidden,
                          Date(2025, 1, 5, 9, 7)),
                  CopyRecord{0, Date(2025, 1, 5, 21, 30), 77, kAttrArchive},
                  Present(Date(2024, 3, 9, 0, 30), 1023)});
  const CopyDetails first = GetCopyDetails(s.file(1), 1);
  EXPECT_EQ(first.modify_date, "Nov 2, 2026 03:04PM");
  EXPECT_EQ(first.create_date, "Jan 5, 2025 9:07AM");
  EXPECT_EQ(first.size, "1.50 KB");
  EXPECT_EQ(first.attributes, "HRA");
  // Absent: no size or attributes, but a create date the record kept.
  const CopyDetails second = GetCopyDetails(s.file(1), 2);
  EXPECT_EQ(second.modify_date, "Not found");
  EXPECT_EQ(second.create_date, "Jan 5, 2025 9:30PM");
  EXPECT_EQ(second.size, "");
  EXPECT_EQ(second.attributes, "");
  const CopyDetails third = GetCopyDetails(s.file(1), 3);
  EXPECT_EQ(third.modify_date, "Mar 9, 2024 12:30AM");
  EXPECT_EQ(third.create_date, "");
  EXPECT_EQ(third.size, "1023 bytes");
  EXPECT_EQ(third.attributes, "");
}

TEST_F(ActionTextsTest, SummaryOfOneFile) {
  ScannedSet s(kThreeSources, 1);
  s.SetCopies(1, Changed());  // copy 3 is the newest
  s.file(1).Action = kUseNewest;
  s.file(1).SourceIndex = 3;
  s.file(1).ActionFlags = kFlagCreate | kFlagProtectMerged;
  ActionSummary summary;
  EXPECT_EQ(summary.Count(), 0);
  summary.Add(s.file(1));
  EXPECT_EQ(summary.Count(), 1);
  EXPECT_EQ(summary.CommonAction(), kUseNewest);
  EXPECT_EQ(summary.CommonCopy(), 3);
  EXPECT_TRUE(summary.AllNewest());
  EXPECT_EQ(summary.CheckValue(kFlagCreate), kCheckSet);
  EXPECT_EQ(summary.CheckValue(kFlagProtectMerged), kCheckSet);
  EXPECT_EQ(summary.CheckValue(kFlagForceCopy), kCheckClear);
}

TEST_F(ActionTextsTest, SummaryOfAMixedSelection) {
  ScannedSet s(kThreeSources, 3);
  for (long i = 1; i <= 3; ++i) s.SetCopies(i, Changed());
  s.file(1).Action = kUseNewest;
  s.file(1).SourceIndex = 3;
  s.file(1).ActionFlags = kFlagCreate | kFlagForceCopy;
  s.file(2).Action = kUseNewest;
  s.file(2).SourceIndex = 3;
  s.file(2).ActionFlags = kFlagCreate;
  s.file(3).Action = kDeleteAll;
  s.file(3).SourceIndex = 1;
  s.file(3).ActionFlags = kFlagCreate;

  ActionSummary two;
  two.Add(s.file(1));
  two.Add(s.file(2));
  EXPECT_EQ(two.CommonAction(), kUseNewest);
  EXPECT_EQ(two.CommonCopy(), 3);
  EXPECT_TRUE(two.AllNewest());
  EXPECT_EQ(two.CheckValue(kFlagCreate), kCheckSet);
  EXPECT_EQ(two.CheckValue(kFlagForceCopy), kCheckMixed);
  EXPECT_EQ(two.CheckValue(kFlagDeleteReadOnly), kCheckClear);

  ActionSummary three;
  for (long i = 1; i <= 3; ++i) three.Add(s.file(i));
  EXPECT_EQ(three.Count(), 3);
  EXPECT_EQ(three.CommonAction(), -1);
  EXPECT_EQ(three.CommonCopy(), -1);
  EXPECT_FALSE(three.AllNewest());
  // Once mixed, a later file equal to the first does not undo it.
  ActionSummary again;
  again.Add(s.file(1));
  again.Add(s.file(3));
  again.Add(s.file(2));
  EXPECT_EQ(again.CommonAction(), -1);
  EXPECT_EQ(again.CommonCopy(), -1);
}

TEST_F(ActionTextsTest, FlagsThatMatter) {
  const std::uint16_t kCopyFlags =
      kFlagCreate | kFlagOverwriteReadOnly | kFlagForceCopy;
  const struct {
    bool copying, deleting, merge;
    std::uint16_t expected;
  } kCases[] = {
      {false, false, false, 0},
      {false, false, true, 0},
      {true, false, false, kCopyFlags},
      {true, false, true, kCopyFlags | kFlagProtectMerged},
      {false, true, false, kFlagDeleteReadOnly},
      {false, true, true, kFlagDeleteReadOnly | kFlagProtectMerged},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(FlagsThatMatter(c.copying, c.deleting, c.merge), c.expected)
        << "copying " << c.copying << " deleting " << c.deleting << " merge "
        << c.merge;
  }
}

TEST_F(ActionTextsTest, HasMergeToFolder) {
  ScannedSet sources(kThreeSources, 1);
  EXPECT_FALSE(HasMergeToFolder(sources.set));
  ScannedSet mirror({kFolderSource, kFolderMirrorTo}, 1);
  EXPECT_FALSE(HasMergeToFolder(mirror.set));
  ScannedSet merge({kFolderSource, kFolderMirrorTo, kFolderMergeTo}, 1);
  EXPECT_TRUE(HasMergeToFolder(merge.set));
}

TEST_F(ActionTextsTest, ApplyActionTakesTheNewestAndMarksNoEffect) {
  ScannedSet s(kThreeSources, 1);
  s.SetCopies(1, Changed());
  s.file(1).Action = kUndecided;
  s.file(1).SourceIndex = 1;
  s.file(1).ActionFlags = kFlagCreate | kFlagNoEffect;

  ApplyAction(s.file(1), kUseNewest, true);
  EXPECT_EQ(s.file(1).Action, kUseNewest);
  EXPECT_EQ(s.file(1).SourceIndex, 3);
  EXPECT_EQ(s.file(1).ActionFlags & kFlagNoEffect, 0);
  EXPECT_EQ(ActionText(s.file(1)), "Copy #3 (newest)");

  // A specific copy keeps the source index the file has.
  s.file(1).SourceIndex = 2;
  ApplyAction(s.file(1), kUseNewest, false);
  EXPECT_EQ(s.file(1).SourceIndex, 2);
  EXPECT_EQ(ActionText(s.file(1)), "Copy #2");

  ApplyAction(s.file(1), kDoNothing, true);
  EXPECT_EQ(s.file(1).SourceIndex, 2);
  EXPECT_NE(s.file(1).ActionFlags & kFlagNoEffect, 0);
}

TEST_F(ActionTextsTest, ApplyActionFlagRecomputesNoEffect) {
  ScannedSet s(kThreeSources, 1);
  s.SetCopies(1, Same());
  s.file(1).Action = kUseNewest;
  s.file(1).SourceIndex = 1;
  s.file(1).ActionFlags = kFlagCreate;
  s.file(1).CalcNoEffect();
  ASSERT_NE(s.file(1).ActionFlags & kFlagNoEffect, 0);
  // Re-copying identical files is an effect.
  ApplyActionFlag(s.file(1), kFlagForceCopy, true);
  EXPECT_EQ(s.file(1).ActionFlags, kFlagCreate | kFlagForceCopy);
  ApplyActionFlag(s.file(1), kFlagForceCopy, false);
  EXPECT_EQ(s.file(1).ActionFlags, kFlagCreate | kFlagNoEffect);
}

TEST_F(ActionTextsTest, PickSourceCopyLeavesTheNoEffectMark) {
  ScannedSet s(kThreeSources, 1);
  s.SetCopies(1, Changed());
  s.file(1).Action = kDeleteAll;
  s.file(1).SourceIndex = 1;
  s.file(1).ActionFlags = kFlagCreate | kFlagNoEffect;
  EXPECT_FALSE(PickSourceCopy(s.file(1), 2));
  EXPECT_EQ(s.file(1).Action, kUseNewest);
  EXPECT_EQ(s.file(1).SourceIndex, 2);
  EXPECT_EQ(s.file(1).ActionFlags, kFlagCreate | kFlagNoEffect);
  EXPECT_TRUE(PickSourceCopy(s.file(1), 3));
  EXPECT_EQ(s.file(1).SourceIndex, 3);
}

TEST_F(ActionTextsTest, ResetToDefaultAndRefreshFromDisk) {
  ScannedSet s(kThreeSources, 1, kCatalogue);
  // As scanned, the three copies are the same.
  ASSERT_EQ(s.file(1).Action, kDoNothing);
  s.file(1).Action = kDeleteAll;
  s.file(1).ActionFlags = 0;
  ResetToDefault(s.file(1));
  EXPECT_EQ(s.file(1).Action, kDoNothing);
  EXPECT_NE(s.file(1).ActionFlags & kFlagNoEffect, 0);

  // The copies in records only: the disk still has three equal ones.
  s.SetCopies(1, Changed());
  ResetToDefault(s.file(1));
  EXPECT_EQ(s.file(1).Action, kUseNewest);
  EXPECT_EQ(s.file(1).ActionFlags & kFlagNoEffect, 0);
  RefreshFromDisk(s.file(1));
  EXPECT_EQ(s.file(1).Action, kDoNothing);
  EXPECT_NE(s.file(1).ActionFlags & kFlagNoEffect, 0);
  EXPECT_EQ(s.file(1).Copy(2).size, 7);
}

TEST_F(ActionTextsTest, FirstUndecidedFile) {
  ScannedSet s(kThreeSources, 3);
  for (long i = 1; i <= 3; ++i) s.file(i).Action = kDoNothing;
  EXPECT_EQ(FirstUndecidedFile(s.set), 0);
  s.file(3).Action = kUndecided;
  EXPECT_EQ(FirstUndecidedFile(s.set), 3);
  s.file(2).Action = kUndecided;
  EXPECT_EQ(FirstUndecidedFile(s.set), 2);
}

}  // namespace
}  // namespace pairwell
