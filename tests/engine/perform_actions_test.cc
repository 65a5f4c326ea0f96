// Carrying out a run's actions on real folders: copies and deletions, the
// folders a run creates, simulation mode, the error policy with its
// "ErrorHandling" table, quiet mode and stop requests.
#include <errno.h>
#include <gtest/gtest.h>
#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#endif

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/run_files.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/file_system.h"
#include "util/system.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

// Fixed modification times in seconds since the epoch: 2020-09-13 and
// 2023-11-14, both safely in the past.
constexpr std::int64_t kOldTime = 1600000000;
constexpr std::int64_t kNewTime = 1700000000;

constexpr char kAskSuffix[] =
    "\n\nWould you like to abort, try again (retry), or skip the action and "
    "continue (ignore)?";
constexpr char kQuietNotice[] =
    "* The following error occurred, but could not be shown because Quiet "
    "Mode is enabled.";

// The ErrorHandling key of the error a guarded folder causes.
std::string CodeOf(const ImmutableGuard& guard) {
  return "Code" + std::to_string(guard.error_code());
}

// The whole prompt the error policy shows for a failed step.
std::string Prompt(const std::string& message, int error_number) {
  return message + "\n\nThe error was: " + ErrorText(error_number) + " (code " +
         std::to_string(SystemErrorCode(error_number)) + ")" + kAskSuffix;
}

std::string CopyMessage(const std::string& source, const std::string& dest) {
  return "Unable to perform the copy operation:\n\n" + source + " -> " + dest;
}

std::string FolderMessage(const std::string& folder) {
  return "Unable to create the following folder:\n\n" + folder;
}

std::string DeleteMessage(const std::string& path) {
  return "Unable to delete the following file:\n\n" + path;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) lines.push_back(line);
  return lines;
}

std::vector<std::string> LinesStartingWith(const std::string& text,
                                           const std::string& prefix) {
  std::vector<std::string> found;
  for (const std::string& line : Lines(text)) {
    if (line.rfind(prefix, 0) == 0) found.push_back(line);
  }
  return found;
}

#ifndef _WIN32
// Lowers the largest file the process may write, so that a copy fails
// half-way with EFBIG (root is bound by it too). SIGXFSZ is ignored while
// the limit holds.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved_);
    old_handler_ = signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit = saved_;
    limit.rlim_cur = bytes;
    active_ = setrlimit(RLIMIT_FSIZE, &limit) == 0;
  }
  ~FileSizeLimit() { Release(); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  bool active() const { return active_; }
  void Release() {
    if (!active_) return;
    setrlimit(RLIMIT_FSIZE, &saved_);
    signal(SIGXFSZ, old_handler_);
    active_ = false;
  }

 private:
  struct rlimit saved_;
  void (*old_handler_)(int) = SIG_DFL;
  bool active_ = false;
};
#endif

class PerformActionsTest : public ::testing::Test {
 protected:
  PerformActionsTest() {
    a_ = tmp_.Join("a");
    b_ = tmp_.Join("b");
    c_ = tmp_.Join("c");
    MakeFolder(a_);
    MakeFolder(b_);
    MakeFolder(c_);
    log_.SetPath(tmp_.Join("run.log"));
    log_.LogFlags = kLogNoHeader;
    log_.OpenLog();
    set_.Name = "Docs";
    set_.SetLog(&log_);
    set_.SetRunState(&run_state_);
    // The operations themselves, with deletions and replacements final:
    // keeping the old copies has tests of its own.
    set_.VersionDays = 0;
  }

  ~PerformActionsTest() override { log_.CloseLog(); }

  // Folders a (source) and b, and c when three; b and c mirror a unless
  // the set is given sources only.
  void UseFolders(int count, bool mirrors = true) {
    set_.PathAdd(a_);
    set_.PathAdd(b_);
    if (count == 3) set_.PathAdd(c_);
    if (!mirrors) return;
    for (int i = 2; i <= count; ++i) {
      set_.SetPathFlags(i, kFolderEnabled | kFolderMirrorTo);
    }
  }

  void LoadCatalogue() {
    INIFile ini;
    ASSERT_TRUE(
        ini.LoadFile(std::string(PAIRWELL_SOURCE_DIR) + "/data/Pairwell.ini"));
    set_.ReadConflictInfo(*ini.Section("Conflict Types"));
    ASSERT_GT(set_.ConflictTypeCount(), 0);
  }

  void UseNewest(const std::string& relative_name, int source,
                 std::uint16_t flags) {
    SyncFile& file = FileNamed(set_, relative_name);
    file.Action = kUseNewest;
    file.SourceIndex = source;
    file.ActionFlags = flags;
  }

  void DeleteAll(const std::string& relative_name, std::uint16_t flags = 0) {
    SyncFile& file = FileNamed(set_, relative_name);
    file.Action = kDeleteAll;
    file.ActionFlags = flags;
  }

  void SetErrorHandling(const std::string& key, const std::string& value) {
    auto section = std::make_shared<INIFileSection>("ErrorHandling");
    section->AddVar(key, value);
    run_state_.error_handling = section;
  }

  std::string LogText() const { return Read(tmp_.Join("run.log")); }

  // Two files for the error tests: "inner/f.txt", copied into b's immutable
  // folder "inner", which fails with the guard's error; then "z.txt", copied
  // into b itself, which works. Both b copies are older than a's.
  void SetUpFailingThenWorkingFile() {
    MakeFolder(a_ + "/inner");
    MakeFolder(b_ + "/inner");
    Put(a_ + "/inner/f.txt", "new inner", kNewTime);
    Put(b_ + "/inner/f.txt", "old inner", kOldTime);
    Put(a_ + "/z.txt", "new z", kNewTime);
    Put(b_ + "/z.txt", "old z", kOldTime);
    UseFolders(2);
    BuildSilently(set_, ui_);
    ASSERT_EQ(set_.WFileCount(), 2);
    ASSERT_EQ(set_.WFile(1).RelativeName(), "inner/f.txt");
    ASSERT_EQ(set_.WFile(2).RelativeName(), "z.txt");
    UseNewest("inner/f.txt", 1, kFlagCreate);
    UseNewest("z.txt", 1, kFlagCreate);
  }

  std::string InnerCopyPrompt(const ImmutableGuard& guard) const {
    return Prompt(CopyMessage(a_ + "/inner/f.txt", b_ + "/inner/f.txt"),
                  guard.error_number());
  }

