// The folder scan of a sync set, on real folders: the folder checks and their
// messages, the reading of source, merge-to and mirror-to folders, the
// filters, the name tree, cancelling, and the status the scan keeps showing.
#include <errno.h>
#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "engine/log_file.h"
#include "engine/string_tree.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/system.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

constexpr char kNeedTwo[] =
    "You need to select at least two directories to synchronize.  Add more "
    "directories and try again.";
constexpr char kNoSource[] =
    "The synchronization cannot proceed because there are no source folders "
    "available.  Make sure that at least one folder exists and is set as a "
    "source.";
constexpr char kFewerThanTwo[] =
    "The synchronization cannot proceed because there are fewer than two "
    "directories enabled and available.";
constexpr char kQuietNotice[] =
    "* The following error occurred, but could not be shown because Quiet "
    "Mode is enabled.";
constexpr char kAccessStatus[] =
    "Attempting to access folders to be synchronized";

// An old, fixed modification time (2020-09-13), in seconds since the epoch.
constexpr std::int64_t kOldTime = 1600000000;

std::string NotAccessible(const std::string& path) {
  return "The synchronization cannot proceed beacuse the folder '" + path +
         "' could not be accessed.";
}

void SetModifyTime(const std::string& path, std::int64_t seconds) {
  ASSERT_TRUE(pairwell::SetModifyTime(path, seconds)) << path;
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) lines.push_back(line);
  return lines;
}

int CountOf(const std::vector<std::string>& lines, const std::string& line) {
  int count = 0;
  for (const std::string& l : lines) count += l == line ? 1 : 0;
  return count;
}

// A user interface that sets the set's StopFlag on the stop_at-th event
// pump (counted from 1; 0 never stops) and counts the pumps in calls.
class StoppingUserInterface : public RecordingUserInterface {
 public:
  void DoEvents() override {
    RecordingUserInterface::DoEvents();
    ++calls;
    if (set != nullptr && calls == stop_at) set->StopFlag = true;
  }

  Synchronizer* set = nullptr;
  int stop_at = 0;
  int calls = 0;
};

#ifndef _WIN32
// A user interface that makes every new file descriptor fail (by lowering
// the open-file limit to nothing) just before the scan reads the folder
// `target`, and gives the limit back once a message is shown. Permission
// bits cannot make a folder unreadable for root; the open-file limit holds
// for root too.
class FdStarvingUserInterface : public RecordingUserInterface {
 public:
  FdStarvingUserInterface() { getrlimit(RLIMIT_NOFILE, &saved_); }
  ~FdStarvingUserInterface() override { Restore(); }

  void DoEvents() override {
    RecordingUserInterface::DoEvents();
    if (set != nullptr && !starved_ &&
        set->SyncMsg == "Reading folder " + target) {
      struct rlimit none = saved_;
      none.rlim_cur = 0;
      starved_ = setrlimit(RLIMIT_NOFILE, &none) == 0;
    }
  }

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override {
    Restore();
    return RecordingUserInterface::MessageBox(text, style, caption);
  }

  void Restore() {
    if (starved_) setrlimit(RLIMIT_NOFILE, &saved_);
    starved_ = false;
  }

  Synchronizer* set = nullptr;
  std::string target;

 private:
  struct rlimit saved_ = {};
  bool starved_ = false;
};
#else
// Windows has no open-file limit to lower: the test that needs one skips.
class FdStarvingUserInterface : public RecordingUserInterface {
 public:
  void Restore() {}

  Synchronizer* set = nullptr;
  std::string target;
};
#endif

template <typename Ui>
class ScanFixture : public ::testing::Test {
 protected:
  // Makes the folder `name` (with parents) under the temporary folder,
  // appends it to the set with `flags` and returns its path.
  std::string AddFolder(const std::string& name,
                        std::int32_t flags = kFolderEnabled) {
    const std::string path = dir_.Join(name);
    std::filesystem::create_directories(path);
    return AddPath(path, flags);
  }

  // Appends a path to the set as it is (it need not exist).
  std::string AddPath(const std::string& path, std::int32_t flags) {
    set_.PathAdd(path);
    set_.SetPathFlags(set_.PathCount(), flags);
    return path;
  }

  // Writes the file `rel` under the temporary folder, making its folders.
  void Write(const std::string& rel, const std::string& content = "data") {
    std::filesystem::create_directories(
        std::filesystem::path(dir_.Join(rel)).parent_path());
    dir_.WriteFile(rel, content);
  }

  // The relative names of the working files, in WFile order.
  std::vector<std::string> FileNames() const {
    std::vector<std::string> names;
    for (long i = 1; i <= set_.WFileCount(); ++i) {
      names.push_back(set_.WFile(i).RelativeName());
    }
    return names;
  }

  // The working file of that relative name, or null.
  const SyncFile* FileNamed(const std::string& rel) const {
    for (long i = 1; i <= set_.WFileCount(); ++i) {
      if (set_.WFile(i).RelativeName() == rel) return &set_.WFile(i);
    }
    return nullptr;
  }

