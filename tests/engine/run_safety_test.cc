// Runs that must not lose data, on real folders: the last-sync date that
// stays while an operation failed or a source still lacks a file, an empty
// source that would make the other folders' files look deleted, names a
// listing leaves out (symbolic links, names equal ignoring case) that block
// their files, names spelled in another case per folder, names that a path
// join must keep as they are, more folders than a file has records for,
// simulations that create no folder, merge-to copies that are never deleted,
// replacing a file's content through a link, and empty copies dated like
// full ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "app/program.h"
#include "app/sync_driver.h"
#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/action_texts.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/run_files.h"
#include "support/scoped_time_zone.h"
#include "support/temp_dir.h"
#include "support/test_dates.h"
#include "support/test_files.h"
#include "support/text_echo.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/text_file.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

// Fixed modification times in seconds since the epoch: 2020-09-13 and
// 2023-11-14. The sets' last synchronization lies between them.
constexpr std::int64_t kOldTime = 1600000000;
constexpr std::int64_t kNewTime = 1700000000;

double LastSync() { return MakeDate(2022, 1, 1); }

// Symbolic links: the tests that make them run on POSIX only, as Windows
// gives them to privileged accounts alone.
void MakeLink(const std::string& target, const std::string& link) {
  std::error_code error;
  std::filesystem::create_symlink(target, link, error);
  ASSERT_FALSE(error) << link;
}

bool IsLink(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_symlink(
      std::filesystem::symlink_status(path, error));
}

std::int64_t ModifySeconds(const std::string& path) {
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  if (!GetModifyTime(path, &seconds, &nanoseconds)) return -1;
  return seconds;
}

class RunSafetyTest : public ::testing::Test {
 protected:
  RunSafetyTest() {
    a_ = tmp_.Join("a");
    b_ = tmp_.Join("b");
    g_ = tmp_.Join("g");
    outside_ = tmp_.Join("outside");
    MakeFolder(a_);
    MakeFolder(b_);
    MakeFolder(outside_);
    // The log only echoes: a run sets the log's path from the set, which
    // has no log file.
    ui_.log_echo = &echo_;
    log_.EchoTextBox = &echo_;
    set_.Name = "Docs";
    set_.SetLog(&log_);
    set_.SetRunState(&program_.Run());
    // The operations themselves, with deletions and replacements final:
    // keeping the old copies has tests of its own.
    set_.VersionDays = 0;
    EXPECT_TRUE(catalogue_file_.LoadFile(std::string(PAIRWELL_SOURCE_DIR) +
                                         "/data/Pairwell.ini"));
    catalogue_ = catalogue_file_.Section("Conflict Types");
    EXPECT_TRUE(catalogue_);
    if (catalogue_) set_.ReadConflictInfo(*catalogue_);
  }

  ~RunSafetyTest() override { log_.CloseLog(); }

  // Folders a and b, both sources.
  void UseFolders() {
    set_.PathAdd(a_);
    set_.PathAdd(b_);
  }

  // The 1-based index of the set's conflict type of that name, or 0.
  int TypeNamed(const std::string& name) const {
    for (int c = 1; c <= set_.ConflictTypeCount(); ++c) {
      if (set_.ConflictTypes(c).Name == name) return c;
    }
    return 0;
  }

  // Whether the temporary folder's file system tells names apart by case.
  bool CaseSensitive() const {
    const std::string probe = tmp_.Join("case-probe");
    Put(probe, "", kOldTime);
    const bool sensitive = !Exists(tmp_.Join("CASE-PROBE"));
    RemoveFile(probe);
    return sensitive;
  }

  std::string LogText() const { return echo_.text; }

  // Runs the set through the sync driver as the desktop program does, with
  // the given answer to a mass deletion.
  SetOutcome RunWith(MassDeletion mass_deletion) {
    RunOptions options;
    options.save_last_sync_dates = false;
    options.mass_deletion = mass_deletion;
    return RunSyncSets(program_, {&set_}, options).outcomes.front();
  }

  static std::string Numbered(int k) {
    return "/f" + std::string(k < 10 ? "0" : "") + std::to_string(k) + ".txt";
  }

  // Puts the same old files, f01.txt.., in both folders.
  void PutSyncedFiles(int count) {
    for (int k = 1; k <= count; ++k) {
      Put(a_ + Numbered(k), "same " + Numbered(k), kOldTime);
      Put(b_ + Numbered(k), "same " + Numbered(k), kOldTime);
    }
  }

  // After a sync of twelve files, ten are deleted from folder a: the run
  // would delete ten of the twelve in folder b.
  void DeleteTenOfTwelve() {
    UseFolders();
    set_.LastSyncDate = LastSync();
    PutSyncedFiles(12);
    DeleteFromA(1, 10);
  }

  // Deletes files first..last of PutSyncedFiles from folder a.
  void DeleteFromA(int first, int last) {
    for (int k = first; k <= last; ++k) {
      ASSERT_TRUE(RemoveFile(a_ + Numbered(k))) << k;
    }
  }

  RecordingUserInterface ui_;
  Program program_{ui_};
  TempDir tmp_;
  std::string a_;
  std::string b_;
  std::string g_;
  std::string outside_;
  TextEcho echo_;
  LogFile log_;
  INIFile catalogue_file_;
  std::shared_ptr<INIFileSection> catalogue_;
  Synchronizer set_;
};

// --- The last-sync date -----------------------------------------------------

