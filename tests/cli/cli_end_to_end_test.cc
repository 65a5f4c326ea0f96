// Runs the built pairwell-cli on real folders.
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/cli_process.h"
#include "support/immutable_guard.h"
#include "support/scoped_time_zone.h"
#include "support/system_text.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/system.h"
#ifdef _WIN32
#include "util/win32/error_number.h"
#endif

namespace pairwell {
namespace {

using Result = ProcessResult;

// One entry of a folder tree as a run could change it.
struct EntryState {
  bool is_folder = false;
  std::string bytes;
  std::int64_t mtime_ns = 0;
  int mode = 0;

  bool operator==(const EntryState& other) const {
    return is_folder == other.is_folder && bytes == other.bytes &&
           mtime_ns == other.mtime_ns && mode == other.mode;
  }
};

// Relative path -> state, for every file and folder under root (root's own
// entry is "." so that a new entry in it shows as a changed date).
using TreeState = std::map<std::string, EntryState>;

std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(std::filesystem::u8path(path), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

EntryState StateOf(const std::string& path) {
  EntryState state;
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  if (!GetModifyTime(path, &seconds, &nanoseconds)) return state;
  state.is_folder = IsFolder(path);
  state.mtime_ns = seconds * 1000000000 + nanoseconds;
  state.mode = ModeOf(path);
  if (!state.is_folder) state.bytes = ReadWholeFile(path);
  return state;
}

// The folder's own files: the copies runs keep in its versions area are
// looked at by the tests of undo. Names are "/" separated on every system.
TreeState Snapshot(const std::string& root) {
  namespace fs = std::filesystem;
  TreeState tree;
  tree["."] = StateOf(root);
  for (auto it = fs::recursive_directory_iterator(fs::u8path(root));
       it != fs::recursive_directory_iterator(); ++it) {
    if (it->path().filename() == ".pairwell") {
      it.disable_recursion_pending();
      continue;
    }
    const std::string path = it->path().u8string();
    std::string name = path.substr(root.size() + 1);
    for (char& c : name) {
      if (c == '\\') c = '/';
    }
    tree[name] = StateOf(path);
  }
  return tree;
}

// The file names of a tree, folders marked with a trailing "/".
std::string Listing(const TreeState& tree) {
  std::string text;
  for (const auto& [name, state] : tree) {
    text += name + (state.is_folder ? "/\n" : "\n");
  }
  return text;
}

// Sets a file's modification time to seconds before now.
void SetAge(const std::string& path, int seconds) {
  ASSERT_TRUE(SetModifyTime(path, std::time(nullptr) - seconds)) << path;
}

// "YYYY-MM-DD HH:MM:SS" in local time, seconds before now: the way a set
// records its last sync.
std::string LocalDateText(int seconds_ago) {
  std::tm local = {};
  LocalTimeOf(std::time(nullptr) - seconds_ago, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

// The lines of a CR LF text; a line ending in a bare LF keeps its LF so
// that a comparison shows it.
std::vector<std::string> CrLfLines(const std::string& text) {
  std::vector<std::string> lines;
  std::string::size_type start = 0;
  for (std::string::size_type end;
       (end = text.find("\r\n", start)) != std::string::npos; start = end + 2) {
    lines.push_back(text.substr(start, end - start));
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

bool IsLastSyncLine(const std::string& line) {
  return line.rfind("LastSyncDate=", 0) == 0 ||
         line.rfind("LastSyncMoment=", 0) == 0;
}

// The value of the LastSyncDate key in the section headed `header`; "" when
// the section has none.
std::string LastSyncIn(const std::string& ini, const std::string& header) {
  bool inside = false;
  for (const std::string& line : CrLfLines(ini)) {
    if (!line.empty() && line[0] == '[') inside = line == header;
    if (inside && IsLastSyncLine(line)) return line.substr(13);
  }
  return std::string();
}

bool LooksLikeSyncDate(const std::string& text) {
  if (text.size() != 19) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool ok = (i == 4 || i == 7)     ? c == '-'
                    : i == 10              ? c == ' '
                    : (i == 13 || i == 16) ? c == ':'
                                           : (c >= '0' && c <= '9');
    if (!ok) return false;
  }
  return true;
}

// Writes size bytes of non-repeating-looking data that occupy real blocks.
bool WriteBigFile(const std::string& path, std::int64_t size) {
  std::vector<std::uint32_t> block(1 << 20);  // 4 MiB
  std::mt19937 random(12345);
  for (std::uint32_t& word : block) word = random();
  std::ofstream out(std::filesystem::u8path(path),
                    std::ios::binary | std::ios::trunc);
  const std::int64_t block_bytes =
      static_cast<std::int64_t>(block.size() * sizeof block[0]);
  for (std::int64_t written = 0; out && written < size;
       written += block_bytes) {
    // Each block differs a little, so no two blocks are equal.
    block[0] = static_cast<std::uint32_t>(written / block_bytes);
    out.write(reinterpret_cast<const char*>(block.data()), block_bytes);
  }
  out.close();
  return !out.fail();
}

// The name of a leftover temporary copy in folder; "" when there is none.
std::string FindPartialCopy(const std::string& folder) {
  namespace fs = std::filesystem;
  std::error_code error;
  for (fs::directory_iterator entry(fs::u8path(folder), error), end;
       !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().u8string();
    if (name.rfind(".pairwell-partial-", 0) == 0) return name;
  }
  return std::string();
}

class CliTest : public ::testing::Test {
 protected:
  CliTest() {
    CreateFolder(dir_.Join("A"));
    CreateFolder(dir_.Join("A/sub"));
    CreateFolder(dir_.Join("B"));
  }

  // The shipped catalogue followed by the given set sections.
  void WriteIni(const std::string& sets) {
    std::FILE* in = std::fopen(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini", "rb");
    ASSERT_NE(in, nullptr);
    std::string text;
    std::array<char, 4096> buffer;
    for (std::size_t n;
         (n = std::fread(buffer.data(), 1, buffer.size(), in));) {
      text.append(buffer.data(), n);
    }
    std::fclose(in);
    dir_.WriteFile("p.ini", text + sets);
  }

  std::string TwoFolderSet(const std::string& name) {
    return "[Sec: " + name + "]\r\nDir1=" + dir_.Join("A") +
           "\r\nDir2=" + dir_.Join("B") + "\r\n";
  }

  // Runs pairwell-cli with the test configuration and the given arguments
  // to its end; zone, when given, is the run's TZ.
  Result Run(const std::vector<std::string>& args,
             const std::string& zone = "") {
    std::unique_ptr<ScopedTimeZone> run_zone;
    if (!zone.empty())
      run_zone = std::make_unique<ScopedTimeZone>(zone.c_str());
    return RunProcess(Command(args), dir_.Join("out"), dir_.Join("err"));
  }

  // Starts pairwell-cli like Run in the background, its output going to the
  // files "out" and "err".
  ProcessHandle Start(const std::vector<std::string>& args) {
    return StartProcess(Command(args), dir_.Join("out"), dir_.Join("err"));
  }

  std::vector<std::string> Command(const std::vector<std::string>& args) {
    std::vector<std::string> words = {PAIRWELL_CLI_PATH, "--ini",
                                      dir_.Join("p.ini")};
    words.insert(words.end(), args.begin(), args.end());
    return words;
  }

  // A set section over the named folders of the temporary folder, with extra
  // lines ("Key=Value\r\n") after them.
  std::string SetOver(const std::string& name,
                      const std::vector<std::string>& folders,
                      const std::string& extra = "") {
    std::string text = "[Sec: " + name + "]\r\n";
    for (std::size_t i = 0; i < folders.size(); ++i) {
      text +=
          "Dir" + std::to_string(i + 1) + "=" + dir_.Join(folders[i]) + "\r\n";
    }
    return text + extra;
  }

  // Writes a file of the temporary folder dated seconds before now.
  void WriteAged(const std::string& name, const std::string& content,
                 int seconds) {
    dir_.WriteFile(name, content);
    SetAge(dir_.Join(name), seconds);
  }

  TempDir dir_;
};

TEST_F(CliTest, ListShowsSetsAndFolders) {
  WriteIni(TwoFolderSet("Docs") +
           "[Sec: Music]\r\nDir1=/m\r\nDir1Flags=13\r\n");
  const Result r = Run({"list"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("1  Docs  (2 folders)\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("2  Music  (1 folder)\n"), std::string::npos);
  EXPECT_NE(r.out.find("Mirror to      enabled, create base"),
            std::string::npos)
      << r.out;
}

TEST_F(CliTest, PlanTableShowsEveryFileAndChangesNothing) {
  dir_.WriteFile("A/a.txt", "one");
  dir_.WriteFile("A/sub/b.txt", "two");
  WriteIni(TwoFolderSet("Docs"));
  const Result r = Run({"plan", "docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("File       Status  Action\n"), std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("a.txt      N_!     Copy #1 (newest)\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("sub/b.txt  N_!     Copy #1 (newest)\n"),
            std::string::npos);
  EXPECT_NE(r.out.find("2 conflicts (automatically handled), 2 actions "
                       "queued, 2 files total\n"),
            std::string::npos);
  EXPECT_FALSE(dir_.Exists("B/a.txt"));
  EXPECT_FALSE(dir_.Exists("B/sub"));
}

TEST_F(CliTest, PlanJsonDescribesFilesAndCopies) {
  dir_.WriteFile("B/only_b.txt", "b");
  WriteIni(TwoFolderSet("Docs"));
  const Result r = Run({"plan", "--json", "1"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("\"set\":\"Docs\",\"lastSync\":null,\"folders\":[{"
                       "\"path\":\"" +
                       dir_.Join("A") + "\",\"flags\":4}"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("{\"name\":\"only_b.txt\",\"status\":\"_N!\","
                       "\"action\":3,\"actionText\":\"Copy #2 (newest)\","
                       "\"source\":2,\"flags\":9,\"situation\":144,"
                       "\"conflict\":3,\"conflictName\":\"New in one folder\","
                       "\"copies\":[{\"exists\":false,\"modify\":null,"
                       "\"create\":null,\"size\":0,\"attributes\":0},"
                       "{\"exists\":true,\"modify\":\""),
            std::string::npos)
      << r.out;
  EXPECT_NE(
      r.out.find("\"stats\":{\"files\":1,\"needConfirmation\":0,"
                 "\"autoHandled\":1,\"text\":\"1 conflicts "
                 "(automatically handled), 1 actions queued, 1 files "
                 "total\"},\"kept\":{\"versionDays\":30,"
                 "\"archiveDeleted\":false,\"archiveOverwritten\":false,"
                 "\"archivePath\":\"SyncLog.txt\",\"text\":\"Replaced and "
                 "deleted copies are kept for 30 days in .pairwell/versions "
                 "in each folder; a run can be undone.\"},"
                 "\"warnings\":[]}\n"),
      std::string::npos)
      << r.out;
}

TEST_F(CliTest, PlanDoesNotCreateAMissingBaseFolder) {
  dir_.WriteFile("A/a.txt", "one");
  WriteIni("[Sec: Docs]\r\nDir1=" + dir_.Join("A") +
           "\r\nDir2=" + dir_.Join("New") + "\r\nDir2Flags=12\r\n");
  const Result r = Run({"plan", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  // A source made for the run only receives: the file is no conflict.
  EXPECT_NE(r.out.find("a.txt  N_      Copy #1 (newest)\n"), std::string::npos)
      << r.out;
  EXPECT_NE(r.err.find("Would create folder " + dir_.Join("New")),
            std::string::npos)
      << r.err;
  EXPECT_FALSE(dir_.Exists("New"));
}

TEST_F(CliTest, RefusedScanExitsOneWithTheMessage) {
  WriteIni("[Sec: Docs]\r\nDir1=" + dir_.Join("A") + "\r\n");
  const Result r = Run({"plan", "Docs"});
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_NE(r.err.find("Pairwell: You need to select at least two "
                       "directories to synchronize.  Add more directories "
                       "and try again."),
            std::string::npos)
      << r.err;
  EXPECT_EQ(r.out, "");
}

TEST_F(CliTest, UnknownSetAndUsageErrorsExitTwo) {
  WriteIni(TwoFolderSet("Docs"));
  Result r = Run({"plan", "Nope"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("pairwell-cli: no sync set 'Nope'"), std::string::npos);
  r = Run({"plan", "2"});
  EXPECT_EQ(r.exit_code, 2);
  r = Run({"explode"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("unknown command 'explode'"), std::string::npos);
}

TEST_F(CliTest, MissingConfigurationIsAConfigurationError) {
  const Result r = Run({"list"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("Pairwell: An error occurred while loading " +
                       dir_.Join("p.ini") + ": " +
                       SystemText(ENOENT, "No such file or directory")),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("The .ini file this program requires is missing or "
                       "incomplete."),
            std::string::npos);
}

TEST_F(CliTest, HelpAndVersion) {
  Result r = Run({"--help"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out.rfind("Usage: pairwell-cli", 0), 0u) << r.out;
  r = Run({"--version"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out.rfind("pairwell-cli 3.", 0), 0u) << r.out;
}

TEST_F(CliTest, SecondSyncFindsNothingToDo) {
  WriteAged("A/a.txt", "one", 3600);
  WriteAged("A/sub/b.txt", "two", 3600);
  WriteAged("B/c.txt", "three", 7200);
  WriteIni(TwoFolderSet("Docs"));
  Result r = Run({"sync", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(LinesStartingWith(r.out, "Copy ").size(), 3u) << r.out;
  EXPECT_NE(r.out.find("Creating folder " + dir_.Join("B/sub") + "\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Sync actions completed - "), std::string::npos);

  r = Run({"sync", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  // Not a terminal: no progress line, and nothing to ask.
  EXPECT_EQ(r.err, "");
  EXPECT_TRUE(LinesStartingWith(r.out, "Copy ").empty()) << r.out;
  EXPECT_TRUE(LinesStartingWith(r.out, "Deleting ").empty()) << r.out;
  EXPECT_TRUE(LinesStartingWith(r.out, "Creating folder ").empty()) << r.out;
  EXPECT_NE(r.out.find("Sync actions completed - "), std::string::npos);

  TreeState a = Snapshot(dir_.Join("A"));
  TreeState b = Snapshot(dir_.Join("B"));
  EXPECT_EQ(Listing(a), "./\na.txt\nc.txt\nsub/\nsub/b.txt\n");
  EXPECT_EQ(Listing(a), Listing(b));
  // Folder dates differ (each was written at its own moment); files must
  // agree in bytes, dates and modes.
  for (const auto& [name, state] : a) {
    if (state.is_folder) continue;
    EXPECT_TRUE(state == b[name]) << name;
  }
  EXPECT_EQ(b["c.txt"].bytes, "three");
}

TEST_F(CliTest, DeletionIsPropagatedOnTheNextRun) {
  WriteAged("A/keep.txt", "keep", 3600);
  WriteAged("A/sub/gone.txt", "gone", 3600);
  WriteIni(TwoFolderSet("Docs"));
  Result r = Run({"sync", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  ASSERT_EQ(dir_.ReadFile("B/sub/gone.txt"), "gone");

  ASSERT_TRUE(RemoveFile(dir_.Join("A/sub/gone.txt")));
  r = Run({"sync", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(LinesStartingWith(r.out, "Deleting "),
            std::vector<std::string>{"Deleting " + dir_.Join("B/sub/gone.txt")})
      << r.out;
  EXPECT_TRUE(LinesStartingWith(r.out, "Copy ").empty()) << r.out;
  EXPECT_FALSE(dir_.Exists("B/sub/gone.txt"));
  EXPECT_EQ(dir_.ReadFile("B/keep.txt"), "keep");
  EXPECT_EQ(dir_.ReadFile("A/keep.txt"), "keep");
}

TEST_F(CliTest, ConflictStopsWithExitThreeUntilConfirmed) {
  const std::string old_sync = "2020-01-02 03:04:05";
  // Both copies changed since the last sync: a conflict to confirm. The
  // second file alone would be copied without asking.
  WriteAged("A/both.txt", "newer copy in A", 3600);
  WriteAged("B/both.txt", "older in B", 7200);
  WriteAged("A/only.txt", "only in A", 3600);
  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + old_sync + "\r\n");
  const std::string ini_before = dir_.ReadFile("p.ini");
  const TreeState a_before = Snapshot(dir_.Join("A"));
  const TreeState b_before = Snapshot(dir_.Join("B"));

  Result r = Run({"sync", "Docs"});
  EXPECT_EQ(r.exit_code, 3) << r.out << r.err;
  EXPECT_NE(r.err.find("Pairwell: these files of 'Docs' need confirmation; "
                       "nothing was changed."),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("\n  both.txt  "), std::string::npos) << r.err;
  EXPECT_EQ(r.err.find("only.txt"), std::string::npos) << r.err;
  EXPECT_TRUE(LinesStartingWith(r.out, "Copy ").empty()) << r.out;
  EXPECT_TRUE(Snapshot(dir_.Join("A")) == a_before);
  EXPECT_TRUE(Snapshot(dir_.Join("B")) == b_before);
  EXPECT_EQ(dir_.ReadFile("p.ini"), ini_before);

  r = Run({"sync", "--yes", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("Copy " + dir_.Join("B/both.txt") + " from " +
                       dir_.Join("A/both.txt") + "\n"),
            std::string::npos)
      << r.out;
  EXPECT_EQ(dir_.ReadFile("B/both.txt"), "newer copy in A");
  EXPECT_EQ(dir_.ReadFile("A/both.txt"), "newer copy in A");
  EXPECT_EQ(dir_.ReadFile("B/only.txt"), "only in A");
  EXPECT_EQ(StateOf(dir_.Join("B/both.txt")).mtime_ns,
            a_before.at("both.txt").mtime_ns);
  const std::string saved = LastSyncIn(dir_.ReadFile("p.ini"), "[Sec: Docs]");
  EXPECT_NE(saved, old_sync);
  EXPECT_TRUE(LooksLikeSyncDate(saved)) << saved;
}

TEST_F(CliTest, SimulationChangesNothingAndLogsEveryAction) {
  // Since a sync half an hour ago: one file new in A (in a new folder), one
  // deleted from A, one changed in both (B's is newer), one unchanged.
  WriteAged("A/same.txt", "same", 7200);
  WriteAged("B/same.txt", "same", 7200);
  WriteAged("A/new.txt", "new", 600);
  WriteAged("A/sub/deep.txt", "deep", 600);
  WriteAged("B/gone.txt", "gone", 7200);
  WriteAged("A/both.txt", "A side", 600);
  WriteAged("B/both.txt", "B side", 300);
  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + LocalDateText(1800) +
           "\r\n");
  SetAge(dir_.Join("A/sub"), 600);
  SetAge(dir_.Join("A"), 600);
  SetAge(dir_.Join("B"), 300);
  const std::string ini_before = dir_.ReadFile("p.ini");
  const TreeState a_before = Snapshot(dir_.Join("A"));
  const TreeState b_before = Snapshot(dir_.Join("B"));

  const Result r = Run({"sync", "--simulate", "--yes", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::string a = dir_.Join("A");
  const std::string b = dir_.Join("B");
  EXPECT_NE(r.out.find("Creating folder " + b + "/sub\n"), std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Copy " + b + "/new.txt from " + a + "/new.txt\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(
      r.out.find("Copy " + b + "/sub/deep.txt from " + a + "/sub/deep.txt\n"),
      std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Copy " + a + "/both.txt from " + b + "/both.txt\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Deleting " + b + "/gone.txt\n"), std::string::npos)
      << r.out;
  EXPECT_EQ(LinesStartingWith(r.out, "Copy ").size(), 3u) << r.out;
  EXPECT_NE(r.out.find("Sync actions completed - "), std::string::npos);

  EXPECT_TRUE(Snapshot(a) == a_before) << Listing(Snapshot(a));
  EXPECT_TRUE(Snapshot(b) == b_before) << Listing(Snapshot(b));
  EXPECT_EQ(dir_.ReadFile("p.ini"), ini_before);
}

TEST_F(CliTest, ReadOnlyDestinationNeedsOverwriteFlag) {
  // Changed in A only since the last sync; B's copy is read-only.
  const std::string last_sync = LocalDateText(1800);
  WriteAged("A/r.txt", "new version", 600);
  WriteAged("B/r.txt", "old", 7200);
  ASSERT_TRUE(SetMode(dir_.Join("B/r.txt"), 0444));
  SetAge(dir_.Join("B/r.txt"), 7200);
  const EntryState b_before = StateOf(dir_.Join("B/r.txt"));

  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + last_sync +
           "\r\nDefActionFlags=8\r\n");
  Result r = Run({"sync", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_TRUE(LinesStartingWith(r.out, "Copy ").empty()) << r.out;
  EXPECT_TRUE(StateOf(dir_.Join("B/r.txt")) == b_before);

  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + last_sync +
           "\r\nDefActionFlags=10\r\n");
  r = Run({"sync", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(LinesStartingWith(r.out, "Copy "),
            std::vector<std::string>{"Copy " + dir_.Join("B/r.txt") + " from " +
                                     dir_.Join("A/r.txt")})
      << r.out;
  const EntryState after = StateOf(dir_.Join("B/r.txt"));
  EXPECT_EQ(after.bytes, "new version");
  EXPECT_EQ(after.mode, KeptMode(0644));  // the source's mode
  EXPECT_EQ(after.mtime_ns, StateOf(dir_.Join("A/r.txt")).mtime_ns);
}

// A source A, an immutable B that no copy can enter, and a normal C.
class FailingCopyTest : public CliTest {
 protected:
  void SetUp() override {
    // No sub-folder: the first failure is then a copy, not a new folder.
    std::filesystem::remove(dir_.Join("A/sub"));
    CreateFolder(dir_.Join("C"));
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
      WriteAged(std::string("A/") + name, name, 3600);
    }
    guard_ = std::make_unique<ImmutableGuard>(dir_.Join("B"));
    if (!guard_->active()) GTEST_SKIP() << "no immutable folder here";
  }
  void TearDown() override { guard_.reset(); }

  // Replacements and deletions final: B could not hold the copies kept
  // otherwise, and the run would stop at its start.
  std::string Sets() {
    return SetOver("Three", {"A", "B", "C"},
                   "UseLogFile=True\r\nLogFileName=" + dir_.Join("sync.log") +
                       "\r\nVersionDays=0\r\n");
  }

  std::unique_ptr<ImmutableGuard> guard_;
};

TEST_F(FailingCopyTest, DefaultAnswerAborts) {
  WriteIni(Sets());
  const Result r = Run({"sync", "Three"});
  EXPECT_EQ(r.exit_code, 1) << r.out << r.err;
  EXPECT_NE(r.err.find("Pairwell: Unable to perform the copy operation:"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("\n  -> Abort\n"), std::string::npos) << r.err;
  EXPECT_NE(r.out.find("Sync actions stopped - "), std::string::npos) << r.out;
  // The run stopped at the first failure: nothing reached C.
  EXPECT_EQ(Listing(Snapshot(dir_.Join("C"))), "./\n");
  EXPECT_EQ(Listing(Snapshot(dir_.Join("B"))), "./\n");
  EXPECT_EQ(LastSyncIn(dir_.ReadFile("p.ini"), "[Sec: Three]"), "");
}

TEST_F(FailingCopyTest, IgnoreErrorsGoesOnToTheOtherFolders) {
  WriteIni(Sets());
  const Result r = Run({"sync", "--ignore-errors", "Three"});
  // Done, but not everything: the exit code says so.
  EXPECT_EQ(r.exit_code, 4) << r.out << r.err;
  EXPECT_NE(r.err.find("Pairwell: Unable to perform the copy operation:"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("\n  -> Ignore\n"), std::string::npos) << r.err;
  EXPECT_EQ(r.err.find("-> Abort"), std::string::npos) << r.err;
  EXPECT_NE(r.out.find("Sync actions completed - "), std::string::npos);
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
    EXPECT_EQ(dir_.ReadFile(std::string("C/") + name), name);
  }
  EXPECT_EQ(Listing(Snapshot(dir_.Join("B"))), "./\n");
}

TEST_F(FailingCopyTest, ErrorHandlingTableIgnoresWithoutAsking) {
  // The catalogue ends with the [ErrorHandling] section: the key joins it.
  const std::string code = std::to_string(guard_->error_code());
  WriteIni("Code" + code + "=I ; immutable folders\r\n\r\n" + Sets());
  const Result r = Run({"sync", "Three"});
  EXPECT_EQ(r.exit_code, 4) << r.out << r.err;
  EXPECT_EQ(r.err.find("Unable to perform"), std::string::npos) << r.err;
  EXPECT_EQ(r.err.find("  -> "), std::string::npos) << r.err;
  // Automatic answers go to the log file only.
  EXPECT_EQ(r.out.find("* The following error"), std::string::npos) << r.out;
  const std::string log = dir_.ReadFile("sync.log");
  const std::string::size_type at =
      log.find("* The following error was ignored automatically: ");
  ASSERT_NE(at, std::string::npos) << log;
  EXPECT_NE(log.find("(code " + code + ")", at), std::string::npos) << log;
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
    EXPECT_EQ(dir_.ReadFile(std::string("C/") + name), name);
  }
}

TEST_F(CliTest, InterruptedCopyKeepsTheOldDestination) {
  std::string old_version(1 << 20, '\0');
  for (std::size_t i = 0; i < old_version.size(); ++i) {
    old_version[i] = static_cast<char>(i * 7 + i / 4096);
  }
  WriteAged("B/big.bin", old_version, 7200);
  const std::int64_t old_mtime_ns = StateOf(dir_.Join("B/big.bin")).mtime_ns;
  const std::string last_sync = LocalDateText(1800);
  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + last_sync + "\r\n");

  std::string partial;
  std::int64_t size = std::int64_t{320} << 20;
  for (int attempt = 1; attempt <= 3 && partial.empty(); ++attempt) {
    ASSERT_TRUE(WriteBigFile(dir_.Join("A/big.bin"), size));
    SetAge(dir_.Join("A/big.bin"), 600);
    const ProcessHandle process = Start({"sync", "--yes", "Docs"});
    ASSERT_NE(process, kNoProcess);
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int exit_code = -1;
    bool exited = false;
    bool saw_partial = false;
    bool written_in_place = false;
    while (std::chrono::steady_clock::now() < deadline) {
      // Killed once some bytes are in the temporary copy: mid-way.
      partial = FindPartialCopy(dir_.Join("B"));
      if (!partial.empty()) {
        saw_partial = true;
        if (SizeOf(dir_.Join("B/" + partial)) > 0) break;
      } else if (!saw_partial) {
        const std::int64_t size_now = SizeOf(dir_.Join("B/big.bin"));
        if (size_now >= 0 &&
            size_now != static_cast<std::int64_t>(old_version.size())) {
          // The destination itself grows while no temporary copy exists.
          written_in_place = true;
          break;
        }
      }
      if (HasEnded(process, &exit_code)) {
        exited = true;
        break;
      }
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    if (!exited) KillProcess(process, &exit_code);
    ASSERT_FALSE(written_in_place)
        << "B/big.bin was overwritten directly, not through a temporary copy";
    // Too late: the copy was renamed into place before the kill.
    if (dir_.ReadFile("B/big.bin") != old_version) {
      partial.clear();
      dir_.WriteFile("B/big.bin", old_version);
      SetModifyTime(dir_.Join("B/big.bin"), old_mtime_ns / 1000000000,
                    static_cast<long>(old_mtime_ns % 1000000000));
      WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + last_sync + "\r\n");
    } else {
      partial = FindPartialCopy(dir_.Join("B"));
    }
    size *= 2;
  }
  if (partial.empty()) {
    GTEST_SKIP() << "the copy always finished before it could be killed";
  }

  const EntryState kept = StateOf(dir_.Join("B/big.bin"));
  EXPECT_EQ(kept.bytes, old_version);
  EXPECT_EQ(kept.mtime_ns, old_mtime_ns);
  // A killed run completed nothing, so the set's last sync stays.
  EXPECT_EQ(LastSyncIn(dir_.ReadFile("p.ini"), "[Sec: Docs]"), last_sync);

  const Result r = Run({"plan", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE((r.out + r.err)
                .find("Left out: " + dir_.Join("B/" + partial) +
                      " (unfinished copy of an interrupted run)\n"),
            std::string::npos)
      << r.out << r.err;
  EXPECT_EQ(r.out.find(partial + " "), std::string::npos) << r.out;
}

class SeveralSetsTest : public CliTest {
 protected:
  void SetUp() override {
    for (const char* name : {"One", "Two", "Three"}) {
      const std::string n(name);
      CreateFolder(dir_.Join("src" + n));
      CreateFolder(dir_.Join("dst" + n));
      WriteAged("src" + n + "/" + n + ".txt", n, 3600);
    }
    WriteIni(SetOver("One", {"srcOne", "dstOne"}) +
             SetOver("Two", {"srcTwo", "dstTwo"}) +
             SetOver("Three", {"srcThree", "dstThree"}));
  }

  bool Copied(const std::string& n) {
    return dir_.ReadFile("dst" + n + "/" + n + ".txt") == n;
  }
};

TEST_F(SeveralSetsTest, NamedSetsRunInTheGivenOrder) {
  const Result r = Run({"sync", "three", "1"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::string::size_type three =
      r.out.find("== Sync Status - Three (1 of 2)\n");
  const std::string::size_type one =
      r.out.find("== Sync Status - One (2 of 2)\n");
  ASSERT_NE(three, std::string::npos) << r.out;
  ASSERT_NE(one, std::string::npos) << r.out;
  EXPECT_LT(three, one);
  EXPECT_LT(three, r.out.find("Copy " + dir_.Join("dstThree/Three.txt")));
  EXPECT_LT(one, r.out.find("Copy " + dir_.Join("dstOne/One.txt")));
  EXPECT_TRUE(Copied("One"));
  EXPECT_FALSE(Copied("Two"));
  EXPECT_TRUE(Copied("Three"));
  const std::string ini = dir_.ReadFile("p.ini");
  EXPECT_TRUE(LooksLikeSyncDate(LastSyncIn(ini, "[Sec: One]")));
  EXPECT_EQ(LastSyncIn(ini, "[Sec: Two]"), "");
  EXPECT_TRUE(LooksLikeSyncDate(LastSyncIn(ini, "[Sec: Three]")));
}

TEST_F(SeveralSetsTest, AllRunsEverySetInConfigurationOrder) {
  const Result r = Run({"sync", "--all"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::string::size_type one =
      r.out.find("== Sync Status - One (1 of 3)\n");
  const std::string::size_type two =
      r.out.find("== Sync Status - Two (2 of 3)\n");
  const std::string::size_type three =
      r.out.find("== Sync Status - Three (3 of 3)\n");
  ASSERT_NE(one, std::string::npos) << r.out;
  ASSERT_NE(two, std::string::npos) << r.out;
  ASSERT_NE(three, std::string::npos) << r.out;
  EXPECT_LT(one, two);
  EXPECT_LT(two, three);
  EXPECT_EQ(LinesStartingWith(r.out, "Sync actions completed - ").size(), 3u);
  EXPECT_TRUE(Copied("One"));
  EXPECT_TRUE(Copied("Two"));
  EXPECT_TRUE(Copied("Three"));
}

TEST_F(SeveralSetsTest, UnknownSetRunsNothingAndExitsTwo) {
  const std::string ini_before = dir_.ReadFile("p.ini");
  Result r = Run({"sync", "One", "Nope"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_NE(r.err.find("pairwell-cli: no sync set 'Nope'"), std::string::npos)
      << r.err;
  EXPECT_EQ(r.out.find("Copy "), std::string::npos) << r.out;
  EXPECT_FALSE(Copied("One"));
  EXPECT_EQ(dir_.ReadFile("p.ini"), ini_before);

  r = Run({"sync"});
  EXPECT_EQ(r.exit_code, 2) << r.out << r.err;
  EXPECT_NE(r.err.find("pairwell-cli: "), std::string::npos) << r.err;
  EXPECT_FALSE(Copied("One"));
  EXPECT_FALSE(Copied("Two"));
  EXPECT_FALSE(Copied("Three"));
  EXPECT_EQ(dir_.ReadFile("p.ini"), ini_before);
}

TEST_F(CliTest, RealRunChangesOnlyLastSyncDatesInTheConfiguration) {
  WriteAged("A/a.txt", "a", 3600);
  CreateFolder(dir_.Join("C"));
  CreateFolder(dir_.Join("D"));
  WriteAged("C/c.txt", "c", 3600);
  // Already in the saved form: CR LF, one blank line after each section.
  WriteIni(
      "[Sec: Docs]\r\n"
      "; the documents, kept on two disks\r\n"
      "Dir1=" +
      dir_.Join("A") +
      "\r\n"
      "Dir2=" +
      dir_.Join("B") +
      "\r\n"
      "LastSyncDate=2020-01-02 03:04:05\r\n"
      "FileSpec=*.*\r\n"
      "Unknown=kept as written\r\n"
      "\r\n"
      "[Sec: Fresh]\r\n"
      "Dir1=" +
      dir_.Join("C") +
      "\r\n"
      "Dir2=" +
      dir_.Join("D") +
      "\r\n"
      "\r\n"
      "[Sec: Idle]\r\n"
      "Dir1=/nowhere/1\r\n"
      "Dir2=/nowhere/2\r\n"
      "LastSyncDate=2021-02-03 04:05:06\r\n"
      "\r\n"
      "[Extra]\r\n"
      "; a section the program does not know\r\n"
      "Key = Value  \r\n"
      "\r\n");
  const std::string before = dir_.ReadFile("p.ini");

  const Result r = Run({"sync", "Docs", "Fresh"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(dir_.ReadFile("B/a.txt"), "a");
  EXPECT_EQ(dir_.ReadFile("D/c.txt"), "c");

  const std::string after = dir_.ReadFile("p.ini");
  std::vector<std::string> old_lines;
  std::vector<std::string> new_lines;
  for (const std::string& line : CrLfLines(before)) {
    if (!IsLastSyncLine(line)) old_lines.push_back(line);
  }
  for (const std::string& line : CrLfLines(after)) {
    if (!IsLastSyncLine(line)) new_lines.push_back(line);
  }
  ASSERT_EQ(new_lines.size(), old_lines.size()) << after;
  for (std::size_t i = 0; i < old_lines.size(); ++i) {
    EXPECT_EQ(new_lines[i], old_lines[i]) << "line " << i + 1;
  }
  EXPECT_EQ(after.size() >= 2 ? after.substr(after.size() - 2) : "", "\r\n");
  for (std::string::size_type at = after.find('\n'); at != std::string::npos;
       at = after.find('\n', at + 1)) {
    ASSERT_TRUE(at > 0 && after[at - 1] == '\r') << "bare LF at " << at;
  }

  const std::string docs = LastSyncIn(after, "[Sec: Docs]");
  const std::string fresh = LastSyncIn(after, "[Sec: Fresh]");
  EXPECT_TRUE(LooksLikeSyncDate(docs)) << docs;
  EXPECT_NE(docs, "2020-01-02 03:04:05");
  EXPECT_TRUE(LooksLikeSyncDate(fresh)) << fresh;
  EXPECT_EQ(LastSyncIn(after, "[Sec: Idle]"), "2021-02-03 04:05:06");
  // Docs keeps its key where it was.
  EXPECT_NE(after.find("LastSyncDate=" + docs + "\r\nFileSpec=*.*\r\n"),
            std::string::npos)
      << after;
}
TEST_F(CliTest, SaveKeepsConfigurationEditsMadeDuringTheRun) {
  ASSERT_TRUE(WriteBigFile(dir_.Join("A/big.bin"), std::int64_t{320} << 20));
  SetAge(dir_.Join("A/big.bin"), 600);
  WriteIni(TwoFolderSet("Docs") +
           "\r\n[Sec: Idle]\r\nDir1=/nowhere/1\r\nDir2=/nowhere/2\r\n\r\n");
  const ProcessHandle process = Start({"sync", "Docs"});
  ASSERT_NE(process, kNoProcess);
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(60);
  int exit_code = -1;
  bool exited = false;
  while (FindPartialCopy(dir_.Join("B")).empty() &&
         std::chrono::steady_clock::now() < deadline) {
    if (HasEnded(process, &exit_code)) {
      exited = true;
      break;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  if (exited) GTEST_SKIP() << "the run ended before the edit could be made";
  // Someone edits the configuration while the copy goes on.
  std::string edited = dir_.ReadFile("p.ini");
  const std::string old_dir = "Dir1=/nowhere/1\r\n";
  ASSERT_NE(edited.find(old_dir), std::string::npos);
  edited.replace(edited.find(old_dir), old_dir.size(), "Dir1=/elsewhere/1\r\n");
  edited += "[Added]\r\nKey=Value\r\n\r\n";
  dir_.WriteFile("p.ini", edited);
  EXPECT_EQ(WaitForExit(process), 0) << dir_.ReadFile("err");

  const std::string after = dir_.ReadFile("p.ini");
  EXPECT_NE(after.find("[Sec: Idle]\r\nDir1=/elsewhere/1\r\n"),
            std::string::npos)
      << after;
  EXPECT_NE(after.find("[Added]\r\nKey=Value\r\n"), std::string::npos) << after;
  EXPECT_TRUE(LooksLikeSyncDate(LastSyncIn(after, "[Sec: Docs]"))) << after;
  EXPECT_EQ(LastSyncIn(after, "[Sec: Idle]"), "");
}

// --- Runs that must not lose data
// ----------------------------------------------

TEST_F(CliTest, MassDeletionNeedsItsOwnOptionNotYes) {
  for (int k = 1; k <= 12; ++k) {
    const std::string name = "f" + std::to_string(k) + ".txt";
    WriteAged("A/" + name, name, 7200);
    WriteAged("B/" + name, name, 7200);
  }
  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + LocalDateText(1800) +
           "\r\n");
  for (int k = 1; k <= 10; ++k) {
    ASSERT_TRUE(RemoveFile(dir_.Join("A/f" + std::to_string(k) + ".txt")));
  }
  const std::string warning =
      "This run would delete 10 of the 12 files in "
      "the folder '" +
      dir_.Join("B") + "'.";

  Result r = Run({"plan", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("Warning: " + warning + "\n"), std::string::npos)
      << r.out;
  r = Run({"plan", "--json", "Docs"});
  EXPECT_NE(r.out.find("\"warnings\":[\"" + warning + "\"]"), std::string::npos)
      << r.out;

  r = Run({"sync", "--yes", "Docs"});
  EXPECT_EQ(r.exit_code, 3) << r.out << r.err;
  EXPECT_NE(r.err.find(warning + "\n\nNothing was changed."), std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("--allow-mass-delete"), std::string::npos) << r.err;
  EXPECT_EQ(Snapshot(dir_.Join("B")).size(), 13u);

  r = Run({"sync", "--yes", "--allow-mass-delete", "Docs"});
  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  EXPECT_NE(r.out.find("Warning: " + warning), std::string::npos) << r.out;
  EXPECT_EQ(Listing(Snapshot(dir_.Join("B"))), "./\nf11.txt\nf12.txt\nsub/\n");
}

TEST_F(CliTest, LastSyncDateAheadOfTheClockStopsTheRun) {
  WriteAged("A/kept.txt", "kept", 7200);
  WriteAged("B/kept.txt", "kept", 7200);
  WriteAged("B/new.txt", "new in B", 600);
  const std::string ahead = LocalDateText(-86400);
  WriteIni(TwoFolderSet("Docs") + "LastSyncDate=" + ahead + "\r\n");

  const Result r = Run({"sync", "--yes", "Docs"});

  EXPECT_EQ(r.exit_code, 1) << r.out << r.err;
  EXPECT_NE(r.err.find(ahead + ", lies in the future"), std::string::npos)
      << r.err;
  EXPECT_EQ(dir_.ReadFile("B/new.txt"), "new in B");
  EXPECT_FALSE(dir_.Exists("A/new.txt"));
}

TEST_F(CliTest, TimeZoneChangeBetweenRunsKeepsANewFile) {
  SKIP_WHERE_TZ_SETS_NO_ZONE();
  WriteAged("A/kept.txt", "kept", 7200);
  WriteAged("B/kept.txt", "kept", 7200);
  WriteIni(TwoFolderSet("Docs"));
  Result r = Run({"sync", "--yes", "Docs"}, "JST-9");
  ASSERT_EQ(r.exit_code, 0) << r.out << r.err;
  // Made after the sync; its date must lie after the second the last-sync
  // date is kept to.
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  dir_.WriteFile("A/new.txt", "made in Tokyo");

  r = Run({"sync", "--yes", "Docs"}, "PST8");

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  EXPECT_EQ(dir_.ReadFile("A/new.txt"), "made in Tokyo");
  EXPECT_EQ(r.out.find("Deleting"), std::string::npos) << r.out;
}

TEST_F(CliTest, NulByteInAFolderValueEndsThePath) {
  CreateFolder(dir_.Join("A/top"));
  CreateFolder(dir_.Join("A/top/sub"));
  WriteAged("A/top/sub/x.txt", "x", 600);
  WriteIni("[Sec: Docs]\r\nDir1=" + dir_.Join("A/top") + std::string(1, '\0') +
           "/A\r\nDir2=" + dir_.Join("B") + "\r\n");

  const Result r = Run({"sync", "--yes", "Docs"});

  EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
  EXPECT_EQ(dir_.ReadFile("B/sub/x.txt"), "x");
}

TEST_F(CliTest, PlanJsonIsUtf8WhateverTheNamesHold) {
#ifdef _WIN32
  // Windows names are UTF-16: one holding a lone surrogate has no UTF-8
  // form, and is left out. Wine, which keeps names in UTF-8, makes none.
  const std::filesystem::path lone =
      std::filesystem::u8path(dir_.Join("A")) / L"caf\xdce9.txt";
  std::ofstream(lone, std::ios::binary) << "lone surrogate";
  std::error_code error;
  const bool lone_made = std::filesystem::exists(lone, error);
#else
  dir_.WriteFile("A/caf\xe9.txt", "latin-1 name");
#endif
  dir_.WriteFile("A/caf\xc3\xa9.txt", "utf-8 name");
  WriteIni(TwoFolderSet("Docs"));

  const Result r = Run({"plan", "--json", "Docs"});

  EXPECT_EQ(r.exit_code, 0) << r.err;
#ifdef _WIN32
  if (lone_made) {
    EXPECT_NE((r.out + r.err).find("its name is not valid Unicode"),
              std::string::npos)
        << r.out << r.err;
  }
#else
  EXPECT_NE(r.out.find("\"name\":\"caf\\udce9.txt\""), std::string::npos)
      << r.out;
#endif
  EXPECT_NE(r.out.find("\"name\":\"caf\xc3\xa9.txt\""), std::string::npos)
      << r.out;
  EXPECT_EQ(r.out.find("caf\xe9"), std::string::npos);
}

TEST_F(CliTest, HelpNamesTheNewOptionAndExitCode) {
  const Result r = Run({"--help"});
  EXPECT_NE(r.out.find("--allow-mass-delete"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("4 done, but operations failed"), std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("\\udc80..\\udcff"), std::string::npos) << r.out;
}

TEST_F(CliTest, PlanThatCannotBeWrittenFailsAndSaysWhy) {
  dir_.WriteFile("A/a.txt", "one");
  WriteIni(TwoFolderSet("Docs"));
#ifdef _WIN32
  // A pipe nobody reads: Windows' own words for ERROR_NO_DATA (232), as
  // the program gives them, not the C library's errno.
  const std::string reason = ErrorText(ErrnoFromWin32(232));
#else
  const std::string reason = "No space left on device";
#endif
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string> >{{"plan", "Docs"},
                                              {"plan", "--json", "Docs"}}) {
    const ProcessHandle process =
        StartProcess(Command(args), kRefusingOutput, dir_.Join("err"));
    ASSERT_NE(process, kNoProcess);
    EXPECT_EQ(WaitForExit(process), 1) << args.back();
    const std::string err = ReadOutput(dir_.Join("err"));
    EXPECT_NE(err.find("pairwell-cli: the plan could not be written: " + reason),
              std::string::npos)
        << err;
  }
}

}  // namespace
}  // namespace pairwell
