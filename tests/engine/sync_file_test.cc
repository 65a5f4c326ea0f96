#include "engine/sync_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "config/ini_file_section.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
#include "support/scanned_folders.h"
#include "support/section_entries.h"
#include "support/temp_dir.h"
#include "support/test_dates.h"
#include "support/test_files.h"
#include "util/date_time.h"
#include "util/file_system.h"

namespace pairwell {
namespace {

constexpr std::int32_t kSource = kFolderSource;
constexpr std::int32_t kMirror = kFolderMirrorTo;
constexpr std::int32_t kMerge = kFolderMergeTo;

// A local moment on one fixed day, to the millisecond.
double Moment(int hour, int minute, int second = 0, int millisecond = 0) {
  return MakeDate(2024, 5, 14, hour, minute, second, millisecond);
}

// The state in bits 1-3 and in bits 5-7 of a situation code.
int ChangedState(int situation) { return (situation >> 1) & 7; }
int UnchangedState(int situation) { return (situation >> 5) & 7; }

std::string Describe(const CopyRecord& r) {
  return "{modify " + std::to_string(r.modify_date) + ", create " +
         std::to_string(r.create_date) + ", size " + std::to_string(r.size) +
         ", attributes " + std::to_string(r.attributes) + "}";
}

std::string Describe(const std::vector<CopyRecord>& copies) {
  std::string text;
  for (const CopyRecord& r : copies) text += Describe(r) + " ";
  return text;
}

// A sync set over real folders "A", "B", ... under a temporary folder, one
// per folder type given, each holding the file "f.txt"; after the scan the
// run has that one file.
class ScannedSet {
 public:
  explicit ScannedSet(const std::vector<std::int32_t>& types,
                      const Entries& catalogue = {}) {
    ScanFolders(set, dir, types, {"f.txt"}, catalogue);
  }

  SyncFile& file() { return set.WFile(1); }

  // Gives every working folder its copy record, in folder order.
  void SetCopies(const std::vector<CopyRecord>& copies) {
    if (static_cast<int>(copies.size()) != set.WPathCount()) {
      throw std::invalid_argument("one record per folder is needed");
    }
    for (std::size_t k = 0; k < copies.size(); ++k) {
      file().SetCopy(static_cast<int>(k + 1), copies[k]);
    }
  }

