// A front end for tests: answers message boxes from a queue, records every
// message it was shown, and lets a test hook into the event pump, the
// message box and the confirm window.
#ifndef PAIRWELL_TESTS_SUPPORT_RECORDING_USER_INTERFACE_H_
#define PAIRWELL_TESTS_SUPPORT_RECORDING_USER_INTERFACE_H_

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "app/front_end.h"

namespace pairwell {

struct RecordedMessage {
  std::string text;
  int style;
  std::string caption;
};

// Installs itself for the lower layers on construction and puts back the
// interface it replaced on destruction.
class RecordingUserInterface : public FrontEnd {
 public:
  RecordingUserInterface();

  // Answers given in order; once the queue is empty, the style's default
  // button answers.
  std::deque<int> answers;
  std::vector<RecordedMessage> messages;
  std::vector<std::string> statuses;
  int events_pumped = 0;
  Confirmation confirm_answer = Confirmation::kContinue;
  int confirm_calls = 0;
  std::string folder_answer;
  std::vector<std::string> progress_captions;
  bool progress_shown = false;
  std::vector<bool> main_window_states;
  // Where the log echoes; null for nowhere.
  LogEchoTarget* log_echo = nullptr;
  std::vector<std::string> browse_prompts;

  // Hooks: run at each event pump, before each message is answered, and
  // inside the confirm window before confirm_answer is given.
  std::function<void()> on_events;
  std::function<void(const std::string&)> on_message;
  std::function<void(Synchronizer&)> on_confirm;

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  void DoEvents() override;
  void ShowStatus(const std::string& text) override {
    statuses.push_back(text);
  }
  void ShowProgress(const std::string& caption) override {
    progress_captions.push_back(caption);
    progress_shown = true;
  }
  void HideProgress() override { progress_shown = false; }
  void EnableMainWindow(bool enable) override {
    main_window_states.push_back(enable);
  }
  LogEchoTarget* LogEcho() override { return log_echo; }
  Confirmation ConfirmActions(Synchronizer& set) override;
  // Answers with folder_answer and records the prompt.
  std::string BrowseForFolder(const std::string& prompt) override {
    browse_prompts.push_back(prompt);
    return folder_answer;
  }

  // The texts of the messages shown so far.
  std::vector<std::string> Texts() const;

 private:
  ScopedUserInterface installed_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_RECORDING_USER_INTERFACE_H_