  // Sends the set's log to log.txt in the temporary folder.
  void AttachLog() {
    log_.SetPath(dir_.Join("log.txt"));
    log_.LogFlags = kLogOpenOnPrint;
    set_.SetLog(&log_);
  }

  std::vector<std::string> LogLines() const {
    return SplitLines(dir_.ReadFile("log.txt"));
  }

  // Expects exactly one message, with that text and style, under the
  // application title.
  void ExpectOneMessage(const std::string& text, int style) const {
    ASSERT_EQ(ui_.messages.size(), 1u) << ::testing::PrintToString(ui_.Texts());
    EXPECT_EQ(ui_.messages[0].text, text);
    EXPECT_EQ(ui_.messages[0].style, style);
    EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  }

  void ExpectNoWorkingData() const {
    EXPECT_EQ(set_.WPathCount(), 0);
    EXPECT_EQ(set_.WFileCount(), 0);
  }

  Ui ui_;
  TempDir dir_;
  LogFile log_;
  Synchronizer set_;
};

using FolderScanTest = ScanFixture<RecordingUserInterface>;
using FolderScanStopTest = ScanFixture<StoppingUserInterface>;
using FolderScanReadErrorTest = ScanFixture<FdStarvingUserInterface>;

// --- Folder checks and their messages -------------------------------------

TEST_F(FolderScanTest, NoFolderAtAllIsRefused) {
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kNeedTwo, kMbInformation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, OneFolderIsRefused) {
  AddFolder("A");
  Write("A/a.txt");
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kNeedTwo, kMbInformation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, NoSourceFolderIsRefused) {
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kNoSource, kMbInformation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, MissingSourceIsNotCountedAsSource) {
  // A source that is missing does not count, even when it may be created.
  AddPath(dir_.Join("A"), kFolderEnabled | kFolderAllowBaseCreation);
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kNoSource, kMbInformation);
  EXPECT_FALSE(dir_.Exists("A"));
}