  TempDir dir;
  Synchronizer set;
};

class SyncFileTest : public ::testing::Test {
 protected:
  RecordingUserInterface ui_;
};

// --- Construction and copy records --------------------------------------

TEST_F(SyncFileTest, NewFileIsUndecidedWithSourceOneAndNoCopies) {
  Synchronizer set;
  SyncFile file(&set, "dir/name.txt");
  EXPECT_EQ(file.RelativeName(), "dir/name.txt");
  EXPECT_EQ(file.Action, kUndecided);
  EXPECT_EQ(file.SourceIndex, 1);
  EXPECT_EQ(file.ActionFlags, 0);
  for (int i = 1; i <= SyncFile::kMaxCopies; ++i) {
    EXPECT_FALSE(file.CopyExists(i)) << "copy " << i;
    EXPECT_EQ(file.Copy(i).modify_date, 0) << "copy " << i;
  }
}

TEST_F(SyncFileTest, SetCopyStoresTheWholeRecord) {
  Synchronizer set;
  SyncFile file(&set, "f.txt");
  file.SetCopy(8, CopyRecord{Fresh(), Old(), 4321, 33});
  EXPECT_EQ(file.Copy(8).modify_date, Fresh());
  EXPECT_EQ(file.Copy(8).create_date, Old());
  EXPECT_EQ(file.Copy(8).size, 4321);
  EXPECT_EQ(file.Copy(8).attributes, 33);
  EXPECT_TRUE(file.CopyExists(8));
  EXPECT_FALSE(file.CopyExists(7));
}

TEST_F(SyncFileTest, EveryCopyKeepsItsOwnRecordWhereverItIsStored) {
  Synchronizer set;
  SyncFile file(&set, "f.txt");
  for (int i = 1; i <= SyncFile::kMaxCopies; ++i) {
    file.SetCopy(i, CopyRecord{Fresh() + i, Old(), 100 + i, 0,
                               static_cast<std::uint64_t>(i)});
  }
  for (int i = 1; i <= SyncFile::kMaxCopies; ++i) {
    EXPECT_EQ(file.Copy(i).modify_date, Fresh() + i) << "copy " << i;
    EXPECT_EQ(file.Copy(i).size, 100 + i) << "copy " << i;
    EXPECT_EQ(file.Copy(i).inode, static_cast<std::uint64_t>(i));
  }
}

// A plan holds one of these per file: a file of a two-folder set keeps its
// two records inside and nothing else for the other six.
TEST_F(SyncFileTest, FileOfATwoFolderSetStaysSmall) {
  EXPECT_LE(sizeof(SyncFile), 104u);
  EXPECT_LE(sizeof(CopyRecord), 32u);
}

TEST_F(SyncFileTest, CopyIndexOutsideOneToEightThrowsOutOfRange) {
  ScannedSet s({kSource, kSource});
  SyncFile& file = s.file();
  for (int i : {-1, 0, 9}) {
    EXPECT_THROW(file.Copy(i), std::out_of_range) << "index " << i;
    EXPECT_THROW(file.SetCopy(i, Present(Fresh())), std::out_of_range)
        << "index " << i;
    EXPECT_THROW(file.CopyExists(i), std::out_of_range) << "index " << i;
    EXPECT_THROW(file.GetEffectiveDate(i), std::out_of_range) << "index " << i;
    EXPECT_THROW(file.FilesSeemTheSame(1, i), std::out_of_range)
        << "index " << i;
    EXPECT_THROW(file.FullPath(i), std::out_of_range) << "index " << i;
  }
}

// --- Date equality ------------------------------------------------------

TEST_F(SyncFileTest, DatesEqualHasStrictBoundsAtTheTolerance) {
  const struct {
    double a;
    double b;
    bool equal;
  } kCases[] = {
      {Fresh(), Fresh(), true},
      {Fresh() + 2.3e-5, Fresh(), true},
      {Fresh() - 2.3e-5, Fresh(), true},
      {Fresh() + kDateTolerance, Fresh(), false},
      {Fresh() - kDateTolerance, Fresh(), false},
      {kDateTolerance, 0, false},
      {-kDateTolerance, 0, false},
      {Moment(11, 0, 1, 900), Fresh(), true},
      {Moment(11, 0, 2, 0), Fresh(), false},
      {Moment(10, 59, 58, 100), Fresh(), true},
      {Moment(10, 59, 58, 0), Fresh(), false},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(DatesEqual(c.a, c.b), c.equal)
        << "a " << c.a << " b " << c.b << " difference in days " << c.a - c.b;
  }
}

TEST_F(SyncFileTest, CopiesOnePointNineSecondsApartSeemTheSame) {
  ScannedSet s({kSource, kSource});
  s.SetCopies({Present(Fresh(), 500), Present(Moment(11, 0, 1, 900), 500)});
  EXPECT_TRUE(s.file().FilesSeemTheSame(1, 2));
  EXPECT_TRUE(s.file().FilesSeemTheSame(2, 1));
  EXPECT_EQ(s.file().ComputeSituation(false), kSituAllSame);
}

TEST_F(SyncFileTest, CopiesTwoSecondsApartDoNotSeemTheSame) {
  ScannedSet s({kSource, kSource});
  s.SetCopies({Present(Fresh(), 500), Present(Moment(11, 0, 2, 0), 500)});
  EXPECT_FALSE(s.file().FilesSeemTheSame(1, 2));
  EXPECT_FALSE(s.file().FilesSeemTheSame(2, 1));
  EXPECT_NE(s.file().ComputeSituation(false), kSituAllSame);
}

TEST_F(SyncFileTest, EqualDatesWithDifferentSizesDoNotSeemTheSame) {
  ScannedSet s({kSource, kSource});
  s.SetCopies({Present(Fresh(), 500), Present(Fresh(), 501)});
  EXPECT_FALSE(s.file().FilesSeemTheSame(1, 2));
  EXPECT_NE(s.file().ComputeSituation(false), kSituAllSame);
}

TEST_F(SyncFileTest, SeemTheSameComparesEffectiveDates) {
  ScannedSet s({kSource, kSource});
  // Same modify dates; copy 2 was created later and is archived.
  s.SetCopies(
      {Present(Old(), 500), Present(Old(), 500, kAttrArchive, Fresh())});
  s.set.UseCreateDate = true;
  EXPECT_FALSE(s.file().FilesSeemTheSame(1, 2));
  s.set.UseCreateDate = false;
  EXPECT_TRUE(s.file().FilesSeemTheSame(1, 2));
}

// --- Effective date -----------------------------------------------------

TEST_F(SyncFileTest, EffectiveDateIsCreateDateOnlyWhenAllThreeConditionsHold) {
  const struct {
    bool use_create_date;
    double create;
    std::uint16_t attributes;
    double expected;
  } kCases[] = {
      {true, Fresh(), kAttrArchive, Fresh()},
      {true, Fresh(), kAttrArchive | kAttrReadOnly, Fresh()},
      {true, Fresh(), 0, SyncDate()},
      {true, Fresh(), kAttrReadOnly | kAttrHidden | kAttrSystem, SyncDate()},
      {false, Fresh(), kAttrArchive, SyncDate()},
      {true, Old(), kAttrArchive, SyncDate()},
      {true, SyncDate(), kAttrArchive, SyncDate()},
      {false, Old(), 0, SyncDate()},
  };
  ScannedSet s({kSource, kSource});
  for (const auto& c : kCases) {
    s.set.UseCreateDate = c.use_create_date;
    s.file().SetCopy(1, Present(SyncDate(), 100, c.attributes, c.create));
    EXPECT_EQ(s.file().GetEffectiveDate(1), c.expected)
        << "UseCreateDate " << c.use_create_date << " create " << c.create
        << " (modify " << SyncDate() << ") attributes " << c.attributes;
  }
}

// --- States -------------------------------------------------------------

TEST_F(SyncFileTest, StateOfChangedCopiesWithoutLastSyncDate) {
  const struct {
    const char* what;
    std::vector<CopyRecord> copies;
    int state;
  } kCases[] = {
      {"one copy", {Present(Fresh()), kMissing, kMissing}, 0},
      {"two copies, different dates",
       {Present(Fresh()), Present(Fresher()), kMissing},
       1},
      {"three copies, all dates different",
       {Present(Old()), Present(Fresh()), Present(Fresher())},
       1},
      {"three copies, equal dates (sizes differ)",
       {Present(Fresh(), 1), Present(Fresh(), 2), Present(Fresh(), 3)},
       2},
      {"two equal, one different",
       {Present(Fresh()), Present(Fresh()), Present(Fresher())},
       3},
      {"first and last equal, middle different",
       {Present(Fresh()), Present(Fresher()), Present(Fresh())},
       3},
      {"no copy", {kMissing, kMissing, kMissing}, 4},
  };
  for (const auto& c : kCases) {
    ScannedSet s({kSource, kSource, kSource});
    s.SetCopies(c.copies);
    const int situation = s.file().ComputeSituation(true);
    EXPECT_EQ(ChangedState(situation), c.state)
        << c.what << ": " << Describe(c.copies) << "situation " << situation;
    EXPECT_EQ(UnchangedState(situation), 4) << c.what;
  }
}

TEST_F(SyncFileTest, MirrorAndMergeCopiesNeverQualifyForAState) {
  ScannedSet s({kSource, kMirror, kMerge});
  s.set.LastSyncDate = SyncDate();
  // Were the other copies counted, the changed state would be 1.
  s.SetCopies({Present(Fresh()), Present(Fresher()), Present(Fresher() + 0.5)});
  int situation = s.file().ComputeSituation(true);
  EXPECT_EQ(ChangedState(situation), 0) << "situation " << situation;
  EXPECT_EQ(UnchangedState(situation), 4) << "situation " << situation;
  EXPECT_EQ(situation, 129);

  // Old copies likewise: only the source copy is unchanged.
  s.SetCopies({Present(Old()), Present(Old() - 0.5), Present(Old() - 0.25)});
  situation = s.file().ComputeSituation(true);
  EXPECT_EQ(ChangedState(situation), 4) << "situation " << situation;
  EXPECT_EQ(UnchangedState(situation), 0) << "situation " << situation;
  EXPECT_EQ(situation, 8 | 1);
}

TEST_F(SyncFileTest, CopiesOnlyOutsideSourcesGiveStateFour) {
  ScannedSet s({kSource, kMirror, kMerge});
  s.SetCopies({kMissing, Present(Fresh()), Present(Fresh())});
  const int situation = s.file().ComputeSituation(true);
  EXPECT_EQ(ChangedState(situation), 4) << "situation " << situation;
  EXPECT_EQ(situation, 16 | 8 | 128);
}

TEST_F(SyncFileTest, LastSyncDateSplitsCopiesIntoChangedAndUnchanged) {
  ScannedSet s({kSource, kSource, kSource});
  s.set.LastSyncDate = SyncDate();
  s.set.SmartSync = true;
  s.SetCopies({Present(Fresh()), Present(Old()), Present(Old())});
  // Changed: copy 1 alone (0); unchanged: copies 2 and 3, equal (2).
  EXPECT_EQ(s.file().ComputeSituation(false), 0 | 2 * 32 | 1);
}

TEST_F(SyncFileTest, CopyDatedAtTheLastSyncIsUnchanged) {
  ScannedSet s({kSource, kSource, kSource});
  s.set.LastSyncDate = SyncDate();
  s.SetCopies({Present(SyncDate()), Present(Old()), Present(Fresh())});
  // Changed: copy 3 alone (0); unchanged: copies 1 and 2, different (1).
  EXPECT_EQ(s.file().ComputeSituation(false), 0 | 1 * 32 | 1);
}

TEST_F(SyncFileTest, LastSyncDateWithNothingUnchangedKeepsBitZero) {
  ScannedSet s({kSource, kSource, kSource});
  s.set.LastSyncDate = SyncDate();
  s.SetCopies({Present(Fresh()), Present(Fresher()), Present(Fresher() + 0.5)});
  EXPECT_EQ(s.file().ComputeSituation(false), 1 * 2 | 4 * 32 | 1);
}

TEST_F(SyncFileTest, WithoutSmartSyncTheLastSyncDateIsIgnored) {
  ScannedSet s({kSource, kSource, kSource});
  s.set.LastSyncDate = SyncDate();
  s.set.SmartSync = false;
  s.SetCopies({Present(Fresh()), Present(Old()), Present(Old())});
  // Every copy counts as changed: 1-2 and 1-3 differ, 2-3 equal (3).
  EXPECT_EQ(s.file().ComputeSituation(false), 3 * 2 | 4 * 32);
}

// --- Situation ----------------------------------------------------------

TEST_F(SyncFileTest, AllSameGivesOnly256UnlessForced) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Fresh()), Present(Fresh()), Present(Fresh())});
  EXPECT_EQ(s.file().ComputeSituation(false), 256);
  EXPECT_EQ(s.file().ComputeSituation(true), 256 | 2 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, ForcedAllSameWithLastSyncDateHasEveryBit) {
  ScannedSet s({kSource, kSource, kSource});
  s.set.LastSyncDate = SyncDate();
  s.SetCopies({Present(Old()), Present(Old()), Present(Old())});
  EXPECT_EQ(s.file().ComputeSituation(false), 256);
  EXPECT_EQ(s.file().ComputeSituation(true), 256 | 4 * 2 | 2 * 32 | 1);
}

