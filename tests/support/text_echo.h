// A log echo target that keeps the text, like the progress window's log box.
#ifndef PAIRWELL_TESTS_SUPPORT_TEXT_ECHO_H_
#define PAIRWELL_TESTS_SUPPORT_TEXT_ECHO_H_

#include <cstddef>
#include <string>

#include "util/user_interface.h"

namespace pairwell {

class TextEcho : public LogEchoTarget {
 public:
  std::size_t TextLength() const override { return text.size(); }
  void AppendText(const std::string& more) override { text += more; }
  void ClearText() override { text.clear(); }

  std::string text;
};

// Whether the text holds the part.
inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_TEXT_ECHO_H_
