// The message box with the caller's buttons, driven through its real
// widgets while it runs modally.
#include "ui/run/super_msg_box.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <functional>

using pairwell::SuperMsgBox;

namespace {

// What one Exec did.
struct Outcome {
  int answer = 0;
  // The action left the box open; the test closed it so as not to hang.
  bool left_open = false;
};

struct Request {
  QString text = QStringLiteral("Proceed?");
  QString buttons = QStringLiteral("OK");
  int style = 0;
  QString caption;
  int cancel_button = 0;
};

// Runs Exec on box and applies act to the open box. A box still open after
// act is closed by the program (which keeps the default as the answer).
Outcome Run(SuperMsgBox& box, const Request& request,
            const std::function<void(SuperMsgBox&)>& act) {
  Outcome outcome;
  QTimer::singleShot(0, &box, [&] {
    act(box);
    if (box.isVisible()) {
      outcome.left_open = true;
      box.done(0);
    }
  });
  outcome.answer = box.Exec(request.text, request.buttons, request.style,
                            request.caption, request.cancel_button);
  return outcome;
}

QPushButton* Button(SuperMsgBox& box, int i) {
  return box.findChild<QPushButton*>(QStringLiteral("Button%1").arg(i));
}

QLabel* TextLabel(SuperMsgBox& box) {
  return box.findChild<QLabel*>(QStringLiteral("Text"));
}

// The widget that takes the keys the person types: the one with the focus.
QWidget* KeyTarget(SuperMsgBox& box) {
  return box.focusWidget() != nullptr ? box.focusWidget() : &box;
}

double Dpi(const QWidget& widget) {
  return widget.screen()->logicalDotsPerInch();
}

int Px(int twips, double dpi) {
  return static_cast<int>(std::lround(twips * dpi / 1440.0));
}

int Twips(int px, double dpi) {
  return static_cast<int>(std::lround(px * 1440.0 / dpi));
}

// The placement the box must have, worked out from its label's measure.
struct Layout {
  int w = 0;           // label width, twips
  int narrow = 0;      // min(row, 9240), twips
  int text_px = 0;     // label height, pixels
  int first_left = 0;  // twips
  int top = 0;         // twips
};

Layout Expected(SuperMsgBox& box, int count, int bw) {
  const double dpi = Dpi(box);
  QLabel* text = TextLabel(box);
  Layout l;
  const int row = (bw + 120) * count - 120;
  l.narrow = std::min(row, 9240);
  const int wide_height = text->heightForWidth(Px(9240, dpi));
  const int narrow_height = text->heightForWidth(Px(l.narrow, dpi));
  const double r = narrow_height > 0
                       ? static_cast<double>(wide_height) / narrow_height
                       : 1.0;
  l.w = static_cast<int>(std::lround(l.narrow * r + (1 - r) * 9240));
  l.text_px = text->heightForWidth(Px(l.w, dpi));
  l.first_left = (l.w - l.narrow + 240) / 2;
  l.top = Twips(l.text_px, dpi) + 360;
  return l;
}

}  // namespace

class SuperMsgBoxTest : public QObject {
  Q_OBJECT

 private slots:
  void DesignCaptionAndControls();
  void OneButtonWithoutBar();
  void EmptyPiecesStillMakeButtons();
  void ShowsTextAndCaptionsAsGiven();
  void EmptyCaptionGivesTheApplicationTitle();
  void ClickAnswersTheButtonNumber();
  void FourButtonRowLayout();
  void LongTextWidensTheLabel();
  void RowWiderThanTheTextLimit();
  void CallerButtonSize();
  void DefaultButtonFromStyle_data();
  void DefaultButtonFromStyle();
  void DefaultBeyondTheRowFallsBackToTheFirst();
  void EnterPressesTheDefaultButton();
  void EscapePressesTheCancelButton();
  void EscapeWithoutCancelButtonKeepsTheBoxOpen();
  void CloseBoxAnswersTheDefaultNotTheCancelButton();
  void LowerCaseLetterPressesItsAccessKey();
  void UpperCaseLetterPressesItsAccessKey();
  void AccessKeyWorksWhateverHasTheFocus();
  void TypedAmpersandIsIgnored();
  void LetterWithoutAccessKeyDoesNothing();
  void DisabledButtonIsSkipped();
  void FirstMatchingButtonWins();
  void AccessKeyNeedsACharacterAfterTheAmpersand();
  void FewerButtonsThanLastTimeHidesTheRest();
  void AskRunsABoxOfItsOwn();
};

