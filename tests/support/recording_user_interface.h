// A user interface for tests: answers message boxes from a queue and
// records every message it was shown.
#ifndef PAIRWELL_TESTS_SUPPORT_RECORDING_USER_INTERFACE_H_
#define PAIRWELL_TESTS_SUPPORT_RECORDING_USER_INTERFACE_H_

#include <deque>
#include <string>
#include <vector>

#include "util/user_interface.h"

namespace pairwell {

struct RecordedMessage {
  std::string text;
  int style;
  std::string caption;
};

// Installs itself on construction and removes itself on destruction.
class RecordingUserInterface : public UserInterface {
 public:
  RecordingUserInterface();
  ~RecordingUserInterface() override;

  // Answers given in order; once the queue is empty, the style's default
  // button answers.
  std::deque<int> answers;
  std::vector<RecordedMessage> messages;
  std::vector<std::string> statuses;
  int events_pumped = 0;
  bool confirm_answer = true;
  int confirm_calls = 0;
  std::string folder_answer;
  std::vector<std::string> progress_captions;
  bool progress_shown = false;
  std::vector<bool> main_window_states;
  // Where the log echoes; null for nowhere.
  LogEchoTarget* log_echo = nullptr;
  std::vector<std::string> browse_prompts;

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  void DoEvents() override { ++events_pumped; }
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
  bool ConfirmActions(Synchronizer&) override {
    ++confirm_calls;
    return confirm_answer;
  }
  // Answers with folder_answer and records the prompt.
  std::string BrowseForFolder(const std::string& prompt) override {
    browse_prompts.push_back(prompt);
    return folder_answer;
  }

  // The texts of the messages shown so far.
  std::vector<std::string> Texts() const;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_RECORDING_USER_INTERFACE_H_
