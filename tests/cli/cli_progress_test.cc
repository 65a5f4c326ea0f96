// The progress line of pairwell-cli sync, on a pseudo-terminal and on pipes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "support/cli_process.h"
#include "support/pty_process.h"
#include "support/temp_dir.h"

namespace pairwell {
namespace {

// The terminal's width in the tests, and the characters a line may use.
constexpr unsigned short kColumns = 100;
constexpr std::size_t kLineColumns = kColumns - 1;
// Where the width is unknown (a pipe).
constexpr std::size_t kPipeLineColumns = 79;

// "\r", the text padded to the columns, and the newline that ends the line.
std::string FinishedLine(const std::string& text, std::size_t columns) {
  return "\r" + text + std::string(columns - text.size(), ' ') + "\n";
}

// The pieces drawn one over another: the text between a carriage return
// and the next one or the next newline.
std::vector<std::string> Drawings(const std::string& terminal) {
  std::vector<std::string> drawings;
  std::string::size_type start = 0;
  while ((start = terminal.find('\r', start)) != std::string::npos) {
    const std::string::size_type end =
        terminal.find_first_of("\r\n", start + 1);
    drawings.push_back(terminal.substr(start + 1, end - start - 1));
    start = end;
  }
  return drawings;
}

// What the terminal shows in the end, one entry per line (trailing spaces
// dropped): a carriage return goes back to the start of the line, a newline
// to the next line, and a character writes over what stood there.
std::vector<std::string> ScreenLines(const std::string& terminal) {
  std::vector<std::string> lines(1);
  std::size_t column = 0;
  for (const char c : terminal) {
    if (c == '\r') {
      column = 0;
    } else if (c == '\n') {
      lines.emplace_back();
      column = 0;
    } else {
      std::string& line = lines.back();
      if (line.size() <= column) line.resize(column + 1, ' ');
      line[column++] = c;
    }
  }
  for (std::string& line : lines) {
    line.erase(line.find_last_not_of(' ') + 1);
  }
  return lines;
}

class CliProgressTest : public ::testing::Test {
 protected:
  CliProgressTest() {
    mkdir(dir_.Join("A").c_str(), 0755);
    mkdir(dir_.Join("A/sub").c_str(), 0755);
    mkdir(dir_.Join("B").c_str(), 0755);
    const std::string catalogue =
        ReadAll(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini");
    dir_.WriteFile("p.ini", catalogue +
                                "[Sec: Docs]\r\nDir1=" + dir_.Join("A") +
                                "\r\nDir2=" + dir_.Join("B") + "\r\n");
  }

  static std::string ReadAll(const std::string& path) {
    std::FILE* in = std::fopen(path.c_str(), "rb");
    std::string text;
    if (in == nullptr) return text;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, in));) {
      text.append(buffer, n);
    }
    std::fclose(in);
    return text;
  }

  // A big file and two small ones to copy from A to B: 24 MiB and 6 bytes.
  void WriteThreeFiles() {
    dir_.WriteFile("A/big.bin", std::string(std::size_t{24} << 20, 'b'));
    dir_.WriteFile("A/a.txt", "one");
    dir_.WriteFile("A/sub/b.txt", "two");
  }

  std::vector<std::string> Command(const std::vector<std::string>& args) {
    std::vector<std::string> words = {PAIRWELL_CLI_PATH, "--ini",
                                      dir_.Join("p.ini")};
    words.insert(words.end(), args.begin(), args.end());
    return words;
  }

  // Standard output and error to files, as through pipes.
  ProcessResult RunPiped(const std::vector<std::string>& args) {
    return RunProcess(Command(args), dir_.Join("out"), dir_.Join("err"));
  }

  TerminalResult RunOnPty(const std::vector<std::string>& args,
                          const TerminalOptions& options = TerminalOptions()) {
    return RunOnTerminal(Command(args), dir_.Join("out"), options);
  }

  TempDir dir_;
};

constexpr char kThreeFilesDone[] = "3/3 files, 24.0 MiB/24.0 MiB (100%)";

TEST_F(CliProgressTest, TerminalLineEndsWithTheFinalTotals) {
  WriteThreeFiles();
  TerminalOptions options;
  options.columns = kColumns;
  const TerminalResult r = RunOnPty({"sync", "--yes", "Docs"}, options);
  ASSERT_EQ(r.exit_code, 0) << r.terminal;
  const std::string finished = FinishedLine(kThreeFilesDone, kLineColumns);
  ASSERT_GE(r.terminal.size(), finished.size()) << r.terminal;
  EXPECT_EQ(r.terminal.substr(r.terminal.size() - finished.size()), finished)
      << r.terminal;
  // Every drawing fills the line, so that nothing of an older one is left.
  for (const std::string& drawing : Drawings(r.terminal)) {
    if (drawing.empty()) continue;
    EXPECT_EQ(drawing.size(), kLineColumns) << "[" << drawing << "]";
  }
  EXPECT_EQ(r.out.find('\r'), std::string::npos);
  EXPECT_NE(r.out.find("Copy " + dir_.Join("B/big.bin")), std::string::npos)
      << r.out;
  EXPECT_EQ(dir_.ReadFile("B/sub/b.txt"), "two");
}

