#include "ui/editor/sync_form.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QIcon>
#include <QInputDialog>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QResizeEvent>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>
#include <cmath>
#include <system_error>

#include "app/program.h"
#include "app/sync_driver.h"
#include "config/ini_file.h"
#include "config/ini_file_section.h"
#include "engine/action_texts.h"
#include "engine/synchronizer.h"
#include "ui/editor/cr_option_form.h"
#include "ui/editor/option_form.h"
#include "ui/editor/sync_multi_form.h"
#include "ui/help_pages.h"
#include "ui/qt_front_end.h"
#include "ui/run/about_form.h"
#include "ui/run/undo_form.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr char kCaption[] = "Pairwell v3.0 ALPHA";
// The inner area the controls are placed in when the window opens.
constexpr int kDesignWidth = 600;
constexpr int kDesignHeight = 500;
// The smallest width or height a stretching control is given.
constexpr int kMinStretch = 15;
// Where a folder row keeps its path flags, and the check state the list
// last reported (to tell a ticked box from other changes of the row).
constexpr int kTagRole = Qt::UserRole;
constexpr int kCheckedRole = Qt::UserRole + 1;

QString Q(const std::string& text) { return QString::fromStdString(text); }

// A theme icon, or the style's own when the desktop has no theme.
QIcon ArrowIcon(const QWidget& widget, const char* theme_name,
                QStyle::StandardPixmap fallback) {
  return QIcon::fromTheme(QString::fromLatin1(theme_name),
                          widget.style()->standardIcon(fallback));
}

template <typename T>
T* Named(T* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

}  // namespace

SyncForm::SyncForm(Program& program, QtFrontEnd& front_end, QWidget* parent)
    : QMainWindow(parent), program_(program), front_end_(front_end) {
  setObjectName(QStringLiteral("SyncForm"));
  setWindowTitle(QString::fromLatin1(kCaption));
  CreateControls();
  CreateMenus();
  ConnectControls();
  resize(kDesignWidth, kDesignHeight + menuBar()->sizeHint().height());

  InitResizer();
  const std::string stored =
      program_.TheINIFile().SectionI(0)->FindVar2("CurSyncSet", "");
  // Halves go to the even neighbour, as the number was always read.
  double position = std::nearbyint(LeadingNumber(stored));
  const int count = program_.SyncSets().Count();
  if (position < 1) position = 1;
  if (position > count) position = count;
  FillSetList();
  SelectSyncSet(static_cast<int>(position), false);
  min_width_ = width();
  min_height_ = height();
  if (program_.SimulationMode()) {
    setWindowTitle(windowTitle() + QStringLiteral(" (SIMULATION MODE)"));
  }
}

SyncForm::~SyncForm() = default;

// --- Controls ----------------------------------------------------------------

