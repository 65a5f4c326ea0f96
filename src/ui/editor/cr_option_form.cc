#include "ui/editor/cr_option_form.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QVBoxLayout>
#include <string>

#include "engine/synchronizer.h"
#include "ui/help_pages.h"

namespace pairwell {

namespace {

constexpr char kCaption[] = "Conflict Resolution Options";
constexpr char kLabel2Text[] =
    "For each type of situation, you can tell Pairwell to handle it "
    "automatically by checking the checking the box to its left.  Then, set "
    "the action to take below.";
constexpr char kDescriptionDesignText[] =
    "Select a conflict type (left) to see its \r\ndescription here.\r\n";

// Descriptions keep CR LF pairs as read from the file; the text box wants
// plain line feeds or it shows the CR as an extra break.
QString ToBoxText(const std::string& text) {
  QString result = QString::fromStdString(text);
  result.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  result.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return result;
}

template <typename W>
W* Named(W* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

}  // namespace

CROptionForm::CROptionForm(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("CROptionForm"));
  setWindowTitle(QString::fromLatin1(kCaption));

  label2_ = Named(new QLabel(QString::fromLatin1(kLabel2Text), this), "Label2");
  label2_->setWordWrap(true);

  con_list_ = Named(new QTreeWidget(this), "ConList");
  con_list_->setColumnCount(1);
  con_list_->setHeaderLabels({QStringLiteral("Test")});
  // One column of names: a header would only repeat the obvious.
  con_list_->header()->hide();
  con_list_->setRootIsDecorated(false);
  con_list_->setSelectionMode(QAbstractItemView::SingleSelection);
  con_list_->setMinimumWidth(220);

  con_description_ = Named(new QPlainTextEdit(this), "ConDescription");
  // Only a place to read the type's explanation; nothing typed is kept.
  con_description_->setReadOnly(true);

  frame1_ = Named(
      new QGroupBox(QStringLiteral("Default action when conflict arises"), this),
      "Frame1");
  undecided_ = Named(
      new QRadioButton(
          QStringLiteral("Undecided: force user to select an action manually"),
          frame1_),
      "Undecided");
  label1_ = Named(
      new QLabel(QStringLiteral("(This option is only available when not "
                                "using automatic handling)"),
                 frame1_),
      "Label1");
  label1_->setWordWrap(true);
  label1_->setIndent(20);
  do_nothing_ =
      Named(new QRadioButton(QStringLiteral("Do &nothing"), frame1_), "DoNothing");
  use_newest_ = Named(
      new QRadioButton(QStringLiteral("Use the file with the &most recent date"),
                       frame1_),
      "UseNewest");
  delete_all_ = Named(
      new QRadioButton(QStringLiteral("&Delete all copies of the file"), frame1_),
      "DeleteAll");
  create_dest_ = Named(
      new QCheckBox(
          QStringLiteral(
              "If destination file does not exist, allow it to be &created"),
          frame1_),
      "CreateDest");
  resolutions_ = new QButtonGroup(this);
  resolutions_->addButton(undecided_, kActionUndecided);
  resolutions_->addButton(do_nothing_, kActionDoNothing);
  resolutions_->addButton(delete_all_, kActionDeleteAll);
  resolutions_->addButton(use_newest_, kActionUseNewest);

  auto* frame_layout = new QVBoxLayout(frame1_);
  frame_layout->addWidget(undecided_);
  frame_layout->addWidget(label1_);
  frame_layout->addWidget(do_nothing_);
  frame_layout->addWidget(use_newest_);
  frame_layout->addWidget(delete_all_);
  frame_layout->addSpacing(6);
  frame_layout->addWidget(create_dest_);

  allow_abnormal_ = Named(
      new QCheckBox(QStringLiteral("Allow abnormal actions"), this),
      "AllowAbnormal");

