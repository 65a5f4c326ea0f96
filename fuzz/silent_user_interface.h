// A person who is never there: a malformed conflict pattern is reported in a
// message box, and a fuzz run must not wait for it.
#ifndef PAIRWELL_FUZZ_SILENT_USER_INTERFACE_H_
#define PAIRWELL_FUZZ_SILENT_USER_INTERFACE_H_

#include <string>

#include "util/user_interface.h"

namespace pairwell {

class SilentUserInterface : public UserInterface {
 public:
  int MessageBox(const std::string&, int style, const std::string&) override {
    return DefaultAnswer(style);
  }
  void DoEvents() override {}
  void ShowStatus(const std::string&) override {}
  std::string BrowseForFolder(const std::string&) override { return ""; }
};

}  // namespace pairwell

#endif  // PAIRWELL_FUZZ_SILENT_USER_INTERFACE_H_