TEST_F(RunSafetyTest, IgnoredCopyErrorKeepsTheDateUntilARunCompletesTheCopy) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/new.txt", "only in a", kNewTime);
  {
    ImmutableGuard guard(b_);
    if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
    ui_.answers = {kIdIgnore};

    EXPECT_TRUE(RunSets(program_, {&set_}));

    ASSERT_EQ(ui_.messages.size(), 1u);
    EXPECT_TRUE(Contains(ui_.messages[0].text,
                         "Unable to perform the copy operation:\n\n" + a_ +
                             "/new.txt -> " + b_ + "/new.txt"))
        << ui_.messages[0].text;
    EXPECT_EQ(set_.IgnoredErrors(), 1);
    EXPECT_EQ(set_.LastSyncDate, LastSync());
    EXPECT_TRUE(
        Contains(LogText(),
                 "The last synchronization date stays as it was: 1 operation "
                 "failed and 1 file is not in every source folder yet."))
        << LogText();
    EXPECT_FALSE(Exists(b_ + "/new.txt"));
  }
  // Had the date moved, the copy in a would now look deleted from b.
  ui_.messages.clear();
  echo_.text.clear();

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(Read(b_ + "/new.txt"), "only in a");
  EXPECT_EQ(Read(a_ + "/new.txt"), "only in a");
  EXPECT_EQ(set_.IgnoredErrors(), 0);
  EXPECT_EQ(set_.LastSyncDate, set_.ScanStarted());
  EXPECT_GT(set_.LastSyncDate, LastSync());
  EXPECT_FALSE(Contains(LogText(), "The last synchronization date stays"))
      << LogText();
}

TEST_F(RunSafetyTest, CopyErrorIgnoredByTheErrorTableKeepsTheDate) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/new.txt", "only in a", kNewTime);
  ImmutableGuard guard(b_);
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  program_.TheINIFile()
      .AddSection("ErrorHandling")
      ->AddVar("Code" + std::to_string(guard.error_code()), "I");

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(set_.IgnoredErrors(), 1);
  EXPECT_EQ(set_.LastSyncDate, LastSync());
  EXPECT_TRUE(
      Contains(LogText(),
               "The last synchronization date stays as it was: 1 operation "
               "failed and 1 file is not in every source folder yet."))
      << LogText();
}

TEST_F(RunSafetyTest, TypeThatCreatesNoCopyLeavesTheFileAloneAndTheDate) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/new.txt", "only in a", kNewTime);
  const int type = TypeNamed("New in one folder");
  ASSERT_GT(type, 0);
  set_.ConflictTypes(type).StringToCustomConfig("3");
  ASSERT_FALSE(set_.ConflictTypes(type).CreateDest);
  BuildSilently(set_, ui_);
  SyncFile& file = FileNamed(set_, "new.txt");
  EXPECT_EQ(file.ComputeConflictIndex(), type);
  EXPECT_EQ(file.Action, kUseNewest);
  EXPECT_EQ(file.ActionFlags & kFlagCreate, 0);
  file.CalcNoEffect();
  EXPECT_NE(file.ActionFlags & kFlagNoEffect, 0);
  EXPECT_EQ(set_.IncompleteFiles(), 1);
  set_.FreeSyncData();

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_FALSE(Exists(b_ + "/new.txt"));
  EXPECT_EQ(Read(a_ + "/new.txt"), "only in a");
  EXPECT_EQ(set_.IgnoredErrors(), 0);
  EXPECT_EQ(set_.LastSyncDate, LastSync());
  EXPECT_TRUE(
      Contains(LogText(),
               "The last synchronization date stays as it was: 0 operations "
               "failed and 1 file is not in every source folder yet."))
      << LogText();
}

// --- An empty source --------------------------------------------------------

TEST_F(RunSafetyTest, EmptySourceAfterASyncStopsTheRunBeforeAnyDeletion) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(b_ + "/x.txt", "x in b", kOldTime);
  Put(b_ + "/y.txt", "y in b", kOldTime);

  EXPECT_FALSE(RunSets(program_, {&set_}));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "The synchronization cannot proceed because the folder '" + a_ +
                "' is empty, so the files of the other folders would be "
                "deleted.  If it is a drive or share that is not mounted, "
                "mount it and try again; to delete the files, delete them in "
                "the other folders too.");
  EXPECT_EQ(ui_.messages[0].style, kMbExclamation);
  EXPECT_EQ(Read(b_ + "/x.txt"), "x in b");
  EXPECT_EQ(Read(b_ + "/y.txt"), "y in b");
  EXPECT_TRUE(Entries(a_).empty());
  EXPECT_EQ(set_.LastSyncDate, LastSync());
}

TEST_F(RunSafetyTest, EmptySourceAtTheFirstSyncReceivesTheOtherFiles) {
  UseFolders();
  Put(b_ + "/x.txt", "x in b", kOldTime);
  Put(b_ + "/y.txt", "y in b", kOldTime);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(Read(a_ + "/x.txt"), "x in b");
  EXPECT_EQ(Read(a_ + "/y.txt"), "y in b");
  EXPECT_EQ(Read(b_ + "/x.txt"), "x in b");
  EXPECT_EQ(set_.LastSyncDate, set_.ScanStarted());
}

// --- Names a listing leaves out ---------------------------------------------

