#include "engine/log_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/system_text.h"
#include "support/temp_dir.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/system.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

// A log view that keeps its text in memory.
class EchoBox : public LogEchoTarget {
 public:
  std::size_t TextLength() const override { return text.size(); }
  void AppendText(const std::string& piece) override { text += piece; }
  void ClearText() override {
    text.clear();
    ++clears;
  }

  std::string text;
  int clears = 0;
};

// The number of files this process holds open; -1 when it cannot tell.
int OpenDescriptorCount() {
  std::error_code error;
  std::filesystem::directory_iterator it("/proc/self/fd", error);
  if (error) return -1;
  int count = 0;
  for (; it != std::filesystem::directory_iterator(); it.increment(error)) {
    if (error) return -1;
    ++count;
  }
  return count;
}

// The header a log writes when it is opened, with any date.
const std::regex kHeader(
    "\nPairwell Log Opened: "
    "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\n");

class LogFileTest : public ::testing::Test {
 protected:
  LogFileTest() {
    log_.SetBaseFolder(dir_.path());
    log_.SetPath("log.txt");
  }

  std::string Contents() const { return dir_.ReadFile("log.txt"); }

  RecordingUserInterface ui_;
  TempDir dir_;
  LogFile log_;
};

// --- Path ---------------------------------------------------------------

TEST_F(LogFileTest, RelativePathIsJoinedOntoTheBaseFolder) {
  ASSERT_TRUE(MakeDirectory(dir_.Join("logs")));
  log_.SetPath("logs/run.txt");
  EXPECT_EQ(log_.FullPath(), dir_.Join("logs/run.txt"));
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("line");
  log_.CloseLog();
  EXPECT_EQ(dir_.ReadFile("logs/run.txt"), "line\n");
}

TEST_F(LogFileTest, AbsolutePathIgnoresTheBaseFolder) {
  TempDir other;
  log_.SetPath(other.Join("abs.txt"));
  EXPECT_EQ(log_.FullPath(), other.Join("abs.txt"));
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("x");
  log_.CloseLog();
  EXPECT_EQ(other.ReadFile("abs.txt"), "x\n");
  EXPECT_FALSE(dir_.Exists("abs.txt"));
}

TEST_F(LogFileTest, SettingThePathWhileOpenThrowsAndKeepsThePath) {
  log_.OpenLog();
  ASSERT_TRUE(log_.IsOpen());
  try {
    log_.SetPath("other.txt");
    ADD_FAILURE() << "SetPath while open did not throw";
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "Cannot change log file path while file is open");
  }
  EXPECT_EQ(log_.Path(), "log.txt");
  log_.CloseLog();
  log_.SetPath("other.txt");
  EXPECT_EQ(log_.Path(), "other.txt");
}

// --- Opening and the header ---------------------------------------------

