// Acting on a modal dialog from inside its own event loop, for window tests.
#ifndef PAIRWELL_TESTS_UI_MODAL_DRIVER_H_
#define PAIRWELL_TESTS_UI_MODAL_DRIVER_H_

#include <QString>
#include <QTimer>
#include <functional>

class QWidget;

namespace pairwell {

// Runs `act` once, as soon as the wanted window (any modal window when none
// is given) is the active modal window. A dialog that `act` leaves open is
// rejected, and a watchdog closes every modal window after 15 s, so a
// failed check cannot hang the test. Make the driver before the call that
// shows the dialog.
class ModalDriver {
 public:
  explicit ModalDriver(std::function<void(QWidget&)> act,
                       const QWidget* wanted = nullptr);
  ModalDriver(const ModalDriver&) = delete;
  ModalDriver& operator=(const ModalDriver&) = delete;

  // Whether `act` ran, on which window, and whether that window was still
  // open after it.
  bool acted() const { return acted_; }
  const QString& dialog_name() const { return dialog_name_; }
  bool left_open() const { return left_open_; }

 private:
  void Poll();

  std::function<void(QWidget&)> act_;
  const QWidget* wanted_;
  QTimer poll_;
  QTimer watchdog_;
  bool acted_ = false;
  bool left_open_ = false;
  QString dialog_name_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_UI_MODAL_DRIVER_H_