TEST_F(RunSafetyTest, LinkedFolderBlocksTheFilesUnderItsName) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: symbolic links";
#endif
  UseFolders();
  set_.LastSyncDate = LastSync();
  MakeLink(outside_, a_ + "/music");
  MakeFolder(b_ + "/music");
  Put(b_ + "/music/s1.mp3", "song", kOldTime);
  BuildSilently(set_, ui_);

  SyncFile& file = FileNamed(set_, "music/s1.mp3");
  EXPECT_TRUE(file.Blocked());
  EXPECT_EQ(file.Action, kUndecided);
  EXPECT_EQ(file.PerformAction(true), 0);
  EXPECT_EQ(set_.IncompleteFiles(), 0);
  EXPECT_TRUE(Contains(LogText(),
                       "Left alone: music/s1.mp3 (a folder holds something "
                       "under that name that is not synchronized)"))
      << LogText();

  set_.PerformActions();

  EXPECT_EQ(Read(b_ + "/music/s1.mp3"), "song");
  EXPECT_TRUE(IsLink(a_ + "/music"));
  EXPECT_TRUE(Entries(outside_).empty());
}

TEST_F(RunSafetyTest, BlockedFilesDoNotHoldTheDateBack) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: symbolic links";
#endif
  UseFolders();
  set_.LastSyncDate = LastSync();
  MakeLink(outside_, a_ + "/music");
  MakeFolder(b_ + "/music");
  Put(b_ + "/music/s1.mp3", "song", kOldTime);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(Read(b_ + "/music/s1.mp3"), "song");
  EXPECT_TRUE(Entries(outside_).empty());
  EXPECT_EQ(set_.LastSyncDate, set_.ScanStarted());
  EXPECT_FALSE(Contains(LogText(), "The last synchronization date stays"))
      << LogText();
}

TEST_F(RunSafetyTest, LinkedFileIsNotReplacedByTheNewerCopy) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: symbolic links";
#endif
  UseFolders();
  Put(outside_ + "/real.conf", "the link's target", kOldTime);
  Put(a_ + "/app.conf", "newer settings", kNewTime);
  MakeLink(outside_ + "/real.conf", b_ + "/app.conf");
  BuildSilently(set_, ui_);

  SyncFile& file = FileNamed(set_, "app.conf");
  EXPECT_TRUE(file.Blocked());
  EXPECT_EQ(file.Action, kUndecided);
  EXPECT_EQ(set_.IncompleteFiles(), 0);
  EXPECT_TRUE(Contains(LogText(),
                       "Left alone: app.conf (a folder holds something under "
                       "that name that is not synchronized)"))
      << LogText();

  set_.PerformActions();

  EXPECT_TRUE(IsLink(b_ + "/app.conf"));
  EXPECT_EQ(Read(outside_ + "/real.conf"), "the link's target");
  EXPECT_EQ(ModifySeconds(outside_ + "/real.conf"), kOldTime);
  EXPECT_EQ(Read(a_ + "/app.conf"), "newer settings");
  EXPECT_EQ(Entries(outside_), std::vector<std::string>{"real.conf"});
}

TEST_F(RunSafetyTest, NamesEqualIgnoringCaseBlockTheFile) {
  if (!CaseSensitive()) GTEST_SKIP() << "the file system ignores case";
  UseFolders();
  Put(a_ + "/notes.txt", "notes in a", kOldTime);
  Put(b_ + "/Notes.txt", "Notes in b, newest", kNewTime);
  Put(b_ + "/notes.txt", "notes in b", kOldTime + 60);
  BuildSilently(set_, ui_);

  SyncFile& file = FileNamed(set_, "notes.txt");
  EXPECT_TRUE(file.Blocked());
  EXPECT_EQ(file.Action, kUndecided);
  EXPECT_TRUE(Contains(LogText(), "Left out: " + b_ +
                                      "/notes.txt (its name differs only in "
                                      "case from " +
                                      b_ + "/Notes.txt)"))
      << LogText();

  set_.PerformActions();

  EXPECT_EQ(Read(a_ + "/notes.txt"), "notes in a");
  EXPECT_EQ(ModifySeconds(a_ + "/notes.txt"), kOldTime);
  EXPECT_EQ(Read(b_ + "/Notes.txt"), "Notes in b, newest");
  EXPECT_EQ(ModifySeconds(b_ + "/Notes.txt"), kNewTime);
  EXPECT_EQ(Read(b_ + "/notes.txt"), "notes in b");
  EXPECT_EQ(ModifySeconds(b_ + "/notes.txt"), kOldTime + 60);
  EXPECT_EQ(Entries(a_), std::vector<std::string>{"notes.txt"});
  EXPECT_EQ(Entries(b_), (std::vector<std::string>{"Notes.txt", "notes.txt"}));
}

// --- Spelling per folder ----------------------------------------------------

TEST_F(RunSafetyTest, CopyOverwritesTheFileAsTheFolderSpellsIt) {
  if (!CaseSensitive()) GTEST_SKIP() << "the file system ignores case";
  UseFolders();
  Put(a_ + "/notes.txt", "newer notes", kNewTime);
  Put(b_ + "/Notes.txt", "old notes", kOldTime);
  BuildSilently(set_, ui_);

  SyncFile& file = FileNamed(set_, "notes.txt");
  EXPECT_FALSE(file.Blocked());
  EXPECT_EQ(file.FullPath(1), a_ + "/notes.txt");
  EXPECT_EQ(file.FullPath(2), b_ + "/Notes.txt");
  file.Action = kUseNewest;
  file.SourceIndex = 1;
  file.ActionFlags |= kFlagCreate;

  set_.PerformActions();

  EXPECT_EQ(Entries(b_), std::vector<std::string>{"Notes.txt"});
  EXPECT_EQ(Read(b_ + "/Notes.txt"), "newer notes");
  EXPECT_EQ(ModifySeconds(b_ + "/Notes.txt"), kNewTime);
  EXPECT_EQ(Entries(a_), std::vector<std::string>{"notes.txt"});
}