void SyncForm::CreateControls() {
  auto* area = new QWidget(this);
  area->setObjectName(QStringLiteral("InnerArea"));
  area->resize(kDesignWidth, kDesignHeight);
  setCentralWidget(area);

  sync_set_txt_ =
      Named(new QLabel(QStringLiteral("Sync S&et:"), area), "SyncSetTxt");
  sync_set_txt_->setGeometry(10, 13, 62, 20);
  set_name_ = Named(new QLineEdit(area), "SetName");
  set_name_->setGeometry(75, 10, 285, 24);
  sync_set_txt_->setBuddy(set_name_);
  auto picture_button = [&](const char* name, const char* tip,
                            const char* icon, QStyle::StandardPixmap fallback,
                            int x) {
    auto* button = Named(new QToolButton(area), name);
    button->setToolTip(QString::fromLatin1(tip));
    button->setIcon(ArrowIcon(*button, icon, fallback));
    button->setGeometry(x, 10, 28, 24);
    return button;
  };
  prev_set_btn_ = picture_button("PrevSetBtn", "Go to previous set",
                                 "go-previous", QStyle::SP_ArrowLeft, 368);
  next_set_btn_ = picture_button("NextSetBtn", "Go to next set", "go-next",
                                 QStyle::SP_ArrowRight, 398);
  set_up_btn_ = picture_button("SetUpBtn", "Move set upward in list", "go-up",
                               QStyle::SP_ArrowUp, 432);
  set_down_btn_ = picture_button("SetDownBtn", "Move set downward in list",
                                 "go-down", QStyle::SP_ArrowDown, 462);
  set_options_btn_ = Named(
      new QPushButton(QStringLiteral("&Options..."), area), "SetOptionsBtn");
  set_options_btn_->setGeometry(498, 9, 92, 26);
  set_num_txt_ = Named(new QLabel(QStringLiteral("[X of X]"), area), "SetNumTxt");
  set_num_txt_->setGeometry(75, 38, 200, 18);

  f2s_group_ = Named(
      new QGroupBox(QStringLiteral("&Folders to synchronize:"), area),
      "F2SGroup");
  f2s_group_->setGeometry(10, 60, 580, 262);
  folders_ = Named(new QTreeWidget(f2s_group_), "Folders");
  folders_->setGeometry(10, 24, 560, 160);
  folders_->setColumnCount(2);
  folders_->setHeaderLabels({QStringLiteral("Path"), QStringLiteral("Type")});
  folders_->setRootIsDecorated(false);
  folders_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  folders_->header()->setStretchLastSection(false);
  folders_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  folders_->header()->resizeSection(1, 110);
  add_folder_btn_ = Named(
      new QPushButton(QStringLiteral("&Add Folder..."), f2s_group_),
      "AddFolderBtn");
  add_folder_btn_->setGeometry(10, 194, 110, 26);
  remove_folder_btn_ = Named(
      new QPushButton(QStringLiteral("&Remove"), f2s_group_), "RemoveFolderBtn");
  remove_folder_btn_->setGeometry(125, 194, 80, 26);
  folder_up_btn_ = Named(new QToolButton(f2s_group_), "FolderUpBtn");
  folder_up_btn_->setToolTip(QStringLiteral("Move folder up"));
  folder_up_btn_->setIcon(
      ArrowIcon(*folder_up_btn_, "go-up", QStyle::SP_ArrowUp));
  folder_up_btn_->setGeometry(210, 194, 28, 26);
  folder_down_btn_ = Named(new QToolButton(f2s_group_), "FolderDownBtn");
  folder_down_btn_->setToolTip(QStringLiteral("Move folder down"));
  folder_down_btn_->setIcon(
      ArrowIcon(*folder_down_btn_, "go-down", QStyle::SP_ArrowDown));
  folder_down_btn_->setGeometry(242, 194, 28, 26);
  folder_type_ = Named(new QComboBox(f2s_group_), "FolderType");
  folder_type_->addItems({Q(FolderTypeName(kFolderSource)),
                          Q(FolderTypeName(kFolderMirrorTo)),
                          Q(FolderTypeName(kFolderMergeTo))});
  folder_type_->setGeometry(290, 194, 280, 26);
  folder_enable_ = Named(
      new QCheckBox(QStringLiteral("E&nable sync"), f2s_group_), "FolderEnable");
  folder_enable_->setGeometry(10, 228, 110, 22);
  folder_create_base_ = Named(
      new QCheckBox(QStringLiteral("Allow base folder creation"), f2s_group_),
      "FolderCreateBase");
  folder_create_base_->setGeometry(125, 228, 200, 22);
  folder_skip_on_error_ = Named(
      new QCheckBox(QStringLiteral("S&kip on error"), f2s_group_),
      "FolderSkipOnError");
  folder_skip_on_error_->setGeometry(330, 228, 130, 22);

  filter_group_ = Named(
      new QGroupBox(QStringLiteral("Wildcard Filters"), area), "FilterGroup");
  filter_group_->setGeometry(10, 328, 580, 126);
  auto filter_row = [&](const char* label_name, const char* label,
                        const char* box_name, int y, QLabel** label_out,
                        QLineEdit** box_out) {
    *label_out = Named(new QLabel(QString::fromLatin1(label), filter_group_),
                       label_name);
    (*label_out)->setGeometry(10, y + 2, 150, 20);
    *box_out = Named(new QLineEdit(filter_group_), box_name);
    (*box_out)->setGeometry(165, y, 405, 22);
    (*label_out)->setBuddy(*box_out);
  };
  filter_row("FileSpecTxt", "Fi&le include filters:", "FileSpec", 22,
             &file_spec_txt_, &file_spec_);
  filter_row("ExcludeSpecTxt", "File e&xclude filters:", "ExcludeSpec", 48,
             &exclude_spec_txt_, &exclude_spec_);
  filter_row("FolderSpecTxt", "Fol&der include filters:", "FolderSpec", 74,
             &folder_spec_txt_, &folder_spec_);
  filter_row("FolderExcludeSpecTxt", "Folder ex&clude Filters:",
             "FolderExcludeSpec", 100, &folder_exclude_spec_txt_,
             &folder_exclude_spec_);

  sync_btn_ =
      Named(new QPushButton(QStringLiteral("S&ynchronize"), area), "SyncBtn");
  sync_btn_->setGeometry(296, 464, 104, 28);
  interactive_sync_btn_ = Named(
      new QPushButton(QStringLiteral("&Interactive Sync..."), area),
      "InteractiveSyncBtn");
  interactive_sync_btn_->setGeometry(404, 464, 122, 28);
  help_btn_ = Named(new QPushButton(QStringLiteral("&Help"), area), "HelpBtn");
  help_btn_->setGeometry(530, 464, 60, 28);
}

