#include "ui/run/confirm_form.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelection>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSizePolicy>
#include <QTreeView>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QVBoxLayout>
#include <algorithm>

#include "app/program.h"
#include "engine/action_edits.h"
#include "engine/action_summary.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "ui/help_pages.h"
#include "ui/run/file_list_filter.h"
#include "ui/run/file_list_model.h"
#include "ui/run/image_list.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr char kUndecidedQuestion[] =
    "One or more files are marked 'Undecided'.  If you continue, no action "
    "will be performed for these files.  Do you wish to continue anyway?";
constexpr char kCancelQuestion[] =
    "Are you sure you want to cancel the synchronization?";

// The folder list's columns.
enum FolderColumn {
  kLocation = 0,
  kModifyDate = 1,
  kCreateDate = 2,
  kFileSize = 3,
  kAttrib = 4,
};

QString Q(const std::string& text) { return QString::fromStdString(text); }

QLabel* NewLabel(const QString& name, const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setObjectName(name);
  return label;
}

// A label that shows names and descriptions from the disk and the
// configuration: never read as rich text.
QLabel* NewTextLabel(const QString& name, const QString& text,
                     QWidget* parent) {
  QLabel* label = NewLabel(name, text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QRadioButton* NewOption(const QString& name, const QString& text,
                        QWidget* parent) {
  auto* button = new QRadioButton(text, parent);
  button->setObjectName(name);
  return button;
}

QCheckBox* NewCheck(const QString& name, const QString& text, QWidget* parent) {
  auto* box = new QCheckBox(text, parent);
  box->setObjectName(name);
  // Hidden boxes keep their place, so the others do not jump about as the
  // action changes.
  QSizePolicy policy = box->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  box->setSizePolicy(policy);
  return box;
}

QPushButton* NewButton(const QString& name, const QString& text,
                       QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

ConfirmForm::ConfirmForm(Program& program, Synchronizer& set, QWidget* parent)
    : QDialog(parent), program_(program), set_(set) {
  setObjectName(QStringLiteral("ConfirmForm"));
  setWindowTitle(QStringLiteral("Synchronization [Untitled]"));
  CreateControls();
  ConnectControls();
  FormLoad();
}

ConfirmForm::~ConfirmForm() = default;

Confirmation ConfirmForm::Run() {
  closing_ = false;
  return exec() == QDialog::Accepted ? Confirmation::kContinue
                                     : Confirmation::kCancel;
}

void ConfirmForm::CreateControls() {
  images_ = new ImageList(this);
  files_ = new FileListModel(set_, this);
  shown_files_ = new FileListFilter(*files_, this);

  instruction_txt_ = NewLabel(
      QStringLiteral("InstructionTxt"),
      QStringLiteral(
          "Please refine the actions to perform, then click Continue with "
          "Sync."),
      this);
  file_list_txt_ = NewLabel(QStringLiteral("FileListTxt"),
                            QStringLiteral("&File List:"), this);

  file_list_ = new QTreeView(this);
  file_list_->setObjectName(QStringLiteral("FileList"));
  file_list_->setRootIsDecorated(false);
  file_list_->setItemsExpandable(false);
  // Every row is one line: the view need not measure 100,000 of them.
  file_list_->setUniformRowHeights(true);
  file_list_->setAllColumnsShowFocus(true);
  file_list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  file_list_->setSelectionBehavior(QAbstractItemView::SelectRows);
  file_list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  file_list_->setModel(shown_files_);
  QHeaderView* header = file_list_->header();
  header->setSectionsClickable(true);
  header->setSortIndicatorShown(true);
  header->setSortIndicator(-1, Qt::AscendingOrder);
  header->setSectionResizeMode(QHeaderView::Interactive);
  header->setStretchLastSection(true);
  file_list_->setColumnWidth(FileListModel::kFile, 380);
  file_list_->setColumnWidth(FileListModel::kStatus, 90);
  file_list_txt_->setBuddy(file_list_);

  show_mode_ = new QComboBox(this);
  show_mode_->setObjectName(QStringLiteral("ShowMode"));
  show_mode_->addItems({
      QStringLiteral("Show conflicts that need confirmation"),
      QStringLiteral("Show all conflicts"),
      QStringLiteral("Show all files marked for action"),
      QStringLiteral("Show all files marked \"undecided\""),
      QStringLiteral("All files"),
  });
  show_mode_->setSizeAdjustPolicy(QComboBox::AdjustToContents);

  stats_txt_ = NewTextLabel(
      QStringLiteral("StatsTxt"),
      QStringLiteral("546 Files, 64 Conflicts, bla bla bla"), this);
  kept_txt_ = NewTextLabel(QStringLiteral("KeptTxt"), QString(), this);
  selected_fn_txt_ = NewTextLabel(QStringLiteral("SelectedFNTxt"),
                                  QStringLiteral("Folder/File.ext"), this);
  conflict_descr_txt_ = NewTextLabel(
      QStringLiteral("ConflictDescrTxt"),
      QStringLiteral("Conflicts: None.  This file has been updated."), this);

  folder_list_ = new QTreeWidget(this);
  folder_list_->setObjectName(QStringLiteral("FolderList"));
  folder_list_->setRootIsDecorated(false);
  folder_list_->setItemsExpandable(false);
  folder_list_->setUniformRowHeights(true);
  folder_list_->setAllColumnsShowFocus(true);
  folder_list_->setSelectionMode(QAbstractItemView::SingleSelection);
  folder_list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  folder_list_->setHeaderLabels({
      QStringLiteral("Location"),
      QStringLiteral("Modify Date"),
      QStringLiteral("Create Date"),
      QStringLiteral("File Size"),
      QStringLiteral("Attrib"),
  });
  folder_list_->header()->setSectionsMovable(false);
  // The folder paths take the room the window has; the details keep theirs.
  folder_list_->header()->setStretchLastSection(false);
  folder_list_->header()->setSectionResizeMode(kLocation, QHeaderView::Stretch);
  folder_list_->setColumnWidth(kModifyDate, 150);
  folder_list_->setColumnWidth(kCreateDate, 150);
  folder_list_->setColumnWidth(kFileSize, 80);

  action_txt_ =
      NewLabel(QStringLiteral("ActionTxt"), QStringLiteral("Action:"), this);
  undecided_ = NewOption(QStringLiteral("Undecided"),
                         QStringLiteral("&Undecided"), this);
  do_nothing_ = NewOption(QStringLiteral("DoNothing"),
                          QStringLiteral("Do &nothing"), this);
  use_newest_ = NewOption(
      QStringLiteral("UseNewest"),
      QStringLiteral("Use the file with the &most recent date"), this);
  use_specific_ =
      NewOption(QStringLiteral("UseSpecific"),
                QStringLiteral("Use a &specific copy of the file:"), this);
  delete_all_ =
      NewOption(QStringLiteral("DeleteAll"),
                QStringLiteral("&Delete all copies of the file"), this);
  option_buttons_ = new QButtonGroup(this);
  for (QRadioButton* button :
       {undecided_, do_nothing_, use_newest_, use_specific_, delete_all_}) {
    option_buttons_->addButton(button);
  }

  allow_create_new_ = NewCheck(
      QStringLiteral("AllowCreateNew"),
      QStringLiteral("If destination file does not exist, &create it"), this);
  ow_read_only_ = NewCheck(
      QStringLiteral("OWReadOnly"),
      QStringLiteral("Allow &overwrite of read-only/system files"), this);
  force_copy_ = NewCheck(
      QStringLiteral("ForceCopy"),
      QStringLiteral("Re-copy (overwrite apparently identical files)"), this);
  protect_merged_ = NewCheck(
      QStringLiteral("ProtectMerged"),
      QStringLiteral("Protect files in \"merge into\" folder(s)"), this);
  d_read_only_ =
      NewCheck(QStringLiteral("DReadOnly"),
               QStringLiteral("Allow delete of read-only/system files"), this);

  refresh_btn_ = NewButton(QStringLiteral("RefreshBtn"),
                           QStringLiteral("Re&fresh Selected Files"), this);
  reset_to_default_btn_ = NewButton(QStringLiteral("ResetToDefaultBtn"),
                                    QStringLiteral("&Reset to Default"), this);
  help_btn_ =
      NewButton(QStringLiteral("HelpBtn"), QStringLiteral("&Help"), this);
  cancel_btn_ =
      NewButton(QStringLiteral("CancelBtn"), QStringLiteral("Cancel"), this);
  continue_btn_ = NewButton(QStringLiteral("ContinueBtn"),
                            QStringLiteral("Continue with Sync"), this);

  // Layouts keep the margins as the window is resized.
  // What becomes of the copies the run replaces or deletes sits under the
  // statistics, where the person reads what the run is about to do.
  auto* filter_row = new QGridLayout;
  filter_row->addWidget(show_mode_, 0, 0);
  filter_row->addWidget(stats_txt_, 0, 1);
  filter_row->addWidget(kept_txt_, 1, 1);
  filter_row->setColumnStretch(1, 1);

  auto* actions = new QGridLayout;
  actions->addWidget(action_txt_, 0, 0, 1, 2);
  int row = 1;
  for (QRadioButton* button :
       {undecided_, do_nothing_, use_newest_, use_specific_, delete_all_}) {
    actions->addWidget(button, row++, 0);
  }
  row = 1;
  for (QCheckBox* box : {allow_create_new_, ow_read_only_, force_copy_,
                         protect_merged_, d_read_only_}) {
    actions->addWidget(box, row++, 1);
  }
  actions->setColumnStretch(1, 1);
  actions->setHorizontalSpacing(24);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(refresh_btn_);
  buttons->addWidget(reset_to_default_btn_);
  buttons->addStretch(1);
  buttons->addWidget(help_btn_);
  buttons->addWidget(cancel_btn_);
  buttons->addWidget(continue_btn_);

  auto* main = new QVBoxLayout(this);
  main->addWidget(instruction_txt_);
  main->addWidget(file_list_txt_);
  main->addWidget(file_list_, 3);
  main->addLayout(filter_row);
  main->addWidget(selected_fn_txt_);
  main->addWidget(conflict_descr_txt_);
  main->addWidget(folder_list_, 1);
  main->addLayout(actions);
  main->addLayout(buttons);

  resize(900, 760);
}

void ConfirmForm::ConnectControls() {
  connect(file_list_->selectionModel(), &QItemSelectionModel::selectionChanged,
          this, &ConfirmForm::MatchCtlsToSelection);
  connect(file_list_->header(), &QHeaderView::sectionClicked, this,
          &ConfirmForm::FileListColumnClicked);
  connect(show_mode_, &QComboBox::currentIndexChanged, this,
          &ConfirmForm::ShowModeClicked);
  connect(folder_list_, &QTreeWidget::itemClicked, this,
          &ConfirmForm::FolderRowClicked);

  const struct {
    QRadioButton* button;
    std::int32_t action;
    bool take_newest;
  } kOptions[] = {
      {undecided_, kUndecided, false},  {do_nothing_, kDoNothing, false},
      {use_newest_, kUseNewest, true},  {use_specific_, kUseNewest, false},
      {delete_all_, kDeleteAll, false},
  };
  for (const auto& option : kOptions) {
    const std::int32_t action = option.action;
    const bool take_newest = option.take_newest;
    connect(option.button, &QRadioButton::clicked, this,
            [this, action, take_newest] { ModifyAction(action, take_newest); });
  }

  const struct {
    QCheckBox* box;
    std::uint16_t bit;
  } kFlags[] = {
      {allow_create_new_, kFlagCreate},
      {ow_read_only_, kFlagOverwriteReadOnly},
      {force_copy_, kFlagForceCopy},
      {protect_merged_, kFlagProtectMerged},
      {d_read_only_, kFlagDeleteReadOnly},
  };
  for (const auto& flag : kFlags) {
    QCheckBox* box = flag.box;
    const std::uint16_t bit = flag.bit;
    connect(box, &QCheckBox::clicked, this,
            [this, box, bit] { FlagClicked(box, bit); });
  }

  connect(refresh_btn_, &QPushButton::clicked, this,
          &ConfirmForm::RefreshClicked);
  connect(reset_to_default_btn_, &QPushButton::clicked, this,
          &ConfirmForm::ResetToDefaultClicked);
  connect(help_btn_, &QPushButton::clicked, this, &ConfirmForm::HelpClicked);
  connect(cancel_btn_, &QPushButton::clicked, this,
          &ConfirmForm::CancelClicked);
  connect(continue_btn_, &QPushButton::clicked, this,
          &ConfirmForm::ContinueClicked);
}

void ConfirmForm::FormLoad() {
  // The action column shows "(no effect)" from the start.
  for (long i = 1; i <= set_.WFileCount(); ++i) set_.WFile(i).CalcNoEffect();

  ++update_count_;
  show_mode_->setCurrentIndex(
      program_.Run().interactive ? kShowAllFiles : kShowNeedConfirmation);
  --update_count_;

  FillFolderList();
  FillFileList();
  UpdateStats(true);
  kept_txt_->setText(Q(KeptCopiesText(set_)));
  setWindowTitle(QStringLiteral("Confirm/Refine Sync Actions - [") +
                 Q(set_.Name) + QStringLiteral("]"));
}

// --- Lists and statistics ---------------------------------------------------

void ConfirmForm::FillFolderList() {
  folder_list_->clear();
  for (int j = 1; j <= set_.WPathCount(); ++j) {
    auto* item = new QTreeWidgetItem(folder_list_);
    item->setText(kLocation, Q(set_.WPath(j)));
    item->setIcon(kLocation, images_->Image(ImageList::kDestination));
  }
}

void ConfirmForm::FillFileList() {
  // As a list that is filled again, the new one starts with nothing
  // selected.
  file_list_->selectionModel()->clear();
  shown_files_->SetShowMode(show_mode_->currentIndex());
  MatchCtlsToSelection();
}

void ConfirmForm::UpdateStats(bool recount) {
  if (recount) conflict_counts_ = CountConflicts(set_);
  stats_txt_->setText(Q(StatsText(set_, conflict_counts_)));
}

void ConfirmForm::UpdateFolderList(long file_index) {
  for (int j = 1; j <= folder_list_->topLevelItemCount(); ++j) {
    QTreeWidgetItem* item = folder_list_->topLevelItem(j - 1);
    CopyDetails details;
    if (file_index > 0) details = GetCopyDetails(set_.WFile(file_index), j);
    item->setText(kModifyDate, Q(details.modify_date));
    item->setText(kCreateDate, Q(details.create_date));
    item->setText(kFileSize, Q(details.size));
    item->setText(kAttrib, Q(details.attributes));
  }
}

void ConfirmForm::UpdateFolderListIcons(std::int32_t action) {
  for (int j = 0; j < folder_list_->topLevelItemCount(); ++j) {
    QTreeWidgetItem* item = folder_list_->topLevelItem(j);
    int image = ImageList::kDestination;
    if (action == kDeleteAll) {
      image = ImageList::kDeleted;
    } else if (item->isSelected()) {
      image = ImageList::kSource;
    }
    item->setIcon(kLocation, images_->Image(image));
  }
}

std::vector<long> ConfirmForm::SelectedFiles() const {
  std::vector<int> rows;
  for (const QItemSelectionRange& range :
       file_list_->selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      rows.push_back(row);
    }
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  std::vector<long> files;
  files.reserve(rows.size());
  for (const int row : rows) files.push_back(shown_files_->FileIndexOfRow(row));
  return files;
}

// --- The controls follow the selection ---------------------------------------

void ConfirmForm::MatchCtlsToSelection() {
  const std::vector<long> selected = SelectedFiles();
  if (selected.empty()) {
    SetupForNoSelection();
    return;
  }
  ActionSummary summary;
  for (const long i : selected) summary.Add(set_.WFile(i));

  if (summary.Count() == 1) {
    const SyncFile& file = set_.WFile(selected.front());
    selected_fn_txt_->setText(Q(file.RelativeName()));
    selected_fn_txt_->setToolTip(Q(file.RelativeName()));
    // Descriptions may hold CR LF line breaks.
    conflict_descr_txt_->setText(
        Q(ConflictDescriptionText(set_, file.ComputeConflictIndex()))
            .replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    UpdateFolderList(selected.front());
  } else {
    selected_fn_txt_->setText(QString::number(summary.Count()) +
                              QStringLiteral(" files selected."));
    selected_fn_txt_->setToolTip(QString());
    conflict_descr_txt_->setText(QString());
    // The details would be those of one file among many.
    UpdateFolderList(-1);
  }

  EnableControls(true);
  ++update_count_;
  SetOptionButtons(summary.CommonAction(), summary.AllNewest());
  SetCheckBox(allow_create_new_, summary.CheckValue(kFlagCreate));
  SetCheckBox(ow_read_only_, summary.CheckValue(kFlagOverwriteReadOnly));
  SetCheckBox(force_copy_, summary.CheckValue(kFlagForceCopy));
  SetCheckBox(protect_merged_, summary.CheckValue(kFlagProtectMerged));
  SetCheckBox(d_read_only_, summary.CheckValue(kFlagDeleteReadOnly));
  --update_count_;

  folder_list_->clearSelection();
  const std::int32_t copy = summary.CommonCopy();
  if (copy > 0 && copy <= folder_list_->topLevelItemCount()) {
    folder_list_->topLevelItem(copy - 1)->setSelected(true);
  }
  AutoShowOptionsForAction();
  UpdateFolderListIcons(summary.CommonAction());
}

void ConfirmForm::SetupForNoSelection() {
  EnableControls(false);
  conflict_descr_txt_->setText(QString());
  selected_fn_txt_->setText(QStringLiteral("Nothing selected."));
  selected_fn_txt_->setToolTip(QString());
  UpdateFolderList(-1);
}

void ConfirmForm::EnableControls(bool enable) {
  for (QWidget* control : std::initializer_list<QWidget*>{
           undecided_, do_nothing_, use_newest_, use_specific_, delete_all_,
           allow_create_new_, ow_read_only_, force_copy_, protect_merged_,
           d_read_only_, reset_to_default_btn_}) {
    control->setEnabled(enable);
  }
}

void ConfirmForm::SetOptionButtons(std::int32_t action, bool all_newest) {
  QRadioButton* on = nullptr;
  switch (action) {
    case kUndecided:
      on = undecided_;
      break;
    case kDoNothing:
      on = do_nothing_;
      break;
    case kDeleteAll:
      on = delete_all_;
      break;
    case kUseNewest:
      on = all_newest ? use_newest_ : use_specific_;
      break;
    default:
      break;
  }
  // An exclusive group cannot have every button off.
  option_buttons_->setExclusive(false);
  for (QAbstractButton* button : option_buttons_->buttons()) {
    button->setChecked(button == on);
  }
  option_buttons_->setExclusive(true);
}

void ConfirmForm::SetCheckBox(QCheckBox* box, int value) {
  switch (value) {
    case kCheckMixed:
      box->setCheckState(Qt::PartiallyChecked);
      break;
    case kCheckSet:
      box->setCheckState(Qt::Checked);
      break;
    default:
      box->setCheckState(Qt::Unchecked);
      break;
  }
  // Grey is only ever shown, never chosen: a click goes to checked or
  // clear.
  box->setTristate(value == kCheckMixed);
}

void ConfirmForm::AutoShowOptionsForAction() {
  const bool copying = use_newest_->isChecked() || use_specific_->isChecked();
  const bool deleting = delete_all_->isChecked();
  const std::uint16_t shown =
      FlagsThatMatter(copying, deleting, HasMergeToFolder(set_));
  allow_create_new_->setVisible((shown & kFlagCreate) != 0);
  ow_read_only_->setVisible((shown & kFlagOverwriteReadOnly) != 0);
  force_copy_->setVisible((shown & kFlagForceCopy) != 0);
  protect_merged_->setVisible((shown & kFlagProtectMerged) != 0);
  d_read_only_->setVisible((shown & kFlagDeleteReadOnly) != 0);
}

// --- Edits
// ---------------------------------------------------------------------

void ConfirmForm::ModifyAction(std::int32_t action, bool take_newest) {
  if (update_count_ > 0) return;
  const std::vector<long> selected = SelectedFiles();
  for (const long i : selected) ApplyAction(set_.WFile(i), action, take_newest);
  files_->FilesChanged(selected);
  // The source copies have moved.
  if (action == kUseNewest && take_newest) MatchCtlsToSelection();
  UpdateStats(false);
  UpdateFolderListIcons(action);
  AutoShowOptionsForAction();
}

void ConfirmForm::ModifyActionFlags(std::uint16_t bit, bool set) {
  if (update_count_ > 0) return;
  const std::vector<long> selected = SelectedFiles();
  for (const long i : selected) ApplyActionFlag(set_.WFile(i), bit, set);
  files_->FilesChanged(selected);
}

void ConfirmForm::FlagClicked(QCheckBox* box, std::uint16_t bit) {
  box->setTristate(false);
  ModifyActionFlags(bit, box->checkState() != Qt::Unchecked);
}

void ConfirmForm::FolderRowClicked(QTreeWidgetItem* item) {
  if (item == nullptr) return;
  const std::vector<long> selected = SelectedFiles();
  // With no file selected the option buttons are off and disabled: there is
  // nothing to give this copy to.
  if (selected.empty()) return;
  const int j = folder_list_->indexOfTopLevelItem(item) + 1;
  bool all_newest = true;
  // The no-effect marks stay as they are on this path.
  for (const long i : selected) {
    if (!PickSourceCopy(set_.WFile(i), j)) all_newest = false;
  }
  files_->FilesChanged(selected);
  ++update_count_;
  (all_newest ? use_newest_ : use_specific_)->setChecked(true);
  --update_count_;
  UpdateStats(false);
  UpdateFolderListIcons(kUseNewest);
  AutoShowOptionsForAction();
}

void ConfirmForm::FileListColumnClicked(int column) {
  if (column == sort_column_) {
    sort_order_ = sort_order_ == Qt::AscendingOrder ? Qt::DescendingOrder
                                                    : Qt::AscendingOrder;
  } else {
    sort_column_ = column;
  }
  shown_files_->sort(sort_column_, sort_order_);
  file_list_->header()->setSortIndicator(sort_column_, sort_order_);
}

void ConfirmForm::ShowModeClicked() {
  if (update_count_ > 0) return;
  FillFileList();
}

void ConfirmForm::RefreshClicked() {
  const std::vector<long> selected = SelectedFiles();
  for (const long i : selected) RefreshFromDisk(set_.WFile(i));
  files_->FilesChanged(selected);
  // What the disk holds now may be another conflict.
  UpdateStats(true);
  MatchCtlsToSelection();
}

void ConfirmForm::ResetToDefaultClicked() {
  const std::vector<long> selected = SelectedFiles();
  for (const long i : selected) ResetToDefault(set_.WFile(i));
  files_->FilesChanged(selected);
  UpdateStats(false);
  MatchCtlsToSelection();
}

// --- Ending the window
// -----------------------------------------------------------

void ConfirmForm::ContinueClicked() {
  if (FirstUndecidedFile(set_) != 0 &&
      MsgBox(kUndecidedQuestion,
             kMbYesNo | kMbExclamation | kMbDefaultButton2) != kIdYes) {
    return;
  }
  CloseWindow(QDialog::Accepted);
}

void ConfirmForm::CancelClicked() {
  set_.StopFlag = true;
  CloseWindow(QDialog::Rejected);
}

void ConfirmForm::HelpClicked() {
  OpenHelpPage(this, QStringLiteral("isdlg.html"));
}

void ConfirmForm::CloseWindow(int result) {
  closing_ = true;
  done(result);
}

void ConfirmForm::reject() {
  if (!closing_) {
    if (MsgBox(kCancelQuestion, kMbYesNo) != kIdYes) return;
    set_.StopFlag = true;
  }
  CloseWindow(QDialog::Rejected);
}

}  // namespace pairwell