TEST_F(RunSafetyTest, NewFileLandsInTheFolderAsTheDestinationSpellsIt) {
  if (!CaseSensitive()) GTEST_SKIP() << "the file system ignores case";
  UseFolders();
  MakeFolder(a_ + "/Docs");
  Put(a_ + "/Docs/new.txt", "a new document", kNewTime);
  MakeFolder(b_ + "/docs");
  BuildSilently(set_, ui_);

  SyncFile& file = FileNamed(set_, "Docs/new.txt");
  EXPECT_EQ(file.FullPath(2), b_ + "/docs/new.txt");

  set_.PerformActions();

  EXPECT_EQ(Entries(b_), std::vector<std::string>{"docs"});
  EXPECT_EQ(Read(b_ + "/docs/new.txt"), "a new document");
  EXPECT_FALSE(Exists(b_ + "/Docs"));
}

// --- Names kept as listed ---------------------------------------------------

TEST_F(RunSafetyTest, NamesWithTrailingBlankOrColonAreCopiedAsTheyAre) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: names ending in a blank or holding a \":\"";
#endif
  UseFolders();
  Put(a_ + "/data", "plain data", kNewTime);
  Put(a_ + "/data ", "data with a trailing blank", kNewTime);
  Put(a_ + "/1:1 agenda.txt", "agenda", kNewTime);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(Entries(b_),
            (std::vector<std::string>{"1:1 agenda.txt", "data", "data "}));
  EXPECT_EQ(Read(b_ + "/data"), "plain data");
  EXPECT_EQ(Read(b_ + "/data "), "data with a trailing blank");
  EXPECT_EQ(Read(b_ + "/1:1 agenda.txt"), "agenda");
  EXPECT_EQ(Read(a_ + "/data"), "plain data");
  EXPECT_EQ(Read(a_ + "/data "), "data with a trailing blank");
  EXPECT_EQ(Entries(a_),
            (std::vector<std::string>{"1:1 agenda.txt", "data", "data "}));
  EXPECT_EQ(set_.LastSyncDate, set_.ScanStarted());
}

// --- Folder count -----------------------------------------------------------

TEST_F(RunSafetyTest, MoreThanEightEnabledFoldersAreRefused) {
  INIFileSection section("Sec: Nine");
  for (int i = 1; i <= 9; ++i) {
    const std::string folder = tmp_.Join("f" + std::to_string(i));
    MakeFolder(folder);
    Put(folder + "/file" + std::to_string(i) + ".txt", "x", kOldTime);
    section.AddVar("Dir" + std::to_string(i), folder);
    section.AddVar("Dir" + std::to_string(i) + "Flags", "4");
  }
  set_.ReadFromINI(section);
  ASSERT_EQ(set_.PathCount(), 9);

  EXPECT_FALSE(set_.BuildActionList());

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "The synchronization cannot proceed because more than 8 folders "
            "are enabled.  Disable or remove folders until no more than 8 "
            "are left.");
  EXPECT_EQ(ui_.messages[0].style, kMbInformation);
  EXPECT_EQ(set_.WFileCount(), 0);
  EXPECT_EQ(set_.WPathCount(), 0);

  // With one of them disabled the run goes ahead.
  ui_.messages.clear();
  set_.ClearPathFlag(9, kFolderEnabled);
  EXPECT_TRUE(set_.BuildActionList());
  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(set_.WPathCount(), 8);
  EXPECT_EQ(set_.WFileCount(), 8);
}

// --- Simulation
// ---------------------------------------------------------------

TEST_F(RunSafetyTest, SimulationCreatesNoMissingFolder) {
  const std::string missing = tmp_.Join("not-yet");
  set_.PathAdd(a_);
  set_.PathAdd(missing);
  set_.SetPathFlag(2, kFolderAllowBaseCreation);
  Put(a_ + "/new.txt", "only in a", kNewTime);
  program_.Run().simulation_mode = true;

  EXPECT_TRUE(RunSets(program_, {&set_}));

  program_.Run().simulation_mode = false;
  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_FALSE(Exists(missing));
  EXPECT_TRUE(Contains(LogText(), "Would create folder " + missing + "\n"))
      << LogText();
  EXPECT_FALSE(Contains(LogText(), "Created folder")) << LogText();
  EXPECT_EQ(set_.LastSyncDate, 0);
}

// --- Merge-to folders
// ---------------------------------------------------------

TEST_F(RunSafetyTest, DeletionFromASourceLeavesTheMergeToCopy) {
  MakeFolder(g_);
  set_.PathAdd(a_);
  set_.PathAdd(b_);
  set_.PathAdd(g_);
  set_.SetPathFlags(3, kFolderEnabled | kFolderMergeTo);
  set_.LastSyncDate = LastSync();
  // f.txt was in every folder at the last sync; a has deleted it since.
  Put(b_ + "/f.txt", "shared", kOldTime);
  Put(g_ + "/f.txt", "shared", kOldTime);
  Put(a_ + "/keep.txt", "kept", kOldTime);
  Put(b_ + "/keep.txt", "kept", kOldTime);
  BuildSilently(set_, ui_);

  SyncFile& file = FileNamed(set_, "f.txt");
  EXPECT_EQ(file.Action, kDeleteAll);
  EXPECT_TRUE(file.Deletable(2));
  EXPECT_FALSE(file.Deletable(3));

  set_.PerformActions();

  EXPECT_FALSE(Exists(b_ + "/f.txt"));
  EXPECT_EQ(Read(g_ + "/f.txt"), "shared");
  EXPECT_TRUE(Contains(LogText(), "Deleting " + b_ + "/f.txt")) << LogText();
  EXPECT_FALSE(Contains(LogText(), "Deleting " + g_)) << LogText();
}