void SyncForm::CreateMenus() {
  auto item = [this](QMenu* menu, const char* name, const char* caption,
                     void (SyncForm::*slot)()) {
    QAction* action = menu->addAction(QString::fromLatin1(caption));
    action->setObjectName(QString::fromLatin1(name));
    if (slot != nullptr) connect(action, &QAction::triggered, this, slot);
    return action;
  };
  auto separator = [](QMenu* menu, const char* name) {
    menu->addSeparator()->setObjectName(QString::fromLatin1(name));
  };

  mnu_file_ = Named(menuBar()->addMenu(QStringLiteral("&File")), "mnuFile");
  connect(item(mnu_file_, "mnuSynchronize", "&Synchronize", nullptr),
          &QAction::triggered, this, [this] { Synchronize(false); });
  connect(item(mnu_file_, "mnuInteractiveSynchronize",
               "&Interactive Synchronize...", nullptr),
          &QAction::triggered, this, [this] { Synchronize(true); });
  separator(mnu_file_, "mnuFileS1");
  item(mnu_file_, "mnuSynchronizeMulti", "Synchronize &multiple sets...",
       &SyncForm::SynchronizeMulti);
  item(mnu_file_, "mnuSynchronizeAll", "Synchronize &all sets",
       &SyncForm::SynchronizeAll);
  separator(mnu_file_, "mnuFileS2");
  connect(item(mnu_file_, "mnuExit", "Save and E&xit", nullptr),
          &QAction::triggered, this, [this] {
            program_.TheINIFile().SectionI(0)->AddVar(
                "CurSyncSet", std::to_string(cur_index_));
            SaveControlsToSet();
            ExitProgram(true);
          });
  connect(item(mnu_file_, "mnuExitWOSave", "Exit &Without Saving", nullptr),
          &QAction::triggered, this, [this] { ExitProgram(false); });
  separator(mnu_file_, "mnuFileS3");
  item(mnu_file_, "mnuUndoRun", "&Undo a Run...", &SyncForm::UndoRun);

  mnu_sync_sets_ =
      Named(menuBar()->addMenu(QStringLiteral("&Sync Sets")), "mnuSyncSets");
  item(mnu_sync_sets_, "mnuAddSyncSet", "&Add...", &SyncForm::AddSyncSet);
  item(mnu_sync_sets_, "mnuRemoveSyncSet", "&Remove",
       &SyncForm::RemoveSyncSet);
  separator(mnu_sync_sets_, "mnuSyncSetsS1");
  item(mnu_sync_sets_, "mnuOptions", "&Options...", &SyncForm::ShowOptions);
  item(mnu_sync_sets_, "mnuCROptions", "&Conflict-Resolution Options...",
       &SyncForm::ShowCROptions);
  QAction* list_separator = mnu_sync_sets_->addSeparator();
  list_separator->setObjectName(QStringLiteral("mnuSetList"));
  list_separator->setData(0);
  mnu_set_list_.push_back(list_separator);

  mnu_help_ = Named(menuBar()->addMenu(QStringLiteral("&Help")), "mnuHelp");
  connect(item(mnu_help_, "mnuHelpContents", "&Contents", nullptr),
          &QAction::triggered, this,
          [this] { ShowHelp(QStringLiteral("readme.html")); });
  separator(mnu_help_, "mnuHelpS1");
  item(mnu_help_, "mnuHelpAbout", "&About", &SyncForm::ShowAbout);
}

