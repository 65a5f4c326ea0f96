// Kept copies, history and undo, through the built pairwell-cli on real
// folders: every run can be put back, and nothing is ever lost.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "faults/fault_files.h"
#include "faults/tmpfs_mount.h"
#include "support/cli_process.h"
#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/temp_dir.h"

namespace pairwell {
namespace {

using Tree = std::map<std::string, TreeEntry>;

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// The run ids of a history listing, newest first.
std::vector<std::string> RunIds(const std::string& history) {
  std::vector<std::string> ids;
  std::istringstream lines(history);
  for (std::string line; std::getline(lines, line);) {
    ids.push_back(line.substr(0, line.find(' ')));
  }
  return ids;
}

class UndoTest : public ::testing::Test {
 protected:
  UndoTest() : now_(time(nullptr)) {
    MakeFolder(A());
    MakeFolder(B());
  }

  std::string A() const { return dir_.Join("A"); }
  std::string B() const { return dir_.Join("B"); }
  std::string C() const { return dir_.Join("C"); }

  // A set "T" of the folders (path, flags), with extra "Key=Value\r\n" lines.
  void Configure(const std::vector<std::pair<std::string, int>>& folders,
                 const std::string& extra = "") {
    std::string section = "[Sec: T]\r\n";
    for (std::size_t i = 0; i < folders.size(); ++i) {
      const std::string n = std::to_string(i + 1);
      section += "Dir" + n + "=" + folders[i].first + "\r\nDir" + n +
                 "Flags=" + std::to_string(folders[i].second) + "\r\n";
    }
    // Read-only copies may be replaced (8 protect merge-to, 2 read-only).
    dir_.WriteFile("p.ini",
                   IniWithSets(section + "DefActionFlags=10\r\n" + extra));
  }

  // A a source, B a mirror of it.
  void ConfigureMirror(const std::string& extra = "") {
    Configure({{A(), 4}, {B(), 5}}, extra);
  }

  ProcessResult Cli(const std::vector<std::string>& args) {
    std::vector<std::string> argv = {PAIRWELL_CLI_PATH, "--ini",
                                     dir_.Join("p.ini")};
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProcess(argv, dir_.Join("out"), dir_.Join("err"));
  }

  void Write(const std::string& path, const std::string& bytes, int age,
             mode_t mode = 0644) {
    ASSERT_TRUE(WriteFileAt(path, bytes, now_ - age, mode)) << path;
  }

  // What a first sync of A over B does to each kind of file: one kept, one
  // replaced (read-only), one created in a new folder, one deleted.
  void MakeMixedFolders() {
    Write(A() + "/same.txt", "same", 7200);
    Write(B() + "/same.txt", "same", 7200);
    Write(A() + "/changed.txt", "new version", 600);
    Write(B() + "/changed.txt", "old version", 7200, 0444);
    MakeFolder(A() + "/new");
    Write(A() + "/new/deep.txt", "created", 600);
    Write(B() + "/gone.txt", "only in B", 7200);
  }

  std::string Ini() const { return dir_.ReadFile("p.ini"); }

  // The last-sync line of the set, "" when it has none.
  std::string LastSync() const {
    std::istringstream lines(Ini());
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("LastSyncDate=", 0) == 0) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        return line.substr(13);
      }
    }
    return "";
  }

  std::vector<std::string> History() {
    const ProcessResult r = Cli({"history", "T"});
    EXPECT_EQ(r.exit_code, 0) << r.err;
    return RunIds(r.out);
  }

  std::string Kept(const std::string& folder, const std::string& run,
                   const std::string& name) const {
    return folder + "/.pairwell/versions/" + run + "/files/" + name;
  }

  void ExpectSame(const Tree& before, const std::string& folder) {
    const std::vector<std::string> differences =
        SnapshotDifferences(before, SnapshotTree(folder), "before", "now");
    EXPECT_TRUE(differences.empty()) << folder << ":\n" << Joined(differences);
  }

  TempDir dir_;
  const time_t now_;
};

