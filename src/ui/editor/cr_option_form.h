// The conflict-resolution options dialog of one sync set: how each configurable conflict type is handled.
#ifndef PAIRWELL_UI_EDITOR_CR_OPTION_FORM_H_
#define PAIRWELL_UI_EDITOR_CR_OPTION_FORM_H_

#include <QDialog>
#include <vector>

#include "engine/conflict_descriptor.h"

class QButtonGroup;
class QCheckBox;
class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTreeWidget;

namespace pairwell {

class Synchronizer;

class CROptionForm final : public QDialog {
  Q_OBJECT

 public:
  explicit CROptionForm(QWidget* parent = nullptr);
  ~CROptionForm() override;

  // Loads the set into the controls and shows the dialog modally; the set
  // changes only when the person confirms with OK.
  void DoOptionsDialog(Synchronizer& set);

  // Recomputes which controls are enabled from the chosen row and
  // "Allow abnormal actions".
  void AutoEnable();

  // Shows the chosen row's working copy in the controls; does nothing when
  // no row is chosen.
  void CopyFromDescr();

 private:
  Q_DISABLE_COPY_MOVE(CROptionForm)

  // Puts every control back as it is before the first opening, so that a
  // reused window starts like a fresh one.
  void ClearControls();
  // One row and one working copy per configurable type of the set, in the
  // set's order.
  void FillList();
  // Copies the working copies, with the row check marks, into the set.
  void StoreBack();

  void OnSelectionChanged();
  void OnResolutionChosen(int action, bool checked);
  void OnCreateDestToggled(bool checked);
  void OnResetClicked();
  void OnResetAllClicked();
  void OnOKClicked();
  void OnHelpClicked();

  ConflictDescriptor* CurType();

  Synchronizer* set_ = nullptr;
  // One per row of ConList, in row order; not capped, so a catalogue of any
  // size can be edited.
  std::vector<ConflictDescriptor> work_types_;
  // Index into work_types_ of the chosen row, -1 for none.
  int cur_type_ = -1;

  QLabel* label2_ = nullptr;
  QTreeWidget* con_list_ = nullptr;
  QPlainTextEdit* con_description_ = nullptr;
  QGroupBox* frame1_ = nullptr;
  QRadioButton* undecided_ = nullptr;
  QRadioButton* do_nothing_ = nullptr;
  QRadioButton* use_newest_ = nullptr;
  QRadioButton* delete_all_ = nullptr;
  QButtonGroup* resolutions_ = nullptr;
  QLabel* label1_ = nullptr;
  QCheckBox* create_dest_ = nullptr;
  QCheckBox* allow_abnormal_ = nullptr;
  QPushButton* reset_btn_ = nullptr;
  QPushButton* reset_all_btn_ = nullptr;
  QPushButton* ok_btn_ = nullptr;
  QPushButton* cancel_btn_ = nullptr;
  QPushButton* help_btn_ = nullptr;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_EDITOR_CR_OPTION_FORM_H_
