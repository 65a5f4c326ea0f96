#include "cli/console_user_interface.h"

#include <unistd.h>

#include "engine/action_texts.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"

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
    : options_(options) {
  options_.show_progress = options.show_progress && isatty(STDERR_FILENO);
}

ConsoleUserInterface::~ConsoleUserInterface() { ClearProgress(); }

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
  FlushLog();
  ++message_count_;
  const int answer = Answer(style);
  const bool question = (style & kMbButtonsMask) != kMbOkOnly;
  std::fprintf(stderr, "%s: %s%s%s\n", caption.c_str(), text.c_str(),
               question ? "\n  -> " : "", question ? AnswerName(answer) : "");
  return answer;
}

void ConsoleUserInterface::ShowStatus(const std::string& text) {
  if (!options_.show_progress) return;
  std::fflush(stdout);
  std::fprintf(stderr, "\r\033[K%.100s", text.c_str());
  std::fflush(stderr);
  progress_shown_ = true;
}

void ConsoleUserInterface::ShowProgress(const std::string& caption) {
  ClearProgress();
  std::fprintf(options_.log_stream, "== %s\n", caption.c_str());
}

void ConsoleUserInterface::FlushLog() {
  // Log lines on stdout come before what stderr says next.
  std::fflush(stdout);
  ClearProgress();
}

void ConsoleUserInterface::ClearProgress() {
  if (!progress_shown_) return;
  std::fprintf(stderr, "\r\033[K");
  progress_shown_ = false;
}

void ConsoleUserInterface::AppendText(const std::string& text) {
  ClearProgress();
  std::fputs(text.c_str(), options_.log_stream);
}

Confirmation ConsoleUserInterface::ConfirmActions(Synchronizer& set) {
  if (options_.assume_yes) return Confirmation::kContinue;
  FlushLog();
  std::fprintf(stderr,
               "Pairwell: these files of '%s' need confirmation; nothing was "
               "changed. Run again with --yes to accept their default "
               "actions.\n",
               set.Name.c_str());
  for (long i = 1; i <= set.WFileCount(); ++i) {
    SyncFile& file = set.WFile(i);
    if (!NeedsConfirmation(set, file.ComputeConflictIndex())) continue;
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