TEST_F(SyncFileTest, OnlyNeighbouringCopiesAreCompared) {
  ScannedSet s({kSource, kSource, kSource});
  // 1.5 s apart each: 1 seems the same as 2 and 2 as 3, not 1 as 3.
  s.SetCopies({Present(Moment(11, 0, 0)), Present(Moment(11, 0, 1, 500)),
               Present(Moment(11, 0, 3))});
  ASSERT_FALSE(s.file().FilesSeemTheSame(1, 3));
  EXPECT_EQ(s.file().ComputeSituation(false), 256);
  // The state still compares every pair: equal and different (3).
  EXPECT_EQ(s.file().ComputeSituation(true), 256 | 3 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, FirstAndLastEqualWithDifferentMiddleIsNotAllSame) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Fresh()), Present(Fresher()), Present(Fresh())});
  EXPECT_EQ(s.file().ComputeSituation(false), 3 * 2 | 4 * 32);
  EXPECT_EQ(s.file().ComputeSituation(true), 3 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, DifferentSizeInTheMiddleIsNotAllSame) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies(
      {Present(Fresh(), 10), Present(Fresh(), 11), Present(Fresh(), 10)});
  EXPECT_EQ(s.file().ComputeSituation(false), 2 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, MissingFromSourceSetsBit4EvenWhenOthersAreIdentical) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Fresh()), kMissing, Present(Fresh())});
  const int situation = s.file().ComputeSituation(false);
  EXPECT_EQ(situation & kSituMissingFromSource, kSituMissingFromSource);
  EXPECT_EQ(situation & kSituAllSame, 0);
  EXPECT_EQ(situation, 16 | 2 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, MissingFromSourceAfterADifferenceStillSetsBit4) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Fresh()), Present(Fresher()), kMissing});
  EXPECT_EQ(s.file().ComputeSituation(false), 16 | 1 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, MissingFromMirrorFolderIsNotBit4) {
  ScannedSet s({kSource, kSource, kMirror});
  s.SetCopies({Present(Fresh()), Present(Fresh()), kMissing});
  EXPECT_EQ(s.file().ComputeSituation(false), 2 * 2 | 4 * 32);
}

