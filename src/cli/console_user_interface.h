// The person-facing interface of the command line: messages go to stderr
// with the answer the options give, log lines to a chosen stream, and a
// status line to stderr: the scan's status, then the progress of a set's
// actions.
#ifndef PAIRWELL_CLI_CONSOLE_USER_INTERFACE_H_
#define PAIRWELL_CLI_CONSOLE_USER_INTERFACE_H_

#include <cstdio>
#include <string>

#include "app/front_end.h"
#include "cli/status_line.h"
#include "engine/transfer_rate.h"

namespace pairwell {

struct RunState;
struct SyncProgress;

struct ConsoleOptions {
  // Yes/No questions are answered Yes (else No).
  bool assume_yes = false;
  // Abort/retry/ignore prompts are answered Ignore (else Abort).
  bool ignore_errors = false;
  // Where log lines are echoed.
  std::FILE* log_stream = stderr;
  // Draw the status line on stderr (whatever stderr is).
  bool show_progress = false;
};

class ConsoleUserInterface final : public FrontEnd, LogEchoTarget {
 public:
  explicit ConsoleUserInterface(const ConsoleOptions& options);
  ~ConsoleUserInterface() override;
  ConsoleUserInterface(const ConsoleUserInterface&) = delete;
  ConsoleUserInterface& operator=(const ConsoleUserInterface&) = delete;

  // The run whose current set's actions the status line follows (not
  // owned; null for none).
  void WatchRun(const RunState* run) { run_ = run; }

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  // The engine pumps often, during long copies too: the status line is
  // brought up to date here.
  void DoEvents() override { Refresh(); }
  void ShowStatus(const std::string& text) override;
  void ShowProgress(const std::string& caption) override;
  void HideProgress() override;
  // Enabling the main window again means that the run is over.
  void EnableMainWindow(bool enable) override;
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
  // The progress of the watched set's actions while they go on; else null.
  const SyncProgress* Performing() const;
  // Brings the line in step with the run: once the actions are over it ends
  // with their final counts (or goes when there was nothing to copy), and
  // from then to the next set it shows nothing.
  void Settle();
  // Shows the actions' progress, else the scan's status, when a new text is
  // due.
  void Refresh();
  // Ends the run's line for good.
  void EraseLine();
  // Before something is said on stderr: pending log lines go out first and
  // the line makes way.
  void BeforeMessage();

  ConsoleOptions options_;
  StatusLine line_;
  const RunState* run_ = nullptr;
  // The first line of the engine's last status, shown outside the actions.
  std::string status_;
  // The actions the line follows, until it is finished.
  const SyncProgress* actions_ = nullptr;
  // The speed of the set's copying, from what the progress showed.
  TransferRate rate_;
  // Log lines land where the line is drawn: it makes way for each.
  bool log_shares_line_ = false;
  // The log has written part of a line there: nothing may be drawn.
  bool log_mid_line_ = false;
  int message_count_ = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_CLI_CONSOLE_USER_INTERFACE_H_
