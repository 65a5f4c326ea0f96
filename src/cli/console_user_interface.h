// The person-facing interface of the command line: messages go to stderr
// with the answer the options give, log lines to a chosen stream, and a
// progress line to stderr when it is a terminal.
#ifndef PAIRWELL_CLI_CONSOLE_USER_INTERFACE_H_
#define PAIRWELL_CLI_CONSOLE_USER_INTERFACE_H_

#include <cstdio>
#include <string>

#include "app/front_end.h"

namespace pairwell {

struct ConsoleOptions {
  // Yes/No questions are answered Yes (else No).
  bool assume_yes = false;
  // Abort/retry/ignore prompts are answered Ignore (else Abort).
  bool ignore_errors = false;
  // Where log lines are echoed.
  std::FILE* log_stream = stderr;
  // Show the status as a progress line (only when stderr is a terminal).
  bool show_progress = false;
};

class ConsoleUserInterface final : public FrontEnd, LogEchoTarget {
 public:
  explicit ConsoleUserInterface(const ConsoleOptions& options);
  ~ConsoleUserInterface() override;
  ConsoleUserInterface(const ConsoleUserInterface&) = delete;
  ConsoleUserInterface& operator=(const ConsoleUserInterface&) = delete;

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  void DoEvents() override {}
  void ShowStatus(const std::string& text) override;
  void ShowProgress(const std::string& caption) override;
  void HideProgress() override { ClearProgress(); }
  void EnableMainWindow(bool) override {}
  LogEchoTarget* LogEcho() override { return this; }
  // Nobody is there to confirm: without assume_yes the files that need it
  // are listed and the run is refused.
  Confirmation ConfirmActions(Synchronizer& set) override;
  std::string BrowseForFolder(const std::string& prompt) override;

  // LogEchoTarget: a console has no size limit, so it reports no length.
  std::size_t TextLength() const override { return 0; }
  void AppendText(const std::string& text) override;
  void ClearText() override {}

  // The number of messages shown so far.
  int message_count() const { return message_count_; }

 private:
  int Answer(int style) const;
  void ClearProgress();
  // Writes out pending log lines and clears the progress line, before
  // something is said on stderr.
  void FlushLog();

  ConsoleOptions options_;
  bool progress_shown_ = false;
  int message_count_ = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_CLI_CONSOLE_USER_INTERFACE_H_
