// How the lower layers reach the person: message boxes, the event pump, the
// status text and the folder picker. The run's own windows (progress, log
// echo, confirm window) are added by the application layer's FrontEnd, which
// every front end implements: the GUI with widgets, the CLI with the
// console, the tests with a recorder.
#ifndef PAIRWELL_UTIL_USER_INTERFACE_H_
#define PAIRWELL_UTIL_USER_INTERFACE_H_

#include <cstddef>
#include <string>

namespace pairwell {

// The application title: the caption of message boxes and the base name of
// the configuration file.
constexpr char kAppTitle[] = "Pairwell";

// Message box styles: the buttons in the low bits, plus an icon and a
// default button.
constexpr int kMbOkOnly = 0;
constexpr int kMbOkCancel = 1;
constexpr int kMbAbortRetryIgnore = 2;
constexpr int kMbYesNoCancel = 3;
constexpr int kMbYesNo = 4;
constexpr int kMbRetryCancel = 5;
constexpr int kMbButtonsMask = 15;
constexpr int kMbCritical = 16;
constexpr int kMbQuestion = 32;
constexpr int kMbExclamation = 48;
constexpr int kMbInformation = 64;
constexpr int kMbIconMask = 112;
constexpr int kMbDefaultButton2 = 256;
constexpr int kMbDefaultButton3 = 512;

// Answer codes of a message box.
constexpr int kIdOk = 1;
constexpr int kIdCancel = 2;
constexpr int kIdAbort = 3;
constexpr int kIdRetry = 4;
constexpr int kIdIgnore = 5;
constexpr int kIdYes = 6;
constexpr int kIdNo = 7;

// The answer given by the style's default button (the first button unless
// 256 or 512 names the second or third).
int DefaultAnswer(int style);

// A multi-line text that the log echoes to (the progress window's log box).
class LogEchoTarget {
 public:
  virtual ~LogEchoTarget() = default;
  // Number of characters the target holds now.
  virtual std::size_t TextLength() const = 0;
  // Appends the text at the end and scrolls there.
  virtual void AppendText(const std::string& text) = 0;
  virtual void ClearText() = 0;
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // Shows a message and waits for the answer; returns one of the kId codes.
  virtual int MessageBox(const std::string& text, int style,
                         const std::string& caption) = 0;
  // Lets pending window events run (a no-op where there are none).
  virtual void DoEvents() = 0;
  // Shows the status text of a running synchronization.
  virtual void ShowStatus(const std::string& text) = 0;
  // The system's folder picker; "" when the person cancelled.
  virtual std::string BrowseForFolder(const std::string& prompt) = 0;
};

// Installs the interface the core talks to (not owned; null removes it).
// Returns the one installed before, for the installer to put back.
UserInterface* SetUserInterface(UserInterface* ui);

// Installs an interface for its own lifetime and then puts back the one
// that was installed before.
class ScopedUserInterface {
 public:
  explicit ScopedUserInterface(UserInterface* ui)
      : previous_(SetUserInterface(ui)) {}
  ~ScopedUserInterface() { SetUserInterface(previous_); }
  ScopedUserInterface(const ScopedUserInterface&) = delete;
  ScopedUserInterface& operator=(const ScopedUserInterface&) = delete;

 private:
  UserInterface* previous_;
};

// The installed interface. Throws std::logic_error when none is installed:
// a front end that forgets to install one would otherwise lose messages.
UserInterface& UI();

// Asks the person for a folder through the installed interface; "" when
// cancelled.
std::string BrowseForFolder(const std::string& prompt);

// Shows a message box through the installed interface, with the application
// title as caption unless another is given.
int MsgBox(const std::string& text, int style = kMbOkOnly,
           const std::string& caption = kAppTitle);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_USER_INTERFACE_H_