  RecordingUserInterface ui_;
  TempDir tmp_;
  std::string a_;
  std::string b_;
  std::string c_;
  LogFile log_;
  RunState run_state_;
  Synchronizer set_;
};

// --- Copies -----------------------------------------------------------------

TEST_F(PerformActionsTest, CopyReplacesTheOlderCopyKeepingTimeAndMode) {
  Put(a_ + "/f.txt", "fresh content", kNewTime, 123456789, 0640);
  Put(b_ + "/f.txt", "stale", kOldTime, 0, 0644);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  const FileState source = StateOf(a_ + "/f.txt");

  set_.PerformActions();

  EXPECT_EQ(StateOf(b_ + "/f.txt"), source);
  EXPECT_EQ(StateOf(a_ + "/f.txt"), source);
  EXPECT_TRUE(PartialFiles(b_).empty());
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_FALSE(set_.StopFlag);
  const std::vector<std::string> copies = LinesStartingWith(LogText(), "Copy ");
  ASSERT_EQ(copies.size(), 1u) << LogText();
  EXPECT_EQ(copies[0], "Copy " + b_ + "/f.txt from " + a_ + "/f.txt");
}

TEST_F(PerformActionsTest, CopyGoesFromTheSourceIndexWhicheverFolderItIs) {
  Put(a_ + "/f.txt", "older", kOldTime);
  Put(b_ + "/f.txt", "newer in the second folder", kNewTime, 5);
  UseFolders(2, /*mirrors=*/false);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 2, 0);

  set_.PerformActions();

  EXPECT_EQ(StateOf(a_ + "/f.txt"), StateOf(b_ + "/f.txt"));
  EXPECT_EQ(Read(a_ + "/f.txt"), "newer in the second folder");
  EXPECT_EQ(
      LinesStartingWith(LogText(), "Copy "),
      std::vector<std::string>{"Copy " + a_ + "/f.txt from " + b_ + "/f.txt"});
}

