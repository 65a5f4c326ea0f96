#include "ui/editor/sync_multi_form.h"

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QListWidgetItem>
#include <QPushButton>
#include <QString>
#include <QVBoxLayout>
#include <QVariant>

#include "app/program.h"
#include "engine/sync_set_list.h"
#include "engine/synchronizer.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

// Each row remembers the set it showed, so that a row whose place is now
// taken by another set (the sets were moved or one before it removed)
// loses its selection instead of running the wrong set.
constexpr int kSetRole = Qt::UserRole;

QVariant SetTag(const Synchronizer& set) {
  return QVariant::fromValue(
      reinterpret_cast<quintptr>(static_cast<const void*>(&set)));
}

}  // namespace

SyncMultiForm::SyncMultiForm(Program& program, QWidget* parent)
    : QDialog(parent), program_(program) {
  setObjectName(QStringLiteral("SyncMultiForm"));
  setWindowTitle(QStringLiteral("Synchronize multiple sets"));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);

  label1_ = new QLabel(QStringLiteral("Select the sets to be synchronized:"),
                       this);
  label1_->setObjectName(QStringLiteral("Label1"));

  set_list_ = new QListWidget(this);
  set_list_->setObjectName(QStringLiteral("SetList"));
  // A click toggles one row: the person picks sets one by one without
  // holding a key.
  set_list_->setSelectionMode(QAbstractItemView::MultiSelection);
  label1_->setBuddy(set_list_);

  ok_btn_ = new QPushButton(QStringLiteral("OK"), this);
  ok_btn_->setObjectName(QStringLiteral("OKBtn"));
  ok_btn_->setDefault(true);
  cancel_btn_ = new QPushButton(QStringLiteral("Cancel"), this);
  cancel_btn_->setObjectName(QStringLiteral("CancelBtn"));

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok_btn_);
  buttons->addWidget(cancel_btn_);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label1_);
  layout->addWidget(set_list_, 1);
  layout->addLayout(buttons);
  resize(320, 300);

  connect(ok_btn_, &QPushButton::clicked, this, &SyncMultiForm::OkClicked);
  connect(cancel_btn_, &QPushButton::clicked, this,
          &SyncMultiForm::CancelClicked);

  AutoEnable();
}

SyncMultiForm::~SyncMultiForm() = default;

void SyncMultiForm::UpdateList() {
  const SyncSetList& sets = program_.SyncSets();
  const int n = sets.Count();
  for (int i = 1; i <= n; ++i) {
    const Synchronizer& set = sets.Item(i);
    // Strictly less: the row of the last set that already existed is not
    // rewritten but pushed down by a new row and dropped below.
    if (i < set_list_->count()) {
      QListWidgetItem* row = set_list_->item(i - 1);
      row->setText(QString::fromStdString(set.Name));
      if (row->data(kSetRole) != SetTag(set)) {
        row->setSelected(false);
        row->setData(kSetRole, SetTag(set));
      }
    } else {
      auto* row = new QListWidgetItem(QString::fromStdString(set.Name));
      row->setData(kSetRole, SetTag(set));
      set_list_->insertItem(i - 1, row);
      row->setSelected(false);
    }
  }
  while (set_list_->count() > n) delete set_list_->takeItem(n);
  AutoEnable();
}

std::vector<int> SyncMultiForm::ChooseSets() {
  // Whatever ends the dialog other than OK counts as Cancel.
  cancelled_ = true;
  AutoEnable();
  exec();
  std::vector<int> chosen;
  if (cancelled_) return chosen;
  // A list not brought up to date could name sets that are gone.
  const int n = program_.SyncSets().Count();
  for (int r = 0; r < set_list_->count() && r < n; ++r) {
    if (set_list_->item(r)->isSelected()) chosen.push_back(r + 1);
  }
  return chosen;
}

void SyncMultiForm::AutoEnable() {
  // With no sets there is nothing to pick; OK stays usable so that the
  // person is told why nothing runs.
  set_list_->setEnabled(set_list_->count() > 0);
  ok_btn_->setEnabled(true);
  cancel_btn_->setEnabled(true);
}

void SyncMultiForm::OkClicked() {
  if (set_list_->selectedItems().isEmpty()) {
    MsgBox(
        "You have not selected any sets to synchronize.  Please click the "
        "sets you want to synchronize first.",
        kMbOkOnly | kMbExclamation, kAppTitle);
    return;
  }
  cancelled_ = false;
  // Hidden, not destroyed: the selection is offered again next time.
  accept();
}

void SyncMultiForm::CancelClicked() { reject(); }

void SyncMultiForm::reject() {
  cancelled_ = true;
  QDialog::reject();
}

}  // namespace pairwell