TEST_F(FolderScanTest, OneAvailableFolderIsRefusedBeforeAnyAccess) {
  AddFolder("A");
  AddPath(dir_.Join("missing"), kFolderEnabled);
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kFewerThanTwo, kMbInformation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, FolderMissingOnAccessIsNamedWithExclamation) {
  AddFolder("A");
  AddFolder("B");
  const std::string missing = AddPath(dir_.Join("C"), kFolderEnabled);
  EXPECT_FALSE(set_.BuildActionList());
  // The check shows it with style 0, which gets the exclamation icon.
  ExpectOneMessage(NotAccessible(missing), kMbExclamation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, FolderThatCannotBeCreatedIsNamed) {
  AddFolder("A");
  dir_.WriteFile("blocker", "a file where a folder should be");
  const std::string blocked =
      AddPath(dir_.Join("blocker/B"),
              kFolderEnabled | kFolderMirrorTo | kFolderAllowBaseCreation);
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(NotAccessible(blocked), kMbExclamation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, SkippedFolderLeavingOneIsRefusedWithExclamation) {
  AddFolder("A");
  dir_.WriteFile("blocker", "a file where a folder should be");
  // Counted as available because it may be created; the creation fails and
  // the folder is skipped, which leaves one working folder.
  AddPath(dir_.Join("blocker/B"),
          kFolderEnabled | kFolderAllowBaseCreation | kFolderSkipOnError);
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kFewerThanTwo, kMbExclamation);
  ExpectNoWorkingData();
}

TEST_F(FolderScanTest, QuietModeLogsTheRefusalInsteadOfShowingIt) {
  AttachLog();
  set_.QuietMode = true;
  AddFolder("A");
  EXPECT_FALSE(set_.BuildActionList());
  EXPECT_TRUE(ui_.messages.empty());
  const std::vector<std::string> lines = LogLines();
  const std::vector<std::string> expected = {kQuietNotice,
                                             std::string("* ") + kNeedTwo};
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(std::vector<std::string>(lines.end() - 2, lines.end()), expected);
}

TEST_F(FolderScanTest, QuietModeShowErrToUserAnswersNo) {
  AttachLog();
  set_.QuietMode = true;
  ui_.answers = {kIdRetry};
  EXPECT_EQ(set_.ShowErrToUser("Disk on fire", kMbAbortRetryIgnore), kIdNo);
  EXPECT_TRUE(ui_.messages.empty());
  const std::vector<std::string> lines = LogLines();
  EXPECT_EQ(CountOf(lines, kQuietNotice), 1);
  EXPECT_EQ(CountOf(lines, "* Disk on fire"), 1);
}

// Styles with any of the values 2, 8, 16, 32 or 64 keep their own look; the
// others get the exclamation icon.
TEST_F(FolderScanTest, ShowErrToUserAddsExclamationToPlainStyles) {
  struct Case {
    int style;
    int shown;
  };
  const Case cases[] = {
      {kMbOkOnly, kMbOkOnly | kMbExclamation},
      {kMbOkCancel, kMbOkCancel | kMbExclamation},
      {kMbAbortRetryIgnore, kMbAbortRetryIgnore},
      {kMbYesNoCancel, kMbYesNoCancel},
      {kMbYesNo, kMbYesNo | kMbExclamation},
      {kMbRetryCancel, kMbRetryCancel | kMbExclamation},
      {kMbCritical, kMbCritical},
      {kMbQuestion, kMbQuestion},
      {kMbExclamation, kMbExclamation},
      {kMbInformation, kMbInformation},
  };
  for (const Case& c : cases) {
    ui_.messages.clear();
    ui_.answers = {kIdIgnore};
    EXPECT_EQ(set_.ShowErrToUser("Trouble", c.style), kIdIgnore)
        << "style " << c.style;
    ASSERT_EQ(ui_.messages.size(), 1u) << "style " << c.style;
    EXPECT_EQ(ui_.messages[0].style, c.shown) << "style " << c.style;
    EXPECT_EQ(ui_.messages[0].text, "Trouble");
    EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  }
}

TEST_F(FolderScanTest, LogsStartLineAfterEmptyLine) {
  AttachLog();
  set_.Name = "Holiday photos";
  AddFolder("A");
  AddFolder("B");
  const std::string before = FormatGeneralDate(Now());
  ASSERT_TRUE(set_.BuildActionList());
  const std::string after = FormatGeneralDate(Now());
  const std::vector<std::string> lines = LogLines();
  const std::string prefix = "Synchronize started: Holiday photos - ";
  std::size_t at = 0;
  while (at < lines.size() && lines[at].rfind(prefix, 0) != 0) ++at;
  ASSERT_LT(at, lines.size()) << dir_.ReadFile("log.txt");
  ASSERT_GT(at, 0u);
  EXPECT_EQ(lines[at - 1], "");
  const std::string date = lines[at].substr(prefix.size());
  EXPECT_EQ(date.size(), before.size()) << date;
  EXPECT_LE(before, date);
  EXPECT_LE(date, after);
}

// --- Which folders take part ----------------------------------------------

TEST_F(FolderScanTest, WorkingFoldersCopyPathsAndFlags) {
  const std::string a = AddFolder("A");
  const std::string m = AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  const std::string g = AddFolder("G", kFolderEnabled | kFolderMergeTo);
  ASSERT_TRUE(set_.BuildActionList());
  ASSERT_EQ(set_.WPathCount(), 3);
  EXPECT_EQ(set_.WPath(1), a);
  EXPECT_EQ(set_.WPath(2), m);
  EXPECT_EQ(set_.WPath(3), g);
  EXPECT_EQ(set_.WPathFlags(1), kFolderEnabled);
  EXPECT_EQ(set_.WPathFlags(2), kFolderEnabled | kFolderMirrorTo);
  EXPECT_EQ(set_.WPathFlags(3), kFolderEnabled | kFolderMergeTo);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(FolderScanTest, MissingSourceWithBaseCreationIsMadeAndOnlyReceives) {
  AddFolder("A");
  Write("A/f.txt");
  Write("A/sub/g.txt");
  const std::int32_t flags = kFolderEnabled | kFolderAllowBaseCreation;
  const std::string b = AddPath(dir_.Join("new/deeper/B"), flags);
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_TRUE(dir_.Exists("new/deeper/B"));
  ASSERT_EQ(set_.WPathCount(), 2);
  EXPECT_EQ(set_.WPath(2), b);
  EXPECT_EQ(set_.WPathFlags(2), flags | kFolderMergeTo);
  EXPECT_EQ(FolderTypeOf(set_.WPathFlags(2)), kFolderMergeTo);
  // Only the run treats it as merge-to; the set keeps it a source.
  EXPECT_EQ(set_.PathFlags(2), flags);
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"f.txt", "sub/g.txt"}));
  const SyncFile* f = FileNamed("f.txt");
  ASSERT_NE(f, nullptr);
  EXPECT_TRUE(f->CopyExists(1));
  EXPECT_FALSE(f->CopyExists(2));
}

TEST_F(FolderScanTest, CreatedMirrorFolderKeepsItsType) {
  AddFolder("A");
  const std::int32_t flags =
      kFolderEnabled | kFolderMirrorTo | kFolderAllowBaseCreation;
  AddPath(dir_.Join("M"), flags);
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_TRUE(dir_.Exists("M"));
  ASSERT_EQ(set_.WPathCount(), 2);
  EXPECT_EQ(set_.WPathFlags(2), flags);
}

TEST_F(FolderScanTest, MissingFolderWithSkipOnErrorIsLeftOutSilently) {
  const std::string a = AddFolder("A");
  AddPath(dir_.Join("C"), kFolderEnabled | kFolderSkipOnError);
  const std::string b = AddFolder("B");
  Write("B/b.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_FALSE(dir_.Exists("C"));
  ASSERT_EQ(set_.WPathCount(), 2);
  EXPECT_EQ(set_.WPath(1), a);
  EXPECT_EQ(set_.WPath(2), b);
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"b.txt"}));
}

TEST_F(FolderScanTest, DisabledFolderDoesNotCountTowardsTwo) {
  AddFolder("A");
  AddFolder("B", kFolderSource);  // disabled
  EXPECT_FALSE(set_.BuildActionList());
  ExpectOneMessage(kFewerThanTwo, kMbInformation);
}