TEST_F(SyncFileTest, NeverSynchronizedGivesState4InBits5To7AndBit0Clear) {
  ScannedSet s({kSource, kSource});
  ASSERT_EQ(s.set.EfLastSyncDate(), 0);
  s.SetCopies({Present(Old()), Present(Fresh())});
  const int situation = s.file().ComputeSituation(false);
  EXPECT_EQ(UnchangedState(situation), 4) << "situation " << situation;
  EXPECT_EQ(situation & kSituSyncDateExists, 0) << "situation " << situation;
  EXPECT_EQ(situation, 1 * 2 | 4 * 32);
}

// --- Conflict index -----------------------------------------------------

const Entries kTypes = {
    {"Missing", "N1? DELETEALL*"},
    {"Changed", "N01 USENEWEST*"},
    {"Anything", "??? DONOTHING*"},
};

TEST_F(SyncFileTest, ConflictIndexIsZeroWhenAllSameEvenIfATypeWouldMatch) {
  // "000" accepts 256: state 0 in both fields and bit 4 clear.
  ScannedSet s({kSource, kSource}, {{"Zero", "000 DELETEALL*"}});
  s.SetCopies({Present(Fresh()), Present(Fresh())});
  ASSERT_TRUE(s.set.ConflictTypes(1).MatchesSitu(256));
  EXPECT_EQ(s.file().ComputeConflictIndex(), 0);
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kDoNothing);
}

TEST_F(SyncFileTest, ConflictIndexIsTheFirstMatchingType) {
  ScannedSet s({kSource, kSource}, kTypes);
  s.SetCopies({Present(Fresh()), Present(Fresher())});
  EXPECT_EQ(s.file().ComputeConflictIndex(), 2);
  s.SetCopies({Present(Fresh()), kMissing});
  EXPECT_EQ(s.file().ComputeConflictIndex(), 1);
  // Equal dates, sizes differ: only "Anything" accepts it.
  s.SetCopies({Present(Fresh(), 1), Present(Fresh(), 2)});
  EXPECT_EQ(s.file().ComputeConflictIndex(), 3);
}

TEST_F(SyncFileTest, ConflictIndexIsMinusOneWhenNoTypeMatches) {
  ScannedSet s({kSource, kSource}, {kTypes[0], kTypes[1]});
  s.SetCopies({Present(Fresh(), 1), Present(Fresh(), 2)});
  EXPECT_EQ(s.file().ComputeConflictIndex(), -1);
}

// --- Newest copy --------------------------------------------------------

TEST_F(SyncFileTest, NewestIsTheLatestEffectiveDate) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Old()), Present(Fresher()), Present(Fresh())});
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 2);
  EXPECT_EQ(s.file().GetNewestFileIndex(false), 2);
  // By its create date, copy 1 is now the newest.
  s.set.UseCreateDate = true;
  s.file().SetCopy(1, Present(Old(), 100, kAttrArchive, Fresher() + 0.1));
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 1);
}

