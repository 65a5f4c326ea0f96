#include "cli/console_user_interface.h"

#include "cli/progress_text.h"
#include "engine/action_texts.h"
#include "engine/run_state.h"
#include "engine/sync_file.h"
#include "engine/sync_progress.h"
#include "engine/synchronizer.h"
#include "util/system.h"
#include "util/terminal.h"

namespace pairwell {

namespace {

const char* AnswerName(int answer) {
  switch (answer) {
    case kIdOk:
      return "OK";
    case kIdCancel:
      return "Cancel";
    case kIdAbort:
      return "Abort";
    case kIdRetry:
      return "Retry";
    case kIdIgnore:
      return "Ignore";
    case kIdYes:
      return "Yes";
    default:
      return "No";
  }
}

}  // namespace

ConsoleUserInterface::ConsoleUserInterface(const ConsoleOptions& options)
    : options_(options),
      line_(stderr, options.log_stream),
      log_shares_line_(options.show_progress &&
                       SameOutput(options.log_stream, stderr)) {}

ConsoleUserInterface::~ConsoleUserInterface() { line_.Erase(); }

int ConsoleUserInterface::Answer(int style) const {
  switch (style & kMbButtonsMask) {
    case kMbAbortRetryIgnore:
      return options_.ignore_errors ? kIdIgnore : kIdAbort;
    case kMbYesNo:
    case kMbYesNoCancel:
      return options_.assume_yes ? kIdYes : kIdNo;
    case kMbOkCancel:
    case kMbRetryCancel:
      // Nobody is there to confirm: going on is not assumed.
      return kIdCancel;
    default:
      return kIdOk;
  }
}

int ConsoleUserInterface::MessageBox(const std::string& text, int style,
                                     const std::string& caption) {
  BeforeMessage();
  ++message_count_;
  const int answer = Answer(style);
  const bool question = (style & kMbButtonsMask) != kMbOkOnly;
  std::fprintf(stderr, "%s: %s%s%s\n", caption.c_str(), text.c_str(),
               question ? "\n  -> " : "", question ? AnswerName(answer) : "");
  return answer;
}

void ConsoleUserInterface::ShowStatus(const std::string& text) {
  status_ = text.substr(0, text.find('\n'));
  Refresh();
}

void ConsoleUserInterface::ShowProgress(const std::string& caption) {
  EraseLine();
  std::fprintf(options_.log_stream, "== %s\n", caption.c_str());
  log_mid_line_ = false;
}

void ConsoleUserInterface::HideProgress() { EraseLine(); }

void ConsoleUserInterface::EnableMainWindow(bool enable) {
  if (enable) EraseLine();
}

const SyncProgress* ConsoleUserInterface::Performing() const {
  if (run_ == nullptr || run_->current_set == nullptr) return nullptr;
  const SyncProgress& progress = run_->current_set->Progress();
  return progress.performing ? &progress : nullptr;
}

void ConsoleUserInterface::Settle() {
  if (!options_.show_progress) return;
  const SyncProgress* performing = Performing();
  if (performing != nullptr) {
    if (actions_ == nullptr) rate_.Reset();
    actions_ = performing;
    rate_.Add(actions_->bytes_done, TickCount());
  } else if (actions_ != nullptr) {
    if (actions_->files_total > 0) {
      // The speed stays on the last line; nothing is left to wait for.
      line_.Finish(ProgressText(*actions_, rate_.BytesPerSecond(), -1,
                                line_.Columns()));
    } else {
      line_.Erase();
    }
    actions_ = nullptr;
  } else if (run_ != nullptr && run_->busy) {
    line_.Erase();
  }
}

void ConsoleUserInterface::Refresh() {
  Settle();
  if (!options_.show_progress || log_mid_line_ || !line_.Due()) return;
  if (actions_ != nullptr) {
    line_.Show(ProgressText(
        *actions_, rate_.BytesPerSecond(),
        rate_.SecondsLeft(actions_->bytes_total - actions_->bytes_done),
        line_.Columns()));
  } else if (!status_.empty() && (run_ == nullptr || !run_->busy)) {
    line_.Show(status_);
  }
}

void ConsoleUserInterface::EraseLine() {
  Settle();
  line_.Erase();
  status_.clear();
}

void ConsoleUserInterface::BeforeMessage() {
  Settle();
  // Log lines on stdout come before what stderr says next.
  std::fflush(stdout);
  line_.Hide();
}

void ConsoleUserInterface::AppendText(const std::string& text) {
  if (log_shares_line_) {
    Settle();
    line_.Hide();
  }
  std::fputs(text.c_str(), options_.log_stream);
  if (!log_shares_line_ || text.empty()) return;
  log_mid_line_ = text.back() != '\n';
  // The same text again, not a new one: the line stays below the log.
  if (!log_mid_line_) line_.Restore();
}

Confirmation ConsoleUserInterface::ConfirmActions(Synchronizer& set) {
  if (options_.assume_yes) return Confirmation::kContinue;
  BeforeMessage();
  std::fprintf(stderr,
               "Pairwell: these files of '%s' need confirmation; nothing was "
               "changed. Run again with --yes to accept their default "
               "actions.\n",
               set.Name.c_str());
  for (long i = 1; i <= set.WFileCount(); ++i) {
    SyncFile& file = set.WFile(i);
    if (!NeedsConfirmation(file)) continue;
    file.CalcNoEffect();
    std::fprintf(stderr, "  %s  %s  %s\n", file.RelativeName().c_str(),
                 StatusText(file).c_str(), ActionText(file).c_str());
  }
  return Confirmation::kRefused;
}

std::string ConsoleUserInterface::BrowseForFolder(const std::string&) {
  return std::string();  // a console has no folder picker
}

}  // namespace pairwell