TEST_F(FolderScanTest, DisabledFoldersAreNotRead) {
  const std::string a = AddFolder("A");
  AddFolder("C", kFolderSource);  // disabled, with a file
  Write("C/c.txt");
  AddPath(dir_.Join("D"), kFolderSource);  // disabled and missing
  const std::string b = AddFolder("B");
  Write("A/a.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_TRUE(ui_.messages.empty());
  ASSERT_EQ(set_.WPathCount(), 2);
  EXPECT_EQ(set_.WPath(1), a);
  EXPECT_EQ(set_.WPath(2), b);
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"a.txt"}));
}

// --- Filters ----------------------------------------------------------------

TEST_F(FolderScanTest, RecursiveOffReadsNoSubFolder) {
  set_.Recursive = false;
  AddFolder("A");
  AddFolder("B");
  Write("A/top.txt");
  Write("A/sub/inner.txt");
  Write("B/sub/other.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"top.txt"}));
  EXPECT_LT(set_.WRootTree().Find("sub"), 0);
}

TEST_F(FolderScanTest, FolderFilterNeverAppliesToFiles) {
  set_.FolderSpec = "keep*";
  AddFolder("A");
  AddFolder("B");
  Write("A/keep/a.txt");
  Write("A/skip/b.txt");
  Write("A/other.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"keep/a.txt", "other.txt"}));
}

TEST_F(FolderScanTest, FileFilterNeverAppliesToFolders) {
  set_.FileSpec = "*.txt";
  AddFolder("A");
  AddFolder("B");
  Write("A/a.txt");
  Write("A/b.doc");
  Write("A/data/c.txt");
  Write("A/data/d.doc");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"a.txt", "data/c.txt"}));
}

TEST_F(FolderScanTest, ExcludeListsApplyToTheirOwnKind) {
  set_.ExcludeSpec = "*.tmp";
  set_.FolderExcludeSpec = "cache";
  AddFolder("A");
  AddFolder("B");
  Write("A/keep.txt");
  Write("A/drop.tmp");
  Write("A/cache/c.txt");
  // A folder named like an excluded file, holding a file named like an
  // excluded folder: both are kept.
  Write("A/build.tmp/out.txt");
  Write("A/build.tmp/cache");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(),
            (std::vector<std::string>{"build.tmp/cache", "build.tmp/out.txt",
                                      "keep.txt"}));
}

TEST_F(FolderScanTest, EmptyExcludeListsExcludeNothing) {
  set_.FileSpec = "*";
  set_.FolderSpec = "*";
  set_.ExcludeSpec = "";
  set_.FolderExcludeSpec = "";
  AddFolder("A");
  AddFolder("B");
  Write("A/a.txt");
  Write("A/sub/b.dat");
  Write("B/noext");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(),
            (std::vector<std::string>{"a.txt", "sub/b.dat", "noext"}));
}

// --- Folder types -----------------------------------------------------------

TEST_F(FolderScanTest, MergeToFolderAddsNoNamesOfItsOwn) {
  AddFolder("A");
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  Write("A/shared.txt");
  Write("A/both/a.txt");
  Write("G/shared.txt");
  Write("G/only_g.txt");
  Write("G/both/a.txt");
  Write("G/both/extra.txt");
  Write("G/gsub/inner.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(),
            (std::vector<std::string>{"both/a.txt", "shared.txt"}));
  EXPECT_EQ(FileNamed("only_g.txt"), nullptr);
  // The sub-folder found only in the merge-to folder is not descended into.
  EXPECT_LT(set_.WRootTree().Find("gsub"), 0);
  EXPECT_LT(set_.WRootTree().Find("only_g.txt"), 0);
  EXPECT_EQ(set_.WRootTree().Count(), 2);
  // Names the sources gave do receive the merge-to folder's copies.
  const SyncFile* shared = FileNamed("shared.txt");
  ASSERT_NE(shared, nullptr);
  EXPECT_TRUE(shared->CopyExists(1));
  EXPECT_TRUE(shared->CopyExists(2));
  const SyncFile* nested = FileNamed("both/a.txt");
  ASSERT_NE(nested, nullptr);
  EXPECT_TRUE(nested->CopyExists(2));
}

