#include "ui/run/undo_form.h"

#include <QCheckBox>
#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QVBoxLayout>

#include "app/program.h"
#include "app/undo_driver.h"
#include "engine/run_undo.h"
#include "engine/synchronizer.h"
#include "ui/run/undo_preview_model.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr char kNoRuns[] = "This set has no run that can be undone.";
// Where a run row keeps its place in runs_.
constexpr int kRunIndexRole = Qt::UserRole;

QString Q(const std::string& text) { return QString::fromStdString(text); }

template <typename T>
T* Named(T* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

// The run's kind, and how it ended when it did not end well.
QString KindText(const RunSummary& run) {
  QString kind = run.undoes.empty()
                     ? QStringLiteral("Sync")
                     : QStringLiteral("Undo of ") + Q(run.undoes);
  if (!run.ended) {
    kind += QStringLiteral(" (cut short)");
  } else if (run.stopped) {
    kind += QStringLiteral(" (stopped)");
  }
  return kind;
}

QString StartedText(const RunSummary& run) {
  return QLocale().toString(QDateTime::fromSecsSinceEpoch(run.started),
                            QLocale::ShortFormat);
}

}  // namespace

UndoForm::UndoForm(Program& program, Synchronizer& set, QWidget* parent)
    : QDialog(parent),
      program_(program),
      set_(set),
      undo_(std::make_unique<RunUndo>(set)) {
  setObjectName(QStringLiteral("UndoForm"));
  setWindowTitle(QStringLiteral("Undo a Run - ") + Q(set_.Name));
  CreateControls();
  ConnectControls();
  FillRunList();
}

UndoForm::~UndoForm() = default;

void UndoForm::CreateControls() {
  preview_ = new UndoPreviewModel(*undo_, this);

  run_list_txt_ = Named(
      new QLabel(QStringLiteral("&Runs of this set, newest first:"), this),
      "RunListTxt");
  run_list_ = Named(new QTreeWidget(this), "RunList");
  run_list_->setColumnCount(kColumnCount);
  run_list_->setHeaderLabels({
      QStringLiteral("Run"),
      QStringLiteral("Started"),
      QStringLiteral("Kind"),
      QStringLiteral("Created"),
      QStringLiteral("Replaced"),
      QStringLiteral("Deleted"),
  });
  run_list_->setRootIsDecorated(false);
  run_list_->setItemsExpandable(false);
  run_list_->setUniformRowHeights(true);
  run_list_->setAllColumnsShowFocus(true);
  run_list_->setSelectionMode(QAbstractItemView::SingleSelection);
  run_list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  QHeaderView* header = run_list_->header();
  header->setSectionsMovable(false);
  header->setStretchLastSection(false);
  header->setSectionResizeMode(QHeaderView::ResizeToContents);
  // The kind names the run an undo put back: it takes the room left.
  header->setSectionResizeMode(kKind, QHeaderView::Stretch);
  run_list_txt_->setBuddy(run_list_);

  preview_txt_ = Named(new QLabel(this), "PreviewTxt");
  preview_txt_->setTextFormat(Qt::PlainText);
  preview_txt_->setWordWrap(true);
  preview_txt_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  preview_list_txt_ =
      Named(new QLabel(QStringLiteral("&Steps of the undo:"), this),
            "PreviewListTxt");
  preview_list_ = Named(new QListView(this), "PreviewList");
  // Every step is one line: the view need not measure 50,000 of them.
  preview_list_->setUniformItemSizes(true);
  preview_list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  preview_list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  preview_list_->setModel(preview_);
  preview_list_txt_->setBuddy(preview_list_);

  force_chk_ =
      Named(new QCheckBox(QStringLiteral("&Include files changed since the run "
                                         "(their present content is kept)"),
                          this),
            "ForceChk");

  undo_btn_ =
      Named(new QPushButton(QStringLiteral("&Undo Run"), this), "UndoBtn");
  undo_btn_->setAutoDefault(false);
  close_btn_ =
      Named(new QPushButton(QStringLiteral("Close"), this), "CloseBtn");
  close_btn_->setAutoDefault(false);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(undo_btn_);
  buttons->addWidget(close_btn_);

  auto* main = new QVBoxLayout(this);
  main->addWidget(run_list_txt_);
  main->addWidget(run_list_, 2);
  main->addWidget(preview_txt_);
  main->addWidget(preview_list_txt_);
  main->addWidget(preview_list_, 3);
  main->addWidget(force_chk_);
  main->addLayout(buttons);

  resize(780, 560);
}