  reset_btn_ =
      Named(new QPushButton(QStringLiteral("Reset to Default"), this), "ResetBtn");
  reset_all_btn_ = Named(
      new QPushButton(QStringLiteral("Reset Everything to Defaults"), this),
      "ResetAllBtn");
  ok_btn_ = Named(new QPushButton(QStringLiteral("OK"), this), "OKBtn");
  ok_btn_->setDefault(true);
  cancel_btn_ = Named(new QPushButton(QStringLiteral("Cancel"), this), "CancelBtn");
  help_btn_ = Named(new QPushButton(QStringLiteral("Help"), this), "HelpBtn");

  auto* top = new QHBoxLayout;
  top->addWidget(con_list_, 1);
  top->addWidget(con_description_, 1);

  auto* reset_row = new QHBoxLayout;
  reset_row->addWidget(allow_abnormal_);
  reset_row->addStretch(1);
  reset_row->addWidget(reset_btn_);
  reset_row->addWidget(reset_all_btn_);

  auto* button_row = new QHBoxLayout;
  button_row->addStretch(1);
  button_row->addWidget(ok_btn_);
  button_row->addWidget(cancel_btn_);
  button_row->addWidget(help_btn_);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label2_);
  layout->addLayout(top, 1);
  layout->addWidget(frame1_);
  layout->addLayout(reset_row);
  layout->addLayout(button_row);

  // The selection, not the click, so that choosing a row with the keys
  // shows it too; the view's own focus handling moves only the current
  // index, which leaves the dialog with no row chosen as it should.
  connect(con_list_, &QTreeWidget::itemSelectionChanged, this,
          &CROptionForm::OnSelectionChanged);
  connect(undecided_, &QRadioButton::toggled, this,
          [this](bool on) { OnResolutionChosen(kActionUndecided, on); });
  connect(do_nothing_, &QRadioButton::toggled, this,
          [this](bool on) { OnResolutionChosen(kActionDoNothing, on); });
  connect(delete_all_, &QRadioButton::toggled, this,
          [this](bool on) { OnResolutionChosen(kActionDeleteAll, on); });
  connect(use_newest_, &QRadioButton::toggled, this,
          [this](bool on) { OnResolutionChosen(kActionUseNewest, on); });
  connect(create_dest_, &QCheckBox::toggled, this,
          &CROptionForm::OnCreateDestToggled);
  connect(allow_abnormal_, &QCheckBox::toggled, this,
          &CROptionForm::AutoEnable);
  connect(reset_btn_, &QPushButton::clicked, this,
          &CROptionForm::OnResetClicked);
  connect(reset_all_btn_, &QPushButton::clicked, this,
          &CROptionForm::OnResetAllClicked);
  connect(ok_btn_, &QPushButton::clicked, this, &CROptionForm::OnOKClicked);
  connect(cancel_btn_, &QPushButton::clicked, this, &CROptionForm::reject);
  connect(help_btn_, &QPushButton::clicked, this,
          &CROptionForm::OnHelpClicked);

  ClearControls();
  AutoEnable();
}

CROptionForm::~CROptionForm() = default;

void CROptionForm::DoOptionsDialog(Synchronizer& set) {
  ClearControls();
  set_ = &set;
  FillList();
  AutoEnable();
  allow_abnormal_->setChecked(false);
  setWindowTitle(QStringLiteral("Options for ") +
                 QString::fromStdString(set.Name));
  exec();
  // Nothing of this opening may leak into the next one or point at the set.
  work_types_.clear();
  cur_type_ = -1;
  set_ = nullptr;
}

void CROptionForm::AutoEnable() {
  const ConflictDescriptor* type = CurType();
  if (type == nullptr) {
    for (QAbstractButton* button : resolutions_->buttons()) {
      button->setEnabled(false);
    }
    create_dest_->setEnabled(false);
    reset_btn_->setEnabled(false);
    return;
  }
  const bool abnormal = allow_abnormal_->isChecked();
  for (QAbstractButton* button : resolutions_->buttons()) {
    const int action = resolutions_->id(button);
    button->setEnabled(abnormal || (type->AllowedActions >> action) & 1U);
  }
  create_dest_->setEnabled(true);
  reset_btn_->setEnabled(true);
}