TEST_F(FolderScanTest, FileOnlyInMergeToFolderGetsNoSyncFile) {
  AddFolder("A");
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  Write("G/lonely.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(set_.WFileCount(), 0);
  EXPECT_EQ(set_.WRootTree().Count(), 0);
}

TEST_F(FolderScanTest, MergeToFolderIsNotDescendedWhereSourcesHaveAFile) {
  AddFolder("A");
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  Write("A/x");
  Write("G/x/inner.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"x"}));
  const long x = set_.WRootTree().Find("x");
  ASSERT_GT(x, 0);
  EXPECT_EQ(set_.WRootTree().SubTree(x), nullptr);
}

TEST_F(FolderScanTest, MirrorOnlyFilesAndFoldersGetSyncFiles) {
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  Write("A/a.txt");
  Write("M/only_m.txt");
  Write("M/msub/deep.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(),
            (std::vector<std::string>{"a.txt", "msub/deep.txt", "only_m.txt"}));
  const SyncFile* only_m = FileNamed("only_m.txt");
  ASSERT_NE(only_m, nullptr);
  EXPECT_FALSE(only_m->CopyExists(1));
  EXPECT_TRUE(only_m->CopyExists(2));
}

TEST_F(FolderScanTest, FilesAreListedInTheOrderTheirNamesWereMet) {
  // Listed mirror, merge-to, source, source: the sources are read first,
  // then the merge-to folder, then the mirror; within a folder, names in
  // order ignoring case, a sub-folder's files where the sub-folder sorts.
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  AddFolder("G", kFolderEnabled | kFolderMergeTo);
  AddFolder("A");
  AddFolder("B");
  Write("A/gamma.txt");
  Write("A/beta.txt");
  Write("A/dir/zeta.txt");
  Write("A/Alpha.txt");
  Write("B/Echo.txt");
  Write("B/beta.txt");
  Write("B/delta.txt");
  Write("G/beta.txt");
  Write("G/epsilon.txt");
  Write("G/Zulu.txt");
  Write("M/Zulu.txt");
  Write("M/omega.txt");
  Write("M/Aardvark.txt");
  Write("M/gamma.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{
                             "Alpha.txt", "beta.txt", "dir/zeta.txt",
                             "gamma.txt", "delta.txt", "Echo.txt",
                             "Aardvark.txt", "omega.txt", "Zulu.txt"}));
  // Copies are filed under the working folder's own index.
  const SyncFile* beta = FileNamed("beta.txt");
  ASSERT_NE(beta, nullptr);
  EXPECT_FALSE(beta->CopyExists(1));
  EXPECT_TRUE(beta->CopyExists(2));
  EXPECT_TRUE(beta->CopyExists(3));
  EXPECT_TRUE(beta->CopyExists(4));
  const SyncFile* gamma = FileNamed("gamma.txt");
  ASSERT_NE(gamma, nullptr);
  EXPECT_TRUE(gamma->CopyExists(1));
  EXPECT_FALSE(gamma->CopyExists(2));
  EXPECT_TRUE(gamma->CopyExists(3));
  EXPECT_FALSE(gamma->CopyExists(4));
  // The merge-to folder is read before the mirror, so a name only the
  // mirror brings finds no place for the merge-to folder's copy.
  const SyncFile* zulu = FileNamed("Zulu.txt");
  ASSERT_NE(zulu, nullptr);
  EXPECT_TRUE(zulu->CopyExists(1));
  EXPECT_FALSE(zulu->CopyExists(2));
}

// --- The name tree and the copy records
// ---------------------------------------

TEST_F(FolderScanTest, TreeHoldsFoldersAsSubTreesAndFilesAsIndexes) {
  AddFolder("A");
  AddFolder("M", kFolderEnabled | kFolderMirrorTo);
  Write("A/top.txt");
  Write("A/sub/file.txt");
  Write("A/sub/deeper/leaf.txt");
  Write("M/msub/m.txt");
  ASSERT_TRUE(set_.BuildActionList());
  StringTree& root = set_.WRootTree();
  ASSERT_EQ(root.Count(), 3);
  EXPECT_EQ(root.ListStr(1), "msub");
  EXPECT_EQ(root.ListStr(2), "sub");
  EXPECT_EQ(root.ListStr(3), "top.txt");

  const long top = root.Find("top.txt");
  ASSERT_GT(top, 0);
  EXPECT_EQ(root.SubTree(top), nullptr);
  ASSERT_GE(root.ListInt(top), 1);
  EXPECT_EQ(set_.WFile(root.ListInt(top)).RelativeName(), "top.txt");

  std::shared_ptr<StringTree> sub = root.SubTree(root.Find("sub"));
  ASSERT_NE(sub, nullptr);
  ASSERT_EQ(sub->Count(), 2);
  const long file = sub->Find("file.txt");
  ASSERT_GT(file, 0);
  ASSERT_GE(sub->ListInt(file), 1);
  EXPECT_EQ(set_.WFile(sub->ListInt(file)).RelativeName(), "sub/file.txt");

  std::shared_ptr<StringTree> deeper = sub->SubTree(sub->Find("deeper"));
  ASSERT_NE(deeper, nullptr);
  const long leaf = deeper->Find("leaf.txt");
  ASSERT_GT(leaf, 0);
  EXPECT_EQ(set_.WFile(deeper->ListInt(leaf)).RelativeName(),
            "sub/deeper/leaf.txt");

  std::shared_ptr<StringTree> msub = root.SubTree(root.Find("msub"));
  ASSERT_NE(msub, nullptr);
  const long m = msub->Find("m.txt");
  ASSERT_GT(m, 0);
  EXPECT_EQ(set_.WFile(msub->ListInt(m)).RelativeName(), "msub/m.txt");
  EXPECT_EQ(set_.WFileCount(), 4);
}

