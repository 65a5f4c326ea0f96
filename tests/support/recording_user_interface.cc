#include "support/recording_user_interface.h"

namespace pairwell {

RecordingUserInterface::RecordingUserInterface() { SetUserInterface(this); }

RecordingUserInterface::~RecordingUserInterface() { SetUserInterface(nullptr); }

int RecordingUserInterface::MessageBox(const std::string& text, int style,
                                       const std::string& caption) {
  messages.push_back(RecordedMessage{text, style, caption});
  if (answers.empty()) return DefaultAnswer(style);
  const int answer = answers.front();
  answers.pop_front();
  return answer;
}

std::vector<std::string> RecordingUserInterface::Texts() const {
  std::vector<std::string> texts;
  for (const RecordedMessage& m : messages) texts.push_back(m.text);
  return texts;
}

}  // namespace pairwell