void SuperMsgBoxTest::DesignCaptionAndControls() {
  SuperMsgBox box;
  QCOMPARE(box.windowTitle(), QStringLiteral("Message Box"));
  QVERIFY(TextLabel(box) != nullptr);
  QVERIFY(TextLabel(box)->wordWrap());
  QVERIFY(Button(box, 1) != nullptr);
  QVERIFY(Button(box, 2) == nullptr);
  QCOMPARE(box.ButtonWidth(), 0);
  QCOMPARE(box.ButtonHeight(), 0);
}

void SuperMsgBoxTest::OneButtonWithoutBar() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("Understood");
  bool only_one = false;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    only_one = b.ButtonCount() == 1 && Button(b, 2) == nullptr &&
               Button(b, 1)->isVisible() &&
               Button(b, 1)->text() == QStringLiteral("Understood");
    QTest::mouseClick(Button(b, 1), Qt::LeftButton);
  });
  QVERIFY(only_one);
  QVERIFY(!outcome.left_open);
  QCOMPARE(outcome.answer, 1);
}

void SuperMsgBoxTest::EmptyPiecesStillMakeButtons() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("A||C");
  QStringList captions;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    for (int i = 1; i <= b.ButtonCount(); ++i) captions << Button(b, i)->text();
    QTest::mouseClick(Button(b, 2), Qt::LeftButton);
  });
  QCOMPARE(captions,
           (QStringList{QStringLiteral("A"), QString(), QStringLiteral("C")}));
  QCOMPARE(outcome.answer, 2);
}

void SuperMsgBoxTest::ShowsTextAndCaptionsAsGiven() {
  SuperMsgBox box;
  Request request;
  request.text = QStringLiteral("Copy <b>a & b</b>?");
  request.buttons = QStringLiteral("&Copy|Copy &all|&Skip");
  request.caption = QStringLiteral("Copying");
  QString text;
  QString title;
  QStringList captions;
  bool plain = false;
  Run(box, request, [&](SuperMsgBox& b) {
    text = TextLabel(b)->text();
    plain = TextLabel(b)->textFormat() == Qt::PlainText;
    title = b.windowTitle();
    for (int i = 1; i <= b.ButtonCount(); ++i) captions << Button(b, i)->text();
  });
  QCOMPARE(text, request.text);
  QVERIFY(plain);
  QCOMPARE(title, QStringLiteral("Copying"));
  QCOMPARE(captions, request.buttons.split(QLatin1Char('|')));
}

void SuperMsgBoxTest::EmptyCaptionGivesTheApplicationTitle() {
  SuperMsgBox box;
  QString title;
  Run(box, Request{}, [&](SuperMsgBox& b) { title = b.windowTitle(); });
  QCOMPARE(title, QStringLiteral("Pairwell"));
}

void SuperMsgBoxTest::ClickAnswersTheButtonNumber() {
  for (int pressed = 1; pressed <= 3; ++pressed) {
    SuperMsgBox box;
    Request request;
    request.buttons = QStringLiteral("One|Two|Three");
    const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
      QTest::mouseClick(Button(b, pressed), Qt::LeftButton);
    });
    QVERIFY(!outcome.left_open);
    QCOMPARE(outcome.answer, pressed);
    QCOMPARE(box.Result(), pressed);
  }
}

