#include "ui/qt_front_end.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QString>
#include <vector>

#include "app/program.h"
#include "engine/synchronizer.h"
#include "ui/editor/sync_form.h"
#include "ui/run/confirm_form.h"
#include "ui/run/log_form.h"

namespace pairwell {

namespace {

struct ButtonAnswer {
  QMessageBox::StandardButton button;
  int answer;
};

// The buttons of a message box style, in the order they are shown.
std::vector<ButtonAnswer> ButtonsOf(int style) {
  using B = QMessageBox;
  switch (style & kMbButtonsMask) {
    case kMbOkCancel:
      return {{B::Ok, kIdOk}, {B::Cancel, kIdCancel}};
    case kMbAbortRetryIgnore:
      return {{B::Abort, kIdAbort}, {B::Retry, kIdRetry}, {B::Ignore, kIdIgnore}};
    case kMbYesNoCancel:
      return {{B::Yes, kIdYes}, {B::No, kIdNo}, {B::Cancel, kIdCancel}};
    case kMbYesNo:
      return {{B::Yes, kIdYes}, {B::No, kIdNo}};
    case kMbRetryCancel:
      return {{B::Retry, kIdRetry}, {B::Cancel, kIdCancel}};
    default:
      return {{B::Ok, kIdOk}};
  }
}

QMessageBox::Icon IconOf(int style) {
  switch (style & kMbIconMask) {
    case kMbCritical:
      return QMessageBox::Critical;
    case kMbQuestion:
      return QMessageBox::Question;
    case kMbExclamation:
      return QMessageBox::Warning;
    case kMbInformation:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

}  // namespace

QtFrontEnd::~QtFrontEnd() { delete log_form_; }

LogForm* QtFrontEnd::ProgressWindow() const { return log_form_; }

QWidget* QtFrontEnd::DialogParent() const {
  return main_window_;
}

int QtFrontEnd::MessageBox(const std::string& text, int style,
                           const std::string& caption) {
  QMessageBox box(IconOf(style), QString::fromStdString(caption),
                  QString::fromStdString(text), QMessageBox::NoButton,
                  DialogParent());
  const std::vector<ButtonAnswer> buttons = ButtonsOf(style);
  const int default_answer = DefaultAnswer(style);
  for (const ButtonAnswer& b : buttons) {
    QPushButton* button = box.addButton(b.button);
    if (b.answer == default_answer) box.setDefaultButton(button);
  }
  const auto pressed = static_cast<QMessageBox::StandardButton>(box.exec());
  for (const ButtonAnswer& b : buttons) {
    if (b.button == pressed) return b.answer;
  }
  // Closed without a button (only boxes with an escape button allow it).
  return buttons.size() == 1 ? buttons[0].answer : kIdCancel;
}

void QtFrontEnd::DoEvents() { QCoreApplication::processEvents(); }

void QtFrontEnd::ShowStatus(const std::string& text) {
  if (log_form_) log_form_->SetStatus(QString::fromStdString(text));
}

void QtFrontEnd::ShowProgress(const std::string& caption) {
  if (!log_form_) log_form_ = new LogForm(*program_);
  log_form_->setWindowTitle(QString::fromStdString(caption));
  log_form_->show();
  log_form_->raise();
}

void QtFrontEnd::HideProgress() {
  if (log_form_) log_form_->Unload();
}

void QtFrontEnd::EnableMainWindow(bool enable) {
  if (main_window_ != nullptr) main_window_->EnableAll(enable);
}

LogEchoTarget* QtFrontEnd::LogEcho() {
  return log_form_ ? log_form_->Echo() : nullptr;
}

Confirmation QtFrontEnd::ConfirmActions(Synchronizer& set) {
  ConfirmForm form(*program_, set, DialogParent());
  return form.Run();
}

std::string QtFrontEnd::BrowseForFolder(const std::string& prompt) {
  return QFileDialog::getExistingDirectory(DialogParent(),
                                           QString::fromStdString(prompt))
      .toStdString();
}

}  // namespace pairwell