TEST_F(UndoTest, RunKeepsWhatItReplacesAndDeletesAndSaysWhere) {
  MakeMixedFolders();
  ConfigureMirror();

  const ProcessResult r = Cli({"sync", "--yes", "T"});
  ASSERT_EQ(r.exit_code, 0) << r.out << r.err;

  const std::vector<std::string> runs = History();
  ASSERT_EQ(runs.size(), 1u);
  const std::string kept_old = Kept(B(), runs[0], "changed.txt");
  const std::string kept_gone = Kept(B(), runs[0], "gone.txt");
  EXPECT_EQ(Read(B() + "/changed.txt"), "new version");
  EXPECT_EQ(Read(kept_old), "old version");
  EXPECT_EQ(StateOf(kept_old).seconds, now_ - 7200);
  EXPECT_FALSE(Exists(B() + "/gone.txt"));
  EXPECT_EQ(Read(kept_gone), "only in B");
  // The log names where each old copy went, after its operation.
  EXPECT_NE(r.out.find("Copy " + B() + "/changed.txt from " + A() +
                       "/changed.txt\nOld copy kept as " + kept_old + "\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Deleting " + B() + "/gone.txt\nOld copy kept as " +
                       kept_gone + "\n"),
            std::string::npos)
      << r.out;
  // The source was not changed: it has no versions area.
  EXPECT_FALSE(Exists(A() + "/.pairwell"));
}

