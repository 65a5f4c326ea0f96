// The conflict catalogue shipped in data/Pairwell.ini, run on real folders:
// for each everyday situation, the default action it gives and whether the
// person is asked to confirm it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>

#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/action_texts.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "util/date_time.h"

namespace pairwell {
namespace {

// Modification times, hours apart (seconds since the epoch, 2020-09-13).
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kOld = 1600000000;
constexpr std::int64_t kSync = kOld + 5 * kHour;  // the last sync
constexpr std::int64_t kNew = kOld + 10 * kHour;
constexpr std::int64_t kNewer = kOld + 15 * kHour;

class CatalogueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    INIFile ini;
    ASSERT_TRUE(
        ini.LoadFile(std::string(PAIRWELL_SOURCE_DIR) + "/data/Pairwell.ini"));
    std::shared_ptr<INIFileSection> types = ini.Section("Conflict Types");
    ASSERT_NE(types, nullptr);
    set_.ReadConflictInfo(*types);
    ASSERT_GT(set_.ConflictTypeCount(), 0);
    ASSERT_TRUE(ui_.messages.empty()) << ui_.messages[0].text;
  }

  // Makes the folder `name` and appends it to the set with `flags`.
  void AddFolder(const std::string& name, std::int32_t flags = kFolderEnabled) {
    const std::string path = dir_.Join(name);
    std::filesystem::create_directories(path);
    set_.PathAdd(path);
    set_.SetPathFlags(set_.PathCount(), flags);
  }

  // Writes the file `name` in folder `folder` with that content, last
  // modified at `seconds`.
  void Put(const std::string& folder, const std::string& name,
           const std::string& content, std::int64_t seconds) {
    const std::string rel = folder + "/" + name;
    dir_.WriteFile(rel, content);
    struct timespec times[2] = {{0, UTIME_OMIT},
                                {static_cast<time_t>(seconds), 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, dir_.Join(rel).c_str(), times, 0), 0) << rel;
  }

  void SyncedAt(std::int64_t seconds) {
    set_.LastSyncDate = FileTimeToDate(seconds, 0);
  }

  // Scans the set and returns the file of that relative name, or null.
  const SyncFile* Scan(const std::string& name) {
    EXPECT_TRUE(set_.BuildActionList())
        << ::testing::PrintToString(ui_.Texts());
    for (long i = 1; i <= set_.WFileCount(); ++i) {
      if (set_.WFile(i).RelativeName() == name) return &set_.WFile(i);
    }
    return nullptr;
  }

  // The situation and the conflict type of a file, for failure messages.
  std::string Describe(const SyncFile& file) const {
    std::ostringstream text;
    const int c = file.ComputeConflictIndex();
    text << "situation " << file.ComputeSituation(false) << ", conflict " << c;
    if (c > 0) text << " (" << set_.ConflictTypes(c).Name << ")";
    text << ", action " << file.Action << ", source " << file.SourceIndex
         << ", flags " << file.ActionFlags;
    return text.str();
  }

  bool Creates(const SyncFile& file) const {
    return (file.ActionFlags & kFlagCreate) != 0;
  }

  bool Confirm(const SyncFile& file) const {
    return NeedsConfirmation(set_, file.ComputeConflictIndex());
  }

  bool Conflict(const SyncFile& file) const {
    return IsConflict(set_, file.ComputeConflictIndex());
  }

  RecordingUserInterface ui_;
  TempDir dir_;
  Synchronizer set_;
};

// --- Two source folders -----------------------------------------------------

TEST_F(CatalogueTest, FirstSyncFileInOneFolderIsCopiedWithoutAsking) {
  AddFolder("A");
  AddFolder("B");
  Put("A", "f.txt", "alpha", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_TRUE(Creates(*f)) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, FirstSyncDifferentCopiesNeedConfirmation) {
  AddFolder("A");
  AddFolder("B");
  Put("A", "f.txt", "old", kOld);
  Put("B", "f.txt", "longer", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_TRUE(Confirm(*f)) << Describe(*f);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 2) << Describe(*f);
}

TEST_F(CatalogueTest, ChangedInOneFolderIsNoConflict) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  Put("A", "f.txt", "edited", kNew);
  Put("B", "f.txt", "old", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_FALSE(Conflict(*f)) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, CreatedInOneFolderIsCopiedWithoutAsking) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  Put("A", "f.txt", "brand new", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_TRUE(Creates(*f)) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, ChangedInBothFoldersNeedsConfirmation) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  Put("A", "f.txt", "edit one", kNew);
  Put("B", "f.txt", "edit two", kNewer);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_TRUE(Confirm(*f)) << Describe(*f);
  EXPECT_NE(f->Action, kDeleteAll) << Describe(*f);
}

