// The dialog that chooses several sync sets for one run.
#ifndef PAIRWELL_UI_EDITOR_SYNC_MULTI_FORM_H_
#define PAIRWELL_UI_EDITOR_SYNC_MULTI_FORM_H_

#include <QDialog>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;

namespace pairwell {

class Program;

class SyncMultiForm final : public QDialog {
  Q_OBJECT

 public:
  // Lists the program's sets (not owned).
  explicit SyncMultiForm(Program& program, QWidget* parent = nullptr);
  ~SyncMultiForm() override;
  Q_DISABLE_COPY_MOVE(SyncMultiForm)

  // Brings the list in line with the program's sets. Rows that stay keep
  // their selection, unless a different set now sits in the row; the row
  // of the last set is always made afresh, unselected.
  void UpdateList();
  // Shows the dialog modally; the positions (1-based) of the sets chosen,
  // in list order, empty when the person cancelled or chose none. The
  // dialog is only hidden afterwards, so the selection is still there at
  // the next opening.
  std::vector<int> ChooseSets();

  // True when the dialog was last left with Cancel (or its close box).
  bool Cancelled() const { return cancelled_; }

  // Recomputes which controls can be used.
  void AutoEnable();

  // Escape and the close box leave the dialog as Cancel does.
  void reject() override;

 private:
  void OkClicked();
  void CancelClicked();

  Program& program_;
  bool cancelled_ = false;

  QLabel* label1_ = nullptr;
  QListWidget* set_list_ = nullptr;
  QPushButton* ok_btn_ = nullptr;
  QPushButton* cancel_btn_ = nullptr;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_EDITOR_SYNC_MULTI_FORM_H_