void CROptionForm::CopyFromDescr() {
  const ConflictDescriptor* type = CurType();
  if (type == nullptr) return;
  con_description_->setPlainText(ToBoxText(type->Description));
  if (type->Action >= kActionUndecided && type->Action <= kActionUseNewest) {
    resolutions_->button(type->Action)->setChecked(true);
  }
  create_dest_->setChecked(type->CreateDest);
  allow_abnormal_->setVisible((type->AllowedActions & 15U) != 15U);
}

void CROptionForm::ClearControls() {
  work_types_.clear();
  cur_type_ = -1;
  con_list_->clear();
  con_description_->setPlainText(ToBoxText(kDescriptionDesignText));
  // An exclusive group refuses to end with no button checked.
  resolutions_->setExclusive(false);
  for (QAbstractButton* button : resolutions_->buttons()) {
    button->setChecked(false);
  }
  resolutions_->setExclusive(true);
  create_dest_->setChecked(false);
  allow_abnormal_->setChecked(false);
  allow_abnormal_->setVisible(true);
}

void CROptionForm::FillList() {
  con_list_->clear();
  work_types_.clear();
  cur_type_ = -1;
  for (int i = 1; i <= set_->ConflictTypeCount(); ++i) {
    const ConflictDescriptor& type = set_->ConflictTypes(i);
    if (!type.Configurable) continue;
    ConflictDescriptor copy;
    copy.CopyFrom(type);
    work_types_.push_back(copy);
    auto* item = new QTreeWidgetItem(con_list_);
    item->setText(0, QString::fromStdString(type.Name));
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    // A ticked row means automatic handling, the opposite of ListChecked.
    item->setCheckState(0, type.ListChecked ? Qt::Unchecked : Qt::Checked);
  }
  con_list_->clearSelection();
  con_list_->setCurrentItem(nullptr);
}

void CROptionForm::StoreBack() {
  int row = 0;
  for (int i = 1; i <= set_->ConflictTypeCount() &&
                  row < static_cast<int>(work_types_.size());
       ++i) {
    ConflictDescriptor& type = set_->ConflictTypes(i);
    if (!type.Configurable) continue;
    ConflictDescriptor& work = work_types_[row];
    work.ListChecked =
        con_list_->topLevelItem(row)->checkState(0) != Qt::Checked;
    type.CopyFrom(work);
    ++row;
  }
}

ConflictDescriptor* CROptionForm::CurType() {
  if (cur_type_ < 0 || cur_type_ >= static_cast<int>(work_types_.size())) {
    return nullptr;
  }
  return &work_types_[cur_type_];
}

void CROptionForm::OnSelectionChanged() {
  const QList<QTreeWidgetItem*> items = con_list_->selectedItems();
  if (items.isEmpty()) return;
  const int row = con_list_->indexOfTopLevelItem(items.first());
  if (row < 0) return;
  cur_type_ = row;
  CopyFromDescr();
  AutoEnable();
}

void CROptionForm::OnResolutionChosen(int action, bool checked) {
  // Only the button that became checked speaks; its partner's unchecking
  // must not overwrite the choice.
  if (!checked) return;
  ConflictDescriptor* type = CurType();
  if (type == nullptr) return;
  type->Action = action;
}

void CROptionForm::OnCreateDestToggled(bool checked) {
  ConflictDescriptor* type = CurType();
  if (type == nullptr) return;
  type->CreateDest = checked;
}

void CROptionForm::OnResetClicked() {
  ConflictDescriptor* type = CurType();
  if (type == nullptr) return;
  type->Action = type->DefAction;
  // The create option keeps its value: the default follows it, not the
  // other way round.
  type->DefCreateDest = type->CreateDest;
  CopyFromDescr();
}

void CROptionForm::OnResetAllClicked() {
  for (ConflictDescriptor& type : work_types_) {
    type.Action = type.DefAction;
    type.DefCreateDest = type.CreateDest;
  }
  CopyFromDescr();
}

void CROptionForm::OnOKClicked() {
  if (set_ != nullptr) StoreBack();
  accept();
}

void CROptionForm::OnHelpClicked() {
  OpenHelpPage(this, QStringLiteral("croptionsdlg.html"));
}

}  // namespace pairwell
