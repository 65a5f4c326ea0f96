#include "ui/modal_driver.h"

#include <QApplication>
#include <QDialog>
#include <QWidget>
#include <utility>

namespace pairwell {

ModalDriver::ModalDriver(std::function<void(QWidget&)> act,
                         const QWidget* wanted)
    : act_(std::move(act)), wanted_(wanted) {
  poll_.setInterval(20);
  QObject::connect(&poll_, &QTimer::timeout, [this] { Poll(); });
  watchdog_.setSingleShot(true);
  QObject::connect(&watchdog_, &QTimer::timeout, [] {
    while (QWidget* modal = QApplication::activeModalWidget()) modal->close();
  });
  poll_.start();
  watchdog_.start(15000);
}

void ModalDriver::Poll() {
  QWidget* modal = QApplication::activeModalWidget();
  if (modal == nullptr || (wanted_ != nullptr && modal != wanted_)) return;
  poll_.stop();
  acted_ = true;
  dialog_name_ = modal->objectName();
  act_(*modal);
  left_open_ = modal->isVisible();
  if (!left_open_) return;
  if (auto* dialog = qobject_cast<QDialog*>(modal)) {
    dialog->reject();
  } else {
    modal->close();
  }
}

}  // namespace pairwell