void UndoForm::ConnectControls() {
  connect(run_list_, &QTreeWidget::currentItemChanged, this,
          &UndoForm::LoadSelectedRun);
  connect(force_chk_, &QCheckBox::toggled, this, &UndoForm::ForceToggled);
  connect(undo_btn_, &QPushButton::clicked, this, &UndoForm::UndoClicked);
  connect(close_btn_, &QPushButton::clicked, this, &UndoForm::reject);
}

void UndoForm::FillRunList() {
  runs_ = undo_->Runs();
  run_list_->clear();
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    const RunSummary& run = runs_[i];
    auto* item = new QTreeWidgetItem(run_list_);
    item->setData(kRun, kRunIndexRole, static_cast<int>(i));
    item->setText(kRun, Q(run.id));
    item->setText(kStarted, StartedText(run));
    item->setText(kKind, KindText(run));
    if (!run.ended) {
      item->setToolTip(
          kKind, QStringLiteral("The run ended before its work was done (a "
                                "crash or a power cut): undoing it puts "
                                "back what it did."));
    }
    const long counts[] = {run.created, run.replaced, run.deleted};
    for (int k = 0; k < 3; ++k) {
      item->setText(kCreated + k, QString::number(counts[k]));
      item->setTextAlignment(kCreated + k, Qt::AlignRight | Qt::AlignVCenter);
    }
  }
  if (runs_.empty()) {
    loaded_ = false;
    preview_->Clear();
    preview_txt_->setText(QString::fromLatin1(kNoRuns));
    undo_btn_->setEnabled(false);
    force_chk_->setEnabled(false);
    return;
  }
  // The newest run is the one most often undone.
  run_list_->setCurrentItem(run_list_->topLevelItem(0));
}

void UndoForm::LoadSelectedRun() {
  const QTreeWidgetItem* item = run_list_->currentItem();
  if (item == nullptr) return;
  const RunSummary& run = runs_.at(
      static_cast<std::size_t>(item->data(kRun, kRunIndexRole).toInt()));
  const std::string problem = undo_->Load(run.id);
  loaded_ = problem.empty();
  if (!loaded_) {
    preview_->Clear();
    preview_txt_->setText(Q(problem));
  } else {
    preview_->Reload();
  }
  undo_btn_->setEnabled(loaded_);
  force_chk_->setEnabled(loaded_);
  UpdateSummary();
}

void UndoForm::UpdateSummary() {
  if (!loaded_) return;
  preview_txt_->setText(Q(undo_->Summary(force_chk_->isChecked())));
}

void UndoForm::ForceToggled(bool force) {
  preview_->SetForce(force);
  UpdateSummary();
}

void UndoForm::UndoClicked() {
  if (!loaded_) return;
  const std::string question = "Undo the run " + undo_->Run().id +
                               " of the set '" + set_.Name + "'?\n\n" +
                               preview_txt_->text().toStdString();
  if (MsgBox(question, kMbYesNo | kMbQuestion | kMbDefaultButton2) != kIdYes) {
    return;
  }
  accept();
}

bool UndoForm::Run() {
  if (exec() != QDialog::Accepted || !loaded_) return false;
  UndoOptions options;
  options.force = force_chk_->isChecked();
  options.simulate = program_.SimulationMode();
  const UndoResult result = PerformUndo(program_, *undo_, options);
  if (result.left > 0 || !result.problem.empty()) {
    ReportLeftFiles(result.problem, result.left);
  }
  return true;
}

void UndoForm::ReportLeftFiles(const std::string& problem, long left) {
  std::string text = problem.empty() ? std::string() : problem + "\n\n";
  if (left > 0) {
    text += CountText(left, "file was", "files were") + " left as " +
            (left == 1 ? "it was" : "they were") + ": the log lists " +
            (left == 1 ? "it" : "them") + " and why.";
  } else {
    text += "The log says why.";
  }
  MsgBox(text, kMbExclamation);
}

}  // namespace pairwell
