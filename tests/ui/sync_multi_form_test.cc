// The multi-set dialog driven through its real widgets while it runs
// modally: the list kept in line with the sets, the choice returned, and
// the selection carried from one opening to the next.
#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QList>
#include <QListWidget>
#include <QPushButton>
#include <QStringList>
#include <QtTest>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "app/program.h"
#include "engine/sync_set_list.h"
#include "engine/synchronizer.h"
#include "ui/editor/sync_multi_form.h"
#include "ui/modal_driver.h"
#include "ui/scripted_front_end.h"
#include "util/user_interface.h"

namespace pairwell {
namespace {

const char kNothingSelected[] =
    "You have not selected any sets to synchronize.  Please click the sets "
    "you want to synchronize first.";

// A program with sets of those names, in that order.
struct Fixture {
  ScriptedFrontEnd ui;
  Program program{ui};
  explicit Fixture(std::initializer_list<const char*> names) {
    ui.SetProgram(&program);
    for (const char* name : names) program.NewSyncSet(name);
  }
  Synchronizer& Set(int i) { return program.SyncSets().Item(i); }
};

QListWidget* List(SyncMultiForm& form) {
  return form.findChild<QListWidget*>(QStringLiteral("SetList"));
}
QPushButton* Button(SyncMultiForm& form, const char* name) {
  return form.findChild<QPushButton*>(QString::fromLatin1(name));
}

QStringList Rows(SyncMultiForm& form) {
  QStringList rows;
  QListWidget* list = List(form);
  for (int r = 0; r < list->count(); ++r) rows << list->item(r)->text();
  return rows;
}

QList<int> SelectedRows(SyncMultiForm& form) {
  QList<int> rows;
  QListWidget* list = List(form);
  for (int r = 0; r < list->count(); ++r) {
    if (list->item(r)->isSelected()) rows << r;
  }
  return rows;
}

// Clicks row r as a person would (the dialog must be on show).
void ClickRow(SyncMultiForm& form, int r) {
  QListWidget* list = List(form);
  QListWidgetItem* item = list->item(r);
  list->scrollToItem(item);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                    list->visualItemRect(item).center());
}

// What one ChooseSets did.
struct Session {
  std::vector<int> chosen;
  bool cancelled = false;
  // The dialog was found as the modal window and act ran on it.
  bool opened = false;
  // The dialog was still open after act; the test cancelled it.
  bool left_open = false;
  // The rows selected when the dialog came up, before act.
  QList<int> selected_at_opening;
};

// Runs ChooseSets and, once the dialog is the modal window, applies act to
// it. A dialog that act leaves open is cancelled so the test goes on.
Session Open(SyncMultiForm& form,
             const std::function<void(SyncMultiForm&)>& act) {
  Session session;
  ModalDriver driver(
      [&](QWidget&) {
        session.opened = true;
        session.selected_at_opening = SelectedRows(form);
        act(form);
        if (form.isVisible()) {
          session.left_open = true;
          Button(form, "CancelBtn")->click();
        }
      },
      &form);
  session.chosen = form.ChooseSets();
  session.cancelled = form.Cancelled();
  return session;
}

// Opens the dialog, clicks those rows and OK.
Session Choose(SyncMultiForm& form, std::initializer_list<int> rows) {
  const std::vector<int> to_click(rows);
  return Open(form, [to_click](SyncMultiForm& f) {
    for (const int r : to_click) ClickRow(f, r);
    Button(f, "OKBtn")->click();
  });
}

using Positions = std::vector<int>;

}  // namespace

class SyncMultiFormTest : public QObject {
  Q_OBJECT

 private slots:
  void ControlsHaveTheirNamesAndTexts() {
    Fixture fx{"A"};
    SyncMultiForm form(fx.program);
    QCOMPARE(form.windowTitle(), QStringLiteral("Synchronize multiple sets"));
    auto* label = form.findChild<QLabel*>(QStringLiteral("Label1"));
    QVERIFY(label != nullptr);
    QCOMPARE(label->text(),
             QStringLiteral("Select the sets to be synchronized:"));
    QVERIFY(List(form) != nullptr);
    QCOMPARE(List(form)->selectionMode(), QAbstractItemView::MultiSelection);
    QVERIFY(Button(form, "OKBtn") != nullptr);
    QCOMPARE(Button(form, "OKBtn")->text(), QStringLiteral("OK"));
    QVERIFY(Button(form, "CancelBtn") != nullptr);
    QCOMPARE(Button(form, "CancelBtn")->text(), QStringLiteral("Cancel"));
    QVERIFY(Button(form, "OKBtn")->isDefault());
  }

