// The dialog that puts a run of a set back: the set's runs that can be
// undone, newest first, and step by step what undoing the chosen one does.
// The undo itself runs once the dialog has closed, through the program's
// undo driver (the progress window, the log, the questions about errors).
#ifndef PAIRWELL_UI_RUN_UNDO_FORM_H_
#define PAIRWELL_UI_RUN_UNDO_FORM_H_

#include <QDialog>
#include <QString>
#include <memory>
#include <vector>

#include "engine/run_history.h"

class QCheckBox;
class QLabel;
class QListView;
class QPushButton;
class QTreeWidget;

namespace pairwell {

class Program;
class RunUndo;
class Synchronizer;
class UndoPreviewModel;

class UndoForm final : public QDialog {
  Q_OBJECT

 public:
  // The run list's columns.
  enum Column {
    kRun = 0,
    kStarted = 1,
    kKind = 2,
    kCreated = 3,
    kReplaced = 4,
    kDeleted = 5,
    kColumnCount = 6,
  };

  // Lists the set's runs and loads the newest. The program and the set
  // must outlive the dialog; the set's folders are read, never changed,
  // until the person chooses to undo.
  UndoForm(Program& program, Synchronizer& set, QWidget* parent = nullptr);
  ~UndoForm() override;
  Q_DISABLE_COPY_MOVE(UndoForm)

  // Shows the dialog modally. When the person confirmed Undo Run, the
  // dialog closes and the chosen run is put back; true then (whatever the
  // undo's outcome, which the person was told), false when the dialog was
  // closed without an undo.
  bool Run();

 private:
  void CreateControls();
  void ConnectControls();
  void FillRunList();

  // Loads the run of the selected row and shows what undoing it does.
  void LoadSelectedRun();
  void UpdateSummary();
  void ForceToggled(bool force);
  void UndoClicked();
  // After the undo: what was left, when something was.
  void ReportLeftFiles(const std::string& problem, long left);

  Program& program_;
  Synchronizer& set_;
  std::unique_ptr<RunUndo> undo_;
  std::vector<RunSummary> runs_;
  // Whether the selected run was loaded and can be undone.
  bool loaded_ = false;
  UndoPreviewModel* preview_ = nullptr;

  QLabel* run_list_txt_ = nullptr;
  QTreeWidget* run_list_ = nullptr;
  QLabel* preview_txt_ = nullptr;
  QLabel* preview_list_txt_ = nullptr;
  QListView* preview_list_ = nullptr;
  QCheckBox* force_chk_ = nullptr;
  QPushButton* undo_btn_ = nullptr;
  QPushButton* close_btn_ = nullptr;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_UNDO_FORM_H_
