#include "engine/action_texts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "config/ini_file_section.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
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

// Functions rather than constants: a date is computed by the library, which
// must not be called before its own statics are set up.
double Old() { return Date(2024, 5, 14, 9, 0); }
double SyncDate() { return Date(2024, 5, 14, 10, 0); }
double Fresh() { return Date(2024, 5, 14, 11, 0); }
double Fresher() { return Date(2024, 5, 14, 12, 0); }

CopyRecord Present(double modify, std::int32_t size = 100,
                   std::uint16_t attributes = 0, double create = 0) {
  return CopyRecord{modify, create, size, attributes};
}

const CopyRecord kMissing{};

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
    for (std::size_t k = 0; k < types.size(); ++k) {
      const std::string name(1, static_cast<char>('A' + k));
      if (!MakeDirectory(dir.Join(name))) {
        throw std::runtime_error("cannot create " + dir.Join(name));
      }
      for (int f = 1; f <= files; ++f) {
        dir.WriteFile(name + "/f" + std::to_string(f) + ".txt", "content");
      }
      set.PathAdd(dir.Join(name));
      set.SetPathFlags(static_cast<int>(k + 1), types[k] | kFolderEnabled);
    }
    INIFileSection section("Conflict Types");
    for (const auto& entry : catalogue) {
      section.AddVar(entry.first, entry.second);
    }
    set.ReadConflictInfo(section);
    set.FileSpec = "*.*";
    if (!set.BuildActionList() || set.WFileCount() != files) {
      throw std::runtime_error("the scan did not give the files written");
    }
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

}  // namespace
}  // namespace pairwell