TEST_F(FolderScanTest, CopyRecordsComeFromTheListing) {
  AddFolder("A");
  AddFolder("B");
  Write("A/a.txt", "hello");
  Write("B/a.txt", "hello again");
  Write("A/only_a.txt", "x");
  SetModifyTime(dir_.Join("A/a.txt"), kOldTime);
  SetModifyTime(dir_.Join("B/a.txt"), kOldTime + 7200);
  ASSERT_TRUE(SetMode(dir_.Join("B/a.txt"), 0444));
  ASSERT_TRUE(set_.BuildActionList());

  const SyncFile* a = FileNamed("a.txt");
  ASSERT_NE(a, nullptr);
  std::int64_t seconds_a = 0;
  long nanoseconds_a = 0;
  std::int64_t seconds_b = 0;
  long nanoseconds_b = 0;
  ASSERT_TRUE(GetModifyTime(dir_.Join("A/a.txt"), &seconds_a, &nanoseconds_a));
  ASSERT_TRUE(GetModifyTime(dir_.Join("B/a.txt"), &seconds_b, &nanoseconds_b));
  EXPECT_EQ(a->Copy(1).size, 5);
  EXPECT_EQ(a->Copy(2).size, 11);
  EXPECT_DOUBLE_EQ(a->Copy(1).modify_date,
                   FileTimeToDate(seconds_a, nanoseconds_a));
  EXPECT_DOUBLE_EQ(a->Copy(2).modify_date,
                   FileTimeToDate(seconds_b, nanoseconds_b));
  EXPECT_DOUBLE_EQ(a->Copy(1).modify_date, FileTimeToDate(kOldTime, 0));
  EXPECT_GT(a->Copy(1).create_date, 0);
  EXPECT_EQ(a->Copy(1).attributes & kAttrReadOnly, 0);
  EXPECT_NE(a->Copy(2).attributes & kAttrReadOnly, 0);
  EXPECT_EQ(a->Copy(1).attributes & kAttrDirectory, 0);

  const SyncFile* only_a = FileNamed("only_a.txt");
  ASSERT_NE(only_a, nullptr);
  EXPECT_EQ(only_a->Copy(1).size, 1);
  EXPECT_FALSE(only_a->CopyExists(2));
}

TEST_F(FolderScanTest, FutureDatedCopiesAreCountedWhenWarned) {
  AddFolder("A");
  AddFolder("B");
  Write("A/future.txt");
  Write("B/future.txt");
  Write("A/past.txt");
  const std::int64_t tomorrow =
      static_cast<std::int64_t>(time(nullptr)) + 2 * 86400;
  SetModifyTime(dir_.Join("A/future.txt"), tomorrow);
  SetModifyTime(dir_.Join("B/future.txt"), tomorrow + 60);
  SetModifyTime(dir_.Join("A/past.txt"), kOldTime);
  ASSERT_TRUE(set_.WarnFutureDate);
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(set_.FutureDateCount, 2);
}

TEST_F(FolderScanTest, FutureDatedCopiesAreNotCountedWhenNotWarned) {
  set_.WarnFutureDate = false;
  AddFolder("A");
  AddFolder("B");
  Write("A/future.txt");
  SetModifyTime(dir_.Join("A/future.txt"),
                static_cast<std::int64_t>(time(nullptr)) + 2 * 86400);
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(set_.WFileCount(), 1);
  EXPECT_EQ(set_.FutureDateCount, 0);
}

TEST_F(FolderScanTest, DefaultActionsAreComputedForEveryFile) {
  AddFolder("A");
  AddFolder("B");
  Write("A/one.txt", "same");
  Write("B/one.txt", "same");
  SetModifyTime(dir_.Join("A/one.txt"), kOldTime);
  SetModifyTime(dir_.Join("B/one.txt"), kOldTime);
  Write("A/two.txt");
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(set_.SyncMsg, "Computing default actions");
  // Without conflict types: copies that seem the same are left alone, the
  // rest waits for the person; both may create.
  const SyncFile* one = FileNamed("one.txt");
  const SyncFile* two = FileNamed("two.txt");
  ASSERT_NE(one, nullptr);
  ASSERT_NE(two, nullptr);
  EXPECT_EQ(one->Action, kDoNothing);
  EXPECT_EQ(two->Action, kUndecided);
  EXPECT_EQ(one->ActionFlags, 8 | kFlagCreate);
  EXPECT_EQ(two->ActionFlags, 8 | kFlagCreate);
}

// --- Names the scan leaves out
// ------------------------------------------------