void SyncForm::ConnectControls() {
  connect(set_name_, &QLineEdit::textEdited, this, &SyncForm::OnSetNameEdited);
  connect(prev_set_btn_, &QToolButton::clicked, this, [this] {
    if (cur_index_ > 1) SelectSyncSet(cur_index_ - 1, true);
  });
  connect(next_set_btn_, &QToolButton::clicked, this, [this] {
    if (cur_index_ < program_.SyncSets().Count()) {
      SelectSyncSet(cur_index_ + 1, true);
    }
  });
  connect(set_up_btn_, &QToolButton::clicked, this, [this] { MoveSet(-1); });
  connect(set_down_btn_, &QToolButton::clicked, this, [this] { MoveSet(1); });
  connect(set_options_btn_, &QPushButton::clicked, this,
          &SyncForm::ShowOptions);

  connect(folders_, &QTreeWidget::itemClicked, this,
          [this](QTreeWidgetItem* item, int) { OnFolderClicked(item); });
  // Keyboard and mouse moves of the selection are handled like a click on
  // the selected row; the view reports the selection and the current row
  // one after the other, in either order.
  connect(folders_, &QTreeWidget::itemSelectionChanged, this,
          &SyncForm::OnSelectionMoved);
  connect(folders_, &QTreeWidget::currentItemChanged, this,
          &SyncForm::OnSelectionMoved);
  connect(folders_, &QTreeWidget::itemChanged, this,
          &SyncForm::OnFolderChanged);
  // The row's box lives in its first column: keeping the current cell there
  // lets Space tick it wherever in the row the person clicked.
  connect(folders_->selectionModel(), &QItemSelectionModel::currentChanged,
          this, [this](const QModelIndex& current) {
            if (current.isValid() && current.column() != 0) {
              folders_->selectionModel()->setCurrentIndex(
                  current.siblingAtColumn(0), QItemSelectionModel::NoUpdate);
            }
          });
  for (QCheckBox* box :
       {folder_enable_, folder_create_base_, folder_skip_on_error_}) {
    connect(box, &QCheckBox::toggled, this, [this] { StoreFolderControls(); });
  }
  connect(folder_type_, &QComboBox::currentIndexChanged, this,
          [this] { StoreFolderControls(); });
  connect(add_folder_btn_, &QPushButton::clicked, this, &SyncForm::AddFolder);
  connect(remove_folder_btn_, &QPushButton::clicked, this,
          &SyncForm::RemoveFolders);
  connect(folder_up_btn_, &QToolButton::clicked, this, [this] { MoveFolder(-1); });
  connect(folder_down_btn_, &QToolButton::clicked, this,
          [this] { MoveFolder(1); });

  connect(sync_btn_, &QPushButton::clicked, this, [this] { Synchronize(false); });
  connect(interactive_sync_btn_, &QPushButton::clicked, this,
          [this] { Synchronize(true); });
  connect(help_btn_, &QPushButton::clicked, this,
          [this] { ShowHelp(QStringLiteral("syncdlg.html")); });
}

// --- Resizing ----------------------------------------------------------------

QRect SyncForm::GetResizeRect() const { return centralWidget()->rect(); }

void SyncForm::AddResizeItem(ResizeRecord& record, QWidget* control,
                             std::int16_t container, std::int16_t h_mode,
                             std::int16_t v_mode) {
  const QRect area = GetResizeRect();
  record = ResizeRecord();
  record.control = control;
  record.container = container;
  record.h_mode = h_mode;
  record.v_mode = v_mode;
  const QRect place = control->geometry();
  record.h_offset = h_mode != kKeepFar ? place.left() - area.left()
                                       : area.right() + 1 - place.left();
  record.v_offset = v_mode != kKeepFar ? place.top() - area.top()
                                       : area.bottom() + 1 - place.top();
  if (h_mode == kStretch) record.width_margin = area.width() - place.width();
  if (v_mode == kStretch) {
    record.height_margin = area.height() - place.height();
  }
}

void SyncForm::ApplyResizeItem(const ResizeRecord& record) {
  const QRect area = GetResizeRect();
  QRect place = record.control->geometry();
  if (record.h_mode == kKeepFar) {
    place.moveLeft(area.right() + 1 - record.h_offset);
  } else {
    place.moveLeft(area.left() + record.h_offset);
    if (record.h_mode == kStretch) {
      place.setWidth(std::max(kMinStretch, area.width() - record.width_margin));
    }
  }
  if (record.v_mode == kKeepFar) {
    place.moveTop(area.bottom() + 1 - record.v_offset);
  } else {
    place.moveTop(area.top() + record.v_offset);
    if (record.v_mode == kStretch) {
      place.setHeight(
          std::max(kMinStretch, area.height() - record.height_margin));
    }
  }
  record.control->setGeometry(place);
}

void SyncForm::InitResizer() {
  const struct {
    QWidget* control;
    std::int16_t h_mode;
    std::int16_t v_mode;
  } kItems[kResizeItems] = {
      {sync_set_txt_, kKeepNear, kKeepNear},
      {set_num_txt_, kKeepNear, kKeepNear},
      {set_name_, kStretch, kKeepNear},
      {prev_set_btn_, kKeepFar, kKeepNear},
      {next_set_btn_, kKeepFar, kKeepNear},
      {set_up_btn_, kKeepFar, kKeepNear},
      {set_down_btn_, kKeepFar, kKeepNear},
      {set_options_btn_, kKeepFar, kKeepNear},
      {f2s_group_, kStretch, kStretch},
      {folders_, kStretch, kStretch},
      {add_folder_btn_, kKeepNear, kKeepFar},
      {remove_folder_btn_, kKeepNear, kKeepFar},
      {folder_up_btn_, kKeepNear, kKeepFar},
      {folder_down_btn_, kKeepNear, kKeepFar},
      {folder_type_, kStretch, kKeepFar},
      {folder_enable_, kKeepNear, kKeepFar},
      {folder_create_base_, kKeepNear, kKeepFar},
      {folder_skip_on_error_, kKeepNear, kKeepFar},
      {filter_group_, kStretch, kKeepFar},
      {file_spec_txt_, kKeepNear, kKeepNear},
      {file_spec_, kStretch, kKeepNear},
      {exclude_spec_txt_, kKeepNear, kKeepNear},
      {exclude_spec_, kStretch, kKeepNear},
      {folder_spec_txt_, kKeepNear, kKeepNear},
      {folder_spec_, kStretch, kKeepNear},
      {folder_exclude_spec_txt_, kKeepNear, kKeepNear},
      {folder_exclude_spec_, kStretch, kKeepNear},
      {sync_btn_, kKeepFar, kKeepFar},
      {interactive_sync_btn_, kKeepFar, kKeepFar},
      {help_btn_, kKeepFar, kKeepFar},
  };
  for (int i = 1; i <= kResizeItems; ++i) {
    const auto& item = kItems[i - 1];
    AddResizeItem(resize_items_[i], item.control, 1, item.h_mode, item.v_mode);
  }
}

