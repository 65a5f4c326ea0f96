// The confirm/refine window: the run's files with their status and action,
// where the person reviews and changes the actions before they are
// performed.
//
// The window keeps no copy of the files: every text comes from the set's
// working files when it is drawn, and every edit goes straight into them.
// It ends the run only through the set's StopFlag, which the run control
// reads once the window is closed.
#ifndef PAIRWELL_UI_RUN_CONFIRM_FORM_H_
#define PAIRWELL_UI_RUN_CONFIRM_FORM_H_

#include <QDialog>
#include <QString>
#include <cstdint>
#include <vector>

#include "app/front_end.h"
#include "engine/action_texts.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QTreeView;
class QTreeWidget;
class QTreeWidgetItem;

namespace pairwell {

class FileListFilter;
class FileListModel;
class ImageList;
class Program;
class Synchronizer;

class ConfirmForm final : public QDialog {
  Q_OBJECT

 public:
  // Shows the set's working files (the action list must be built). The
  // first show mode depends on whether the program's run is interactive.
  ConfirmForm(Program& program, Synchronizer& set, QWidget* parent = nullptr);
  ~ConfirmForm() override;
  Q_DISABLE_COPY_MOVE(ConfirmForm)

  // Shows the window modally. kContinue when the person chose to go on
  // with the actions as they stand; else kCancel, with the set's StopFlag
  // set.
  Confirmation Run();

 protected:
  // Every close the window does not make itself (the close box, Escape)
  // ends here and asks first.
  void reject() override;

 private:
  // Building the window.
  void CreateControls();
  void ConnectControls();
  void FormLoad();

  // The lists and the statistics.
  void FillFolderList();
  void FillFileList();
  void UpdateStats(bool recount);
  void UpdateFolderList(long file_index);
  void UpdateFolderListIcons(std::int32_t action);

  // The 1-based indexes of the selected files, in list order.
  std::vector<long> SelectedFiles() const;

  // The controls follow the selection.
  void MatchCtlsToSelection();
  void SetupForNoSelection();
  void EnableControls(bool enable);
  void SetOptionButtons(std::int32_t action, bool all_newest);
  void SetCheckBox(QCheckBox* box, int value);
  void AutoShowOptionsForAction();

  // The person's edits, applied to every selected file.
  void ModifyAction(std::int32_t action, bool take_newest);
  void ModifyActionFlags(std::uint16_t bit, bool set);
  void FlagClicked(QCheckBox* box, std::uint16_t bit);
  void FolderRowClicked(QTreeWidgetItem* item);
  void FileListColumnClicked(int column);
  void ShowModeClicked();
  void RefreshClicked();
  void ResetToDefaultClicked();
  void ContinueClicked();
  void CancelClicked();
  void HelpClicked();

  // Closes the window with that result, without the close-box question.
  void CloseWindow(int result);

  Program& program_;
  Synchronizer& set_;

  // Raised while the window sets its own controls: the handlers that apply
  // changes must not apply those values again.
  std::int32_t update_count_ = 0;
  ConflictCounts conflict_counts_;
  int sort_column_ = -1;  // the set's file order until a column is chosen
  Qt::SortOrder sort_order_ = Qt::AscendingOrder;
  bool closing_ = false;

  FileListModel* files_ = nullptr;
  FileListFilter* shown_files_ = nullptr;
  ImageList* images_ = nullptr;

  QLabel* instruction_txt_ = nullptr;
  QLabel* file_list_txt_ = nullptr;
  QTreeView* file_list_ = nullptr;
  QComboBox* show_mode_ = nullptr;
  QLabel* stats_txt_ = nullptr;
  QLabel* kept_txt_ = nullptr;
  QLabel* selected_fn_txt_ = nullptr;
  QLabel* conflict_descr_txt_ = nullptr;
  QTreeWidget* folder_list_ = nullptr;
  QLabel* action_txt_ = nullptr;
  QButtonGroup* option_buttons_ = nullptr;
  QRadioButton* undecided_ = nullptr;
  QRadioButton* do_nothing_ = nullptr;
  QRadioButton* use_newest_ = nullptr;
  QRadioButton* use_specific_ = nullptr;
  QRadioButton* delete_all_ = nullptr;
  QCheckBox* allow_create_new_ = nullptr;
  QCheckBox* ow_read_only_ = nullptr;
  QCheckBox* force_copy_ = nullptr;
  QCheckBox* protect_merged_ = nullptr;
  QCheckBox* d_read_only_ = nullptr;
  QPushButton* refresh_btn_ = nullptr;
  QPushButton* reset_to_default_btn_ = nullptr;
  QPushButton* help_btn_ = nullptr;
  QPushButton* cancel_btn_ = nullptr;
  QPushButton* continue_btn_ = nullptr;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_CONFIRM_FORM_H_