TEST_F(CliProgressTest, LogLinesOnTheSameTerminalNeverMixWithTheLine) {
  constexpr int kFiles = 1000;
  for (int i = 0; i < kFiles; ++i) {
    dir_.WriteFile("A/file-" + std::to_string(1000 + i) +
                       "-with-a-name-long-enough-to-fill-the-terminal.txt",
                   "x");
  }
  TerminalOptions options;
  options.columns = kColumns;
  options.output_on_terminal = true;
  // A slow terminal: the run waits in its writes part-way through the
  // actions, so that the line is drawn again before they end.
  options.unread_for = std::chrono::milliseconds(1000);
  const TerminalResult r = RunOnPty({"sync", "--yes", "Docs"}, options);
  ASSERT_EQ(r.exit_code, 0) << r.terminal.substr(0, 2000);

  const std::regex running(
      "(\\d+)/1000 files, \\d+ B/1000 B \\((\\d+)%\\)"
      "(, [0-9.]+ (B|KiB|MiB|GiB)/s)?(, \\d+:\\d\\d left)?"
      "  file-\\d+-with-.* *");
  int seen_running = 0;
  for (const std::string& drawing : Drawings(r.terminal)) {
    std::smatch match;
    if (!std::regex_match(drawing, match, running)) continue;
    EXPECT_LT(std::stoi(match[1]), kFiles) << drawing;
    EXPECT_LT(std::stoi(match[2]), 100) << drawing;
    ++seen_running;
  }
  EXPECT_GT(seen_running, 0) << "no progress line while the files were copied";

  const std::regex copy("Copy " + dir_.Join("B") +
                        "/file-\\d+-\\S+\\.txt from " + dir_.Join("A") +
                        "/file-\\d+-\\S+\\.txt");
  // The speed and the time left come once a second has been seen.
  const std::regex progress(
      "\\d+/1000 files, \\d+ B/1000 B \\(\\d+%\\)"
      "(, [0-9.]+ (B|KiB|MiB|GiB)/s)?(, \\d+:\\d\\d left)?"
      "(  file-\\S+\\.txt)?");
  int copies = 0;
  bool finished = false;
  for (const std::string& line : ScreenLines(r.terminal)) {
    // Each log line whole, from the start of its own line; each progress
    // line with nothing of a log line in it.
    if (line.find("Copy ") != std::string::npos) {
      EXPECT_TRUE(std::regex_match(line, copy)) << line;
      ++copies;
    }
    if (line.find(" files, ") != std::string::npos) {
      EXPECT_TRUE(std::regex_match(line, progress)) << line;
    }
    if (line.rfind("1000/1000 files, 1000 B/1000 B (100%)", 0) == 0 &&
        line.find(" left") == std::string::npos) {
      finished = true;
    }
  }
  EXPECT_EQ(copies, kFiles);
  EXPECT_TRUE(finished);
  EXPECT_EQ(ScreenLines(r.terminal).back(), "");
}

TEST_F(CliProgressTest, PipesGetNoProgressAndNoCarriageReturn) {
  WriteThreeFiles();
  const ProcessResult r = RunPiped({"sync", "--yes", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(r.out.find('\r'), std::string::npos);
  EXPECT_EQ(r.out.find(" files, "), std::string::npos) << r.out;
  EXPECT_EQ(r.out.rfind("== Sync Status - Docs\n", 0), 0u) << r.out;
  EXPECT_EQ(dir_.ReadFile("B/sub/b.txt"), "two");
}

TEST_F(CliProgressTest, QuietOnATerminalShowsNothing) {
  WriteThreeFiles();
  const TerminalResult r = RunOnPty({"sync", "--yes", "--quiet", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.terminal;
  EXPECT_EQ(r.terminal, "");
  EXPECT_EQ(dir_.ReadFile("B/a.txt"), "one");
}

TEST_F(CliProgressTest, ProgressOnAPipeShowsTheLineAnyway) {
  WriteThreeFiles();
  const ProcessResult r = RunPiped({"sync", "--progress", "--yes", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::string finished = FinishedLine(kThreeFilesDone, kPipeLineColumns);
  ASSERT_GE(r.err.size(), finished.size()) << r.err;
  EXPECT_EQ(r.err.substr(r.err.size() - finished.size()), finished) << r.err;
  EXPECT_EQ(r.out.find('\r'), std::string::npos);
}

TEST_F(CliProgressTest, OfProgressAndQuietTheLastOneCounts) {
  WriteThreeFiles();
  ProcessResult r =
      RunPiped({"sync", "--progress", "--quiet", "--yes", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.err, "");
  dir_.WriteFile("A/later.txt", "later");
  r = RunPiped({"sync", "--quiet", "--progress", "--yes", "Docs"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const std::string finished =
      FinishedLine("1/1 file, 5 B/5 B (100%)", kPipeLineColumns);
  ASSERT_GE(r.err.size(), finished.size()) << r.err;
  EXPECT_EQ(r.err.substr(r.err.size() - finished.size()), finished) << r.err;
}

}  // namespace
}  // namespace pairwell