void SyncForm::HandleResize() {
  for (int i = 1; i <= kResizeItems; ++i) ApplyResizeItem(resize_items_[i]);
}

void SyncForm::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  // Until loading ends there is no size to keep.
  if (min_width_ == 0 || windowState() != Qt::WindowNoState) return;
  if (width() < min_width_) {
    resize(min_width_, height());
    return;
  }
  if (height() < min_height_) {
    resize(width(), min_height_);
    return;
  }
  HandleResize();
}

// --- Enabling ----------------------------------------------------------------

void SyncForm::EnableAll(bool enable) {
  for (int i = 1; i <= kResizeItems; ++i) {
    resize_items_[i].control->setEnabled(enable);
  }
  mnu_file_->setEnabled(enable);
  mnu_sync_sets_->setEnabled(enable);
  mnu_file_->menuAction()->setEnabled(enable);
  mnu_sync_sets_->menuAction()->setEnabled(enable);
  if (enable) AutoEnable();
}

bool SyncForm::IsAnyItemSelected(const QTreeWidget& list) {
  const QTreeWidgetItem* item = list.currentItem();
  return item != nullptr && item->isSelected();
}

void SyncForm::AutoEnable() {
  const bool selected = IsAnyItemSelected(*folders_);
  folder_enable_->setEnabled(selected);
  const bool sub = selected && folder_enable_->isChecked();
  folder_create_base_->setEnabled(sub);
  folder_type_->setEnabled(sub);
  folder_skip_on_error_->setEnabled(sub);
  if (!selected) {
    folder_up_btn_->setEnabled(false);
    folder_down_btn_->setEnabled(false);
    remove_folder_btn_->setEnabled(false);
  } else {
    const int row = folders_->indexOfTopLevelItem(folders_->currentItem());
    folder_up_btn_->setEnabled(row != 0);
    folder_down_btn_->setEnabled(row != folders_->topLevelItemCount() - 1);
    remove_folder_btn_->setEnabled(true);
  }
  const int count = program_.SyncSets().Count();
  set_up_btn_->setEnabled(cur_index_ != 1);
  prev_set_btn_->setEnabled(cur_index_ != 1);
  set_down_btn_->setEnabled(cur_index_ != count);
  next_set_btn_->setEnabled(cur_index_ != count);
  folder_skip_on_error_->setVisible(folders_->topLevelItemCount() >= 3);
  const bool recursive = cur_set_ != nullptr && cur_set_->Recursive;
  folder_spec_->setEnabled(recursive);
  folder_exclude_spec_->setEnabled(recursive);
}

// --- Sets ----------------------------------------------------------------------

void SyncForm::FillSetList() {
  const int count = program_.SyncSets().Count();
  for (int i = 1; i <= count; ++i) {
    if (static_cast<int>(mnu_set_list_.size()) <= i) {
      QAction* action = mnu_sync_sets_->addAction(QString());
      action->setObjectName(QStringLiteral("mnuSetList"));
      action->setData(i);
      action->setCheckable(true);
      connect(action, &QAction::triggered, this,
              [this, i] { SelectSyncSet(i, true); });
      mnu_set_list_.push_back(action);
    }
    mnu_set_list_[static_cast<std::size_t>(i)]->setText(
        Q(program_.SyncSets().Item(i).Name));
  }
  while (static_cast<int>(mnu_set_list_.size()) > count + 1) {
    delete mnu_set_list_.back();
    mnu_set_list_.pop_back();
  }
}

