#include "ui/scripted_front_end.h"

namespace pairwell {

int ScriptedFrontEnd::MessageBox(const std::string& text, int style,
                                 const std::string& caption) {
  if (on_message) on_message(text);
  messages.push_back(ShownMessage{text, style, caption});
  if (answers.empty()) return DefaultAnswer(style);
  const int answer = answers.front();
  answers.pop_front();
  return answer;
}

std::string ScriptedFrontEnd::BrowseForFolder(const std::string& prompt) {
  browse_prompts.push_back(prompt);
  if (folders.empty()) return std::string();
  std::string folder = folders.front();
  folders.pop_front();
  return folder;
}

void ScriptedFrontEnd::DoEvents() {
  QtFrontEnd::DoEvents();
  if (on_events) on_events();
}

std::vector<std::string> ScriptedFrontEnd::Texts() const {
  std::vector<std::string> texts;
  for (const ShownMessage& m : messages) texts.push_back(m.text);
  return texts;
}

}  // namespace pairwell
