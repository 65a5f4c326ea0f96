// The conflict catalogue shipped in data/Pairwell.ini, run on real folders:
// for each everyday situation, the default action it gives and whether the
// person is asked to confirm it.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/action_texts.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
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
    ASSERT_TRUE(SetModifyTime(dir_.Join(rel), seconds)) << rel;
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

// --- The catalogue, situation by situation --------------------------------

struct CatalogueRow {
  const char* name;
  bool synced;  // a last sync at kSync (else the first sync)
  std::vector<std::pair<std::string, std::int32_t>> folders;
  struct File {
    std::string folder, name, content;
    std::int64_t seconds;
  };
  std::vector<File> files;
  // f.txt's expected default action (0: f.txt is not in the run).
  int action;
  int source;  // the copy used; 0: not checked
  std::optional<bool> creates;
  std::optional<bool> confirm;
  std::optional<bool> conflict;
  // The set may choose another resolution for the type.
  std::optional<bool> configurable;
  // How many copies PerformAction would make or delete.
  std::optional<int> operations;
  std::optional<long> files_in_run;
};

void PrintTo(const CatalogueRow& row, std::ostream* out) { *out << row.name; }

constexpr std::int32_t kSource = kFolderEnabled;
constexpr std::int32_t kMirror = kFolderEnabled | kFolderMirrorTo;
constexpr std::int32_t kMerge = kFolderEnabled | kFolderMergeTo;

// Expectations, in the order of CatalogueRow: action, source, creates,
// confirm, conflict, configurable, operations, files in the run ({}: not
// checked).
const CatalogueRow kRows[] = {
    // Two source folders.
    {"FirstSyncFileInOneFolderIsCopiedWithoutAsking", false,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "f.txt", "alpha", kOld}},
     kUseNewest, 1, true, false, {}, {}, {}, {}},
    {"FirstSyncDifferentCopiesNeedConfirmation", false,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "f.txt", "old", kOld}, {"B", "f.txt", "longer", kNew}},
     kUseNewest, 2, {}, true, {}, {}, {}, {}},
    {"ChangedInOneFolderIsNoConflict", true,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "f.txt", "edited", kNew}, {"B", "f.txt", "old", kOld}},
     kUseNewest, 1, {}, false, false, {}, {}, {}},
    {"CreatedInOneFolderIsCopiedWithoutAsking", true,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "f.txt", "brand new", kNew}},
     kUseNewest, 1, true, false, {}, {}, {}, {}},
    // Whatever is proposed, nothing is deleted.
    {"ChangedInBothFoldersNeedsConfirmation", true,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "f.txt", "edit one", kNew}, {"B", "f.txt", "edit two", kNewer}},
     kUseNewest, 0, {}, true, {}, {}, {}, {}},
    // A holds other files: an empty source would stop the run.
    {"DeletedFromOneFolderIsDeletedEverywhere", true,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "other.txt", "kept", kOld}, {"B", "f.txt", "old", kOld}},
     kDeleteAll, 0, {}, false, {}, true, {}, {}},
    {"EmptySourceAtTheFirstSyncIsFilled", false,
     {{"A", kSource}, {"B", kSource}},
     {{"B", "f.txt", "old", kOld}},
     kUseNewest, 2, {}, {}, {}, {}, {}, {}},
    {"DeletedFromOneFolderAndChangedInOtherIsRestored", true,
     {{"A", kSource}, {"B", kSource}},
     {{"B", "f.txt", "edited", kNew}},
     kUseNewest, 2, true, false, {}, {}, {}, {}},
    {"UnchangedButDifferentNeedsConfirmation", true,
     {{"A", kSource}, {"B", kSource}},
     {{"A", "f.txt", "longer text", kOld + kHour},
      {"B", "f.txt", "short", kOld}},
     kUseNewest, 1, {}, true, {}, {}, {}, {}},
    {"ThreeSourcesChangedInOneCopiesToTheOtherTwo", true,
     {{"A", kSource}, {"B", kSource}, {"C", kSource}},
     {{"A", "f.txt", "edited", kNew},
      {"B", "f.txt", "old", kOld},
      {"C", "f.txt", "old", kOld}},
     kUseNewest, 1, {}, {}, false, {}, 2, {}},
    // A source and a mirror: the mirror is made equal to its source without
    // asking.
    {"FileOnlyInMirrorIsDeletedWithoutAsking", false,
     {{"A", kSource}, {"M", kMirror}},
     {{"M", "f.txt", "stray", kOld}},
     kDeleteAll, 0, {}, false, {}, {}, {}, {}},
    {"FileOnlyInMirrorAfterSyncIsDeletedWithoutAsking", true,
     {{"A", kSource}, {"M", kMirror}},
     {{"A", "other.txt", "kept", kOld}, {"M", "f.txt", "stray", kNew}},
     kDeleteAll, 0, {}, false, {}, {}, {}, {}},
    {"FileMissingFromMirrorIsCreatedThere", false,
     {{"A", kSource}, {"M", kMirror}},
     {{"A", "f.txt", "source", kOld}},
     kUseNewest, 1, true, false, {}, {}, {}, {}},
    {"NewerMirrorCopyIsReplacedBySource", false,
     {{"A", kSource}, {"M", kMirror}},
     {{"A", "f.txt", "source", kOld},
      {"M", "f.txt", "edited in the mirror", kNew}},
     kUseNewest, 1, {}, false, {}, {}, {}, {}},
    {"MirrorEditedAfterSyncIsReplacedBySource", true,
     {{"A", kSource}, {"M", kMirror}},
     {{"A", "f.txt", "source", kOld},
      {"M", "f.txt", "edited in the mirror", kNew}},
     kUseNewest, 1, {}, false, {}, {}, {}, {}},
    // A source and a merge-to folder: the merge-to folder receives the
    // sources' files without asking.
    {"FileOnlyInMergeFolderIsNotInTheRun", false,
     {{"A", kSource}, {"G", kMerge}},
     {{"A", "keep.txt", "source", kOld}, {"G", "f.txt", "merge only", kNew}},
     0, 0, {}, {}, {}, {}, {}, 1},
    {"NewFileIsCopiedToMergeFolder", false,
     {{"A", kSource}, {"G", kMerge}},
     {{"A", "f.txt", "new", kNew}},
     kUseNewest, 1, true, false, {}, {}, 1, {}},
    {"FileChangedInSourceIsCopiedToMergeFolder", true,
     {{"A", kSource}, {"G", kMerge}},
     {{"A", "f.txt", "edited", kNew}, {"G", "f.txt", "old", kOld}},
     kUseNewest, 1, {}, false, {}, {}, {}, {}},
};

