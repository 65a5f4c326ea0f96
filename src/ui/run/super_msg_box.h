// A modal message window whose buttons the caller names: a text and a row
// of buttons with the caller's captions; it answers the number of the
// button pressed.
#ifndef PAIRWELL_UI_RUN_SUPER_MSG_BOX_H_
#define PAIRWELL_UI_RUN_SUPER_MSG_BOX_H_

#include <QDialog>
#include <QString>
#include <vector>

class QEvent;
class QKeyEvent;
class QLabel;
class QPushButton;

namespace pairwell {

class SuperMsgBox final : public QDialog {
  Q_OBJECT

 public:
  // Lengths are in twips: 1440 to the inch, 15 to a pixel at 96 dpi.
  static constexpr int kDefaultButtonWidth = 1095;
  static constexpr int kDefaultButtonHeight = 375;
  static constexpr int kMargin = 120;  // around the text, between buttons
  static constexpr int kMaxTextWidth = 9240;  // the widest the text gets
  // Style bits 8-9 choose the default button: 0 first ... 768 fourth.
  static constexpr int kDefaultButtonMask = 768;

  explicit SuperMsgBox(QWidget* parent = nullptr);
  ~SuperMsgBox() override;
  Q_DISABLE_COPY_MOVE(SuperMsgBox)

  // Shows text above the buttons named by `buttons` (captions separated by
  // "|", left to right; "&" marks an access key) and waits. The style's
  // bits 8-9 choose the default button (0, 256, 512, 768: button 1 to 4),
  // an empty caption gives the application title, and Escape presses button
  // number `cancel_button` (none when it names no button). Returns the
  // 1-based number of the button pressed; closing the window any other way
  // answers the default button.
  int Exec(const QString& text, const QString& buttons, int style = 0,
           const QString& caption = QString(), int cancel_button = 0);

  // The same with a box of its own, owned by parent.
  static int Ask(QWidget* parent, const QString& text, const QString& buttons,
                 int style = 0, const QString& caption = QString(),
                 int cancel_button = 0);

  // The buttons' size in twips; 0 takes the default (1095 wide, 375 high).
  // Applies from the next Exec on.
  void SetButtonSize(int width, int height);
  int ButtonWidth() const { return button_width_; }
  int ButtonHeight() const { return button_height_; }

  // The state of the last (or running) Exec.
  int ButtonCount() const { return button_count_; }
  int DefaultButton() const { return default_button_; }
  int Result() const { return result_; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  // Every close the program does not make itself (the close box, the
  // system) ends here.
  void reject() override;

 private:
  // Button number i (1-based), created when the row is not that long yet.
  QPushButton* EnsureButton(int i);
  void ButtonClicked(int number);
  // Handles a key before the control with the focus sees it; true when
  // the key was used (or is to be ignored).
  bool PreviewKey(QKeyEvent* event);
  // Places the text and the buttons and sizes the window around them.
  void SetupPositioning();
  // Puts the window in the middle of its screen, by its outer size.
  void CenterWindow();
  int ToPixels(int twips) const;
  int ToTwips(int pixels) const;

  QLabel* text_;
  std::vector<QPushButton*> buttons_;  // buttons_[i - 1] is button i
  int button_width_ = 0;
  int button_height_ = 0;
  int button_count_ = 0;
  int default_button_ = 1;
  int cancel_button_ = 0;
  int result_ = 0;
  double dpi_ = 96.0;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_SUPER_MSG_BOX_H_
