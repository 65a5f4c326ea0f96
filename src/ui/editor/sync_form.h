// The main window: one sync set at a time, its folders and filters, the
// menus, and the buttons that start runs. It edits the program's sets in
// memory; the configuration file is written only when the program exits.
#ifndef PAIRWELL_UI_EDITOR_SYNC_FORM_H_
#define PAIRWELL_UI_EDITOR_SYNC_FORM_H_

#include <QMainWindow>
#include <QString>
#include <array>
#include <cstdint>
#include <vector>

class QAction;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace pairwell {

class CROptionForm;
class OptionForm;
class Program;
class QtFrontEnd;
class Synchronizer;
class SyncMultiForm;

class SyncForm final : public QMainWindow {
  Q_OBJECT

 public:
  // How a control follows the window's inner area when it is resized.
  enum ResizeMode : std::int16_t {
    kKeepNear = 0,  // keeps its distance to the left (top) edge
    kKeepFar = 1,   // keeps its distance to the right (bottom) edge: moves
    kStretch = 2,   // keeps both distances: stretches
  };

  // Shows the set stored as "CurSyncSet" (clamped to the sets there are).
  // The program must have been started (Program::Main) and keep at least
  // one set.
  SyncForm(Program& program, QtFrontEnd& front_end, QWidget* parent = nullptr);
  ~SyncForm() override;
  SyncForm(const SyncForm&) = delete;
  SyncForm& operator=(const SyncForm&) = delete;

  // Registers the 30 resize records from the controls' current places.
  void InitResizer();
  // Places the 30 controls by their records.
  void HandleResize();
  // Turns the 30 controls and the File and Sync Sets menus on or off (a run
  // locks the window); turning them on applies AutoEnable.
  void EnableAll(bool enable);
  // Whether the list has a selected row.
  static bool IsAnyItemSelected(const QTreeWidget& list);
  // FolderType index for path flags: 1 with bit 1, else 2 with bit 2, else 0.
  static int PFToTypeIndex(std::int32_t flags);
  // Path flags for a FolderType index (0, 1, 2; anything else gives 0).
  static std::int32_t TypeIndexToPF(int index);
  static int Bool2Int(bool value) { return value ? 1 : 0; }
  // Applies the enabling rules.
  void AutoEnable();
  // Makes the set list menu match the sets.
  void FillSetList();
  // Updates SetNumTxt ("2 of 5") and the set list's check marks.
  void SetSetListLabel();
  // Exchanges text, tag, selection and every column of rows i and j
  // (1-based); the check boxes stay where they are.
  static void SwapListItems(QTreeWidget& list, int i, int j);
  // Makes set `index` (1-based) current; with save_first the controls are
  // first written into the outgoing set.
  void SelectSyncSet(int index, bool save_first);

  // The position (1-based) of the set on show.
  int CurrentIndex() const { return cur_index_; }
  Synchronizer& CurrentSet() const { return *cur_set_; }

  // Saves every set and the configuration file when asked, then ends the
  // program. A save that fails is reported and the program goes on, so
  // that nothing edited is lost without a word.
  void ExitProgram(bool save);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct ResizeRecord {
    QWidget* control = nullptr;
    std::int16_t container = 1;  // always the window's inner area
    std::int16_t h_mode = kKeepNear;
    std::int16_t v_mode = kKeepNear;
    std::int32_t h_offset = 0;
    std::int32_t v_offset = 0;
    std::int32_t width_margin = 0;
    std::int32_t height_margin = 0;
  };
  static constexpr int kResizeItems = 30;
  static constexpr int kMaxFolders = 8;

  void CreateControls();
  void CreateMenus();
  void ConnectControls();
  QRect GetResizeRect() const;
  void AddResizeItem(ResizeRecord& record, QWidget* control,
                     std::int16_t container, std::int16_t h_mode,
                     std::int16_t v_mode);
  void ApplyResizeItem(const ResizeRecord& record);

