#include "util/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#ifdef _WIN32
#include <io.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

#include <cstdio>
#include <string>

#include "support/temp_dir.h"

namespace pairwell {
namespace {

#ifndef _WIN32
// The two ends of a pseudo-terminal, the terminal side as a stream.
class PseudoTerminal {
 public:
  PseudoTerminal() {
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) return;
    const int slave = open(ptsname(master_), O_RDWR | O_NOCTTY);
    if (slave >= 0) stream_ = fdopen(slave, "w");
  }
  ~PseudoTerminal() {
    if (stream_ != nullptr) std::fclose(stream_);
    if (master_ >= 0) close(master_);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  std::FILE* stream() const { return stream_; }
  bool SetWidth(unsigned short columns) const {
    struct winsize size = {};
    size.ws_row = 24;
    size.ws_col = columns;
    return ioctl(master_, TIOCSWINSZ, &size) == 0;
  }

 private:
  int master_ = -1;
  std::FILE* stream_ = nullptr;
};
#endif

TEST(TerminalTest, OnlyATerminalIsOneAndHasAWidth) {
#ifndef _WIN32
  // Windows has no pseudo-terminal to open: there only the file is checked.
  PseudoTerminal terminal;
  ASSERT_NE(terminal.stream(), nullptr);
  ASSERT_TRUE(terminal.SetWidth(123));
  EXPECT_TRUE(IsTerminal(terminal.stream()));
  EXPECT_EQ(TerminalWidth(terminal.stream()), 123);
#endif

  TempDir dir;
  std::FILE* file = std::fopen(dir.Join("f").c_str(), "w");
  ASSERT_NE(file, nullptr);
  EXPECT_FALSE(IsTerminal(file));
  EXPECT_EQ(TerminalWidth(file), 0);
  std::fclose(file);
}

TEST(TerminalTest, SameOutputWhereBothStreamsLand) {
  TempDir dir;
  std::FILE* first = std::fopen(dir.Join("f").c_str(), "w");
  std::FILE* again = std::fopen(dir.Join("f").c_str(), "a");
  std::FILE* other = std::fopen(dir.Join("g").c_str(), "w");
  ASSERT_TRUE(first != nullptr && again != nullptr && other != nullptr);
  EXPECT_TRUE(SameOutput(first, first));
  EXPECT_TRUE(SameOutput(first, again));
  EXPECT_FALSE(SameOutput(first, other));
  std::fclose(first);
  std::fclose(again);
  std::fclose(other);

#ifndef _WIN32
  // Windows cannot tell two handles of one pipe apart (short of Windows 10's
  // CompareObjectHandles): there they count as different outputs.
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::FILE* writer = fdopen(ends[1], "w");
  std::FILE* copy = fdopen(dup(ends[1]), "w");
  EXPECT_TRUE(SameOutput(writer, copy));
  EXPECT_FALSE(SameOutput(writer, stdin));
  std::fclose(writer);
  std::fclose(copy);
  close(ends[0]);
#endif
}

}  // namespace
}  // namespace pairwell