TEST_F(PerformActionsTest, MissingCopyIsCreatedWithItsFoldersUnderFlagCreate) {
  MakeFolder(a_ + "/sub");
  MakeFolder(a_ + "/sub/deeper");
  Put(a_ + "/sub/deeper/f.txt", "only here", kNewTime, 42);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("sub/deeper/f.txt", 1, kFlagCreate);

  set_.PerformActions();

  EXPECT_EQ(StateOf(b_ + "/sub/deeper/f.txt"),
            StateOf(a_ + "/sub/deeper/f.txt"));
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, MissingCopyIsNotCreatedWithoutFlagCreate) {
  MakeFolder(a_ + "/sub");
  Put(a_ + "/sub/f.txt", "only here", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("sub/f.txt", 1, 0);

  set_.PerformActions();

  EXPECT_FALSE(Exists(b_ + "/sub"));
  EXPECT_TRUE(LinesStartingWith(LogText(), "Copy ").empty()) << LogText();
}

TEST_F(PerformActionsTest, CopyThatSeemsTheSameIsSkippedUnlessForced) {
  Put(a_ + "/f.txt", "abc", kNewTime);
  Put(b_ + "/f.txt", "xyz", kNewTime);  // same date and size, other bytes
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  set_.PerformActions();
  EXPECT_EQ(Read(b_ + "/f.txt"), "xyz");

  UseNewest("f.txt", 1, kFlagCreate | kFlagForceCopy);
  set_.PerformActions();
  EXPECT_EQ(Read(b_ + "/f.txt"), "abc");
}

TEST_F(PerformActionsTest, PerformActionReturnsTheOperationsAndRecordsThem) {
  Put(a_ + "/f.txt", "newest", kNewTime);
  Put(b_ + "/f.txt", "old", kOldTime);
  UseFolders(3);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  SyncFile& file = FileNamed(set_, "f.txt");

  EXPECT_EQ(file.PerformAction(false), 2);

  EXPECT_EQ(Read(b_ + "/f.txt"), "newest");
  EXPECT_EQ(Read(c_ + "/f.txt"), "newest");
  // The records follow the disk: nothing is left to do.
  EXPECT_EQ(file.PerformAction(true), 0);
}

TEST_F(PerformActionsTest, UndecidedAndDoNothingTouchNothing) {
  Put(a_ + "/f.txt", "new", kNewTime);
  Put(b_ + "/f.txt", "old", kOldTime);
  Put(a_ + "/g.txt", "new", kNewTime);
  Put(b_ + "/g.txt", "old", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  FileNamed(set_, "f.txt").Action = kUndecided;
  FileNamed(set_, "g.txt").Action = kDoNothing;
  FileNamed(set_, "f.txt").ActionFlags = FileNamed(set_, "g.txt").ActionFlags = 0xFF;
  const FileState f = StateOf(b_ + "/f.txt");
  const FileState g = StateOf(b_ + "/g.txt");

  EXPECT_EQ(FileNamed(set_, "f.txt").PerformAction(false), 0);
  EXPECT_EQ(FileNamed(set_, "g.txt").PerformAction(false), 0);
  set_.PerformActions();

  EXPECT_EQ(StateOf(b_ + "/f.txt"), f);
  EXPECT_EQ(StateOf(b_ + "/g.txt"), g);
  EXPECT_TRUE(LinesStartingWith(LogText(), "Copy ").empty());
  EXPECT_TRUE(LinesStartingWith(LogText(), "Deleting ").empty());
}

TEST_F(PerformActionsTest, DefaultActionOfANewFileCopiesItOver) {
  LoadCatalogue();
  Put(a_ + "/new.txt", "brand new", kNewTime);
  UseFolders(2, /*mirrors=*/false);
  BuildSilently(set_, ui_);
  ASSERT_EQ(FileNamed(set_, "new.txt").Action, kUseNewest);

  set_.PerformActions();

  EXPECT_EQ(StateOf(b_ + "/new.txt"), StateOf(a_ + "/new.txt"));
}

TEST_F(PerformActionsTest, ActionsFollowTheListOrderAndEndWithCompletedLine) {
  Put(a_ + "/one.txt", "1", kNewTime);
  Put(a_ + "/two.txt", "2", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  ASSERT_EQ(set_.WFileCount(), 2);
  const std::string first = set_.WFile(1).RelativeName();
  const std::string second = set_.WFile(2).RelativeName();
  UseNewest("one.txt", 1, kFlagCreate);
  UseNewest("two.txt", 1, kFlagCreate);
  const int pumps_before = ui_.events_pumped;

  set_.PerformActions();

  EXPECT_GE(ui_.events_pumped - pumps_before, 2);
  const std::vector<std::string> lines = Lines(LogText());
  std::vector<std::string> tail;
  for (const std::string& line : lines) {
    if (line.rfind("Copy ", 0) == 0 || line.rfind("Sync actions", 0) == 0) {
      tail.push_back(line);
    }
  }
  ASSERT_EQ(tail.size(), 3u) << LogText();
  EXPECT_EQ(tail[0], "Copy " + b_ + "/" + first + " from " + a_ + "/" + first);
  EXPECT_EQ(tail[1],
            "Copy " + b_ + "/" + second + " from " + a_ + "/" + second);
  EXPECT_TRUE(std::regex_match(
      tail[2], std::regex("Sync actions completed - "
                          "\\d{4}-\\d{2}-\\d{2} \\d{2}:\\d{2}:\\d{2}")))
      << tail[2];
  EXPECT_EQ(set_.SyncMsg, tail[2]);
}

TEST_F(PerformActionsTest, StopRequestedBetweenFilesStartsNoFurtherFile) {
  Put(a_ + "/one.txt", "1", kNewTime);
  Put(a_ + "/two.txt", "2", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  ASSERT_EQ(set_.WFile(1).RelativeName(), "one.txt");
  UseNewest("one.txt", 1, kFlagCreate);
  UseNewest("two.txt", 1, kFlagCreate);
  // The progress window's button, pressed once the first file is done and
  // before the second one's turn.
  ui_.on_events = [this] {
    if (set_.CurrentAction() == 2) set_.StopFlag = true;
  };

  set_.PerformActions();

  EXPECT_TRUE(Exists(b_ + "/one.txt"));
  EXPECT_FALSE(Exists(b_ + "/two.txt"));
  EXPECT_EQ(LinesStartingWith(LogText(), "Sync actions stopped - ").size(), 1u)
      << LogText();
  EXPECT_TRUE(LinesStartingWith(LogText(), "Sync actions completed").empty());
}

// --- Read-only copies -------------------------------------------------------

TEST_F(PerformActionsTest, ReadOnlyDestinationIsSkippedWithoutFlagTwo) {
  Put(a_ + "/f.txt", "new", kNewTime, 0, 0640);
  Put(b_ + "/f.txt", "read-only old", kOldTime, 0, 0444);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate | kFlagForceCopy);
  const FileState before = StateOf(b_ + "/f.txt");

  set_.PerformActions();

  EXPECT_EQ(StateOf(b_ + "/f.txt"), before);
  EXPECT_TRUE(LinesStartingWith(LogText(), "Copy ").empty()) << LogText();
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, ReadOnlyDestinationIsOverwrittenWithFlagTwo) {
  Put(a_ + "/f.txt", "new", kNewTime, 77, 0640);
  Put(b_ + "/f.txt", "read-only old", kOldTime, 0, 0444);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate | kFlagOverwriteReadOnly);

  set_.PerformActions();

  // The new copy carries the source's permission bits, writable by the owner.
  EXPECT_EQ(StateOf(b_ + "/f.txt"), StateOf(a_ + "/f.txt"));
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, ReadOnlyBitIsClearedBeforeTheCopyIsTried) {
  Put(a_ + "/f.txt", "new", kNewTime);
  Put(b_ + "/f.txt", "read-only old", kOldTime, 0, 0444);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagOverwriteReadOnly);
  // The copy itself fails, which shows what happened before it.
  ImmutableGuard guard(b_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(Read(b_ + "/f.txt"), "read-only old");
  EXPECT_EQ(StateOf(b_ + "/f.txt").mode, KeptMode(0644));
}

// --- Deletions --------------------------------------------------------------

TEST_F(PerformActionsTest, DeleteAllDeletesEveryCopyInFolderOrder) {
  Put(a_ + "/f.txt", "1", kNewTime);
  Put(b_ + "/f.txt", "2", kOldTime);
  Put(c_ + "/f.txt", "3", kOldTime);
  UseFolders(3);
  BuildSilently(set_, ui_);
  DeleteAll("f.txt");

  EXPECT_EQ(FileNamed(set_, "f.txt").PerformAction(false), 3);

  EXPECT_FALSE(Exists(a_ + "/f.txt"));
  EXPECT_FALSE(Exists(b_ + "/f.txt"));
  EXPECT_FALSE(Exists(c_ + "/f.txt"));
  EXPECT_EQ(LinesStartingWith(LogText(), "Deleting "),
            (std::vector<std::string>{"Deleting " + a_ + "/f.txt",
                                      "Deleting " + b_ + "/f.txt",
                                      "Deleting " + c_ + "/f.txt"}));
  EXPECT_EQ(FileNamed(set_, "f.txt").PerformAction(true), 0);
}

TEST_F(PerformActionsTest, ReadOnlyCopyIsDeletedOnlyWithFlagSixteen) {
  Put(a_ + "/f.txt", "1", kNewTime);
  Put(b_ + "/f.txt", "2", kOldTime, 0, 0444);
  UseFolders(2);
  BuildSilently(set_, ui_);
  DeleteAll("f.txt", kFlagOverwriteReadOnly);

  set_.PerformActions();

  EXPECT_FALSE(Exists(a_ + "/f.txt"));
  EXPECT_EQ(Read(b_ + "/f.txt"), "2");
  EXPECT_EQ(LinesStartingWith(LogText(), "Deleting "),
            std::vector<std::string>{"Deleting " + a_ + "/f.txt"});

  DeleteAll("f.txt", kFlagDeleteReadOnly);
  set_.PerformActions();
  EXPECT_FALSE(Exists(b_ + "/f.txt"));
}

TEST_F(PerformActionsTest, DeleteFailureAsksAndRetryRepeatsTheDeletion) {
  Put(a_ + "/f.txt", "1", kNewTime);
  Put(b_ + "/f.txt", "2", kOldTime);
  Put(a_ + "/g.txt", "3", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  DeleteAll("f.txt");
  UseNewest("g.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  // Retry twice, then skip the deletion; the copy into b fails as well and
  // is skipped.
  ui_.answers = {kIdRetry, kIdRetry, kIdIgnore, kIdIgnore};

  set_.PerformActions();

  const std::string expected =
      Prompt(DeleteMessage(b_ + "/f.txt"), guard.removal_error_number());
  ASSERT_EQ(ui_.messages.size(), 4u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ui_.messages[i].text, expected) << i;
    EXPECT_EQ(ui_.messages[i].style, kMbAbortRetryIgnore) << i;
    EXPECT_EQ(ui_.messages[i].caption, "Pairwell") << i;
  }
  EXPECT_EQ(ui_.messages[3].text,
            Prompt(CopyMessage(a_ + "/g.txt", b_ + "/g.txt"),
                   guard.error_number()));
  EXPECT_FALSE(Exists(a_ + "/f.txt"));
  EXPECT_EQ(Read(b_ + "/f.txt"), "2");
  EXPECT_FALSE(set_.StopFlag);
}

TEST_F(PerformActionsTest, DeleteAbortLeavesTheFilesOtherCopies) {
  Put(a_ + "/f.txt", "1", kNewTime);
  Put(b_ + "/f.txt", "2", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  DeleteAll("f.txt");
  ImmutableGuard guard(a_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdAbort};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            Prompt(DeleteMessage(a_ + "/f.txt"), guard.removal_error_number()));
  EXPECT_TRUE(set_.StopFlag);
  EXPECT_EQ(Read(b_ + "/f.txt"), "2");
  EXPECT_TRUE(LinesStartingWith(LogText(), "Deleting " + b_).empty());
}

TEST_F(PerformActionsTest, CopyThatVanishedSinceTheScanIsSkippedNotDeleted) {
  Put(a_ + "/f.txt", "1", kNewTime);
  Put(b_ + "/f.txt", "2", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  DeleteAll("f.txt");
  ASSERT_TRUE(RemoveFile(a_ + "/f.txt"));

  set_.PerformActions();

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_NE(LogText().find("Skipped: " + a_ + "/f.txt changed since the scan"),
            std::string::npos)
      << LogText();
  EXPECT_EQ(set_.IgnoredErrors(), 1);
  EXPECT_FALSE(Exists(b_ + "/f.txt"));
}

TEST_F(PerformActionsTest,
       CopyEditedSinceTheScanIsNeitherOverwrittenNorDeleted) {
  Put(a_ + "/f.txt", "source", kNewTime);
  Put(b_ + "/f.txt", "old", kOldTime);
  Put(a_ + "/g.txt", "doomed", kOldTime);
  Put(b_ + "/g.txt", "doomed", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  DeleteAll("g.txt");
  // Edits saved while the run was being prepared.
  Put(b_ + "/f.txt", "edited in b meanwhile", kNewTime + 60);
  Put(a_ + "/g.txt", "edited in a meanwhile", kNewTime + 60);

  set_.PerformActions();

  EXPECT_EQ(Read(b_ + "/f.txt"), "edited in b meanwhile");
  EXPECT_EQ(Read(a_ + "/g.txt"), "edited in a meanwhile");
  EXPECT_FALSE(Exists(b_ + "/g.txt"));  // unchanged, so deleted
  EXPECT_EQ(set_.IgnoredErrors(), 2);
  EXPECT_TRUE(ui_.messages.empty());
}

// --- Simulation mode --------------------------------------------------------

TEST_F(PerformActionsTest, SimulatedUseNewestOverThreeFoldersChangesNothing) {
  Put(a_ + "/f.txt", "newest of three", kNewTime, 999);
  Put(b_ + "/f.txt", "older", kOldTime, 1, 0600);
  Put(c_ + "/f.txt", "oldest copy", kOldTime - 100, 2, 0444);
  UseFolders(3, /*mirrors=*/false);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate | kFlagOverwriteReadOnly);
  const FileState a = StateOf(a_ + "/f.txt");
  const FileState b = StateOf(b_ + "/f.txt");
  const FileState c = StateOf(c_ + "/f.txt");
  run_state_.simulation_mode = true;

  set_.PerformActions();

  EXPECT_EQ(LinesStartingWith(LogText(), "Copy "),
            (std::vector<std::string>{
                "Copy " + b_ + "/f.txt from " + a_ + "/f.txt",
                "Copy " + c_ + "/f.txt from " + a_ + "/f.txt"}));
  EXPECT_EQ(StateOf(a_ + "/f.txt"), a);
  EXPECT_EQ(StateOf(b_ + "/f.txt"), b);
  EXPECT_EQ(StateOf(c_ + "/f.txt"), c);
  EXPECT_TRUE(PartialFiles(b_).empty());
  EXPECT_TRUE(PartialFiles(c_).empty());
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, SimulationLogsCreationsAndDeletionsChangingNothing) {
  MakeFolder(a_ + "/sub");
  Put(a_ + "/sub/new.txt", "new", kNewTime);
  Put(a_ + "/gone.txt", "1", kNewTime);
  Put(b_ + "/gone.txt", "2", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("sub/new.txt", 1, kFlagCreate);
  DeleteAll("gone.txt");
  run_state_.simulation_mode = true;

  set_.PerformActions();

  EXPECT_FALSE(Exists(b_ + "/sub"));
  EXPECT_TRUE(Exists(a_ + "/gone.txt"));
  EXPECT_TRUE(Exists(b_ + "/gone.txt"));
  EXPECT_EQ(LinesStartingWith(LogText(), "Copy "),
            std::vector<std::string>{"Copy " + b_ + "/sub/new.txt from " + a_ +
                                     "/sub/new.txt"});
  EXPECT_EQ(LinesStartingWith(LogText(), "Deleting ").size(), 2u);
}

TEST_F(PerformActionsTest, SimulationSkipsTheStepsThatWouldFail) {
  Put(a_ + "/f.txt", "new", kNewTime);
  Put(b_ + "/f.txt", "old", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  run_state_.simulation_mode = true;

  set_.PerformActions();

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_FALSE(set_.StopFlag);
  EXPECT_EQ(LinesStartingWith(LogText(), "Copy ").size(), 1u);
}

// --- Error policy on copies -------------------------------------------------

TEST_F(PerformActionsTest, ErrorHandlingIgnoreIsLoggedAndTheRunGoesOn) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  SetErrorHandling(CodeOf(guard), "i ; permission problems are expected here");

  set_.PerformActions();

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_NE(
      LogText().find("* The following error was ignored automatically: " +
                     CopyMessage(a_ + "/inner/f.txt", b_ + "/inner/f.txt") +
                     " (code " + std::to_string(guard.error_code()) + ")\n"),
      std::string::npos)
      << LogText();
  EXPECT_EQ(Read(b_ + "/inner/f.txt"), "old inner");
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
  EXPECT_FALSE(set_.StopFlag);
  EXPECT_EQ(LinesStartingWith(LogText(), "Sync actions completed").size(), 1u);
}

TEST_F(PerformActionsTest, ErrorHandlingAbortIsLoggedAndTheNextFileUntouched) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  const FileState z = StateOf(b_ + "/z.txt");
  SetErrorHandling(CodeOf(guard), "A");

  set_.PerformActions();

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_NE(
      LogText().find("* Synchronization has been aborted automatically "
                     "in response to the error: " +
                     CopyMessage(a_ + "/inner/f.txt", b_ + "/inner/f.txt") +
                     " (code " + std::to_string(guard.error_code()) + ")\n"),
      std::string::npos)
      << LogText();
  EXPECT_TRUE(set_.StopFlag);
  EXPECT_EQ(StateOf(b_ + "/z.txt"), z);
  EXPECT_EQ(LinesStartingWith(LogText(), "Copy "),
            std::vector<std::string>{"Copy " + b_ + "/inner/f.txt from " + a_ +
                                     "/inner/f.txt"});
  EXPECT_EQ(LinesStartingWith(LogText(), "Sync actions stopped - ").size(), 1u);
}

TEST_F(PerformActionsTest, ErrorHandlingEntryOfAnotherCodeStillAsks) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  // EACCES on POSIX, ERROR_INVALID_DATA on Windows: not the guard's.
  ASSERT_NE(CodeOf(guard), "Code13");
  SetErrorHandling("Code13", "I");
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text, InnerCopyPrompt(guard));
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
}

TEST_F(PerformActionsTest, ErrorHandlingValueOtherThanAOrIStillAsks) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  SetErrorHandling(CodeOf(guard), "Prompt ; decide each time");
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text, InnerCopyPrompt(guard));
}