void SyncForm::SetSetListLabel() {
  const int count = program_.SyncSets().Count();
  set_num_txt_->setText(QString::number(cur_index_) + QStringLiteral(" of ") +
                        QString::number(count));
  for (int i = 1; i < static_cast<int>(mnu_set_list_.size()); ++i) {
    mnu_set_list_[static_cast<std::size_t>(i)]->setChecked(i == cur_index_);
  }
}

void SyncForm::SelectSyncSet(int index, bool save_first) {
  if (index == cur_index_ && cur_set_ != nullptr &&
      &program_.SyncSets().Item(index) == cur_set_) {
    return;
  }
  if (save_first) SaveControlsToSet();
  cur_set_ = &program_.SyncSets().Item(index);
  cur_index_ = index;
  FillSetList();
  LoadSetToControls();
  SetSetListLabel();
  AutoEnable();
}

void SyncForm::OnSetNameEdited(const QString& text) {
  cur_set_->Name = text.toStdString();
  mnu_set_list_[static_cast<std::size_t>(cur_index_)]->setText(text);
}

void SyncForm::MoveSet(int step) {
  const int target = cur_index_ + step;
  if (target < 1 || target > program_.SyncSets().Count()) {
    QApplication::beep();
    return;
  }
  program_.SyncSets().Swap(cur_index_, target);
  cur_index_ = target;
  SetSetListLabel();
  AutoEnable();
}

void SyncForm::AddSyncSet() {
  const QString name = QInputDialog::getText(
      this, QStringLiteral("Add Sync List"),
      QStringLiteral("Enter a name for a new synchronization set."),
      QLineEdit::Normal, QStringLiteral("Untitled"));
  if (name.isEmpty()) return;
  program_.NewSyncSet(name.toStdString());
  FillSetList();
  SelectSyncSet(program_.SyncSets().Count(), true);
}

void SyncForm::RemoveSyncSet() {
  SyncSetList& sets = program_.SyncSets();
  if (sets.Count() == 1) {
    MsgBox("Sorry, you can't remove the last sync set.", kMbInformation);
    return;
  }
  if (cur_set_->PathCount() > 0 &&
      MsgBox("Are you sure you want to delete the current Sync Set?",
             kMbYesNo | kMbQuestion) == kIdNo) {
    return;
  }
  const int removed = cur_index_;
  cur_set_ = nullptr;
  sets.Remove(removed);
  FillSetList();
  // The set that now holds the removed place is shown, or the last one when
  // the last was removed; the removed set's edits go with it.
  cur_index_ = 0;
  SelectSyncSet(std::min(removed, sets.Count()), false);
}

// --- Folder list and filters ---------------------------------------------------

std::int32_t SyncForm::TagOf(const QTreeWidgetItem& item) {
  return item.data(0, kTagRole).toInt();
}

void SyncForm::SetTag(QTreeWidgetItem& item, std::int32_t flags) {
  item.setData(0, kTagRole, flags);
}

int SyncForm::PFToTypeIndex(std::int32_t flags) {
  if (flags & kFolderMirrorTo) return 1;
  if (flags & kFolderMergeTo) return 2;
  return 0;
}

std::int32_t SyncForm::TypeIndexToPF(int index) {
  return index == 1 || index == 2 ? index : 0;
}

QTreeWidgetItem* SyncForm::SelectedFolder() const {
  return IsAnyItemSelected(*folders_) ? folders_->currentItem() : nullptr;
}

void SyncForm::LoadSetToControls() {
  set_name_->setText(Q(cur_set_->Name));
  const bool was_updating = updating_;
  updating_ = true;
  folders_->clear();
  for (int i = cur_set_->PathCount(); i >= 1; --i) {
    auto* item = new QTreeWidgetItem();
    item->setText(0, Q(cur_set_->Path(i)));
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    SetTag(*item, cur_set_->PathFlags(i));
    folders_->insertTopLevelItem(0, item);
    UpdateFolderItem(1);
  }
  updating_ = was_updating;
  file_spec_->setText(Q(cur_set_->FileSpec));
  exclude_spec_->setText(Q(cur_set_->ExcludeSpec));
  folder_spec_->setText(Q(cur_set_->FolderSpec));
  folder_exclude_spec_->setText(Q(cur_set_->FolderExcludeSpec));
}

void SyncForm::SaveControlsToSet() {
  cur_set_->Clear();
  const int rows = folders_->topLevelItemCount();
  for (int r = 0; r < rows; ++r) {
    const QTreeWidgetItem& item = *folders_->topLevelItem(r);
    cur_set_->PathAdd(item.text(0).toStdString());
    std::int32_t flags = TagOf(item);
    // Skipping a folder on error needs at least three folders to be left.
    if (rows < 3) flags &= ~kFolderSkipOnError;
    cur_set_->SetPathFlags(cur_set_->PathCount(), flags);
  }
  cur_set_->FileSpec = file_spec_->text().toStdString();
  cur_set_->ExcludeSpec = exclude_spec_->text().toStdString();
  cur_set_->FolderSpec = folder_spec_->text().toStdString();
  cur_set_->FolderExcludeSpec = folder_exclude_spec_->text().toStdString();
}