  // Folder list and filters.
  void LoadSetToControls();
  void SaveControlsToSet();
  std::int32_t ControlsToFlags() const;
  void FlagsToControls(std::int32_t flags);
  void UpdateFolderItem(int row);
  void StoreFolderControls();
  QTreeWidgetItem* SelectedFolder() const;
  static std::int32_t TagOf(const QTreeWidgetItem& item);
  static void SetTag(QTreeWidgetItem& item, std::int32_t flags);
  void OnFolderClicked(QTreeWidgetItem* item);
  void OnSelectionMoved();
  void OnFolderChanged(QTreeWidgetItem* item, int column);
  void AddFolder();
  void RemoveFolders();
  void MoveFolder(int step);

  // Sets and runs.
  void OnSetNameEdited(const QString& text);
  void MoveSet(int step);
  void AddSyncSet();
  void RemoveSyncSet();
  void Synchronize(bool interactive);
  void SynchronizeAll();
  void SynchronizeMulti();
  void ShowOptions();
  void ShowCROptions();
  void RunSets(const std::vector<Synchronizer*>& sets, bool interactive);
  // Lets the person put back a run of the current set.
  void UndoRun();
  void ShowAbout();
  void ShowHelp(const QString& page);

  Program& program_;
  QtFrontEnd& front_end_;
  int cur_index_ = 0;
  Synchronizer* cur_set_ = nullptr;
  int min_width_ = 0;
  int min_height_ = 0;
  bool updating_ = false;
  // A close that the program itself asked for passes without questions.
  bool closing_from_code_ = false;
  std::array<ResizeRecord, kResizeItems + 1> resize_items_{};  // 1..30

  QLabel* sync_set_txt_ = nullptr;
  QLineEdit* set_name_ = nullptr;
  QToolButton* prev_set_btn_ = nullptr;
  QToolButton* next_set_btn_ = nullptr;
  QToolButton* set_up_btn_ = nullptr;
  QToolButton* set_down_btn_ = nullptr;
  QLabel* set_num_txt_ = nullptr;
  QPushButton* set_options_btn_ = nullptr;
  QGroupBox* f2s_group_ = nullptr;
  QTreeWidget* folders_ = nullptr;
  QComboBox* folder_type_ = nullptr;
  QCheckBox* folder_enable_ = nullptr;
  QCheckBox* folder_create_base_ = nullptr;
  QCheckBox* folder_skip_on_error_ = nullptr;
  QPushButton* add_folder_btn_ = nullptr;
  QPushButton* remove_folder_btn_ = nullptr;
  QToolButton* folder_up_btn_ = nullptr;
  QToolButton* folder_down_btn_ = nullptr;
  QGroupBox* filter_group_ = nullptr;
  QLabel* file_spec_txt_ = nullptr;
  QLabel* exclude_spec_txt_ = nullptr;
  QLabel* folder_spec_txt_ = nullptr;
  QLabel* folder_exclude_spec_txt_ = nullptr;
  QLineEdit* file_spec_ = nullptr;
  QLineEdit* exclude_spec_ = nullptr;
  QLineEdit* folder_spec_ = nullptr;
  QLineEdit* folder_exclude_spec_ = nullptr;
  QPushButton* sync_btn_ = nullptr;
  QPushButton* interactive_sync_btn_ = nullptr;
  QPushButton* help_btn_ = nullptr;

  // The set dialogs, made on first use and kept (the multi-set dialog keeps
  // its selection from one opening to the next).
  OptionForm* option_form_ = nullptr;
  CROptionForm* cr_option_form_ = nullptr;
  SyncMultiForm* multi_form_ = nullptr;

  QMenu* mnu_file_ = nullptr;
  QMenu* mnu_sync_sets_ = nullptr;
  QMenu* mnu_help_ = nullptr;
  // Entry 0 is the separator before the set names; entry i is set i.
  std::vector<QAction*> mnu_set_list_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_EDITOR_SYNC_FORM_H_