// No source has the file any more, so nothing can look deleted next time:
// the copy the merge-to folder keeps is no reason to keep the old date.
TEST_F(RunSafetyTest, MergeToCopyLeftAfterADeletionDoesNotHoldTheDateBack) {
  MakeFolder(g_);
  set_.PathAdd(a_);
  set_.PathAdd(b_);
  set_.PathAdd(g_);
  set_.SetPathFlags(3, kFolderEnabled | kFolderMergeTo);
  set_.LastSyncDate = LastSync();
  Put(b_ + "/f.txt", "shared", kOldTime);
  Put(g_ + "/f.txt", "shared", kOldTime);
  Put(a_ + "/keep.txt", "kept", kOldTime);
  Put(b_ + "/keep.txt", "kept", kOldTime);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_FALSE(Exists(b_ + "/f.txt"));
  EXPECT_EQ(Read(g_ + "/f.txt"), "shared");
  EXPECT_EQ(set_.LastSyncDate, set_.ScanStarted());
  EXPECT_FALSE(Contains(LogText(), "The last synchronization date stays"))
      << LogText();

  // A later run does not list the file at all: a merge-to folder adds no
  // names of its own.
  echo_.text.clear();
  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_EQ(Read(g_ + "/f.txt"), "shared");
  EXPECT_EQ(set_.LastSyncDate, set_.ScanStarted());
  EXPECT_FALSE(Contains(LogText(), "The last synchronization date stays"))
      << LogText();
}

// --- Replacing a file's content ---------------------------------------------

TEST_F(RunSafetyTest, ReplacingContentThroughALinkKeepsTheLink) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: symbolic links";
#endif
  const std::string target = tmp_.Join("outside/settings.ini");
  const std::string link = a_ + "/settings.ini";
  Put(target, "old settings", kOldTime);
  MakeLink(target, link);

  ReplaceFileContent(link, "new settings");

  EXPECT_TRUE(IsLink(link));
  std::error_code error;
  const std::string points_to =
      std::filesystem::read_symlink(link, error).string();
  ASSERT_FALSE(error);
  ASSERT_FALSE(points_to.empty());
  EXPECT_EQ(points_to, target);
  EXPECT_EQ(Read(target), "new settings");
  EXPECT_EQ(Read(link), "new settings");
  EXPECT_EQ(Entries(a_), std::vector<std::string>{"settings.ini"});
  EXPECT_EQ(Entries(outside_), std::vector<std::string>{"settings.ini"});
}

// --- A last-sync date that cannot be trusted ---------------------------------

TEST_F(RunSafetyTest, LastSyncDateInTheFutureStopsTheRunAndNamesTheDate) {
  UseFolders();
  Put(a_ + "/kept.txt", "kept", kOldTime);
  Put(b_ + "/kept.txt", "kept", kOldTime);
  // Made after the real last sync, but before the date the set holds: it
  // would look deleted from a.
  Put(b_ + "/new.txt", "new in b", kNewTime);
  set_.LastSyncDate = std::floor(Now()) + 400;

  EXPECT_FALSE(RunSets(program_, {&set_}));

  ASSERT_EQ(ui_.messages.size(), 1u);
  const std::string& text = ui_.messages[0].text;
  EXPECT_TRUE(Contains(
      text, "the last synchronization date of the set 'Docs', " +
                FormatGeneralDate(set_.LastSyncDate) + ", lies in the future"))
      << text;
  EXPECT_TRUE(Contains(text, "type Never as the last sync date")) << text;
  EXPECT_TRUE(Contains(text, "remove the LastSyncDate line")) << text;
  EXPECT_EQ(Read(b_ + "/new.txt"), "new in b");
  EXPECT_FALSE(Exists(a_ + "/new.txt"));
}

TEST_F(RunSafetyTest, LastSyncDateInTheFutureStopsAQuietRunToo) {
  UseFolders();
  Put(b_ + "/new.txt", "new in b", kNewTime);
  set_.LastSyncDate = std::floor(Now()) + 1;
  set_.QuietMode = true;

  EXPECT_FALSE(RunSets(program_, {&set_}));

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(Read(b_ + "/new.txt"), "new in b");
  EXPECT_FALSE(Exists(a_ + "/new.txt"));
}

// Texts that name no date the program can hold: read, kept and refused.
class UnusableLastSyncDateTest
    : public RunSafetyTest,
      public ::testing::WithParamInterface<const char*> {};

TEST_P(UnusableLastSyncDateTest, IsRefusedAsBadConfigurationAndKept) {
  const std::string text = GetParam();
  INIFileSection section("Sec: Docs");
  section.AddVar("Dir1", a_);
  section.AddVar("Dir2", b_);
  section.AddVar("LastSyncDate", text);
  set_.ReadFromINI(section);
  Put(b_ + "/new.txt", "new in b", kNewTime);
  EXPECT_EQ(set_.LastSyncDate, 0);
  EXPECT_EQ(set_.UnusableLastSyncDate(), text);

  EXPECT_FALSE(RunSets(program_, {&set_}));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(Contains(ui_.messages[0].text,
                       "the last synchronization date of the set 'Docs', \"" +
                           text + "\", is not a date"))
      << ui_.messages[0].text;
  EXPECT_FALSE(Exists(a_ + "/new.txt"));
  // Saving keeps it until somebody replaces it.
  INIFileSection written("Sec: Docs");
  set_.WriteToINI(written);
  EXPECT_EQ(written.FindVar2("LastSyncDate", "<absent>"), text);
  set_.SetLastSyncDate(0);
  INIFileSection cleared("Sec: Docs");
  set_.WriteToINI(cleared);
  EXPECT_EQ(cleared.FindVar2("LastSyncDate", "<absent>"), "<absent>");
}