TEST_F(FolderScanTest, NamesDifferingOnlyInCaseKeepTheFirstByBytes) {
  AttachLog();
  const std::string a = AddFolder("A");
  AddFolder("B");
  Write("A/Readme.txt", "lower");
  Write("A/README.TXT", "upper");
  if (!dir_.Exists("A/Readme.txt") ||
      dir_.ReadFile("A/Readme.txt") != "lower") {
    GTEST_SKIP() << "the file system ignores case";
  }
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"README.TXT"}));
  const SyncFile* kept = FileNamed("README.TXT");
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->Copy(1).size, 5);  // "upper"
  const std::vector<std::string> lines = LogLines();
  EXPECT_EQ(CountOf(lines, "Left out: " + a +
                               "/Readme.txt (its name differs only in case "
                               "from " +
                               a + "/README.TXT)"),
            1)
      << dir_.ReadFile("log.txt");
  int left_out = 0;
  for (const std::string& line : lines) {
    left_out += line.rfind("Left out: ", 0) == 0 ? 1 : 0;
  }
  EXPECT_EQ(left_out, 1);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(FolderScanTest, FoldersDifferingOnlyInCaseKeepTheFirstByBytes) {
  AttachLog();
  AddFolder("A");
  const std::string b = AddFolder("B");
  Write("B/docs/lower.txt");
  Write("B/Docs/upper.txt");
  if (!dir_.Exists("B/docs/lower.txt") || dir_.Exists("B/docs/upper.txt")) {
    GTEST_SKIP() << "the file system ignores case";
  }
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"Docs/upper.txt"}));
  EXPECT_EQ(CountOf(LogLines(), "Left out: " + b +
                                    "/docs (its name differs only in case "
                                    "from " +
                                    b + "/Docs)"),
            1)
      << dir_.ReadFile("log.txt");
}

TEST_F(FolderScanTest, LinksAndFifosAreLeftOutAndLogged) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: symbolic links and fifos";
#else
  AttachLog();
  const std::string a = AddFolder("A");
  AddFolder("B");
  Write("A/real.txt");
  Write("B/elsewhere/target.txt");
  ASSERT_EQ(
      symlink(dir_.Join("A/real.txt").c_str(), dir_.Join("A/link.txt").c_str()),
      0);
  ASSERT_EQ(
      symlink(dir_.Join("B/elsewhere").c_str(), dir_.Join("A/linkdir").c_str()),
      0);
  ASSERT_EQ(mkfifo(dir_.Join("A/pipe").c_str(), 0644), 0);
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(),
            (std::vector<std::string>{"real.txt", "elsewhere/target.txt"}));
  EXPECT_LT(set_.WRootTree().Find("linkdir"), 0);
  const std::vector<std::string> lines = LogLines();
  EXPECT_EQ(CountOf(lines, "Left out: " + a +
                               "/link.txt (symbolic link, not "
                               "followed)"),
            1)
      << dir_.ReadFile("log.txt");
  EXPECT_EQ(CountOf(lines, "Left out: " + a +
                               "/linkdir (symbolic link, not "
                               "followed)"),
            1);
  EXPECT_EQ(CountOf(lines, "Left out: " + a + "/pipe (fifo, not copied)"), 1);
  EXPECT_TRUE(ui_.messages.empty());
#endif
}

TEST_F(FolderScanReadErrorTest, UnreadableSubFolderEndsTheScan) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: the open-file limit (setrlimit)";
#endif
  ui_.set = &set_;
  // The folder becomes unreadable when this thread reads it.
  set_.SetScanThreads(1);
  AddFolder("A");
  const std::string b = AddFolder("B");
  Write("A/a.txt");
  Write("B/b.txt");
  Write("B/sub/c.txt");
  ui_.target = b + "/sub";
  EXPECT_FALSE(set_.BuildActionList());
  ui_.Restore();
  ASSERT_EQ(ui_.messages.size(), 1u) << ::testing::PrintToString(ui_.Texts());
  EXPECT_EQ(ui_.messages[0].text,
            "The synchronization cannot proceed because the folder '" + b +
                "/sub' could not be read: " + ErrorText(EMFILE));
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
}

// --- Cancelling and the status shown
// ------------------------------------------

TEST_F(FolderScanStopTest, StopAtAnyEventPumpFailsTheScan) {
  ui_.set = &set_;
  AddFolder("A");
  AddFolder("B");
  Write("A/a.txt");
  Write("A/sub/b.txt");
  Write("A/zz/d.txt");
  Write("B/c.txt");
  for (int i = 0; i < 200; ++i) Write("A/n" + std::to_string(1000 + i));
  ASSERT_TRUE(set_.BuildActionList());
  const int pumps = ui_.calls;
  // Two checks of two folders, four folders read, two batches of files.
  ASSERT_EQ(pumps, 4 + 4 + 2);
  for (int n = 1; n <= pumps; ++n) {
    ui_.calls = 0;
    ui_.stop_at = n;
    EXPECT_FALSE(set_.BuildActionList()) << "stopped at pump " << n;
    EXPECT_TRUE(set_.StopFlag) << "stopped at pump " << n;
    // The request is honoured at once: nothing runs that would pump again.
    EXPECT_EQ(ui_.calls, n) << "stopped at pump " << n;
    if (n <= 4) {
      // Stopped while the folders were checked: no working data is kept.
      EXPECT_EQ(set_.WPathCount(), 0) << "stopped at pump " << n;
      EXPECT_EQ(set_.WFileCount(), 0) << "stopped at pump " << n;
    }
  }
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(FolderScanStopTest, EarlierStopRequestIsClearedAtStart) {
  AddFolder("A");
  AddFolder("B");
  Write("A/a.txt");
  set_.StopFlag = true;
  EXPECT_TRUE(set_.BuildActionList());
  EXPECT_FALSE(set_.StopFlag);
  EXPECT_EQ(set_.WFileCount(), 1);
}

TEST_F(FolderScanTest, EventsArePumpedPerFolderAndPerBatchOfFiles) {
  AddFolder("A");
  AddFolder("C", kFolderSource);  // disabled: neither checked nor read
  AddFolder("B");
  for (int i = 0; i < 300; ++i) Write("A/f" + std::to_string(1000 + i));
  Write("A/sub/g.txt");
  ASSERT_TRUE(set_.BuildActionList());
  ASSERT_EQ(set_.WFileCount(), 301);
  // 2 checks x 2 enabled folders, 3 folders read (A, A/sub, B), and files
  // 1, 129 and 257 while computing default actions.
  EXPECT_EQ(ui_.events_pumped, 4 + 3 + 3);
  ASSERT_FALSE(ui_.statuses.empty());
  EXPECT_EQ(ui_.statuses.front(), kAccessStatus);
}

TEST_F(FolderScanTest, ManageUIShowsStatusAtOnceThenAtMostEvery50ms) {
  set_.SyncMsg = "first";
  const auto start = std::chrono::steady_clock::now();
  set_.ManageUI();
  set_.SyncMsg = "second";
  set_.ManageUI();
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - start);
  EXPECT_EQ(ui_.events_pumped, 2);
  EXPECT_EQ(ui_.statuses, (std::vector<std::string>{"first"}))
      << "two calls " << elapsed.count() << " ms apart";
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  set_.ManageUI();
  EXPECT_EQ(ui_.events_pumped, 3);
  EXPECT_EQ(ui_.statuses, (std::vector<std::string>{"first", "second"}));
}