void SuperMsgBoxTest::FourButtonRowLayout() {
  SuperMsgBox box;
  Request request;
  request.text = QStringLiteral("Hi");
  request.buttons = QStringLiteral("One|Two|Three|Four");
  QRect text;
  QList<QRect> buttons;
  QSize inner;
  Layout expected;
  double dpi = 0;
  Run(box, request, [&](SuperMsgBox& b) {
    dpi = Dpi(b);
    expected = Expected(b, 4, 1095);
    text = TextLabel(b)->geometry();
    for (int i = 1; i <= 4; ++i) buttons << Button(b, i)->geometry();
    inner = b.size();
  });
  QVERIFY(dpi > 0);
  // 4 × 1215 − 120 twips of buttons; a one-line text keeps that width.
  QCOMPARE(expected.narrow, 4740);
  QCOMPARE(expected.w, 4740);
  const int row_px = buttons[3].x() + buttons[3].width() - buttons[0].x();
  QVERIFY(std::abs(Twips(row_px, dpi) - 4740) <= 2 * 1440 / dpi);
  QCOMPARE(text,
           QRect(Px(120, dpi), Px(120, dpi), Px(4740, dpi), expected.text_px));
  QVERIFY(expected.text_px > 0);
  const int top = Twips(text.height(), dpi) + 360;
  for (int i = 1; i <= 4; ++i) {
    // First button at (4740 − 4740 + 240) / 2 = 120, then 1215 apart.
    QCOMPARE(buttons[i - 1], QRect(Px(120 + (i - 1) * 1215, dpi), Px(top, dpi),
                                   Px(1095, dpi), Px(375, dpi)));
  }
  QCOMPARE(inner, QSize(Px(4740 + 240, dpi), Px(top + 375 + 120, dpi)));
}

void SuperMsgBoxTest::LongTextWidensTheLabel() {
  SuperMsgBox box;
  Request request;
  request.text = QStringLiteral(
      "The folder holds files that changed in more than one place since the "
      "last synchronization. Pairwell cannot tell which copy you want to "
      "keep, so it asks you now. Choose the copy to keep, or leave the files "
      "alone and decide later in the confirm window, where every file can be "
      "looked at on its own.");
  request.buttons = QStringLiteral("OK");
  Layout expected;
  QRect text;
  QRect b1;
  QSize inner;
  int wide_lines_px = 0;
  int narrow_lines_px = 0;
  double dpi = 0;
  Run(box, request, [&](SuperMsgBox& b) {
    dpi = Dpi(b);
    expected = Expected(b, 1, 1095);
    wide_lines_px = TextLabel(b)->heightForWidth(Px(9240, dpi));
    narrow_lines_px = TextLabel(b)->heightForWidth(Px(1095, dpi));
    text = TextLabel(b)->geometry();
    b1 = Button(b, 1)->geometry();
    inner = b.size();
  });
  // The text wraps into more lines at one button's width than at the
  // widest, so the label is wider than the button row but within 9240.
  QVERIFY(narrow_lines_px > wide_lines_px);
  QCOMPARE(expected.narrow, 1095);
  QVERIFY(expected.w > 1095);
  QVERIFY(expected.w < 9240);
  QCOMPARE(text.width(), Px(expected.w, dpi));
  QCOMPARE(text.height(), expected.text_px);
  QCOMPARE(b1.x(), Px((expected.w - 1095 + 240) / 2, dpi));
  QCOMPARE(b1.y(), Px(Twips(text.height(), dpi) + 360, dpi));
  QCOMPARE(inner.width(), Px(expected.w + 240, dpi));
  QCOMPARE(inner.height(),
           Px(Twips(text.height(), dpi) + 360 + 375 + 120, dpi));
  // The label ends 240 twips above the buttons.
  QVERIFY(text.bottom() < b1.top());
}

