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
  std::vector<std::string> browse_prompts;

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  void DoEvents() override { ++events_pumped; }
  void ShowStatus(const std::string& text) override {
    statuses.push_back(text);
  }
  LogEchoTarget* LogEcho() override { return nullptr; }
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