TEST_F(FolderScanTest, FreeSyncDataEmptiesTheWorkingData) {
  AddFolder("A");
  AddFolder("B");
  Write("A/a.txt");
  Write("B/sub/b.txt");
  ASSERT_TRUE(set_.BuildActionList());
  ASSERT_EQ(set_.WFileCount(), 2);
  set_.FreeSyncData();
  EXPECT_EQ(set_.WFileCount(), 0);
  EXPECT_EQ(set_.WPathCount(), 0);
  EXPECT_EQ(set_.WRootTree().Count(), 0);
  // The set itself keeps its folders, and a new scan starts afresh.
  EXPECT_EQ(set_.PathCount(), 2);
  ASSERT_TRUE(set_.BuildActionList());
  EXPECT_EQ(FileNames(), (std::vector<std::string>{"a.txt", "sub/b.txt"}));
}

// --- Many files -------------------------------------------------------------

TEST_F(FolderScanTest, OneFolderOfThreeThousandFiles) {
  AddFolder("A");
  AddFolder("B");
  // Names alternate the case of their first letter, so only an order that
  // ignores case puts them in number order. Written backwards.
  std::vector<std::string> expected;
  for (int i = 0; i < 3000; ++i) {
    char name[16];
    std::snprintf(name, sizeof name, "%c%04d.txt", i % 2 ? 'F' : 'f', i);
    expected.push_back(name);
  }
  for (auto it = expected.rbegin(); it != expected.rend(); ++it) {
    Write("A/" + *it, *it);
  }
  ASSERT_TRUE(set_.BuildActionList());
  ASSERT_EQ(set_.WFileCount(), 3000);
  EXPECT_EQ(FileNames(), expected);
  StringTree& root = set_.WRootTree();
  ASSERT_EQ(root.Count(), 3000);
  for (long k = 1; k <= root.Count(); ++k) {
    ASSERT_EQ(root.ListStr(k), expected[static_cast<std::size_t>(k - 1)]);
    ASSERT_EQ(root.ListInt(k), k);
    ASSERT_EQ(set_.WFile(k).Copy(1).size, 9);
  }
}

TEST_F(FolderScanTest, ThirtyFoldersOfOneHundredFiles) {
  AddFolder("A");
  AddFolder("B");
  std::vector<std::string> expected;
  for (int d = 0; d < 30; ++d) {
    for (int f = 0; f < 100; ++f) {
      char name[32];
      std::snprintf(name, sizeof name, "d%02d/f%03d.txt", d, f);
      expected.push_back(name);
    }
  }
  for (auto it = expected.rbegin(); it != expected.rend(); ++it) {
    Write("A/" + *it);
  }
  ASSERT_TRUE(set_.BuildActionList());
  ASSERT_EQ(set_.WFileCount(), 3000);
  EXPECT_EQ(FileNames(), expected);
  StringTree& root = set_.WRootTree();
  ASSERT_EQ(root.Count(), 30);
  for (long k = 1; k <= root.Count(); ++k) {
    std::shared_ptr<StringTree> sub = root.SubTree(k);
    ASSERT_NE(sub, nullptr) << root.ListStr(k);
    ASSERT_EQ(sub->Count(), 100) << root.ListStr(k);
    for (long n = 1; n <= sub->Count(); ++n) {
      ASSERT_EQ(set_.WFile(sub->ListInt(n)).RelativeName(),
                root.ListStr(k) + "/" + sub->ListStr(n));
    }
  }
}

}  // namespace
}  // namespace pairwell