TEST_F(CatalogueTest, DeletedFromOneFolderIsDeletedEverywhere) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  // A holds other files: an empty source would stop the run.
  Put("A", "other.txt", "kept", kOld);
  Put("B", "f.txt", "old", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kDeleteAll) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
  const int c = f->ComputeConflictIndex();
  ASSERT_GT(c, 0) << Describe(*f);
  // A set may choose another resolution for it.
  EXPECT_TRUE(set_.ConflictTypes(c).Configurable) << Describe(*f);
}

TEST_F(CatalogueTest, EmptySourceAfterASyncStopsTheDeletions) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  Put("B", "f.txt", "old", kOld);
  Put("B", "g.txt", "old too", kOld);
  EXPECT_FALSE(set_.BuildActionList());
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "The synchronization cannot proceed because the folder '" +
                dir_.Join("A") +
                "' is empty, so the files of the other folders would be "
                "deleted.  If it is a drive or share that is not mounted, "
                "mount it and try again; to delete the files, delete them in "
                "the other folders too.");
  EXPECT_EQ(ui_.messages[0].style, kMbExclamation);
}

TEST_F(CatalogueTest, EmptySourceAtTheFirstSyncIsFilled) {
  AddFolder("A");
  AddFolder("B");
  Put("B", "f.txt", "old", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 2) << Describe(*f);
}

TEST_F(CatalogueTest, DeletedFromOneFolderAndChangedInOtherIsRestored) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  Put("B", "f.txt", "edited", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 2) << Describe(*f);
  EXPECT_TRUE(Creates(*f)) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, UnchangedButDifferentNeedsConfirmation) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  Put("A", "f.txt", "longer text", kOld + kHour);
  Put("B", "f.txt", "short", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_TRUE(Confirm(*f)) << Describe(*f);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
}

TEST_F(CatalogueTest, ThreeSourcesChangedInOneCopiesToTheOtherTwo) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("B");
  AddFolder("C");
  Put("A", "f.txt", "edited", kNew);
  Put("B", "f.txt", "old", kOld);
  Put("C", "f.txt", "old", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_FALSE(Conflict(*f)) << Describe(*f);
  SyncFile& file = set_.WFile(1);
  EXPECT_EQ(file.PerformAction(true), 2) << Describe(*f);
}

// --- A source and a mirror --------------------------------------------------
// A mirror is made equal to its source without asking.

TEST_F(CatalogueTest, FileOnlyInMirrorIsDeletedWithoutAsking) {
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  Put("M", "f.txt", "stray", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kDeleteAll) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, FileOnlyInMirrorAfterSyncIsDeletedWithoutAsking) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  // The source holds other files: an empty source would stop the run.
  Put("A", "other.txt", "kept", kOld);
  Put("M", "f.txt", "stray", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kDeleteAll) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, FileMissingFromMirrorIsCreatedThere) {
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  Put("A", "f.txt", "source", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_TRUE(Creates(*f)) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, NewerMirrorCopyIsReplacedBySource) {
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  Put("A", "f.txt", "source", kOld);
  Put("M", "f.txt", "edited in the mirror", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, MirrorEditedAfterSyncIsReplacedBySource) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  Put("A", "f.txt", "source", kOld);
  Put("M", "f.txt", "edited in the mirror", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

// --- A source and a merge-to folder -----------------------------------------
// A merge-to folder receives the sources' files without asking.

TEST_F(CatalogueTest, FileOnlyInMergeFolderIsNotInTheRun) {
  AddFolder("A");
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  Put("A", "keep.txt", "source", kOld);
  Put("G", "f.txt", "merge only", kNew);
  EXPECT_EQ(Scan("f.txt"), nullptr);
  EXPECT_EQ(set_.WFileCount(), 1);
}

TEST_F(CatalogueTest, NewFileIsCopiedToMergeFolder) {
  AddFolder("A");
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  Put("A", "f.txt", "new", kNew);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_TRUE(Creates(*f)) << Describe(*f);
  EXPECT_EQ(set_.WFile(1).PerformAction(true), 1) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

TEST_F(CatalogueTest, FileChangedInSourceIsCopiedToMergeFolder) {
  SyncedAt(kSync);
  AddFolder("A");
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  Put("A", "f.txt", "edited", kNew);
  Put("G", "f.txt", "old", kOld);
  const SyncFile* f = Scan("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Action, kUseNewest) << Describe(*f);
  EXPECT_EQ(f->SourceIndex, 1) << Describe(*f);
  EXPECT_FALSE(Confirm(*f)) << Describe(*f);
}

}  // namespace
}  // namespace pairwell
