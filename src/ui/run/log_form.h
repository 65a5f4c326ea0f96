// The window shown while a set is synchronized: status line, stop button,
// progress bar and the run's log.
//
// The window never drives the run. A 50 ms timer reads the run flags and the
// current set and refreshes the status line, the button caption and the
// progress bar; the window's only influence on the run is the current set's
// StopFlag. The bar shows while a set performs its actions and stays, as
// they ended, once the run is over.
#ifndef PAIRWELL_UI_RUN_LOG_FORM_H_
#define PAIRWELL_UI_RUN_LOG_FORM_H_

#include <QString>
#include <QWidget>
#include <memory>

#include "engine/transfer_rate.h"

class QCloseEvent;
class QEvent;
class QHBoxLayout;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QResizeEvent;
class QTimer;
class QVBoxLayout;

namespace pairwell {

class LogEchoTarget;
struct SyncProgress;
class Program;
class Synchronizer;

class LogForm final : public QWidget {
  Q_OBJECT

 public:
  // Reads the run flags and the current set of the program (not owned).
  // The window deletes itself once closed.
  explicit LogForm(Program& program, QWidget* parent = nullptr);
  ~LogForm() override;

  // The run's status text, as ManageUI last handed it on; the window's
  // timer shows it.
  void SetStatus(const QString& text);
  // The log box, as the log's echo target. It is detached from the
  // program's log when the window closes.
  LogEchoTarget* Echo();
  // Closes the window without a question (a close made by the program).
  void Unload();

 protected:
  bool event(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  class LogTextEcho;

  void OnTimer();
  void OnCloseClicked();

  // Asks whether to stop a run that is performing actions; true for Yes.
  bool ConfirmStop() const;
  // Sets the current set's StopFlag.
  void RequestStop();
  // The current set's StopFlag; between runs, the last set's as last seen.
  bool StopRequested() const;
  // A close that passes without the stop handshake.
  void CloseQuietly();
  void DetachEcho();
  void RefreshProgress();
  // The bar over the bytes to copy; false when there are none.
  bool ShowBytes(const SyncProgress& progress);
  // The bar over the files of the list, as far as the actions have come.
  void ShowFiles(const Synchronizer& set, const SyncProgress& progress);
  // No actions are performed: scanning, confirming, undoing.
  void HideProgress();
  void ShowRate(const SyncProgress& progress);
  void ShowFileProgress(const SyncProgress& progress);
  // Stretches the log box to the right and bottom edges; a dimension that
  // would not be positive keeps its last value.
  void PlaceLogText();

  Program& program_;
  QTimer* timer_ = nullptr;
  QVBoxLayout* layout_ = nullptr;
  QHBoxLayout* top_row_ = nullptr;
  QPushButton* close_btn_ = nullptr;
  QLabel* status_txt_ = nullptr;
  QProgressBar* progress_bar_ = nullptr;
  // Copies done of those to do, the speed and the time left.
  QLabel* rate_txt_ = nullptr;
  // The file at hand's own copy, while it is a large one.
  QProgressBar* file_progress_bar_ = nullptr;
  QPlainTextEdit* log_text_ = nullptr;
  TransferRate rate_;
  std::unique_ptr<LogTextEcho> echo_;

  // Set by the button once the person stopped the run (its caption becomes
  // "Close"), or by a close from the close box.
  bool finished_ = false;
  // The status text the timer shows while the run goes on.
  QString status_;
  // The set the timer saw last (compared only, never dereferenced) and its
  // StopFlag then, so the final message survives the end of the run.
  const Synchronizer* seen_set_ = nullptr;
  bool seen_stop_ = false;
  // True while the window closes itself: no question, nothing changes.
  bool closing_quietly_ = false;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_LOG_FORM_H_