std::int32_t SyncForm::ControlsToFlags() const {
  std::int32_t flags = folder_enable_->isChecked() ? kFolderEnabled : 0;
  flags |= TypeIndexToPF(folder_type_->currentIndex());
  if (folder_create_base_->isChecked()) flags |= kFolderAllowBaseCreation;
  if (folder_skip_on_error_->isChecked()) flags |= kFolderSkipOnError;
  return flags;
}

void SyncForm::FlagsToControls(std::int32_t flags) {
  // Not guarded: each control that changes stores all four into the row,
  // and the last one leaves the row's flags as they were loaded.
  folder_enable_->setChecked(Bool2Int(flags & kFolderEnabled) == 1);
  folder_type_->setCurrentIndex(PFToTypeIndex(flags));
  folder_create_base_->setChecked(
      Bool2Int(flags & kFolderAllowBaseCreation) == 1);
  folder_skip_on_error_->setChecked(Bool2Int(flags & kFolderSkipOnError) == 1);
}

void SyncForm::UpdateFolderItem(int row) {
  QTreeWidgetItem& item = *folders_->topLevelItem(row - 1);
  const std::int32_t flags = TagOf(item);
  item.setCheckState(0, (flags & kFolderEnabled) ? Qt::Checked : Qt::Unchecked);
  item.setText(1, folder_type_->itemText(PFToTypeIndex(flags)));
}

void SyncForm::StoreFolderControls() {
  if (updating_) return;
  QTreeWidgetItem* item = SelectedFolder();
  if (item == nullptr) return;
  SetTag(*item, ControlsToFlags());
  updating_ = true;
  UpdateFolderItem(folders_->indexOfTopLevelItem(item) + 1);
  updating_ = false;
  AutoEnable();
}

void SyncForm::OnFolderClicked(QTreeWidgetItem* item) {
  // A click on another row's check box leaves the selection where it was;
  // showing that row's flags would store them into the selected row.
  if (item == nullptr || updating_ || item != SelectedFolder()) return;
  FlagsToControls(TagOf(*item));
  AutoEnable();
}

void SyncForm::OnSelectionMoved() {
  if (updating_) return;
  QTreeWidgetItem* item = SelectedFolder();
  if (item == nullptr) {
    AutoEnable();  // nothing selected: the row controls go off
    return;
  }
  OnFolderClicked(item);
}

void SyncForm::OnFolderChanged(QTreeWidgetItem* item, int column) {
  if (column != 0) return;
  // The row reports every change of its data; only a ticked or cleared
  // box matters here.
  const bool checked = item->checkState(0) == Qt::Checked;
  const QVariant seen = item->data(0, kCheckedRole);
  if (seen.isValid() && seen.toBool() == checked) return;
  item->setData(0, kCheckedRole, checked);
  if (!seen.isValid() || updating_) return;
  if (item == SelectedFolder()) {
    folder_enable_->setChecked(checked);
    return;
  }
  const std::int32_t flags = TagOf(*item);
  SetTag(*item, checked ? (flags | kFolderEnabled) : (flags & ~kFolderEnabled));
}

void SyncForm::AddFolder() {
  const int rows = folders_->topLevelItemCount();
  if (rows == kMaxFolders) {
    MsgBox("The maximum number of folders to synchronize (" +
               std::to_string(kMaxFolders) +
               ") has been reached.  You cannot add any more.",
           kMbCritical);
    return;
  }
  const std::string prompt =
      rows == 0 ? "Select the first folder to be synchronized.  After adding "
                  "this folder, you must as a second folder with which to "
                  "synchronize."
                : "Select a folder with which to synchronize.";
  const std::string folder = front_end_.BrowseForFolder(prompt);
  if (folder.empty()) return;
  auto* item = new QTreeWidgetItem();
  item->setText(0, Q(folder));
  item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
  SetTag(*item, kFolderEnabled);
  updating_ = true;
  folders_->addTopLevelItem(item);
  UpdateFolderItem(folders_->topLevelItemCount());
  updating_ = false;
  AutoEnable();
}

void SyncForm::RemoveFolders() {
  for (int r = folders_->topLevelItemCount() - 1; r >= 0; --r) {
    if (folders_->topLevelItem(r)->isSelected()) {
      delete folders_->takeTopLevelItem(r);
    }
  }
  AutoEnable();
}