void SuperMsgBoxTest::RowWiderThanTheTextLimit() {
  SuperMsgBox box;
  Request request;
  request.text = QStringLiteral("Pick one.");
  request.buttons = QStringLiteral("1|2|3|4|5|6|7|8|9");
  QRect text;
  QRect b1;
  QRect b2;
  QSize inner;
  double dpi = 0;
  Run(box, request, [&](SuperMsgBox& b) {
    dpi = Dpi(b);
    text = TextLabel(b)->geometry();
    b1 = Button(b, 1)->geometry();
    b2 = Button(b, 2)->geometry();
    inner = b.size();
  });
  // 9 × 1215 − 120 = 10815 is more than 9240: the text stops at 9240.
  QCOMPARE(text.width(), Px(9240, dpi));
  QCOMPARE(inner.width(), Px(9480, dpi));
  QCOMPARE(b1.x(), Px(120, dpi));
  QCOMPARE(b2.x(), Px(120 + 1215, dpi));
}

void SuperMsgBoxTest::CallerButtonSize() {
  SuperMsgBox box;
  box.SetButtonSize(1500, 450);
  QCOMPARE(box.ButtonWidth(), 1500);
  QCOMPARE(box.ButtonHeight(), 450);
  Request request;
  request.text = QStringLiteral("Hi");
  request.buttons = QStringLiteral("Left|Right");
  QRect b1;
  QRect b2;
  QRect text;
  QSize inner;
  double dpi = 0;
  Run(box, request, [&](SuperMsgBox& b) {
    dpi = Dpi(b);
    b1 = Button(b, 1)->geometry();
    b2 = Button(b, 2)->geometry();
    text = TextLabel(b)->geometry();
    inner = b.size();
  });
  // Row: 2 × 1620 − 120 = 3120.
  QCOMPARE(text.width(), Px(3120, dpi));
  QCOMPARE(b1, QRect(Px(120, dpi), b1.y(), Px(1500, dpi), Px(450, dpi)));
  QCOMPARE(b2.x(), Px(120 + 1620, dpi));
  QCOMPARE(inner.height(),
           Px(Twips(text.height(), dpi) + 360 + 450 + 120, dpi));

  // Back to 0: the defaults again.
  box.SetButtonSize(0, 0);
  Run(box, request, [&](SuperMsgBox& b) { b1 = Button(b, 1)->geometry(); });
  QCOMPARE(b1.size(), QSize(Px(1095, dpi), Px(375, dpi)));
}

void SuperMsgBoxTest::DefaultButtonFromStyle_data() {
  QTest::addColumn<int>("style");
  QTest::addColumn<int>("expected");
  QTest::newRow("0") << 0 << 1;
  QTest::newRow("256") << 256 << 2;
  QTest::newRow("512") << 512 << 3;
  QTest::newRow("768") << 768 << 4;
  // Only bits 8-9 count.
  QTest::newRow("768+icon+buttons") << (768 | 48 | 4) << 4;
  QTest::newRow("1024") << 1024 << 1;
  QTest::newRow("256+4096") << (256 | 4096) << 2;
}

void SuperMsgBoxTest::DefaultButtonFromStyle() {
  QFETCH(int, style);
  QFETCH(int, expected);
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("A|B|C|D");
  request.style = style;
  request.cancel_button = 1;
  QList<bool> defaults;
  QWidget* focused = nullptr;
  QWidget* expected_button = nullptr;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    for (int i = 1; i <= 4; ++i) defaults << Button(b, i)->isDefault();
    focused = b.focusWidget();
    expected_button = Button(b, expected);
    // The close box answers the default button.
    b.windowHandle()->close();
  });
  QVERIFY(!outcome.left_open);
  QCOMPARE(box.DefaultButton(), expected);
  for (int i = 1; i <= 4; ++i) QCOMPARE(defaults[i - 1], i == expected);
  QCOMPARE(focused, expected_button);
  QCOMPARE(outcome.answer, expected);
}

void SuperMsgBoxTest::DefaultBeyondTheRowFallsBackToTheFirst() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("Yes|No");
  request.style = 768;
  bool first_default = false;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    first_default = Button(b, 1)->isDefault();
    b.close();
  });
  QVERIFY(first_default);
  QCOMPARE(outcome.answer, 1);
}

