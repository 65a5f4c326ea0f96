// The person-facing interface a front end implements: the lower layers'
// messages, event pump and status, plus the windows of a run (progress, log
// echo, main window, confirm window). The GUI implements it with widgets,
// the CLI with the console, the tests with a recorder.
#ifndef PAIRWELL_APP_FRONT_END_H_
#define PAIRWELL_APP_FRONT_END_H_

#include <string>

#include "util/user_interface.h"

namespace pairwell {

class Synchronizer;

// What the confirm step decided about a set's actions.
enum class Confirmation {
  kContinue,  // perform the actions as they stand now
  kCancel,    // the person cancelled the run
  kRefused,   // nobody was there to confirm (an unattended run)
};

class FrontEnd : public UserInterface {
 public:
  // Shows the progress window of a run with that caption, and hides it.
  virtual void ShowProgress(const std::string& caption) = 0;
  virtual void HideProgress() = 0;
  // Turns the main window's controls off while a run goes on, and back on.
  virtual void EnableMainWindow(bool enable) = 0;
  // Where the log echoes its lines; null when nothing shows them.
  virtual LogEchoTarget* LogEcho() = 0;
  // Lets the person review and refine the set's actions.
  virtual Confirmation ConfirmActions(Synchronizer& set) = 0;
};

}  // namespace pairwell

#endif  // PAIRWELL_APP_FRONT_END_H_