TEST_F(PerformActionsTest, CopyFailurePromptHasMessageErrorAndQuestion) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text, InnerCopyPrompt(guard));
  // The abort-retry-ignore prompt gets no icon of its own.
  EXPECT_EQ(ui_.messages[0].style, kMbAbortRetryIgnore);
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  EXPECT_TRUE(PartialFiles(b_ + "/inner").empty());
}

TEST_F(PerformActionsTest, RetryTwiceThenIgnoreTriesTheCopyThreeTimes) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdRetry, kIdRetry, kIdIgnore};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 3u);
  for (const RecordedMessage& message : ui_.messages) {
    EXPECT_EQ(message.text, InnerCopyPrompt(guard));
  }
  EXPECT_EQ(Read(b_ + "/inner/f.txt"), "old inner");
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
  EXPECT_FALSE(set_.StopFlag);
  // One copy line per operation, not per attempt.
  EXPECT_EQ(LinesStartingWith(LogText(), "Copy ").size(), 2u);
}

TEST_F(PerformActionsTest, RetryAfterTheCauseIsGoneCompletesTheCopy) {
  SetUpFailingThenWorkingFile();
  std::optional<ImmutableGuard> guard;
  guard.emplace(b_ + "/inner");
  if (!guard->active()) GTEST_SKIP() << "no immutable folder here";
  // The person frees the folder, then answers retry.
  ui_.on_message = [&guard](const std::string&) { guard.reset(); };
  ui_.answers = {kIdRetry};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(StateOf(b_ + "/inner/f.txt"), StateOf(a_ + "/inner/f.txt"));
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
}