void SuperMsgBoxTest::EnterPressesTheDefaultButton() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("Keep|Replace|Skip");
  request.style = 512;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    QTest::keyClick(KeyTarget(b), Qt::Key_Return);
  });
  QVERIFY(!outcome.left_open);
  QCOMPARE(outcome.answer, 3);
}

void SuperMsgBoxTest::EscapePressesTheCancelButton() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("Yes|No|Cancel");
  request.cancel_button = 3;
  bool cancel_clicked = false;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    QObject::connect(Button(b, 3), &QPushButton::clicked, &b,
                     [&] { cancel_clicked = true; });
    QTest::keyClick(KeyTarget(b), Qt::Key_Escape);
  });
  QVERIFY(!outcome.left_open);
  QVERIFY(cancel_clicked);
  QCOMPARE(outcome.answer, 3);

  // Escape reaches the box when no button has the focus too.
  Request second = request;
  second.cancel_button = 2;
  const Outcome again = Run(box, second, [&](SuperMsgBox& b) {
    QTest::keyClick(&b, Qt::Key_Escape);
  });
  QVERIFY(!again.left_open);
  QCOMPARE(again.answer, 2);
}

void SuperMsgBoxTest::EscapeWithoutCancelButtonKeepsTheBoxOpen() {
  for (int cancel : {0, 4, -1}) {
    SuperMsgBox box;
    Request request;
    request.buttons = QStringLiteral("Yes|No|Maybe");
    request.style = 256;
    request.cancel_button = cancel;
    const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
      QTest::keyClick(KeyTarget(b), Qt::Key_Escape);
    });
    QVERIFY2(outcome.left_open, qPrintable(QString::number(cancel)));
    QCOMPARE(outcome.answer, 2);
  }
}

void SuperMsgBoxTest::CloseBoxAnswersTheDefaultNotTheCancelButton() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("Yes|No|Cancel");
  request.style = 256;
  request.cancel_button = 3;
  const Outcome outcome =
      Run(box, request, [&](SuperMsgBox& b) { b.windowHandle()->close(); });
  QVERIFY(!outcome.left_open);
  QCOMPARE(outcome.answer, 2);
  QCOMPARE(box.Result(), 2);
}

void SuperMsgBoxTest::LowerCaseLetterPressesItsAccessKey() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("&Yes|&No|&Cancel");
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    QTest::keyClick(KeyTarget(b), 'n');
  });
  QVERIFY(!outcome.left_open);
  QCOMPARE(outcome.answer, 2);
}

void SuperMsgBoxTest::UpperCaseLetterPressesItsAccessKey() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("Copy &all|&Copy|S&kip");
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    QTest::keyClick(KeyTarget(b), 'K', Qt::ShiftModifier);
  });
  QVERIFY(!outcome.left_open);
  QCOMPARE(outcome.answer, 3);
}

void SuperMsgBoxTest::AccessKeyWorksWhateverHasTheFocus() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("&Retry|&Ignore|&Abort");
  request.style = 0;
  // Typed at the first button, and at the box itself.
  const Outcome at_button = Run(box, request, [&](SuperMsgBox& b) {
    QTest::keyClick(Button(b, 1), 'a');
  });
  QCOMPARE(at_button.answer, 3);
  const Outcome at_box =
      Run(box, request, [&](SuperMsgBox& b) { QTest::keyClick(&b, 'i'); });
  QVERIFY(!at_box.left_open);
  QCOMPARE(at_box.answer, 2);
}

void SuperMsgBoxTest::TypedAmpersandIsIgnored() {
  SuperMsgBox box;
  Request request;
  // "&&" would otherwise make "&" the access key of the second button.
  request.buttons = QStringLiteral("&Yes|&&More|&No");
  request.style = 512;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    QTest::keyClick(KeyTarget(b), '&', Qt::ShiftModifier);
    QTest::keyClick(&b, '&', Qt::ShiftModifier);
  });
  QVERIFY(outcome.left_open);
  QCOMPARE(outcome.answer, 3);
}