TEST_F(SyncFileTest, NewestTieKeepsTheEarlierFolder) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Old()), Present(Fresher()), Present(Fresher())});
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 2);
  EXPECT_EQ(s.file().GetNewestFileIndex(false), 2);
}

TEST_F(SyncFileTest, NewestAmongSourcesIgnoresNewerMirrorAndMergeCopies) {
  ScannedSet s({kMirror, kSource, kMerge});
  s.SetCopies({Present(Fresher()), Present(Old()), Present(Fresher() + 0.5)});
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 2);
  EXPECT_EQ(s.file().GetNewestFileIndex(false), 3);
}

TEST_F(SyncFileTest, NewestFallsBackToAllFoldersWithoutSourceCopy) {
  ScannedSet s({kSource, kMirror, kMerge});
  s.SetCopies({kMissing, Present(Fresh()), Present(Old())});
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 2);
}

TEST_F(SyncFileTest, NewestIsZeroWhenNoCopyExists) {
  ScannedSet s({kSource, kMirror});
  s.SetCopies({kMissing, kMissing});
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 0);
  EXPECT_EQ(s.file().GetNewestFileIndex(false), 0);
}

TEST_F(SyncFileTest, MissingCopyIsNeverNewestWhateverItsCreateDate) {
  ScannedSet s({kSource, kSource});
  s.set.UseCreateDate = true;
  // A record left from a deleted copy: modify date 0, a late create date.
  s.SetCopies({Present(Old()), CopyRecord{0, Fresher(), 100, kAttrArchive}});
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 1);
  s.file().SetCopy(1, kMissing);
  EXPECT_EQ(s.file().GetNewestFileIndex(true), 0);
}

// --- Default action -----------------------------------------------------