void SyncForm::SwapListItems(QTreeWidget& list, int i, int j) {
  QTreeWidgetItem& a = *list.topLevelItem(i - 1);
  QTreeWidgetItem& b = *list.topLevelItem(j - 1);
  const std::int32_t tag_a = TagOf(a);
  SetTag(a, TagOf(b));
  SetTag(b, tag_a);
  for (int column = 0; column < list.columnCount(); ++column) {
    const QString text_a = a.text(column);
    a.setText(column, b.text(column));
    b.setText(column, text_a);
  }
  const bool selected_a = a.isSelected();
  a.setSelected(b.isSelected());
  b.setSelected(selected_a);
  if (list.currentItem() == &a) {
    list.setCurrentItem(&b, 0, QItemSelectionModel::NoUpdate);
  } else if (list.currentItem() == &b) {
    list.setCurrentItem(&a, 0, QItemSelectionModel::NoUpdate);
  }
}

void SyncForm::MoveFolder(int step) {
  QTreeWidgetItem* item = SelectedFolder();
  if (item == nullptr) return;
  const int row = folders_->indexOfTopLevelItem(item) + 1;
  const int target = row + step;
  if (target < 1 || target > folders_->topLevelItemCount()) {
    QApplication::beep();
    return;
  }
  updating_ = true;
  SwapListItems(*folders_, row, target);
  updating_ = false;
  AutoEnable();
}

// --- Runs and other commands ---------------------------------------------------

void SyncForm::RunSets(const std::vector<Synchronizer*>& sets,
                       bool interactive) {
  RunOptions options;
  options.interactive = interactive;
  // The window keeps every set in memory and writes the whole configuration
  // when the program exits.
  options.save_last_sync_dates = false;
  RunSyncSets(program_, sets, options);
}

void SyncForm::Synchronize(bool interactive) {
  SaveControlsToSet();
  RunSets({cur_set_}, interactive);
}

void SyncForm::SynchronizeAll() {
  SaveControlsToSet();
  std::vector<Synchronizer*> sets;
  for (int i = 1; i <= program_.SyncSets().Count(); ++i) {
    sets.push_back(&program_.SyncSets().Item(i));
  }
  RunSets(sets, false);
}

void SyncForm::SynchronizeMulti() {
  if (multi_form_ == nullptr) multi_form_ = new SyncMultiForm(program_, this);
  multi_form_->UpdateList();
  const std::vector<int> chosen = multi_form_->ChooseSets();
  if (chosen.empty()) return;
  // The set on show runs with what the window shows of it.
  SaveControlsToSet();
  std::vector<Synchronizer*> sets;
  for (const int i : chosen) sets.push_back(&program_.SyncSets().Item(i));
  RunSets(sets, false);
}

void SyncForm::UndoRun() {
  // The runs are looked up in the folders the window shows.
  SaveControlsToSet();
  UndoForm form(program_, *cur_set_, this);
  form.Run();
}

void SyncForm::ShowOptions() {
  if (option_form_ == nullptr) option_form_ = new OptionForm(this);
  option_form_->DoOptionsDialog(*cur_set_);
  // The folder filters follow a changed recursion option.
  AutoEnable();
}

void SyncForm::ShowCROptions() {
  if (cr_option_form_ == nullptr) cr_option_form_ = new CROptionForm(this);
  cr_option_form_->DoOptionsDialog(*cur_set_);
}

void SyncForm::ShowAbout() {
  AboutForm about(this);
  about.exec();
}

void SyncForm::ShowHelp(const QString& page) { OpenHelpPage(this, page); }

void SyncForm::ExitProgram(bool save) {
  if (save) {
    try {
      program_.SaveSettings();
    } catch (const std::system_error& error) {
      MsgBox(std::string("The settings could not be saved: ") + error.what() +
                 "\n\nNothing was changed in the configuration file.",
             kMbCritical);
      return;
    }
  }
  // A run still in its first phase changes nothing once stopped.
  if (Synchronizer* running = program_.Run().current_set) {
    running->StopFlag = true;
  }
  closing_from_code_ = true;
  close();
  QCoreApplication::exit(0);
}

void SyncForm::closeEvent(QCloseEvent* event) {
  program_.TheINIFile().SectionI(0)->AddVar("CurSyncSet",
                                            std::to_string(cur_index_));
  if (closing_from_code_) {
    event->accept();
    return;
  }
  event->ignore();
  const RunState& run = program_.Run();
  if (run.current_set != nullptr && !run.first_phase) {
    MsgBox(
        "Pairwell cannot exit while a synchronization is in progress.  If "
        "you stop the synch or wait for it to finish, you may then close the "
        "program.",
        kMbExclamation);
    return;
  }
  SaveControlsToSet();
  ExitProgram(true);
  if (closing_from_code_) event->accept();
}

}  // namespace pairwell