void SuperMsgBoxTest::LetterWithoutAccessKeyDoesNothing() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("&Yes|&No|Zebra");
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    QTest::keyClick(KeyTarget(b), 'z');
    QTest::keyClick(KeyTarget(b), 'q');
  });
  QVERIFY(outcome.left_open);
  QCOMPARE(outcome.answer, 1);
}

void SuperMsgBoxTest::DisabledButtonIsSkipped() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("&Retry|&Run|&Stop");
  request.style = 512;
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    Button(b, 1)->setEnabled(false);
    QTest::keyClick(KeyTarget(b), 'r');
  });
  QVERIFY(!outcome.left_open);
  QCOMPARE(outcome.answer, 2);

  // With every matching button disabled the key does nothing.
  const Outcome none = Run(box, request, [&](SuperMsgBox& b) {
    Button(b, 1)->setEnabled(false);
    Button(b, 2)->setEnabled(false);
    QTest::keyClick(KeyTarget(b), 'r');
  });
  QVERIFY(none.left_open);
  QCOMPARE(none.answer, 3);
}

void SuperMsgBoxTest::FirstMatchingButtonWins() {
  SuperMsgBox box;
  Request request;
  request.buttons = QStringLiteral("&Stop|&Skip|&Save");
  request.style = 768;  // beyond the row: button 1
  const Outcome outcome = Run(box, request, [&](SuperMsgBox& b) {
    Button(b, 1)->setEnabled(false);
    QTest::keyClick(KeyTarget(b), 's');
  });
  QCOMPARE(outcome.answer, 2);
}

void SuperMsgBoxTest::AccessKeyNeedsACharacterAfterTheAmpersand() {
  SuperMsgBox box;
  Request request;
  // The first "&" counts: "Sa&ve & go" has the key V, "Go&" none.
  request.buttons = QStringLiteral("Go&|Sa&ve & go");
  request.style = 0;
  const Outcome g =
      Run(box, request, [&](SuperMsgBox& b) { QTest::keyClick(&b, 'g'); });
  QVERIFY(g.left_open);
  const Outcome v =
      Run(box, request, [&](SuperMsgBox& b) { QTest::keyClick(&b, 'v'); });
  QVERIFY(!v.left_open);
  QCOMPARE(v.answer, 2);
}

void SuperMsgBoxTest::FewerButtonsThanLastTimeHidesTheRest() {
  SuperMsgBox box;
  Request four;
  four.buttons = QStringLiteral("&A|&B|&C|&D");
  Run(box, four, [](SuperMsgBox&) {});
  Request two;
  two.buttons = QStringLiteral("&E|&F");
  bool hidden = false;
  const Outcome outcome = Run(box, two, [&](SuperMsgBox& b) {
    hidden = b.ButtonCount() == 2 && Button(b, 1)->isVisible() &&
             Button(b, 2)->isVisible() && !Button(b, 3)->isVisible() &&
             !Button(b, 4)->isVisible();
    // Button 4's old access key no longer answers.
    QTest::keyClick(&b, 'd');
  });
  QVERIFY(hidden);
  QVERIFY(outcome.left_open);
  QCOMPARE(outcome.answer, 1);
}

void SuperMsgBoxTest::AskRunsABoxOfItsOwn() {
  QString title;
  QTimer::singleShot(0, qApp, [&] {
    SuperMsgBox* open = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets()) {
      auto* box = qobject_cast<SuperMsgBox*>(w);
      if (box != nullptr && box->isVisible()) open = box;
    }
    // Without a box to answer, Ask would wait for ever: stop loudly.
    if (open == nullptr) qFatal("Ask shows no message box");

    title = open->windowTitle();
    QTest::mouseClick(Button(*open, 2), Qt::LeftButton);
  });
  QWidget owner;
  const int answer =
      SuperMsgBox::Ask(&owner, QStringLiteral("Which?"),
                       QStringLiteral("This|That"), 0, QStringLiteral("Pick"));
  QCOMPARE(title, QStringLiteral("Pick"));
  QCOMPARE(answer, 2);
}

QTEST_MAIN(SuperMsgBoxTest)
#include "super_msg_box_test.moc"