TEST_F(SyncFileTest, FileMatchingNoTypeIsUndecidedWithCreateFlag) {
  ScannedSet s({kSource, kSource}, {{"Missing", "N1? DELETEALL*"}});
  s.set.DefActionFlags = 2 | 4 | 8 | 64 | 512;
  s.file().SourceIndex = 1;
  s.SetCopies({Present(Old()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kUndecided);
  EXPECT_EQ(s.file().ActionFlags, 1 | 2 | 4 | 8 | 64 | 512);
  EXPECT_EQ(s.file().SourceIndex, 1);
}

TEST_F(SyncFileTest, AllSameFileDoesNothingWithCreateFlag) {
  ScannedSet s({kSource, kSource}, kTypes);
  s.set.DefActionFlags = 16;
  s.file().SourceIndex = 2;
  s.SetCopies({Present(Fresh()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kDoNothing);
  EXPECT_EQ(s.file().ActionFlags, 1 | 16);
  EXPECT_EQ(s.file().SourceIndex, 2);
}

TEST_F(SyncFileTest, DefaultActionReplacesEarlierFlags) {
  ScannedSet s({kSource, kSource}, kTypes);
  s.set.DefActionFlags = 8;
  s.file().ActionFlags = 0xFFFF;
  s.SetCopies({Present(Fresh()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().ActionFlags, 1 | 8);
}

TEST_F(SyncFileTest, TypeWithCreateDestSetsCreateFlag) {
  ScannedSet s({kSource, kSource}, {{"Changed", "N01 DELETEALL*"}});
  s.set.DefActionFlags = 8;
  ASSERT_TRUE(s.set.ConflictTypes(1).CreateDest);
  s.SetCopies({Present(Old()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kDeleteAll);
  EXPECT_EQ(s.file().ActionFlags, 1 | 8);
}

TEST_F(SyncFileTest, TypeWithoutCreateDestClearsCreateFlag) {
  ScannedSet s({kSource, kSource}, {{"Changed", "N01 DELETEALL*"}});
  s.set.DefActionFlags = 1 | 8 | 32;
  s.set.ConflictTypes(1).CreateDest = false;
  s.SetCopies({Present(Old()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().ActionFlags, 8 | 32);
}

TEST_F(SyncFileTest, ActionComesFromDefActionNotFromCustomAction) {
  ScannedSet s({kSource, kSource}, {{"Changed", "N01 DELETEALL* USENEWEST"}});
  s.set.ConflictTypes(1).StringToCustomConfig("C3");
  ASSERT_EQ(s.set.ConflictTypes(1).Action, kUseNewest);
  ASSERT_EQ(s.set.ConflictTypes(1).DefAction, kDeleteAll);
  s.SetCopies({Present(Old()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kDeleteAll);
}

TEST_F(SyncFileTest, UseNewestTakesTheNewestSourceCopy) {
  ScannedSet s({kSource, kSource, kMirror}, {{"Changed", "N01 USENEWEST*"}});
  s.SetCopies({Present(Old()), Present(Fresh()), Present(Fresher())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kUseNewest);
  EXPECT_EQ(s.file().SourceIndex, 2);
}

TEST_F(SyncFileTest, SourceIndexIsKeptWhenActionIsNotUseNewest) {
  ScannedSet s({kSource, kSource, kSource}, {{"Changed", "N01 DELETEALL*"}});
  s.file().SourceIndex = 3;
  // Copy 2 is the newest.
  s.SetCopies({Present(Old()), Present(Fresher()), Present(Fresh())});
  s.file().ComputeDefAction();
  EXPECT_EQ(s.file().Action, kDeleteAll);
  EXPECT_EQ(s.file().SourceIndex, 3);
}

TEST_F(SyncFileTest, ScanGivesEveryFileItsDefaultAction) {
  // The scanned copies hold the same bytes written moments apart: all same.
  ScannedSet s({kSource, kSource}, kTypes);
  EXPECT_EQ(s.file().Action, kDoNothing);
  EXPECT_EQ(s.file().ActionFlags, s.set.DefActionFlags | kFlagCreate);
}

// --- Copy-needed and deletable tests ------------------------------------

TEST_F(SyncFileTest, CopyNeeded) {
  // Folders: 1 source (the copy's source), 2 mirror-to, 3 merge-to, 4 source.
  const struct {
    const char* what;
    int j;
    CopyRecord dest;
    std::uint16_t flags;
    bool needed;
  } kCases[] = {
      {"plain older copy", 2, Present(Old()), 0, true},
      {"read-only copy without flag 2", 2, Present(Old(), 100, kAttrReadOnly),
       0, false},
      {"read-only copy with flag 2", 2, Present(Old(), 100, kAttrReadOnly), 2,
       true},
      {"read-only copy with only flag 16", 2,
       Present(Old(), 100, kAttrReadOnly), 16, false},
      {"system copy without flag 2", 2, Present(Old(), 100, kAttrSystem), 0,
       false},
      {"system copy with flag 2", 2, Present(Old(), 100, kAttrSystem), 2, true},
      {"hidden archived copy", 2,
       Present(Old(), 100, kAttrHidden | kAttrArchive), 0, true},
      {"missing copy without flag 1", 2, kMissing, 2 | 4 | 8 | 16, false},
      {"missing copy with flag 1", 2, kMissing, 1, true},
      {"missing copy keeping a read-only attribute, flag 1", 2,
       CopyRecord{0, 0, 100, kAttrReadOnly}, 1, true},
      {"newer merge-to copy with flag 8", 3, Present(Fresher()), 8, false},
      {"newer merge-to copy without flag 8", 3, Present(Fresher()), 0, true},
      {"newer merge-to copy by one second, flag 8", 3,
       Present(Moment(11, 0, 1)), 8, false},
      {"older merge-to copy with flag 8", 3, Present(Old()), 8, true},
      {"merge-to copy of the same date with flag 8", 3, Present(Fresh()), 8,
       true},
      {"merge-to copy newer by create date, flag 8", 3,
       Present(Old(), 100, kAttrArchive, Fresher()), 8, false},
      {"missing merge-to copy with flags 1 and 8", 3, kMissing, 1 | 8, true},
      {"newer mirror-to copy with flag 8", 2, Present(Fresher()), 8, true},
      {"newer source copy with flag 8", 4, Present(Fresher()), 8, true},
  };
  ScannedSet s({kSource, kMirror, kMerge, kSource});
  s.set.UseCreateDate = true;
  for (const auto& c : kCases) {
    s.SetCopies(
        {Present(Fresh()), Present(Old()), Present(Old()), Present(Old())});
    s.file().SetCopy(c.j, c.dest);
    s.file().ActionFlags = c.flags;
    EXPECT_EQ(s.file().CopyNeeded(c.j, 1), c.needed)
        << c.what << ": folder " << c.j << " " << Describe(c.dest) << " flags "
        << c.flags << " source " << Describe(Present(Fresh()));
  }
}

TEST_F(SyncFileTest, Deletable) {
  const struct {
    const char* what;
    CopyRecord copy;
    std::uint16_t flags;
    bool deletable;
  } kCases[] = {
      {"plain copy", Present(Old()), 0, true},
      {"hidden archived copy", Present(Old(), 1, kAttrHidden | kAttrArchive), 0,
       true},
      {"read-only copy", Present(Old(), 1, kAttrReadOnly), 0, false},
      {"read-only copy with flag 16", Present(Old(), 1, kAttrReadOnly), 16,
       true},
      {"read-only copy with flag 2", Present(Old(), 1, kAttrReadOnly), 2,
       false},
      {"system copy", Present(Old(), 1, kAttrSystem), 0, false},
      {"system copy with flag 16", Present(Old(), 1, kAttrSystem), 16, true},
      {"missing copy", kMissing, 0, false},
      {"missing copy with every flag", kMissing, 0xFF, false},
  };
  ScannedSet s({kSource, kMirror});
  for (const auto& c : kCases) {
    s.SetCopies({Present(Fresh()), c.copy});
    s.file().ActionFlags = c.flags;
    EXPECT_EQ(s.file().Deletable(2), c.deletable)
        << c.what << ": " << Describe(c.copy) << " flags " << c.flags;
  }
}

TEST_F(SyncFileTest, CopyInAMergeToFolderIsNeverDeletable) {
  ScannedSet s({kSource, kMerge});
  s.SetCopies({kMissing, Present(Old())});
  s.file().ActionFlags = 0xFF;
  EXPECT_FALSE(s.file().Deletable(2));
}

// --- Counting operations and the no-effect mark -------------------------

TEST_F(SyncFileTest, UndecidedAndDoNothingCountNoOperation) {
  ScannedSet s({kSource, kSource, kSource});
  s.SetCopies({Present(Fresher()), Present(Old()), kMissing});
  s.file().ActionFlags = 0xFF;
  s.file().SourceIndex = 1;
  for (std::int32_t action : {kUndecided, kDoNothing}) {
    s.file().Action = action;
    EXPECT_EQ(s.file().PerformAction(true), 0) << "action " << action;
  }
}

TEST_F(SyncFileTest, DeleteAllCountsEveryDeletableCopy) {
  ScannedSet s({kSource, kSource, kMirror, kMerge});
  s.SetCopies({Present(Old()), Present(Old(), 1, kAttrReadOnly), kMissing,
               Present(Old(), 1, kAttrSystem)});
  s.file().Action = kDeleteAll;
  s.file().ActionFlags = 0;
  EXPECT_EQ(s.file().PerformAction(true), 1);
  // A merge-to folder only receives: its copy is never deleted.
  s.file().ActionFlags = kFlagDeleteReadOnly;
  EXPECT_EQ(s.file().PerformAction(true), 2);
}

TEST_F(SyncFileTest, UseNewestCountsFoldersThatNeedTheCopy) {
  ScannedSet s({kSource, kSource, kSource, kSource});
  // Source 2; copy 1 older, copy 3 the same, copy 4 missing.
  s.SetCopies({Present(Old()), Present(Fresh()), Present(Fresh()), kMissing});
  s.file().Action = kUseNewest;
  s.file().SourceIndex = 2;
  const struct {
    std::uint16_t flags;
    long count;
  } kCases[] = {
      {0, 1},
      {kFlagCreate, 2},
      {kFlagForceCopy, 2},
      {kFlagCreate | kFlagForceCopy, 3},
  };
  for (const auto& c : kCases) {
    s.file().ActionFlags = c.flags;
    EXPECT_EQ(s.file().PerformAction(true), c.count) << "flags " << c.flags;
  }
}

TEST_F(SyncFileTest, UseNewestSkipsReadOnlyAndProtectedCopies) {
  ScannedSet s({kSource, kSource, kMerge});
  s.SetCopies({Present(Fresh()), Present(Old(), 100, kAttrReadOnly),
               Present(Fresher())});
  s.file().Action = kUseNewest;
  s.file().SourceIndex = 1;
  s.file().ActionFlags = kFlagProtectMerged;
  EXPECT_EQ(s.file().PerformAction(true), 0);
  s.file().ActionFlags = kFlagProtectMerged | kFlagOverwriteReadOnly;
  EXPECT_EQ(s.file().PerformAction(true), 1);
  s.file().ActionFlags = kFlagOverwriteReadOnly;
  EXPECT_EQ(s.file().PerformAction(true), 2);
}

TEST_F(SyncFileTest, SeemsSameSkipNeedsAnExistingSourceCopy) {
  // Both records are empty and so "seem the same"; the source is missing,
  // so the destination is not skipped.
  ScannedSet s({kSource, kSource});
  s.SetCopies({kMissing, kMissing});
  s.file().Action = kUseNewest;
  s.file().SourceIndex = 1;
  s.file().ActionFlags = kFlagCreate;
  ASSERT_TRUE(s.file().FilesSeemTheSame(1, 2));
  EXPECT_EQ(s.file().PerformAction(true), 1);
}

TEST_F(SyncFileTest, UseNewestWithoutAnyCopyCountsNothing) {
  ScannedSet s({kSource, kSource}, {{"Gone", "N1? USENEWEST*"}});
  s.SetCopies({kMissing, kMissing});
  s.set.DefActionFlags = kFlagCreate;
  s.file().ComputeDefAction();
  ASSERT_EQ(s.file().Action, kUseNewest);
  EXPECT_EQ(s.file().SourceIndex, 0);
  EXPECT_EQ(s.file().PerformAction(true), 0);
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags & kFlagNoEffect, kFlagNoEffect);
}

TEST_F(SyncFileTest, CalcNoEffectSetsOnlyBit7WhenNothingIsCounted) {
  ScannedSet s({kSource, kSource});
  s.SetCopies({Present(Fresh()), Present(Old())});
  s.file().Action = kDoNothing;
  s.file().ActionFlags = 0x7F | 0x100 | 0x8000;
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, 0xFF | 0x100 | 0x8000);
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, 0xFF | 0x100 | 0x8000);
}

TEST_F(SyncFileTest, CalcNoEffectClearsOnlyBit7WhenSomethingIsCounted) {
  ScannedSet s({kSource, kSource});
  s.SetCopies({Present(Fresh()), Present(Old())});
  s.file().Action = kUseNewest;
  s.file().SourceIndex = 1;
  s.file().ActionFlags = 0xFF | 0x200;
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, 0x7F | 0x200);
}

TEST_F(SyncFileTest, CalcNoEffectFollowsChangesOfTheCopies) {
  ScannedSet s({kSource, kSource});
  s.file().Action = kUseNewest;
  s.file().SourceIndex = 1;
  s.file().ActionFlags = kFlagCreate;
  s.SetCopies({Present(Fresh()), Present(Fresh())});
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, kFlagCreate | kFlagNoEffect);
  s.file().SetCopy(2, kMissing);
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, kFlagCreate);
}

TEST_F(SyncFileTest, DeleteAllWithNothingDeletableHasNoEffect) {
  ScannedSet s({kSource, kSource});
  s.SetCopies({Present(Fresh(), 1, kAttrReadOnly), kMissing});
  s.file().Action = kDeleteAll;
  s.file().ActionFlags = 0;
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, kFlagNoEffect);
  s.file().ActionFlags = kFlagDeleteReadOnly;
  s.file().CalcNoEffect();
  EXPECT_EQ(s.file().ActionFlags, kFlagDeleteReadOnly);
}

// --- Paths and records on disk ------------------------------------------

TEST_F(SyncFileTest, FullPathJoinsTheWorkingFolderAndTheRelativeName) {
  TempDir dir;
  ASSERT_TRUE(MakeDirectory(dir.Join("A/sub")));
  ASSERT_TRUE(MakeDirectory(dir.Join("B/sub")));
  dir.WriteFile("A/sub/g.txt", "a");
  dir.WriteFile("B/sub/g.txt", "b");
  Synchronizer set;
  set.PathAdd(dir.Join("A"));
  set.PathAdd(dir.Join("B") + "/");
  set.FileSpec = "*.*";
  ASSERT_TRUE(set.BuildActionList());
  ASSERT_EQ(set.WFileCount(), 1);
  const SyncFile& file = set.WFile(1);
  EXPECT_EQ(file.RelativeName(), "sub/g.txt");
  EXPECT_EQ(file.FullPath(1), dir.Join("A/sub/g.txt"));
  EXPECT_EQ(file.FullPath(2), dir.Join("B/sub/g.txt"));
  EXPECT_THROW(file.FullPath(3), std::out_of_range);
}

TEST_F(SyncFileTest, ScannedRecordsAreWhatRefreshReads) {
  ScannedSet s({kSource, kSource});
  const CopyRecord scanned = s.file().Copy(2);
  EXPECT_GT(scanned.modify_date, 0);
  EXPECT_EQ(scanned.size, 7);
  s.file().SetCopy(2, CopyRecord{1.0, 2.0, 999, kAttrSystem});
  s.file().RefreshFileInfo();
  EXPECT_EQ(s.file().Copy(2).modify_date, scanned.modify_date);
  EXPECT_EQ(s.file().Copy(2).create_date, scanned.create_date);
  EXPECT_EQ(s.file().Copy(2).size, scanned.size);
  EXPECT_EQ(s.file().Copy(2).attributes, scanned.attributes);
}

TEST_F(SyncFileTest, RefreshOfDeletedCopyZeroesOnlyItsModifyDate) {
  ScannedSet s({kSource, kSource});
  ASSERT_EQ(DeleteFile(s.file().FullPath(2)), 0);
  s.file().SetCopy(2, CopyRecord{Fresh(), Old(), 77, kAttrArchive | 1});
  s.file().RefreshFileInfo();
  EXPECT_EQ(s.file().Copy(2).modify_date, 0);
  EXPECT_EQ(s.file().Copy(2).create_date, Old());
  EXPECT_EQ(s.file().Copy(2).size, 77);
  EXPECT_EQ(s.file().Copy(2).attributes, kAttrArchive | 1);
  EXPECT_TRUE(s.file().CopyExists(1));
}

TEST_F(SyncFileTest, RefreshCountsAFolderInPlaceOfTheFileAsMissing) {
  ScannedSet s({kSource, kSource});
  ASSERT_EQ(DeleteFile(s.file().FullPath(2)), 0);
  ASSERT_TRUE(MakeDirectory(s.file().FullPath(2)));
  s.file().RefreshFileInfo();
  EXPECT_FALSE(s.file().CopyExists(2));
  EXPECT_EQ(s.file().Copy(2).size, 7);
  EXPECT_TRUE(s.file().CopyExists(1));
}

TEST_F(SyncFileTest, RefreshOfChangedCopyReadsItsNewDateAndSize) {
  ScannedSet s({kSource, kSource});
  s.dir.WriteFile("A/f.txt", "a longer content");
  const double when = MakeDate(2021, 1, 2, 3, 4, 5);
  ASSERT_TRUE(SetCreationTime(s.file().FullPath(1), when, when));
  s.file().RefreshFileInfo();
  EXPECT_NEAR(s.file().Copy(1).modify_date, when, 1e-8);
  EXPECT_EQ(s.file().Copy(1).size, 16);
  EXPECT_EQ(s.file().Copy(2).size, 7);
}

TEST_F(SyncFileTest, RefreshReadsTheReadOnlyAttribute) {
  ScannedSet s({kSource, kSource});
  ASSERT_TRUE(SetMode(s.file().FullPath(2), 0444));
  s.file().RefreshFileInfo();
  EXPECT_EQ(s.file().Copy(2).attributes & kAttrReadOnly, kAttrReadOnly);
  EXPECT_EQ(s.file().Copy(1).attributes & kAttrReadOnly, 0);
}

}  // namespace
}  // namespace pairwell
