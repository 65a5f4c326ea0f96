// Running a program with its standard error on a pseudo-terminal, as a
// person at a terminal would: the test reads what the terminal received.
#ifndef PAIRWELL_TESTS_SUPPORT_PTY_PROCESS_H_
#define PAIRWELL_TESTS_SUPPORT_PTY_PROCESS_H_

#include <chrono>
#include <string>
#include <vector>

namespace pairwell {

struct TerminalOptions {
  unsigned short columns = 100;
  // Standard output goes to the terminal too; else to the file out_path.
  bool output_on_terminal = false;
  // How long the terminal is left unread at the start. A program that
  // fills the terminal's buffer meanwhile waits in its writes, as behind a
  // slow terminal.
  std::chrono::milliseconds unread_for{0};
};

struct TerminalResult {
  int exit_code = -1;    // -1 when a signal ended it or it could not start
  std::string terminal;  // every byte the terminal received, unchanged
  std::string out;       // standard output, when not on the terminal
};

// Runs argv[0] (looked up in PATH when it holds no slash) to its end with
// the other words as its arguments and its standard error on a new
// pseudo-terminal in raw mode (no byte is translated). A program still
// running after a minute is killed.
TerminalResult RunOnTerminal(const std::vector<std::string>& argv,
                             const std::string& out_path,
                             const TerminalOptions& options);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_PTY_PROCESS_H_