  void ListShowsTheSetsInOrderUnselected() {
    Fixture fx{"Alpha", "Beta", "Gamma"};
    SyncMultiForm form(fx.program);
    QCOMPARE(Rows(form), QStringList());
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"Alpha", "Beta", "Gamma"}));
    QCOMPARE(SelectedRows(form), QList<int>());
    QVERIFY(List(form)->isEnabled());
  }

  void OkReturnsTheChosenPositionsInListOrder() {
    Fixture fx{"A", "B", "C", "D"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    const Session s = Choose(form, {3, 0, 1});
    QVERIFY(s.opened);
    QVERIFY(!s.left_open);
    QCOMPARE(s.chosen, (Positions{1, 2, 4}));
    QVERIFY(!s.cancelled);
    QVERIFY(!form.isVisible());
    QVERIFY(fx.ui.messages.empty());
  }

  void ClickingASelectedRowAgainUnselectsIt() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    const Session s = Choose(form, {0, 2, 0});
    QCOMPARE(s.chosen, (Positions{3}));
  }

  void OkWithNothingSelectedWarnsAndTheDialogStays() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    bool stayed = false;
    bool still_modal = false;
    std::size_t messages_after_ok = 0;
    const Session s = Open(form, [&](SyncMultiForm& f) {
      Button(f, "OKBtn")->click();
      messages_after_ok = fx.ui.messages.size();
      stayed = f.isVisible();
      still_modal = QApplication::activeModalWidget() == &f;
      // The person then picks a set and confirms in the same opening.
      ClickRow(f, 1);
      Button(f, "OKBtn")->click();
    });
    QCOMPARE(messages_after_ok, std::size_t{1});
    QVERIFY(stayed);
    QVERIFY(still_modal);
    QCOMPARE(fx.ui.messages.size(), std::size_t{1});
    QCOMPARE(fx.ui.messages[0].text, std::string(kNothingSelected));
    QCOMPARE(fx.ui.messages[0].style, kMbOkOnly | kMbExclamation);
    QCOMPARE(fx.ui.messages[0].caption, std::string(kAppTitle));
    QVERIFY(!s.left_open);
    QCOMPARE(s.chosen, (Positions{2}));
    QVERIFY(!s.cancelled);
  }

  void NothingSelectedThenCancelChoosesNothing() {
    Fixture fx{"A", "B"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    const Session s = Open(form, [](SyncMultiForm& f) {
      Button(f, "OKBtn")->click();
      Button(f, "CancelBtn")->click();
    });
    QCOMPARE(fx.ui.messages.size(), std::size_t{1});
    QVERIFY(!s.left_open);
    QVERIFY(s.chosen.empty());
    QVERIFY(s.cancelled);
  }

  void NoSetsAtAllLeavesOnlyTheMessage() {
    Fixture fx{};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(List(form)->count(), 0);
    QVERIFY(!List(form)->isEnabled());
    bool stayed = false;
    const Session s = Open(form, [&](SyncMultiForm& f) {
      Button(f, "OKBtn")->click();
      stayed = f.isVisible();
    });
    QVERIFY(stayed);
    QVERIFY(s.left_open);
    QCOMPARE(fx.ui.Texts(), std::vector<std::string>{kNothingSelected});
    QVERIFY(s.chosen.empty());
  }

  void CancelChoosesNothingButKeepsTheSelection() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    const Session s = Open(form, [](SyncMultiForm& f) {
      ClickRow(f, 0);
      ClickRow(f, 2);
      Button(f, "CancelBtn")->click();
    });
    QVERIFY(!s.left_open);
    QVERIFY(s.chosen.empty());
    QVERIFY(s.cancelled);
    QVERIFY(fx.ui.messages.empty());
    QVERIFY(!form.isVisible());
    // Hidden, not thrown away: the rows and their selection are still there.
    QCOMPARE(SelectedRows(form), (QList<int>{0, 2}));
  }

  void EscapeCancelsLikeTheButton() {
    Fixture fx{"A", "B"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    // A previous OK must not make the next Escape count as OK.
    QCOMPARE(Choose(form, {0}).chosen, (Positions{1}));
    const Session s = Open(form, [](SyncMultiForm& f) {
      QTest::keyClick(List(f), Qt::Key_Escape);
    });
    QVERIFY(!s.left_open);
    QVERIFY(s.chosen.empty());
    QVERIFY(s.cancelled);
  }

  void CloseBoxCancels() {
    Fixture fx{"A", "B"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    const Session s = Open(form, [](SyncMultiForm& f) {
      ClickRow(f, 0);
      f.close();
    });
    QVERIFY(!s.left_open);
    QVERIFY(s.chosen.empty());
    QVERIFY(s.cancelled);
  }

  void SelectionSurvivesToTheNextOpening() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 1}).chosen, (Positions{1, 2}));
    form.UpdateList();
    const Session s = Choose(form, {});
    QCOMPARE(s.selected_at_opening, (QList<int>{0, 1}));
    QVERIFY(fx.ui.messages.empty());
    QCOMPARE(s.chosen, (Positions{1, 2}));
  }

  void WithoutUpdateListEvenTheLastRowKeepsItsSelection() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {2}).chosen, (Positions{3}));
    const Session s = Choose(form, {});
    QCOMPARE(s.selected_at_opening, (QList<int>{2}));
    QCOMPARE(s.chosen, (Positions{3}));
  }

  void UpdateListRebuildsTheLastExistingRow() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QListWidget* list = List(form);
    for (int r = 0; r < 3; ++r) list->item(r)->setSelected(true);
    QListWidgetItem* row0 = list->item(0);
    QListWidgetItem* row1 = list->item(1);
    QListWidgetItem* row2 = list->item(2);
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"A", "B", "C"}));
    // The first rows are rewritten in place and keep their selection; the
    // last is a new row, unselected, and the old one is gone.
    QCOMPARE(list->item(0), row0);
    QCOMPARE(list->item(1), row1);
    QVERIFY(list->item(2) != row2);
    QCOMPARE(SelectedRows(form), (QList<int>{0, 1}));
  }

  void ASingleSetNeverKeepsItsSelection() {
    Fixture fx{"Only"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0}).chosen, (Positions{1}));
    form.UpdateList();
    QCOMPARE(Rows(form), QStringList{"Only"});
    QCOMPARE(SelectedRows(form), QList<int>());
    bool warned = false;
    const Session s = Open(form, [&](SyncMultiForm& f) {
      Button(f, "OKBtn")->click();
      warned = fx.ui.messages.size() == 1;
      Button(f, "CancelBtn")->click();
    });
    QVERIFY(warned);
    QVERIFY(s.chosen.empty());
  }

  void AnAddedSetIsTheLastRow() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 2}).chosen, (Positions{1, 3}));
    fx.program.NewSyncSet("D");
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"A", "B", "C", "D"}));
    // C's row was the last existing one: rebuilt, so unselected; the new
    // row starts unselected too.
    QCOMPARE(SelectedRows(form), QList<int>{0});
    QCOMPARE(Choose(form, {3}).chosen, (Positions{1, 4}));
  }

  void ARemovedLastSetShrinksTheListByOne() {
    Fixture fx{"A", "B", "C", "D"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 2, 3}).chosen, (Positions{1, 3, 4}));
    fx.program.SyncSets().Remove(4);
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"A", "B", "C"}));
    // Shrinking, C's row is rewritten in place and keeps its selection.
    QCOMPARE(SelectedRows(form), (QList<int>{0, 2}));
    QCOMPARE(Choose(form, {}).chosen, (Positions{1, 3}));
  }

  void ARemovedMiddleSetClearsTheRowsThatMovedUp() {
    Fixture fx{"A", "B", "C", "D"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 1, 2}).chosen, (Positions{1, 2, 3}));
    fx.program.SyncSets().Remove(2);
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"A", "C", "D"}));
    // Row 1 held B and now holds C: B's selection must not run C.
    QCOMPARE(SelectedRows(form), QList<int>{0});
    QCOMPARE(Choose(form, {}).chosen, (Positions{1}));
  }

  void RenamingChangesTheTextAtTheNextOpening() {
    Fixture fx{"A", "B", "C"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 1, 2}).chosen, (Positions{1, 2, 3}));
    fx.Set(2).Name = "Beta";
    fx.Set(3).Name = "Gamma";
    QCOMPARE(Rows(form), (QStringList{"A", "B", "C"}));
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"A", "Beta", "Gamma"}));
    // The renamed set in a replaced row keeps its selection; the last set's
    // row is rebuilt and comes back unselected.
    QCOMPARE(SelectedRows(form), (QList<int>{0, 1}));
    QCOMPARE(Choose(form, {}).chosen, (Positions{1, 2}));
  }

  void MovedSetsLoseTheirRowsSelection() {
    Fixture fx{"A", "B", "C", "D"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 1}).chosen, (Positions{1, 2}));
    fx.program.SyncSets().Swap(1, 2);
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"B", "A", "C", "D"}));
    QCOMPARE(SelectedRows(form), QList<int>());
  }

  void OnlyTheRowsOfMovedSetsAreCleared() {
    Fixture fx{"A", "B", "C", "D"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 1, 2}).chosen, (Positions{1, 2, 3}));
    fx.program.SyncSets().Swap(2, 3);
    form.UpdateList();
    QCOMPARE(Rows(form), (QStringList{"A", "C", "B", "D"}));
    // A stayed in place; rows 1 and 2 now show other sets than they did.
    QCOMPARE(SelectedRows(form), QList<int>{0});
    // Swapped back before the next opening: the rows show their former
    // sets again, but the selection cleared meanwhile is not restored.
    fx.program.SyncSets().Swap(2, 3);
    form.UpdateList();
    QCOMPARE(SelectedRows(form), QList<int>{0});
  }

  void ASetMovedAwayAndBackBetweenOpeningsKeepsItsRow() {
    Fixture fx{"A", "B", "C", "D"};
    SyncMultiForm form(fx.program);
    form.UpdateList();
    QCOMPARE(Choose(form, {0, 1}).chosen, (Positions{1, 2}));
    fx.program.SyncSets().Swap(1, 2);
    fx.program.SyncSets().Swap(1, 2);
    form.UpdateList();
    QCOMPARE(SelectedRows(form), (QList<int>{0, 1}));
  }
};

}  // namespace pairwell

QTEST_MAIN(pairwell::SyncMultiFormTest)
#include "sync_multi_form_test.moc"
