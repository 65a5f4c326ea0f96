// The desktop program's front end: the core's messages, event pump and
// status reach the person through Qt widgets, and a run shows the progress
// window and the confirm window.
#ifndef PAIRWELL_UI_QT_FRONT_END_H_
#define PAIRWELL_UI_QT_FRONT_END_H_

#include <QPointer>
#include <string>

#include "app/front_end.h"

class QWidget;

namespace pairwell {

class LogForm;
class Program;
class SyncForm;

// Not final: the window tests derive from it to answer message boxes and
// the folder picker from a script.
class QtFrontEnd : public FrontEnd {
 public:
  QtFrontEnd() = default;
  ~QtFrontEnd() override;
  QtFrontEnd(const QtFrontEnd&) = delete;
  QtFrontEnd& operator=(const QtFrontEnd&) = delete;

  // The program whose run the windows show (not owned; set once, before
  // any run).
  void SetProgram(Program* program) { program_ = program; }
  // The main window that a run disables (not owned; may be null).
  void SetMainWindow(SyncForm* form) { main_window_ = form; }

  // A QMessageBox with the style's buttons, icon and default button.
  int MessageBox(const std::string& text, int style,
                 const std::string& caption) override;
  void DoEvents() override;
  void ShowStatus(const std::string& text) override;
  void ShowProgress(const std::string& caption) override;
  void HideProgress() override;
  void EnableMainWindow(bool enable) override;
  LogEchoTarget* LogEcho() override;
  Confirmation ConfirmActions(Synchronizer& set) override;
  std::string BrowseForFolder(const std::string& prompt) override;

  // The progress window of the last run; null before the first run and
  // after it was closed.
  LogForm* ProgressWindow() const;

 protected:
  // The window that owns dialogs: the main window when there is one.
  QWidget* DialogParent() const;

 private:
  Program* program_ = nullptr;
  SyncForm* main_window_ = nullptr;
  QPointer<LogForm> log_form_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_QT_FRONT_END_H_
