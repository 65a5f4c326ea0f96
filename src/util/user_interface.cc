#include "util/user_interface.h"

#include <stdexcept>

namespace pairwell {

namespace {
UserInterface* installed_ui = nullptr;
}  // namespace

int DefaultAnswer(int style) {
  static const int kAnswers[][3] = {
      {kIdOk, kIdOk, kIdOk},           {kIdOk, kIdCancel, kIdCancel},
      {kIdAbort, kIdRetry, kIdIgnore}, {kIdYes, kIdNo, kIdCancel},
      {kIdYes, kIdNo, kIdNo},          {kIdRetry, kIdCancel, kIdCancel},
  };
  int buttons = style & kMbButtonsMask;
  if (buttons > kMbRetryCancel) buttons = kMbOkOnly;
  int which = 0;
  if (style & kMbDefaultButton3) {
    which = 2;
  } else if (style & kMbDefaultButton2) {
    which = 1;
  }
  return kAnswers[buttons][which];
}

UserInterface* SetUserInterface(UserInterface* ui) {
  UserInterface* previous = installed_ui;
  installed_ui = ui;
  return previous;
}

UserInterface& UI() {
  if (installed_ui == nullptr) {
    throw std::logic_error("no user interface is installed");
  }
  return *installed_ui;
}

std::string BrowseForFolder(const std::string& prompt) {
  return UI().BrowseForFolder(prompt);
}

int MsgBox(const std::string& text, int style, const std::string& caption) {
  return UI().MessageBox(text, style, caption);
}

}  // namespace pairwell
