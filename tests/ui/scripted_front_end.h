// The desktop front end for window tests: message boxes and the folder
// picker answer from queues instead of waiting for a person, and every
// message is recorded. The run's windows are the real ones.
#ifndef PAIRWELL_TESTS_UI_SCRIPTED_FRONT_END_H_
#define PAIRWELL_TESTS_UI_SCRIPTED_FRONT_END_H_

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "ui/qt_front_end.h"

namespace pairwell {

struct ShownMessage {
  std::string text;
  int style;
  std::string caption;
};

class ScriptedFrontEnd : public QtFrontEnd {
 public:
  // Answers in order; once empty, the style's default button answers.
  std::deque<int> answers;
  std::vector<ShownMessage> messages;
  // Answers of the folder picker in order; once empty, "" (cancelled).
  std::deque<std::string> folders;
  std::vector<std::string> browse_prompts;
  // Runs before each message is answered, and at each event pump (after
  // the pending events ran).
  std::function<void(const std::string&)> on_message;
  std::function<void()> on_events;

  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  std::string BrowseForFolder(const std::string& prompt) override;
  void DoEvents() override;

  // The texts of the messages shown so far.
  std::vector<std::string> Texts() const;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_UI_SCRIPTED_FRONT_END_H_