TEST_F(UndoTest, UndoPutsEveryFolderBackAndTheNextPlanIsTheSame) {
  MakeMixedFolders();
  ConfigureMirror();
  const Tree a_before = SnapshotTree(A());
  const Tree b_before = SnapshotTree(B());
  const std::string plan_before = Cli({"plan", "T"}).out;
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  ASSERT_FALSE(LastSync().empty());

  const ProcessResult r = Cli({"undo", "T"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  ExpectSame(a_before, A());
  ExpectSame(b_before, B());  // content, date and the read-only mode
  EXPECT_EQ(StateOf(B() + "/changed.txt").mode, 0444);
  EXPECT_FALSE(Exists(B() + "/new"));  // the folder the run made
  EXPECT_EQ(LastSync(), "");
  EXPECT_EQ(Cli({"plan", "T"}).out, plan_before);
}

TEST_F(UndoTest, UndoOfAnUndoPutsTheRunBack) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const Tree b_after_run = SnapshotTree(B());
  const std::string last_sync = LastSync();
  ASSERT_EQ(Cli({"undo", "T"}).exit_code, 0);

  const ProcessResult r = Cli({"undo", "T"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  ExpectSame(b_after_run, B());
  EXPECT_EQ(LastSync(), last_sync);
  EXPECT_EQ(History().size(), 3u);
}

TEST_F(UndoTest, HistoryListsRunsNewestFirstWithWhatTheyDid) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const std::string sync_id = History().at(0);
  ASSERT_EQ(Cli({"undo", "T"}).exit_code, 0);

  const ProcessResult r = Cli({"history", "T"});
  const ProcessResult json = Cli({"history", "--json", "T"});

  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::vector<std::string> lines = LinesStartingWith(r.out, "2");
  ASSERT_EQ(lines.size(), 2u) << r.out;
  EXPECT_NE(lines[0].find("undo of " + sync_id), std::string::npos) << r.out;
  EXPECT_EQ(lines[1].rfind(sync_id, 0), 0u) << r.out;
  EXPECT_NE(lines[1].find("1 created, 1 replaced, 1 deleted"),
            std::string::npos)
      << r.out;
  EXPECT_EQ(json.exit_code, 0);
  EXPECT_EQ(json.out.rfind("{\"set\":\"T\",\"runs\":[{\"id\":\"", 0), 0u)
      << json.out;
  EXPECT_NE(json.out.find("\"id\":\"" + sync_id +
                          "\",\"started\":\""),
            std::string::npos);
  EXPECT_NE(json.out.find("\"undoes\":\"" + sync_id + "\""),
            std::string::npos);
}

TEST_F(UndoTest, FileChangedSinceTheRunIsLeftListedAndTakenWithForce) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const std::string sync_id = History().at(0);
  ASSERT_EQ(chmod((B() + "/changed.txt").c_str(), 0644), 0);
  Write(B() + "/changed.txt", "edited after the run", 60);

  ProcessResult r = Cli({"undo", "T"});

  EXPECT_EQ(r.exit_code, 4) << r.out << r.err;
  EXPECT_NE(r.out.find("Left as it is: " + B() +
                       "/changed.txt changed since the run"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.err.find("1 file was left as it was"), std::string::npos)
      << r.err;
  EXPECT_EQ(Read(B() + "/changed.txt"), "edited after the run");
  EXPECT_EQ(Read(B() + "/gone.txt"), "only in B");  // the rest went back
  EXPECT_FALSE(Exists(B() + "/new/deep.txt"));

  r = Cli({"undo", "--force", "--run", sync_id, "T"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  EXPECT_EQ(Read(B() + "/changed.txt"), "old version");
  // The edit is kept by the undo that replaced it.
  const std::string undo_id = History().at(0);
  EXPECT_EQ(Read(Kept(B(), undo_id, "changed.txt")), "edited after the run");
}

TEST_F(UndoTest, UnknownSetOrRunIsSaidAndChangesNothing) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const Tree b_after = SnapshotTree(B());
  const std::string ini = Ini();

  const ProcessResult no_set = Cli({"undo", "Nope"});
  const ProcessResult no_run = Cli({"undo", "--run", "19990101-000000", "T"});
  const ProcessResult no_id = Cli({"undo", "--run", "", "T"});

  EXPECT_EQ(no_set.exit_code, 2);
  EXPECT_NE(no_set.err.find("no sync set 'Nope'"), std::string::npos);
  EXPECT_EQ(no_run.exit_code, 1);
  EXPECT_NE(no_run.err.find("There is no run 19990101-000000 of the set 'T'"),
            std::string::npos)
      << no_run.err;
  EXPECT_EQ(no_id.exit_code, 2);
  ExpectSame(b_after, B());
  EXPECT_EQ(Ini(), ini);
  EXPECT_EQ(History().size(), 1u);
}

TEST_F(UndoTest, SimulatedUndoSaysWhatItWouldDoAndChangesNothing) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const Tree b_after = SnapshotTree(B());
  const std::string ini = Ini();

  const ProcessResult r = Cli({"undo", "--simulate", "T"});

  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(LinesStartingWith(r.out, "Putting back ").size(), 2u) << r.out;
  EXPECT_EQ(LinesStartingWith(r.out, "Removing " + B() + "/new/deep.txt")
                .size(),
            1u)
      << r.out;
  ExpectSame(b_after, B());
  EXPECT_EQ(Ini(), ini);
  EXPECT_EQ(History().size(), 1u);
}

TEST_F(UndoTest, MergeToAndMirrorToFoldersAreBothPutBack) {
  MakeFolder(C());
  Write(A() + "/doc.txt", "newest", 600);
  Write(B() + "/doc.txt", "merge copy", 7200);
  Write(C() + "/doc.txt", "mirror copy", 7200);
  Write(C() + "/extra.txt", "only in the mirror", 7200);
  Write(B() + "/own.txt", "only in the merge-to folder", 7200);
  Configure({{A(), 4}, {B(), 6}, {C(), 5}});
  const Tree b_before = SnapshotTree(B());
  const Tree c_before = SnapshotTree(C());
  const ProcessResult sync = Cli({"sync", "--yes", "T"});
  ASSERT_EQ(sync.exit_code, 0) << sync.out << sync.err;
  ASSERT_EQ(Read(B() + "/doc.txt"), "newest");
  ASSERT_EQ(Read(C() + "/doc.txt"), "newest");

  const ProcessResult r = Cli({"undo", "T"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  ExpectSame(b_before, B());
  ExpectSame(c_before, C());
}

TEST_F(UndoTest, PrunedRunsAreLoggedAndCannotBeUndone) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const std::string old_id = History().at(0);
  // The run took place 40 days ago, as its journal will say.
  const std::string journal = B() + "/.pairwell/versions/" + old_id + "/journal";
  std::string text = Read(journal);
  const std::string::size_type at = text.find("started\t");
  ASSERT_NE(at, std::string::npos);
  const std::string::size_type end = text.find('\n', at);
  text.replace(at, end - at,
               "started\t" + std::to_string(now_ - 40 * 86400));
  std::ofstream(journal, std::ios::binary | std::ios::trunc) << text;
  Write(A() + "/later.txt", "a later file", 30);

  const ProcessResult later = Cli({"sync", "--yes", "T"});

  ASSERT_EQ(later.exit_code, 0) << later.out << later.err;
  EXPECT_EQ(LinesStartingWith(later.out, "Removing the copies kept by the run " +
                                             old_id)
                .size(),
            1u)
      << later.out;
  EXPECT_FALSE(Exists(B() + "/.pairwell/versions/" + old_id));
  const ProcessResult r = Cli({"undo", "--run", old_id, "T"});
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_NE(r.err.find("The run " + old_id +
                       " of the set 'T' can no longer be undone: the copies "
                       "it kept were removed on "),
            std::string::npos)
      << r.err;
}

TEST_F(UndoTest, NoVersionDaysKeepsNothing) {
  MakeMixedFolders();
  ConfigureMirror("VersionDays=0\r\n");

  const ProcessResult r = Cli({"sync", "--yes", "T"});

  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_FALSE(Exists(B() + "/.pairwell"));
  EXPECT_FALSE(Exists(B() + "/gone.txt"));
  EXPECT_TRUE(LinesStartingWith(r.out, "Old copy kept").empty());
  EXPECT_TRUE(History().empty());
  const ProcessResult undo = Cli({"undo", "T"});
  EXPECT_EQ(undo.exit_code, 1);
  EXPECT_NE(undo.err.find("There is no run of the set 'T' to undo."),
            std::string::npos)
      << undo.err;
}

TEST_F(UndoTest, VersionsAreaIsNeverSyncedNorCounted) {
  MakeMixedFolders();
  ConfigureMirror();
  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  // B as a source now: its versions area must not reach A.
  Configure({{B(), 4}, {A(), 5}});

  const ProcessResult plan = Cli({"plan", "T"});

  EXPECT_EQ(plan.out.find("\n.pairwell/"), std::string::npos) << plan.out;
  EXPECT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  EXPECT_FALSE(Exists(A() + "/.pairwell/versions/" + History().back() +
                      "/files"));
  // A source holding nothing but kept copies is an empty source.
  MakeFolder(C());
  for (int i = 0; i < 3; ++i) {
    Write(C() + "/c" + std::to_string(i) + ".txt", "c", 7200);
  }
  Configure({{dir_.Join("E"), 4}, {C(), 5}},
            "LastSyncDate=" + LocalDateText(now_ - 3600) + "\r\n");
  MakeFolder(dir_.Join("E"));
  MakeFolder(dir_.Join("E/.pairwell"));
  Write(dir_.Join("E/.pairwell/stray.txt"), "not a file of the set", 60);
  const ProcessResult empty = Cli({"sync", "--yes", "T"});
  EXPECT_NE(empty.exit_code, 0);
  EXPECT_EQ(Entries(C()).size(), 3u);
}

TEST_F(UndoTest, FolderThatCannotKeepCopiesStopsTheRunBeforeAnyChange) {
  MakeMixedFolders();
  ConfigureMirror();
  const Tree b_before = SnapshotTree(B());
  ImmutableGuard guard(B());
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";

  const ProcessResult r = Cli({"sync", "--yes", "T"});

  EXPECT_EQ(r.exit_code, 1) << r.out;
  EXPECT_NE(r.err.find("Pairwell cannot keep the copies this run would "
                       "replace or delete in '" +
                       B() + "/.pairwell/versions'"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("Nothing was changed."), std::string::npos);
  ExpectSame(b_before, B());
  EXPECT_EQ(LastSync(), "");
}

TEST_F(UndoTest, ArchiveKeepsTheOldCopiesUnderTheSetAndTheRun) {
  MakeMixedFolders();
  const std::string archive = dir_.Join("Archive");
  MakeFolder(archive);
  ConfigureMirror("ArchiveDeleted=True\r\nArchiveOverwritten=True\r\n"
                  "ArchivePath=" + archive + "\r\nVersionDays=0\r\n");
  const Tree b_before = SnapshotTree(B());

  const ProcessResult r = Cli({"sync", "--yes", "T"});

  ASSERT_EQ(r.exit_code, 0) << r.out << r.err;
  const std::string id = History().at(0);
  const std::string run_folder = archive + "/T/" + id + "/2-B";
  EXPECT_EQ(Read(run_folder + "/changed.txt"), "old version");
  EXPECT_EQ(Read(run_folder + "/gone.txt"), "only in B");
  EXPECT_NE(r.out.find("Old copy kept as " + run_folder + "/gone.txt"),
            std::string::npos)
      << r.out;
  EXPECT_FALSE(Exists(B() + "/.pairwell/versions/" + id + "/files/gone.txt"));
  // Undone from the archive, which stays whole.
  ASSERT_EQ(Cli({"undo", "T"}).exit_code, 0);
  ExpectSame(b_before, B());
  EXPECT_EQ(Read(run_folder + "/gone.txt"), "only in B");
}

TEST_F(UndoTest, ArchiveFolderThatCannotBeUsedIsNamedAndNothingChanges) {
  MakeMixedFolders();
  const Tree b_before = SnapshotTree(B());
  const std::string locked = dir_.Join("Locked");
  MakeFolder(locked);
  ImmutableGuard guard(locked);
  struct Case {
    std::string path;
    std::string says;
  };
  std::vector<Case> cases = {
      {"", "saves deleted or overwritten files, but names no archive folder"},
      {"Archive", "The archive folder 'Archive' of the set 'T' is not a full "
                  "path"}};
  if (guard.active()) {
    cases.push_back(
        {locked, "The archive folder '" + locked + "' of the set 'T' cannot "
                                                   "be written"});
  }
  for (const Case& c : cases) {
    ConfigureMirror("ArchiveDeleted=True\r\nArchivePath=" + c.path + "\r\n");

    const ProcessResult r = Cli({"sync", "--yes", "T"});

    EXPECT_EQ(r.exit_code, 1) << c.path;
    EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("Nothing was changed."), std::string::npos);
    ExpectSame(b_before, B());
  }
}

TEST_F(UndoTest, PlanAndSimulationSayWhereOldCopiesAreKept) {
  MakeMixedFolders();
  ConfigureMirror();
  const Tree b_before = SnapshotTree(B());

  const ProcessResult plan = Cli({"plan", "T"});
  const ProcessResult simulated = Cli({"sync", "--simulate", "--yes", "T"});

  const std::string kept =
      "Replaced and deleted copies are kept for 30 days in .pairwell/versions "
      "in each folder; a run can be undone.\n";
  EXPECT_NE(plan.out.find(kept), std::string::npos) << plan.out;
  EXPECT_NE(simulated.out.find(kept), std::string::npos) << simulated.out;
  EXPECT_EQ(LinesStartingWith(simulated.out, "Old copy kept as " + B() +
                                                 "/.pairwell/versions/")
                .size(),
            2u)
      << simulated.out;
  ExpectSame(b_before, B());
  EXPECT_FALSE(Exists(B() + "/.pairwell"));
}

TEST_F(UndoTest, KeptCopiesOnAnotherFileSystemAreCopiedAndPutBack) {
  MakeFolder(A() + "/mnt");
  MakeFolder(B() + "/mnt");
  TmpfsMount mount(B() + "/mnt", "4m");
  if (!mount.mounted()) GTEST_SKIP() << "no tmpfs: " << mount.error();
  Write(A() + "/mnt/x.txt", "new x", 600);
  Write(B() + "/mnt/x.txt", "old x", 7200);
  Write(B() + "/mnt/y.txt", "old y", 7200);
  ConfigureMirror();
  const Tree b_before = SnapshotTree(B());

  ASSERT_EQ(Cli({"sync", "--yes", "T"}).exit_code, 0);
  const std::string id = History().at(0);
  EXPECT_EQ(Read(Kept(B(), id, "mnt/x.txt")), "old x");
  EXPECT_EQ(Read(Kept(B(), id, "mnt/y.txt")), "old y");
  EXPECT_FALSE(Exists(B() + "/mnt/y.txt"));

  const ProcessResult r = Cli({"undo", "T"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  ExpectSame(b_before, B());
}

// Many files, so that a kill lands in the middle of the actions.
TEST_F(UndoTest, RunKilledPartWayIsPutBackWhole) {
  constexpr int kFiles = 600;
  for (int i = 0; i < kFiles; ++i) {
    const std::string name = "/f" + std::to_string(i) + ".txt";
    Write(A() + name, std::string(4096, static_cast<char>('a' + i % 26)), 600);
    if (i % 3 != 0) Write(B() + name, "old " + std::to_string(i), 7200);
  }
  for (int i = 0; i < kFiles / 3; ++i) {
    Write(B() + "/extra" + std::to_string(i) + ".txt", "extra", 7200);
  }
  ConfigureMirror();
  const Tree b_before = SnapshotTree(B());
  const std::vector<std::string> argv = {PAIRWELL_CLI_PATH, "--ini",
                                         dir_.Join("p.ini"), "sync", "--yes",
                                         "--allow-mass-delete", "T"};
  // Longer and longer lives, until a kill lands after the first action.
  bool cut_short = false;
  for (int delay_ms = 10; delay_ms <= 1280 && !cut_short; delay_ms *= 2) {
    const KillOutcome outcome =
        RunAndKillAfter(argv, dir_.Join("out"), dir_.Join("err"),
                        std::chrono::milliseconds(delay_ms));
    ASSERT_TRUE(outcome.started);
    if (!outcome.killed) {
      // Done before its kill: a whole run is put back as well.
      ASSERT_EQ(Cli({"undo", "T"}).exit_code, 0);
      ExpectSame(b_before, B());
      GTEST_SKIP() << "the run ended within " << delay_ms << " ms";
    }
    cut_short = !History().empty();
  }
  ASSERT_TRUE(cut_short) << "no kill landed after the first action";
  const ProcessResult history = Cli({"history", "T"});
  EXPECT_NE(history.out.find("(cut short)"), std::string::npos)
      << history.out;

  const ProcessResult r = Cli({"undo", "T"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  ExpectSame(b_before, B());
}

}  // namespace
}  // namespace pairwell
