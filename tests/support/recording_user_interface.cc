#include "support/recording_user_interface.h"

namespace pairwell {

RecordingUserInterface::RecordingUserInterface() : installed_(this) {}

int RecordingUserInterface::MessageBox(const std::string& text, int style,
                                       const std::string& caption) {
  if (on_message) on_message(text);
  messages.push_back(RecordedMessage{text, style, caption});
  if (answers.empty()) return DefaultAnswer(style);
  const int answer = answers.front();
  answers.pop_front();
  return answer;
}

void RecordingUserInterface::DoEvents() {
  ++events_pumped;
  if (on_events) on_events();
}

Confirmation RecordingUserInterface::ConfirmActions(Synchronizer& set) {
  ++confirm_calls;
  if (on_confirm) on_confirm(set);
  return confirm_answer;
}

std::vector<std::string> RecordingUserInterface::Texts() const {
  std::vector<std::string> texts;
  for (const RecordedMessage& m : messages) texts.push_back(m.text);
  return texts;
}

}  // namespace pairwell