TEST_F(PerformActionsTest, AbortAnswerStopsBeforeTheNextFile) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  const FileState z = StateOf(b_ + "/z.txt");
  ui_.answers = {kIdAbort};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(set_.StopFlag);
  EXPECT_EQ(StateOf(b_ + "/z.txt"), z);
  EXPECT_EQ(LinesStartingWith(LogText(), "Sync actions stopped - ").size(), 1u);
  EXPECT_TRUE(LinesStartingWith(LogText(), "Sync actions completed").empty());
}

TEST_F(PerformActionsTest, AbortStopsTheRemainingCopiesOfTheSameFile) {
  Put(a_ + "/f.txt", "new", kNewTime);
  Put(b_ + "/f.txt", "old b", kOldTime);
  Put(c_ + "/f.txt", "old c", kOldTime);
  UseFolders(3);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdAbort};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(Read(c_ + "/f.txt"), "old c");
}

TEST_F(PerformActionsTest, QuietModeLogsTheErrorAndAborts) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  const FileState z = StateOf(b_ + "/z.txt");
  set_.QuietMode = true;

  set_.PerformActions();

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_NE(LogText().find(std::string(kQuietNotice) + "\n* " +
                           InnerCopyPrompt(guard) + "\n"),
            std::string::npos)
      << LogText();
  EXPECT_TRUE(set_.StopFlag);
  EXPECT_EQ(StateOf(b_ + "/z.txt"), z);
}

TEST_F(PerformActionsTest, QuietModeStillFollowsTheErrorHandlingTable) {
  SetUpFailingThenWorkingFile();
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  set_.QuietMode = true;
  SetErrorHandling(CodeOf(guard), "I");

  set_.PerformActions();

  EXPECT_FALSE(set_.StopFlag);
  EXPECT_EQ(LogText().find(kQuietNotice), std::string::npos) << LogText();
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
}

TEST_F(PerformActionsTest, CopyOntoItselfIsAnErrorOfTheRun) {
  Put(a_ + "/f.txt", "shared bytes", kNewTime);
  ASSERT_TRUE(MakeHardLink(a_ + "/f.txt", b_ + "/f.txt"));
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate | kFlagForceCopy);
  const FileState before = StateOf(a_ + "/f.txt");
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            Prompt(CopyMessage(a_ + "/f.txt", b_ + "/f.txt"), EINVAL));
  EXPECT_EQ(StateOf(a_ + "/f.txt"), before);
  EXPECT_EQ(StateOf(b_ + "/f.txt"), before);
  EXPECT_TRUE(PartialFiles(b_).empty());
  EXPECT_FALSE(set_.StopFlag);
}

TEST_F(PerformActionsTest, SourceThatVanishedAfterTheScanIsAnErrorOfTheRun) {
  Put(a_ + "/f.txt", "new", kNewTime);
  Put(b_ + "/f.txt", "old", kOldTime);
  Put(a_ + "/g.txt", "next", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  UseNewest("g.txt", 1, kFlagCreate);
  const FileState before = StateOf(b_ + "/f.txt");
  ASSERT_TRUE(RemoveFile(a_ + "/f.txt"));
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            Prompt(CopyMessage(a_ + "/f.txt", b_ + "/f.txt"), ENOENT));
  EXPECT_EQ(StateOf(b_ + "/f.txt"), before);
  EXPECT_TRUE(PartialFiles(b_).empty());
  EXPECT_EQ(Read(b_ + "/g.txt"), "next");
}