INSTANTIATE_TEST_SUITE_P(Texts, UnusableLastSyncDateTest,
                         ::testing::Values("1e308", "99999999999999999999",
                                           "-1e300", "nan", "2026-13-01",
                                           "yesterday"));

TEST_F(RunSafetyTest, SerialDateFarAheadIsRefusedAsInTheFuture) {
  INIFileSection section("Sec: Docs");
  section.AddVar("Dir1", a_);
  section.AddVar("Dir2", b_);
  section.AddVar("LastSyncDate", "99999");
  set_.ReadFromINI(section);
  Put(b_ + "/new.txt", "new in b", kNewTime);
  EXPECT_EQ(set_.LastSyncDate, 99999);

  EXPECT_FALSE(RunSets(program_, {&set_}));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(Contains(ui_.messages[0].text,
                       "2173-10-13 00:00:00, lies in "
                       "the future"))
      << ui_.messages[0].text;
  EXPECT_EQ(Read(b_ + "/new.txt"), "new in b");
}

TEST_F(RunSafetyTest, TimeZoneChangeBetweenRunsDoesNotDeleteANewFile) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  UseFolders();
  Put(a_ + "/kept.txt", "kept", kOldTime);
  Put(b_ + "/kept.txt", "kept", kOldTime);
  ScopedTimeZone zone("JST-9");
  ASSERT_TRUE(RunSets(program_, {&set_}));
  INIFileSection saved("Sec: Docs");
  set_.WriteToINI(saved);
  // The new file's date must lie after the second the date is kept to.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));

  // The next run is made in Los Angeles, 17 hours behind: read as local
  // time there, the date would lie 17 hours after this new file.
  zone.Set("PST8");
  Synchronizer later;
  later.Name = "Docs";
  later.SetLog(&log_);
  later.SetRunState(&program_.Run());
  later.VersionDays = 0;
  later.ReadConflictInfo(*catalogue_);
  later.ReadFromINI(saved);
  // Read as the same moment: 17 hours earlier on the clock (to the second).
  EXPECT_NEAR(later.LastSyncDate, set_.LastSyncDate - 17.0 / 24, 1.0 / 86400);
  Put(a_ + "/new.txt", "made after the sync", std::time(nullptr));

  EXPECT_TRUE(RunSets(program_, {&later}));

  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(Read(a_ + "/new.txt"), "made after the sync") << LogText();
  EXPECT_FALSE(Contains(LogText(), "Deleting")) << LogText();
}

// --- A destination that changes while its replacement is written -------------

TEST_F(RunSafetyTest, EditToTheDestinationDuringTheCopyIsKept) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/big.bin", std::string(std::size_t{24} << 20, 'n'), kNewTime);
  Put(b_ + "/big.bin", "old", kOldTime);
  bool edited = false;
  ui_.on_events = [&] {
    if (edited || PartialFiles(b_).empty()) return;
    Put(b_ + "/big.bin", "edited while the copy was written", kNewTime + 60);
    edited = true;
  };

  EXPECT_TRUE(RunSets(program_, {&set_}));

  ASSERT_TRUE(edited);
  EXPECT_TRUE(Read(b_ + "/big.bin") == "edited while the copy was written");
  EXPECT_TRUE(
      Contains(LogText(), "Skipped: " + b_ + "/big.bin changed since the scan"))
      << LogText();
  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
  EXPECT_EQ(set_.IgnoredErrors(), 1);
  EXPECT_TRUE(PartialFiles(b_).empty());
  EXPECT_EQ(set_.LastSyncDate, LastSync());
}

TEST_F(RunSafetyTest, FileRenamedIntoPlaceDuringTheCopyIsKept) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/big.bin", std::string(std::size_t{24} << 20, 'n'), kNewTime);
  Put(b_ + "/big.bin", "old", kOldTime);
  // The same size and date as the file the scan saw: only the file itself
  // tells them apart.
  Put(outside_ + "/other.bin", "OLD", kOldTime);
  bool replaced = false;
  ui_.on_events = [&] {
    if (replaced || PartialFiles(b_).empty()) return;
    // Over the file that is there, as POSIX rename does (Windows' C
    // library's rename would refuse).
    std::error_code error;
    std::filesystem::rename(std::filesystem::u8path(outside_ + "/other.bin"),
                            std::filesystem::u8path(b_ + "/big.bin"), error);
    replaced = !error;
  };

  EXPECT_TRUE(RunSets(program_, {&set_}));

  ASSERT_TRUE(replaced);
  EXPECT_TRUE(Read(b_ + "/big.bin") == "OLD");
  EXPECT_EQ(set_.IgnoredErrors(), 1);
  EXPECT_TRUE(PartialFiles(b_).empty());
}

// --- A source that holds nothing that takes part ----------------------------

// What a source folder holds after a sync, none of it a file of the run.
enum class NonParticipant { kLeftover, kDanglingLink, kEmptyFolder, kExcluded };

class EmptyLookingSourceTest
    : public RunSafetyTest,
      public ::testing::WithParamInterface<NonParticipant> {};