class CatalogueTableTest : public CatalogueTest,
                           public ::testing::WithParamInterface<CatalogueRow> {
};

TEST_P(CatalogueTableTest, DefaultActionOfTheSituation) {
  const CatalogueRow& row = GetParam();
  if (row.synced) SyncedAt(kSync);
  for (const auto& [folder, flags] : row.folders) AddFolder(folder, flags);
  for (const CatalogueRow::File& file : row.files) {
    Put(file.folder, file.name, file.content, file.seconds);
  }
  const SyncFile* f = Scan("f.txt");
  if (row.files_in_run) {
    EXPECT_EQ(set_.WFileCount(), *row.files_in_run);
  }
  if (row.action == 0) {
    EXPECT_EQ(f, nullptr);
    return;
  }
  ASSERT_NE(f, nullptr);
  const std::string seen = Describe(*f);
  EXPECT_EQ(f->Action, row.action) << seen;
  if (row.source != 0) {
    EXPECT_EQ(f->SourceIndex, row.source) << seen;
  }
  if (row.creates) {
    EXPECT_EQ(Creates(*f), *row.creates) << seen;
  }
  if (row.confirm) {
    EXPECT_EQ(Confirm(*f), *row.confirm) << seen;
  }
  if (row.conflict) {
    EXPECT_EQ(Conflict(*f), *row.conflict) << seen;
  }
  if (row.configurable) {
    const int c = f->ComputeConflictIndex();
    ASSERT_GT(c, 0) << seen;
    EXPECT_EQ(set_.ConflictTypes(c).Configurable, *row.configurable) << seen;
  }
  if (row.operations) {
    long i = 1;
    while (&set_.WFile(i) != f) ++i;
    EXPECT_EQ(set_.WFile(i).PerformAction(true), *row.operations) << seen;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Situations, CatalogueTableTest, ::testing::ValuesIn(kRows),
    [](const ::testing::TestParamInfo<CatalogueRow>& info) {
      return std::string(info.param.name);
    });

// --- Refusals ----------------------------------------------------------------

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

}  // namespace
}  // namespace pairwell
