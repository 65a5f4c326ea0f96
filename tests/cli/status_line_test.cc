#include "cli/status_line.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "support/temp_dir.h"

namespace pairwell {
namespace {

// A status line drawn into a file (no terminal: 79 columns), with a log
// file as the stream flushed first.
class StatusLineTest : public ::testing::Test {
 protected:
  StatusLineTest()
      : stream_(std::fopen(dir_.Join("line").c_str(), "wb")),
        log_(std::fopen(dir_.Join("log").c_str(), "wb")),
        line_(stream_, log_) {}
  ~StatusLineTest() override {
    std::fclose(stream_);
    std::fclose(log_);
  }

  // Everything drawn since the last call, as the file holds it.
  std::string Drawn() {
    const std::string text = dir_.ReadFile("line").substr(read_);
    read_ += text.size();
    return text;
  }

  static std::string Padded(const std::string& text) {
    return text + std::string(79 - text.size(), ' ');
  }

  TempDir dir_;
  std::FILE* stream_;
  std::FILE* log_;
  StatusLine line_;
  std::size_t read_ = 0;
};

TEST_F(StatusLineTest, ShowRewritesTheLineInPlacePaddedToTheColumns) {
  EXPECT_EQ(line_.Columns(), 79u);
  line_.Show("first text");
  line_.Show("second");
  EXPECT_EQ(Drawn(), "\r" + Padded("first text") + "\r" + Padded("second"));
}

TEST_F(StatusLineTest, TheSameTextIsNotDrawnTwice) {
  line_.Show("same");
  line_.Show("same");
  EXPECT_EQ(Drawn(), "\r" + Padded("same"));
}

TEST_F(StatusLineTest, HideBlanksAndRestoreShowsTheTextAgain) {
  line_.Show("status");
  Drawn();
  line_.Hide();
  EXPECT_EQ(Drawn(), "\r" + Padded("") + "\r");
  line_.Hide();
  EXPECT_EQ(Drawn(), "");
  line_.Restore();
  EXPECT_EQ(Drawn(), "\r" + Padded("status"));
  line_.Restore();
  EXPECT_EQ(Drawn(), "");
}

TEST_F(StatusLineTest, EraseForgetsTheText) {
  line_.Show("status");
  line_.Erase();
  Drawn();
  line_.Restore();
  line_.Erase();
  EXPECT_EQ(Drawn(), "");
}

TEST_F(StatusLineTest, FinishEndsTheLineWhichThenStays) {
  line_.Show("working");
  Drawn();
  line_.Finish("done");
  EXPECT_EQ(Drawn(), "\r" + Padded("done") + "\n");
  line_.Hide();
  line_.Restore();
  EXPECT_EQ(Drawn(), "");
}

TEST_F(StatusLineTest, LongAndControlCharactersAreFittedToOneLine) {
  line_.Show("a\nb" + std::string(100, 'x'));
  const std::string drawn = Drawn();
  EXPECT_EQ(drawn.size(), 80u);
  EXPECT_EQ(drawn.substr(0, 4), "\ra?b");
  EXPECT_EQ(drawn.find('\n'), std::string::npos);
}

TEST_F(StatusLineTest, ANewTextIsDueATenthOfASecondAfterTheLast) {
  EXPECT_TRUE(line_.Due());
  line_.Show("one");
  EXPECT_FALSE(line_.Due());
  std::this_thread::sleep_for(
      std::chrono::milliseconds(StatusLine::kIntervalMs + 10));
  EXPECT_TRUE(line_.Due());
}

TEST_F(StatusLineTest, TheOtherStreamIsFlushedBeforeDrawing) {
  std::fputs("log line\n", log_);
  EXPECT_EQ(dir_.ReadFile("log"), "");
  line_.Show("status");
  EXPECT_EQ(dir_.ReadFile("log"), "log line\n");
}

}  // namespace
}  // namespace pairwell