TEST_P(EmptyLookingSourceTest, StopsTheRunBeforeAnyDeletion) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  set_.ExcludeSpec = "*.tmp";
  Put(b_ + "/x.txt", "x in b", kOldTime);
  Put(b_ + "/y.txt", "y in b", kOldTime);
  switch (GetParam()) {
    case NonParticipant::kLeftover:
      Put(a_ + "/.pairwell-partial-Ab12Cd", "half", std::time(nullptr) + 600);
      break;
    case NonParticipant::kDanglingLink:
#ifdef _WIN32
      GTEST_SKIP() << "POSIX only: symbolic links";
#endif
      MakeLink(tmp_.Join("nowhere"), a_ + "/gone");
      break;
    case NonParticipant::kEmptyFolder:
      MakeFolder(a_ + "/lost+found");
      break;
    case NonParticipant::kExcluded:
      Put(a_ + "/scratch.tmp", "excluded", kOldTime);
      break;
  }

  EXPECT_FALSE(RunSets(program_, {&set_}));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(Contains(ui_.messages[0].text, "the folder '" + a_ +
                                                 "' is empty, so the files of "
                                                 "the other folders would be "
                                                 "deleted"))
      << ui_.messages[0].text;
  EXPECT_EQ(Read(b_ + "/x.txt"), "x in b");
  EXPECT_EQ(Read(b_ + "/y.txt"), "y in b");
}

std::string HoldingName(const ::testing::TestParamInfo<NonParticipant>& info) {
  switch (info.param) {
    case NonParticipant::kLeftover:
      return "Leftover";
    case NonParticipant::kDanglingLink:
      return "DanglingLink";
    case NonParticipant::kEmptyFolder:
      return "EmptyFolder";
    case NonParticipant::kExcluded:
      return "ExcludedFile";
  }
  return "Unknown";
}

INSTANTIATE_TEST_SUITE_P(Holdings, EmptyLookingSourceTest,
                         ::testing::Values(NonParticipant::kLeftover,
                                           NonParticipant::kDanglingLink,
                                           NonParticipant::kEmptyFolder,
                                           NonParticipant::kExcluded),
                         HoldingName);

// --- Deleting most of a folder ----------------------------------------------

TEST_F(RunSafetyTest, MassDeletionIsAskedWithNoAsTheDefault) {
  DeleteTenOfTwelve();

  EXPECT_EQ(RunWith(MassDeletion::kAsk), SetOutcome::kMassDeletionRefused);

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "This run would delete 10 of the 12 files in the folder '" + b_ +
                "'.\n\nDo you want to delete them?");
  EXPECT_EQ(ui_.messages[0].style,
            kMbYesNo | kMbExclamation | kMbDefaultButton2);
  EXPECT_EQ(Entries(b_).size(), 12u);
  EXPECT_EQ(set_.LastSyncDate, LastSync());
  EXPECT_TRUE(Contains(LogText(),
                       "Warning: This run would delete 10 of the 12 "
                       "files in the folder '" +
                           b_ + "'."))
      << LogText();
}

TEST_F(RunSafetyTest, MassDeletionGoesOnWhenAnsweredYes) {
  DeleteTenOfTwelve();
  ui_.answers = {kIdYes};

  EXPECT_EQ(RunWith(MassDeletion::kAsk), SetOutcome::kCompleted);

  EXPECT_EQ(Entries(b_), (std::vector<std::string>{"f11.txt", "f12.txt"}));
}

TEST_F(RunSafetyTest, MassDeletionInQuietModeDeletesNothing) {
  set_.QuietMode = true;
  DeleteTenOfTwelve();

  EXPECT_EQ(RunWith(MassDeletion::kAsk), SetOutcome::kMassDeletionRefused);

  EXPECT_TRUE(ui_.messages.empty());
  EXPECT_EQ(Entries(b_).size(), 12u);
}

TEST_F(RunSafetyTest, MassDeletionRefusedOrAllowedWithoutAQuestion) {
  DeleteTenOfTwelve();
  ui_.answers = {kIdYes};

  EXPECT_EQ(RunWith(MassDeletion::kRefuse), SetOutcome::kMassDeletionRefused);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(Contains(ui_.messages[0].text, "Nothing was changed."));
  EXPECT_EQ(ui_.messages[0].style & kMbButtonsMask, kMbOkOnly);
  EXPECT_EQ(Entries(b_).size(), 12u);

  EXPECT_EQ(RunWith(MassDeletion::kAllow), SetOutcome::kCompleted);
  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(Entries(b_).size(), 2u);
}

TEST_F(RunSafetyTest, DeletingHalfOrFewerThanTenAsksNothing) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  // Half of twenty, then nine of eleven.
  PutSyncedFiles(20);
  DeleteFromA(1, 10);
  EXPECT_EQ(RunWith(MassDeletion::kRefuse), SetOutcome::kCompleted);
  EXPECT_EQ(Entries(b_).size(), 10u);
  DeleteFromA(11, 19);
  EXPECT_EQ(RunWith(MassDeletion::kRefuse), SetOutcome::kCompleted);
  EXPECT_EQ(Entries(b_), std::vector<std::string>{"f20.txt"});
  EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
}

// --- Leftovers and read-only destinations -----------------------------------