TEST_F(PerformActionsTest, CopyFailingHalfWayKeepsTheOldDestinationWhole) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: a file size limit (setrlimit)";
#else
  const std::string big(4 << 20, 'x');
  Put(a_ + "/big.bin", big, kNewTime);
  Put(b_ + "/big.bin", "the old destination", kOldTime, 31);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("big.bin", 1, kFlagCreate);
  const FileState before = StateOf(b_ + "/big.bin");
  std::vector<std::string> partial_seen;
  FileSizeLimit limit(1 << 20);
  if (!limit.active()) GTEST_SKIP() << "setrlimit refused";
  // By the time the person is asked, the copy has written and failed.
  ui_.on_message = [&](const std::string&) {
    limit.Release();
    partial_seen = PartialFiles(b_);
  };
  ui_.answers = {kIdIgnore};

  set_.PerformActions();
  limit.Release();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            Prompt(CopyMessage(a_ + "/big.bin", b_ + "/big.bin"), EFBIG));
  EXPECT_EQ(StateOf(b_ + "/big.bin"), before);
  EXPECT_TRUE(partial_seen.empty());
  EXPECT_TRUE(PartialFiles(b_).empty());
#endif
}

TEST_F(PerformActionsTest, CopyIntoImmutableFolderKeepsTheOldDestination) {
  Put(a_ + "/f.txt", "new", kNewTime);
  Put(b_ + "/f.txt", "old destination", kOldTime, 12345);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  const FileState before = StateOf(b_ + "/f.txt");
  ImmutableGuard guard(b_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(StateOf(b_ + "/f.txt"), before);
  EXPECT_TRUE(PartialFiles(b_).empty());
}

// --- Destination folders ----------------------------------------------------

TEST_F(PerformActionsTest, DestinationFolderFailureAsksRetryThenIgnore) {
  MakeFolder(a_ + "/inner");
  MakeFolder(a_ + "/inner/newdir");
  MakeFolder(b_ + "/inner");
  Put(a_ + "/inner/newdir/f.txt", "deep", kNewTime);
  Put(a_ + "/z.txt", "new z", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  ASSERT_EQ(set_.WFile(1).RelativeName(), "inner/newdir/f.txt");
  UseNewest("inner/newdir/f.txt", 1, kFlagCreate);
  UseNewest("z.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdRetry, kIdIgnore};

  set_.PerformActions();

  // The copy itself is not tried once its folder is given up.
  const std::string expected =
      Prompt(FolderMessage(b_ + "/inner/newdir"), guard.error_number());
  ASSERT_EQ(ui_.messages.size(), 2u);
  EXPECT_EQ(ui_.messages[0].text, expected);
  EXPECT_EQ(ui_.messages[1].text, expected);
  EXPECT_EQ(ui_.messages[0].style, kMbAbortRetryIgnore);
  EXPECT_FALSE(Exists(b_ + "/inner/newdir"));
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
  EXPECT_FALSE(set_.StopFlag);
}

TEST_F(PerformActionsTest, DestinationFolderFailureAbortStopsTheRun) {
  MakeFolder(a_ + "/inner");
  MakeFolder(a_ + "/inner/newdir");
  MakeFolder(b_ + "/inner");
  Put(a_ + "/inner/newdir/f.txt", "deep", kNewTime);
  Put(a_ + "/z.txt", "new z", kNewTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("inner/newdir/f.txt", 1, kFlagCreate);
  UseNewest("z.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdAbort};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(set_.StopFlag);
  EXPECT_FALSE(Exists(b_ + "/z.txt"));
}

TEST_F(PerformActionsTest, DestinationFolderUnderARegularFileIsAnError) {
  MakeFolder(a_ + "/sub");
  Put(a_ + "/sub/f.txt", "deep", kNewTime);
  Put(b_ + "/sub", "a file where the folder should be", kOldTime);
  UseFolders(2);
  BuildSilently(set_, ui_);
  UseNewest("sub/f.txt", 1, kFlagCreate);
  ui_.answers = {kIdIgnore};

  set_.PerformActions();

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text.rfind(
                FolderMessage(b_ + "/sub") + "\n\nThe error was: ", 0),
            0u)
      << ui_.messages[0].text;
  EXPECT_EQ(Read(b_ + "/sub"), "a file where the folder should be");
}

// --- Folders of the sources (SyncFolders) -----------------------------------

TEST_F(PerformActionsTest, SyncFoldersCreatesSourceFoldersBeforeFileActions) {
  MakeFolder(a_ + "/empty");
  MakeFolder(a_ + "/tree");
  MakeFolder(a_ + "/tree/leaf");
  Put(a_ + "/f.txt", "new", kNewTime);
  UseFolders(3);
  set_.SyncFolders = true;
  BuildSilently(set_, ui_);
  UseNewest("f.txt", 1, kFlagCreate);
  bool folders_before_files = false;
  bool checked = false;
  ui_.on_events = [&] {
    if (checked || set_.SyncMsg.rfind("Performing actions ", 0) != 0) return;
    checked = true;
    folders_before_files =
        IsFolder(b_ + "/empty") && IsFolder(b_ + "/tree/leaf") &&
        IsFolder(c_ + "/empty") && IsFolder(c_ + "/tree/leaf") &&
        !Exists(b_ + "/f.txt");
  };

  set_.PerformActions();

  EXPECT_TRUE(checked);
  EXPECT_TRUE(folders_before_files);
  EXPECT_TRUE(IsFolder(b_ + "/tree/leaf"));
  EXPECT_TRUE(IsFolder(c_ + "/tree/leaf"));
  EXPECT_EQ(Read(b_ + "/f.txt"), "new");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, RealRunCreatesFoldersAndLogsThem) {
  MakeFolder(a_ + "/empty");
  UseFolders(2);
  set_.SyncFolders = true;
  BuildSilently(set_, ui_);

  set_.PerformActions();

  EXPECT_TRUE(IsFolder(b_ + "/empty"));
  EXPECT_EQ(LinesStartingWith(LogText(), "Creating folder"),
            std::vector<std::string>{"Creating folder " + b_ + "/empty"})
      << LogText();
}

TEST_F(PerformActionsTest, SimulatedFolderCreationIsLoggedOnly) {
  MakeFolder(a_ + "/empty");
  MakeFolder(a_ + "/tree");
  MakeFolder(a_ + "/tree/leaf");
  Put(a_ + "/tree/leaf/f.txt", "new", kNewTime);
  UseFolders(2);
  set_.SyncFolders = true;
  BuildSilently(set_, ui_);
  UseNewest("tree/leaf/f.txt", 1, kFlagCreate);
  run_state_.simulation_mode = true;

  set_.PerformActions();

  EXPECT_FALSE(Exists(b_ + "/empty"));
  EXPECT_FALSE(Exists(b_ + "/tree"));
  const std::vector<std::string> lines = Lines(LogText());
  std::vector<std::string> actions;
  for (const std::string& line : lines) {
    if (line.rfind("Creating folder ", 0) == 0 || line.rfind("Copy ", 0) == 0) {
      actions.push_back(line);
    }
  }
  ASSERT_EQ(actions.size(), 4u) << LogText();
  std::vector<std::string> creations(actions.begin(), actions.end() - 1);
  std::sort(creations.begin(), creations.end());
  EXPECT_EQ(creations,
            (std::vector<std::string>{"Creating folder " + b_ + "/empty",
                                      "Creating folder " + b_ + "/tree",
                                      "Creating folder " + b_ + "/tree/leaf"}));
  EXPECT_EQ(actions.back().rfind("Copy ", 0), 0u);
}

TEST_F(PerformActionsTest, SyncFoldersTakesOnlyFoldersOfSourcesThatPass) {
  MakeFolder(a_ + "/kept");
  MakeFolder(a_ + "/skipped");
  MakeFolder(b_ + "/only-in-mirror");
  UseFolders(2);
  set_.SyncFolders = true;
  set_.FolderExcludeSpec = "skipped";
  BuildSilently(set_, ui_);

  set_.PerformActions();

  EXPECT_TRUE(IsFolder(b_ + "/kept"));
  EXPECT_FALSE(Exists(b_ + "/skipped"));
  EXPECT_FALSE(Exists(a_ + "/only-in-mirror"));
}

TEST_F(PerformActionsTest, WithoutSyncFoldersNoEmptyFolderIsCreated) {
  MakeFolder(a_ + "/empty");
  UseFolders(2);
  BuildSilently(set_, ui_);

  set_.PerformActions();

  EXPECT_FALSE(Exists(b_ + "/empty"));
}

TEST_F(PerformActionsTest, FolderCreationFailureAsksRetryIgnoreAbort) {
  MakeFolder(a_ + "/inner");
  MakeFolder(a_ + "/inner/sub");
  MakeFolder(b_ + "/inner");
  Put(a_ + "/z.txt", "new z", kNewTime);
  UseFolders(2);
  set_.SyncFolders = true;
  BuildSilently(set_, ui_);
  UseNewest("z.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdRetry, kIdIgnore};

  set_.PerformActions();

  const std::string expected =
      Prompt(FolderMessage(b_ + "/inner/sub"), guard.error_number());
  ASSERT_EQ(ui_.messages.size(), 2u);
  EXPECT_EQ(ui_.messages[0].text, expected);
  EXPECT_EQ(ui_.messages[1].text, expected);
  EXPECT_EQ(Read(b_ + "/z.txt"), "new z");
  EXPECT_FALSE(set_.StopFlag);
}

TEST_F(PerformActionsTest, FolderCreationAbortPerformsNoFileAction) {
  MakeFolder(a_ + "/inner");
  MakeFolder(a_ + "/inner/sub");
  MakeFolder(b_ + "/inner");
  Put(a_ + "/z.txt", "new z", kNewTime);
  UseFolders(2);
  set_.SyncFolders = true;
  BuildSilently(set_, ui_);
  UseNewest("z.txt", 1, kFlagCreate);
  ImmutableGuard guard(b_ + "/inner");
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  ui_.answers = {kIdAbort};

  set_.PerformActions();

  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(set_.StopFlag);
  EXPECT_FALSE(Exists(b_ + "/z.txt"));
  EXPECT_TRUE(LinesStartingWith(LogText(), "Copy ").empty());
}

// --- Smart deletes
// ------------------------------------------------------------

class SmartDeletesTest : public PerformActionsTest {
 protected:
  // Sources a and b, mirror c, synchronized at 2022-01-01: "gone.txt" was
  // deleted from b since then; "orphan.txt" is left only in the mirror.
  void SetUpDeletions(bool allow_smart_deletes) {
    LoadCatalogue();
    // b keeps a file: an empty source would stop the run.
    Put(a_ + "/kept.txt", "kept", kOldTime);
    Put(b_ + "/kept.txt", "kept", kOldTime);
    Put(c_ + "/kept.txt", "kept", kOldTime);
    Put(a_ + "/gone.txt", "unchanged", kOldTime);
    Put(c_ + "/gone.txt", "unchanged", kOldTime);
    Put(c_ + "/orphan.txt", "left behind", kOldTime);
    set_.PathAdd(a_);
    set_.PathAdd(b_);
    set_.PathAdd(c_);
    set_.SetPathFlags(3, kFolderEnabled | kFolderMirrorTo);
    set_.LastSyncDate = 44562;  // 2022-01-01
    set_.AllowSmartDeletes = allow_smart_deletes;
    BuildSilently(set_, ui_);
  }
};

TEST_F(SmartDeletesTest, DeletionFromASourceIsCarriedOutWithSmartDeletes) {
  SetUpDeletions(true);
  EXPECT_EQ(FileNamed(set_, "gone.txt").Action, kDeleteAll);

  set_.PerformActions();

  EXPECT_FALSE(Exists(a_ + "/gone.txt"));
  EXPECT_FALSE(Exists(c_ + "/gone.txt"));
  EXPECT_FALSE(Exists(c_ + "/orphan.txt"));
}

TEST_F(SmartDeletesTest, WithoutSmartDeletesOnlyMirrorLeftoversAreDeleted) {
  SetUpDeletions(false);
  EXPECT_EQ(FileNamed(set_, "gone.txt").Action, kUndecided);
  EXPECT_EQ(FileNamed(set_, "orphan.txt").Action, kDeleteAll);

  set_.PerformActions();

  EXPECT_EQ(Read(a_ + "/gone.txt"), "unchanged");
  EXPECT_EQ(Read(c_ + "/gone.txt"), "unchanged");
  EXPECT_FALSE(Exists(b_ + "/gone.txt"));
  EXPECT_FALSE(Exists(c_ + "/orphan.txt"));
}

// --- ErrorPolicy, WithErrorPolicy and ShowErrToUser
// ---------------------------

TEST_F(PerformActionsTest, ErrorPolicyAsksWithTheWholePrompt) {
  ui_.answers = {kIdRetry};
  EXPECT_EQ(set_.ErrorPolicy("Something failed:\n\nthere", ENOENT), kIdRetry);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text, Prompt("Something failed:\n\nthere", ENOENT));
  EXPECT_EQ(ui_.messages[0].style, kMbAbortRetryIgnore);
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
}

TEST_F(PerformActionsTest, ErrorPolicyReadsTheTableEntryOfTheErrorNumber) {
  const struct {
    const char* value;
    int answer;  // 0: the person is asked (and answers retry)
  } kCases[] = {
      {"I", kIdIgnore},
      {"i", kIdIgnore},
      {"Ignore ; the remark after the semicolon", kIdIgnore},
      {"A", kIdAbort},
      {"a ; stop at once", kIdAbort},
      {"abort", kIdAbort},
      {"R", 0},
      {"x", 0},
      {"", 0},
      {"; I", 0},
  };
  for (const auto& c : kCases) {
    ui_.messages.clear();
    ui_.answers = {kIdRetry};
    // The table is keyed by the system's own number for the error.
    SetErrorHandling("Code" + std::to_string(SystemErrorCode(5)), c.value);
    const int answer = set_.ErrorPolicy("Step", 5);
    if (c.answer == 0) {
      EXPECT_EQ(answer, kIdRetry) << "Code5=" << c.value;
      EXPECT_EQ(ui_.messages.size(), 1u) << "Code5=" << c.value;
    } else {
      EXPECT_EQ(answer, c.answer) << "Code5=" << c.value;
      EXPECT_TRUE(ui_.messages.empty()) << "Code5=" << c.value;
    }
  }
}

TEST_F(PerformActionsTest, ErrorPolicyLogsAutomaticAnswersWithTheCode) {
  const std::string first = std::to_string(SystemErrorCode(5));
  const std::string second = std::to_string(SystemErrorCode(28));
  SetErrorHandling("Code" + first, "I");
  EXPECT_EQ(set_.ErrorPolicy("First step", 5), kIdIgnore);
  SetErrorHandling("Code" + second, "A");
  EXPECT_EQ(set_.ErrorPolicy("Second step", 28), kIdAbort);

  const std::vector<std::string> starred = LinesStartingWith(LogText(), "* ");
  EXPECT_EQ(starred,
            (std::vector<std::string>{
                "* The following error was ignored automatically: First step "
                "(code " +
                    first + ")",
                "* Synchronization has been aborted automatically in response "
                "to the error: Second step (code " +
                    second + ")"}));
  // Automatic answers go to the file, not to the person's log view.
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, WithErrorPolicyRepeatsTheStepOnRetry) {
  int calls = 0;
  ui_.answers = {kIdRetry, kIdRetry};
  const bool done = set_.WithErrorPolicy("Step", [&calls] {
    ++calls;
    return calls < 3 ? EIO : 0;
  });
  EXPECT_TRUE(done);
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(ui_.messages.size(), 2u);
  EXPECT_FALSE(set_.StopFlag);
}

TEST_F(PerformActionsTest, WithErrorPolicyIgnoreGivesUpWithoutStopping) {
  int calls = 0;
  ui_.answers = {kIdIgnore};
  EXPECT_FALSE(set_.WithErrorPolicy("Step", [&calls] {
    ++calls;
    return EIO;
  }));
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(set_.StopFlag);
}

TEST_F(PerformActionsTest, WithErrorPolicyAbortOrQuietModeStopsTheSet) {
  ui_.answers = {kIdAbort};
  EXPECT_FALSE(set_.WithErrorPolicy("Step", [] { return EIO; }));
  EXPECT_TRUE(set_.StopFlag);

  set_.StopFlag = false;
  set_.QuietMode = true;
  EXPECT_FALSE(set_.WithErrorPolicy("Step", [] { return EIO; }));
  EXPECT_TRUE(set_.StopFlag);
}

TEST_F(PerformActionsTest, WithErrorPolicyAsksNothingWhenTheStepWorks) {
  int calls = 0;
  EXPECT_TRUE(set_.WithErrorPolicy("Step", [&calls] {
    ++calls;
    return 0;
  }));
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(PerformActionsTest, ShowErrToUserAddsTheExclamationIconOnlyWhenNeeded) {
  const struct {
    int style;
    int shown;
  } kCases[] = {
      {kMbOkOnly, kMbOkOnly | kMbExclamation},
      {kMbOkCancel, kMbOkCancel | kMbExclamation},
      {kMbYesNoCancel, kMbYesNoCancel},  // holds the bit of value 2
      {kMbAbortRetryIgnore, kMbAbortRetryIgnore},
      {kMbYesNo, kMbYesNo | kMbExclamation},
      {kMbRetryCancel, kMbRetryCancel | kMbExclamation},
      {kMbCritical, kMbCritical},
      {kMbQuestion, kMbQuestion},
      {kMbInformation, kMbInformation},
      {kMbExclamation, kMbExclamation},
      {kMbDefaultButton2, kMbDefaultButton2 | kMbExclamation},
      {kMbOkCancel | kMbDefaultButton2,
       kMbOkCancel | kMbDefaultButton2 | kMbExclamation},
  };
  for (const auto& c : kCases) {
    ui_.messages.clear();
    ui_.answers = {kIdOk};
    EXPECT_EQ(set_.ShowErrToUser("Text", c.style), kIdOk) << c.style;
    ASSERT_EQ(ui_.messages.size(), 1u);
    EXPECT_EQ(ui_.messages[0].style, c.shown) << "style " << c.style;
    EXPECT_EQ(ui_.messages[0].text, "Text");
    EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  }
}

TEST_F(PerformActionsTest, ShowErrToUserInQuietModeLogsAndAnswersNo) {
  set_.QuietMode = true;
  EXPECT_EQ(set_.ShowErrToUser("It went wrong\nin two lines", kMbOkOnly),
            kIdNo);
  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(LogText(),
            std::string(kQuietNotice) + "\n* It went wrong\nin two lines\n");
}

}  // namespace
}  // namespace pairwell
