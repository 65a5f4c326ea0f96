#include "ui/run/super_msg_box.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStringList>
#include <algorithm>
#include <cmath>

#include "util/user_interface.h"

namespace pairwell {

SuperMsgBox::SuperMsgBox(QWidget* parent)
    : QDialog(parent), text_(new QLabel(this)) {
  setObjectName(QStringLiteral("SuperMsgBox"));
  setWindowTitle(QStringLiteral("Message Box"));
  // A fixed box: no resize grip, no help button in the title bar.
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  setSizeGripEnabled(false);
  text_->setObjectName(QStringLiteral("Text"));
  // Messages carry file names and paths: show them as they are, never as
  // markup or with "&" taken for an access key.
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  text_->setTextInteractionFlags(Qt::NoTextInteraction);
  EnsureButton(1);
}

SuperMsgBox::~SuperMsgBox() = default;

int SuperMsgBox::Ask(QWidget* parent, const QString& text,
                     const QString& buttons, int style, const QString& caption,
                     int cancel_button) {
  SuperMsgBox box(parent);
  return box.Exec(text, buttons, style, caption, cancel_button);
}

void SuperMsgBox::SetButtonSize(int width, int height) {
  button_width_ = std::max(0, width);
  button_height_ = std::max(0, height);
}

QPushButton* SuperMsgBox::EnsureButton(int i) {
  while (static_cast<int>(buttons_.size()) < i) {
    const int number = static_cast<int>(buttons_.size()) + 1;
    auto* button = new QPushButton(this);
    button->setObjectName(QStringLiteral("Button%1").arg(number));
    // Keys go to the box first, whichever button has the focus.
    button->installEventFilter(this);
    connect(button, &QPushButton::clicked, this,
            [this, number] { ButtonClicked(number); });
    buttons_.push_back(button);
  }
  return buttons_[static_cast<std::size_t>(i - 1)];
}

int SuperMsgBox::Exec(const QString& text, const QString& buttons, int style,
                      const QString& caption, int cancel_button) {
  dpi_ = screen() != nullptr ? screen()->logicalDotsPerInch() : 96.0;
  if (dpi_ <= 0) dpi_ = 96.0;

  default_button_ = ((style & kDefaultButtonMask) >> 8) + 1;
  const QStringList pieces = buttons.split(QLatin1Char('|'));
  button_count_ = static_cast<int>(pieces.size());
  // A style that names a button beyond the row would leave the box without
  // a default, and the close box would answer a button that is not there.
  if (default_button_ > button_count_) default_button_ = 1;
  cancel_button_ = cancel_button;

  for (int i = 1; i <= button_count_; ++i) {
    QPushButton* button = EnsureButton(i);
    button->setVisible(true);
    button->setDefault(i == default_button_);
    button->setText(pieces[i - 1]);
  }
  // Buttons left over from a longer row of an earlier call take no part.
  for (int i = button_count_ + 1; i <= static_cast<int>(buttons_.size()); ++i) {
    buttons_[static_cast<std::size_t>(i - 1)]->setVisible(false);
    buttons_[static_cast<std::size_t>(i - 1)]->setDefault(false);
  }

  setWindowTitle(caption.isEmpty() ? QString::fromUtf8(kAppTitle) : caption);
  text_->setText(text);
  SetupPositioning();
  CenterWindow();

  buttons_[static_cast<std::size_t>(default_button_ - 1)]->setFocus();
  result_ = default_button_;
  exec();
  return result_;
}

void SuperMsgBox::ButtonClicked(int number) {
  result_ = number;
  done(number);
}

void SuperMsgBox::reject() {
  result_ = default_button_;
  QDialog::reject();
}

void SuperMsgBox::keyPressEvent(QKeyEvent* event) {
  if (PreviewKey(event)) {
    event->accept();
    return;
  }
  QDialog::keyPressEvent(event);
}

bool SuperMsgBox::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress &&
      PreviewKey(static_cast<QKeyEvent*>(event))) {
    return true;
  }
  return QDialog::eventFilter(watched, event);
}

bool SuperMsgBox::PreviewKey(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    // Without a cancel button Escape does nothing: the box must not close
    // with an answer the caller did not offer for it.
    if (cancel_button_ >= 1 && cancel_button_ <= button_count_) {
      buttons_[static_cast<std::size_t>(cancel_button_ - 1)]->click();
    }
    return true;
  }
  const QString typed = event->text();
  if (typed.size() != 1) return false;
  const QChar key = typed.at(0).toUpper();
  if (key == QLatin1Char('&')) return true;
  if (!key.isPrint()) return false;
  for (int i = 1; i <= button_count_; ++i) {
    QPushButton* button = buttons_[static_cast<std::size_t>(i - 1)];
    if (!button->isEnabled()) continue;
    const QString caption = button->text();
    const qsizetype amp = caption.indexOf(QLatin1Char('&'));
    if (amp < 0 || amp + 1 >= caption.size()) continue;
    if (caption.at(amp + 1).toUpper() == key) {
      button->click();
      return true;
    }
  }
  return false;
}

void SuperMsgBox::SetupPositioning() {
  const int bw = button_width_ != 0 ? button_width_ : kDefaultButtonWidth;
  const int bh = button_height_ != 0 ? button_height_ : kDefaultButtonHeight;
  const int row = (bw + kMargin) * button_count_ - kMargin;
  const int narrow = std::min(row, kMaxTextWidth);

  // A text that wraps into many more lines at the row's width than at the
  // widest gets a label closer to the widest; a short one keeps the row's
  // width, so the box is no wider than it needs to be.
  const int wide_height = text_->heightForWidth(ToPixels(kMaxTextWidth));
  const int narrow_height = text_->heightForWidth(ToPixels(narrow));
  const double r = narrow_height > 0
                       ? static_cast<double>(wide_height) / narrow_height
                       : 1.0;
  const int w =
      static_cast<int>(std::lround(narrow * r + (1.0 - r) * kMaxTextWidth));

  const int text_height_px = std::max(0, text_->heightForWidth(ToPixels(w)));
  text_->setGeometry(ToPixels(kMargin), ToPixels(kMargin), ToPixels(w),
                     text_height_px);
  const int text_height = ToTwips(text_height_px);

  const int first_left = (w - narrow + 2 * kMargin) / 2;
  const int top = text_height + 3 * kMargin;
  for (int i = 1; i <= button_count_; ++i) {
    const int left = first_left + (i - 1) * (bw + kMargin);
    buttons_[static_cast<std::size_t>(i - 1)]->setGeometry(
        ToPixels(left), ToPixels(top), ToPixels(bw), ToPixels(bh));
  }
  setFixedSize(ToPixels(w + 2 * kMargin), ToPixels(top + bh + kMargin));
}

void SuperMsgBox::CenterWindow() {
  const QScreen* where = screen();
  if (where == nullptr) return;
  const QRect area = where->geometry();
  // Before the first show the frame is not known yet and equals the inside.
  const QSize outer = frameGeometry().size().expandedTo(size());
  move(area.x() + (area.width() - outer.width()) / 2,
       area.y() + (area.height() - outer.height()) / 2);
}

int SuperMsgBox::ToPixels(int twips) const {
  return static_cast<int>(std::lround(twips * dpi_ / 1440.0));
}

int SuperMsgBox::ToTwips(int pixels) const {
  return static_cast<int>(std::lround(pixels * 1440.0 / dpi_));
}

}  // namespace pairwell