TEST_F(RunSafetyTest, LeftoversOfEarlierRunsAreRemovedAndLogged) {
  UseFolders();
  MakeFolder(a_ + "/sub");
  MakeFolder(b_ + "/sub");
  Put(a_ + "/sub/x.txt", "x", kOldTime);
  Put(b_ + "/sub/.pairwell-partial-Ab12Cd", "half of an old copy", kOldTime);
  // Written after the run began: another run's copy in progress.
  Put(b_ + "/.pairwell-partial-Zz99Yy", "being written",
      std::time(nullptr) + 600);

  program_.SetSimulationMode(true);
  EXPECT_TRUE(RunSets(program_, {&set_}));
  const std::string removing =
      "Removing the leftover of an interrupted copy: " + b_ +
      "/sub/.pairwell-partial-Ab12Cd";
  EXPECT_TRUE(Contains(LogText(), removing)) << LogText();
  EXPECT_TRUE(Exists(b_ + "/sub/.pairwell-partial-Ab12Cd"));

  program_.SetSimulationMode(false);
  echo_.text.clear();
  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_TRUE(Contains(LogText(), removing)) << LogText();
  EXPECT_FALSE(Exists(b_ + "/sub/.pairwell-partial-Ab12Cd"));
  EXPECT_EQ(Read(b_ + "/.pairwell-partial-Zz99Yy"), "being written");
  EXPECT_FALSE(Contains(LogText(), "copy: " + b_ + "/.pairwell-partial-Zz99Yy"))
      << LogText();
  EXPECT_EQ(Read(b_ + "/sub/x.txt"), "x");
}

TEST_F(RunSafetyTest, ReadOnlyDestinationLeftAloneIsLoggedWithTheReason) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/doc.txt", "new", kNewTime);
  Put(b_ + "/doc.txt", "old", kOldTime, 0, 0444);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_EQ(Read(b_ + "/doc.txt"), "old");
  EXPECT_TRUE(Contains(LogText(), "Skipped: " + b_ +
                                      "/doc.txt is read-only and the action "
                                      "does not overwrite read-only files"))
      << LogText();
}

// --- Values that hold a NUL byte ---------------------------------------------

TEST_F(RunSafetyTest, FolderPathWithANulByteIsNeverReadAsAnotherFolder) {
  MakeFolder(a_ + "/top");
  MakeFolder(a_ + "/top/sub");
  MakeFolder(g_);
  Put(a_ + "/top/sub/x.txt", "x", kOldTime);
  set_.PathAdd(a_ + "/top" + std::string(1, '\0') + "/A");
  set_.PathAdd(b_);
  set_.PathAdd(g_);

  EXPECT_FALSE(RunSets(program_, {&set_}));

  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_TRUE(Contains(ui_.messages[0].text, "could not be accessed"))
      << ui_.messages[0].text;
  EXPECT_TRUE(Entries(b_).empty());
}

// --- An empty copy dated like one that holds data ---------------------------

// What a power cut or a pulled drive leaves of a copy: the name and the
// date, no bytes. Copied over the other folders it would destroy the data.
TEST_F(RunSafetyTest, EmptyCopyDatedLikeAFullOneIsNotCopiedOverIt) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/torn.txt", "", kNewTime);
  Put(b_ + "/torn.txt", "the person's edit", kNewTime);
  Put(a_ + "/fine.txt", "new", kNewTime);
  Put(b_ + "/fine.txt", "old", kOldTime);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_EQ(Read(b_ + "/torn.txt"), "the person's edit");
  EXPECT_EQ(Read(a_ + "/torn.txt"), "");
  EXPECT_EQ(Read(b_ + "/fine.txt"), "new");
  // The run asked first, and the file was left undecided.
  EXPECT_EQ(ui_.confirm_calls, 1);
  EXPECT_TRUE(Contains(LogText(), "Needs confirmation: " + a_ +
                                      "/torn.txt is empty while " + b_ +
                                      "/torn.txt of the same date holds 17 "
                                      "bytes"))
      << LogText();
}

TEST_F(RunSafetyTest, EmptyCopyIsHeldWhicheverFolderHoldsIt) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/torn.txt", "data in the first folder", kNewTime);
  Put(b_ + "/torn.txt", "", kNewTime + 1);
  BuildSilently(set_, ui_);
  SyncFile& file = FileNamed(set_, "torn.txt");

  // The empty copy is the newest by a second: within the tolerance, so it
  // would win.
  EXPECT_EQ(file.GetNewestFileIndex(true), 2);
  EXPECT_EQ(file.DataCopyAtRisk(), 1);
  EXPECT_EQ(file.Action, kUndecided);
  EXPECT_TRUE(file.EmptyCopyHeld());
  EXPECT_TRUE(NeedsConfirmation(file));
  EXPECT_EQ(StatusText(file), "NN!!");
}

TEST_F(RunSafetyTest, FullCopyStillReplacesAnEmptyOneOfTheSameDate) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/f.txt", "data", kNewTime);
  Put(b_ + "/f.txt", "", kNewTime);

  EXPECT_TRUE(RunSets(program_, {&set_}));

  EXPECT_EQ(Read(b_ + "/f.txt"), "data");
  EXPECT_FALSE(Contains(LogText(), "Needs confirmation")) << LogText();
}

TEST_F(RunSafetyTest, EmptyCopyThatIsReallyNewerStillWins) {
  UseFolders();
  set_.LastSyncDate = LastSync();
  Put(a_ + "/f.txt", "", kNewTime + 3600);
  Put(b_ + "/f.txt", "emptied an hour later on purpose", kNewTime);
  BuildSilently(set_, ui_);
  const SyncFile& file = FileNamed(set_, "f.txt");

  EXPECT_EQ(file.DataCopyAtRisk(), 0);
  EXPECT_FALSE(file.EmptyCopyHeld());
  EXPECT_EQ(file.Action, kUseNewest);
  EXPECT_EQ(file.SourceIndex, 1);
}

}  // namespace
}  // namespace pairwell