TEST_F(LogFileTest, OpenWritesAnEmptyLineAndTheHeaderWithTheTime) {
  const double before = Now();
  log_.OpenLog();
  const double after = Now();
  ASSERT_TRUE(log_.IsOpen());
  log_.CloseLog();
  const std::string text = Contents();
  ASSERT_TRUE(std::regex_match(text, kHeader)) << "log: [" << text << "]";
  const std::string prefix = "\nPairwell Log Opened: ";
  double stamp = 0;
  ASSERT_TRUE(ParseDateText(
      text.substr(prefix.size(), text.size() - prefix.size() - 1), &stamp))
      << text;
  // The header holds whole seconds.
  EXPECT_GE(stamp, before - 1.0 / 86400) << text;
  EXPECT_LE(stamp, after) << text;
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(LogFileTest, NoHeaderFlagWritesNothingAtOpen) {
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  EXPECT_TRUE(log_.IsOpen());
  EXPECT_TRUE(dir_.Exists("log.txt"));
  log_.CloseLog();
  EXPECT_EQ(Contents(), "");
}

TEST_F(LogFileTest, OpenAppendsWithoutOverwriteFlag) {
  dir_.WriteFile("log.txt", "earlier run\n");
  log_.OpenLog();
  log_.PrintL("new line");
  log_.CloseLog();
  const std::string text = Contents();
  const std::string earlier = "earlier run\n";
  ASSERT_EQ(text.compare(0, earlier.size(), earlier), 0) << text;
  const std::string tail = "new line\n";
  ASSERT_GT(text.size(), earlier.size() + tail.size()) << text;
  EXPECT_TRUE(std::regex_match(
      text.substr(earlier.size(), text.size() - earlier.size() - tail.size()),
      kHeader))
      << text;
  EXPECT_EQ(text.substr(text.size() - tail.size()), tail) << text;
}

TEST_F(LogFileTest, OpenCreatesAMissingFileWhenAppending) {
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("first");
  log_.CloseLog();
  EXPECT_EQ(Contents(), "first\n");
}

TEST_F(LogFileTest, OverwriteFlagTruncatesTheFile) {
  dir_.WriteFile("log.txt", "earlier run\n");
  log_.LogFlags = kLogOverwrite;
  log_.OpenLog();
  log_.CloseLog();
  const std::string text = Contents();
  EXPECT_TRUE(std::regex_match(text, kHeader)) << "log: [" << text << "]";
}

TEST_F(LogFileTest, OverwriteFlagClearsTheEchoAtOpen) {
  EchoBox box;
  box.text = "previous run";
  log_.EchoTextBox = &box;
  log_.LogFlags = kLogOverwrite | kLogNoHeader;
  log_.OpenLog();
  EXPECT_EQ(box.clears, 1);
  EXPECT_EQ(box.text, "");
  log_.PrintL("fresh");
  EXPECT_EQ(box.text, "fresh\n");
}

TEST_F(LogFileTest, AppendingKeepsTheEcho) {
  EchoBox box;
  box.text = "previous run\n";
  log_.EchoTextBox = &box;
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("more");
  EXPECT_EQ(box.clears, 0);
  EXPECT_EQ(box.text, "previous run\nmore\n");
}

TEST_F(LogFileTest, SecondOpenDoesNothing) {
  log_.OpenLog();
  log_.OpenLog();
  log_.CloseLog();
  const std::string text = Contents();
  EXPECT_TRUE(std::regex_match(text, kHeader)) << "log: [" << text << "]";
}

TEST_F(LogFileTest, OpenWithEmptyPathDoesNothing) {
  log_.SetPath("");
  log_.OpenLog();
  EXPECT_FALSE(log_.IsOpen());
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(LogFileTest, FailedOpenIsShownAndLeavesTheLogClosed) {
  log_.SetPath("missing/log.txt");
  log_.OpenLog();
  EXPECT_FALSE(log_.IsOpen());
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "Couldn't open log file: " + dir_.Join("missing/log.txt") +
                "\nDescription: " + ErrorText(ENOENT));
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  // Later lines go nowhere and raise no further message.
  log_.PrintL("lost");
  log_.PrintNL("lost too");
  EXPECT_EQ(ui_.messages.size(), 1u);
  EXPECT_FALSE(dir_.Exists("missing"));
  // The path may be changed, as the log is closed.
  log_.SetPath("log.txt");
  EXPECT_EQ(log_.Path(), "log.txt");
}

TEST_F(LogFileTest, FailedOpenNamesTheSystemReason) {
  log_.SetPath("missing/log.txt");
  log_.OpenLog();
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(
      ui_.messages[0].text,
      "Couldn't open log file: " + dir_.Join("missing/log.txt") +
          "\nDescription: " + SystemText(ENOENT, "No such file or directory"));
}

// --- Printing -----------------------------------------------------------

TEST_F(LogFileTest, PrintLWritesItemsWithoutSeparatorAndALineBreak) {
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("Copying ", 3, " of ", 10L, ": ", 2.5, '!');
  log_.PrintL();
  log_.PrintL("end");
  log_.CloseLog();
  EXPECT_EQ(Contents(), "Copying 3 of 10: 2.5!\n\nend\n");
}

TEST_F(LogFileTest, PrintNLContinuesTheLine) {
  EchoBox box;
  log_.EchoTextBox = &box;
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintNL("Deleting ", "a.txt");
  log_.PrintNL("...");
  log_.PrintL(" done");
  log_.CloseLog();
  EXPECT_EQ(Contents(), "Deleting a.txt... done\n");
  EXPECT_EQ(box.text, "Deleting a.txt... done\n");
}

TEST_F(LogFileTest, PrintErrLWritesToTheFileOnly) {
  EchoBox box;
  log_.EchoTextBox = &box;
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintErrL("Disk full");
  log_.PrintErrL("Code ", 28);
  log_.CloseLog();
  EXPECT_EQ(Contents(), "* Disk full\n* Code 28\n");
  EXPECT_EQ(box.text, "");
}

TEST_F(LogFileTest, ClosedLogWithoutOpenOnPrintStillEchoes) {
  EchoBox box;
  log_.EchoTextBox = &box;
  log_.LogFlags = 0;
  log_.PrintL("line");
  log_.PrintNL("part");
  log_.PrintErrL("error");
  EXPECT_FALSE(log_.IsOpen());
  EXPECT_FALSE(dir_.Exists("log.txt"));
  EXPECT_EQ(box.text, "line\npart");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(LogFileTest, OpenOnPrintFlagOpensTheLogForEachKindOfPrint) {
  const struct {
    const char* what;
    void (*print)(LogFile*);
    const char* tail;
  } kCases[] = {
      {"PrintL", [](LogFile* log) { log->PrintL("line"); }, "line\n"},
      {"PrintNL", [](LogFile* log) { log->PrintNL("part"); }, "part"},
      {"PrintErrL", [](LogFile* log) { log->PrintErrL("bad"); }, "* bad\n"},
  };
  for (const auto& c : kCases) {
    TempDir dir;
    LogFile log;
    log.SetBaseFolder(dir.path());
    log.SetPath("log.txt");
    log.LogFlags = kLogOpenOnPrint;
    c.print(&log);
    EXPECT_TRUE(log.IsOpen()) << c.what;
    log.CloseLog();
    const std::string text = dir.ReadFile("log.txt");
    const std::string tail = c.tail;
    ASSERT_GT(text.size(), tail.size()) << c.what << ": [" << text << "]";
    EXPECT_TRUE(
        std::regex_match(text.substr(0, text.size() - tail.size()), kHeader))
        << c.what << ": [" << text << "]";
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail) << c.what;
  }
}

TEST_F(LogFileTest, OpenOnPrintWithoutHeader) {
  log_.LogFlags = kLogOpenOnPrint | kLogNoHeader;
  log_.PrintL("only line");
  log_.CloseLog();
  EXPECT_EQ(Contents(), "only line\n");
}

TEST_F(LogFileTest, ClosedLogWritesNothingAfterClose) {
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("kept");
  log_.CloseLog();
  EXPECT_FALSE(log_.IsOpen());
  log_.PrintL("dropped");
  EXPECT_EQ(Contents(), "kept\n");
}

TEST_F(LogFileTest, CloseLogOnAClosedLogDoesNothing) {
  log_.CloseLog();
  EXPECT_FALSE(log_.IsOpen());
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("kept");
  log_.CloseLog();
  log_.CloseLog();
  EXPECT_FALSE(log_.IsOpen());
  EXPECT_EQ(Contents(), "kept\n");
  EXPECT_TRUE(ui_.messages.empty());
  // It can still be opened again afterwards.
  log_.OpenLog();
  EXPECT_TRUE(log_.IsOpen());
  log_.PrintL("again");
  log_.CloseLog();
  EXPECT_EQ(Contents(), "kept\nagain\n");
}

TEST_F(LogFileTest, CloseLogAndDestructionReleaseTheFile) {
  const int before = OpenDescriptorCount();
  if (before < 0) GTEST_SKIP() << "no /proc/self/fd here";
  log_.OpenLog();
  EXPECT_EQ(OpenDescriptorCount(), before + 1);
  log_.CloseLog();
  EXPECT_EQ(OpenDescriptorCount(), before);
  {
    LogFile log;
    log.SetBaseFolder(dir_.path());
    log.SetPath("log.txt");
    log.LogFlags = kLogNoHeader;
    log.OpenLog();
    log.PrintNL("unfinished");
    EXPECT_EQ(OpenDescriptorCount(), before + 1);
  }
  EXPECT_EQ(OpenDescriptorCount(), before);
  const std::string text = Contents();
  EXPECT_EQ(text.substr(text.size() - 10), "unfinished") << text;
}

// --- Echo limit ---------------------------------------------------------

TEST_F(LogFileTest, FullEchoDropsALineThatTheFileStillGets) {
  EchoBox box;
  box.text = std::string(65530, 'x');
  log_.EchoTextBox = &box;
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("0123456789");
  log_.CloseLog();
  EXPECT_EQ(box.text.find("0123456789"), std::string::npos);
  EXPECT_EQ(box.text.compare(0, 65530, std::string(65530, 'x')), 0);
  EXPECT_LT(box.text.size(), kEchoLimit);
  EXPECT_EQ(Contents(), "0123456789\n");
}

TEST_F(LogFileTest, EchoStopsBeforeReaching65535Characters) {
  const struct {
    std::size_t held;
    std::string text;
    bool appended;
  } kCases[] = {
      {65530, "1234", true},    // 65534
      {65530, "12345", false},  // 65535
      {65534, "", true},        // stays at 65534
      {65534, "1", false},      // 65535
      {0, std::string(65534, 'y'), true},
      {0, std::string(65535, 'y'), false},
  };
  for (const auto& c : kCases) {
    EchoBox box;
    box.text = std::string(c.held, 'x');
    LogFile log;
    log.EchoTextBox = &box;
    log.PrintNL(c.text);
    EXPECT_EQ(box.text.size(), c.held + (c.appended ? c.text.size() : 0))
        << "held " << c.held << " new " << c.text.size();
  }
}

TEST_F(LogFileTest, LineBreakIsEchoedOnItsOwn) {
  // The text fits (65534 characters); its line break would make 65535.
  EchoBox box;
  box.text = std::string(65530, 'x');
  log_.EchoTextBox = &box;
  log_.PrintL("abcd");
  EXPECT_EQ(box.text, std::string(65530, 'x') + "abcd");
}

// --- Deleting at program start ------------------------------------------

TEST_F(LogFileTest, ProgramStartDeletesTheLogWithFlag) {
  dir_.WriteFile("log.txt", "old");
  log_.LogFlags = kLogDeleteAtStart;
  log_.ProgramStart();
  EXPECT_FALSE(dir_.Exists("log.txt"));
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(LogFileTest, ProgramStartKeepsTheLogWithoutFlag) {
  dir_.WriteFile("log.txt", "old");
  log_.LogFlags = kLogOverwrite | kLogNoHeader | kLogOpenOnPrint;
  log_.ProgramStart();
  EXPECT_EQ(Contents(), "old");
}

TEST_F(LogFileTest, ProgramStartWithEmptyPathDoesNothing) {
  dir_.WriteFile("log.txt", "old");
  log_.SetPath("");
  log_.LogFlags = kLogDeleteAtStart;
  log_.ProgramStart();
  EXPECT_EQ(Contents(), "old");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(LogFileTest, ProgramStartIsQuietWhenThereIsNoLogYet) {
  log_.LogFlags = kLogDeleteAtStart;
  log_.ProgramStart();
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(LogFileTest, ProgramStartReportsAFailedDeletionAndGoesOn) {
  ASSERT_TRUE(MakeDirectory(dir_.Join("locked")));
  dir_.WriteFile("locked/log.txt", "old");
  log_.SetPath("locked/log.txt");
  log_.LogFlags = kLogDeleteAtStart;
  ImmutableGuard guard(dir_.Join("locked"));
  if (!guard.active()) GTEST_SKIP() << "cannot make a folder immutable here";
  log_.ProgramStart();
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "Unable to delete log file: " + dir_.Join("locked/log.txt"));
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
  EXPECT_EQ(dir_.ReadFile("locked/log.txt"), "old");
}

// --- Write failures -----------------------------------------------------

TEST_F(LogFileTest, WriteFailureIsShownOnce) {
  log_.SetPath("/dev/full");
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  ASSERT_TRUE(log_.IsOpen())
      << (ui_.messages.empty() ? std::string("no message")
                               : ui_.messages[0].text);
  EXPECT_TRUE(ui_.messages.empty());
  log_.PrintL("first");
  log_.PrintL("second");
  log_.PrintNL("third");
  log_.PrintErrL("fourth");
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "There was an error writing to the log file.\nDescription: " +
                SystemText(ENOSPC, "No space left on device"));
  EXPECT_TRUE(log_.IsOpen());
}

TEST_F(LogFileTest, FailedHeaderWriteIsShownOnce) {
  log_.SetPath("/dev/full");
  log_.OpenLog();
  log_.PrintL("more");
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "There was an error writing to the log file.\nDescription: " +
                SystemText(ENOSPC, "No space left on device"));
}

TEST_F(LogFileTest, FailedWritesStillEcho) {
  EchoBox box;
  log_.EchoTextBox = &box;
  log_.SetPath("/dev/full");
  log_.LogFlags = kLogNoHeader;
  log_.OpenLog();
  log_.PrintL("shown");
  EXPECT_EQ(box.text, "shown\n");
}

}  // namespace
}  // namespace pairwell
