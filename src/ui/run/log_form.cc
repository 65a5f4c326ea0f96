#include "ui/run/log_form.h"

#include <QCloseEvent>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollBar>
#include <QSizePolicy>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>

#include "app/program.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_progress.h"
#include "engine/synchronizer.h"
#include "engine/transfer_rate.h"
#include "util/system.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr int kTimerInterval = 50;
// A byte bar's range: a QProgressBar counts in int, files reach far more.
constexpr int kBarSteps = 1000;
// A file whose copy takes long enough to be worth a bar of its own.
constexpr std::int64_t kLargeFile = std::int64_t{16} << 20;
constexpr int kMargin = 8;
constexpr int kSpacing = 6;

constexpr char kBusyQuestion[] =
    "The program is busy synchronizing.  If you stop now, the synch will be "
    "incomplete.  Stop anyway?";

}  // namespace

// The log box as the log writer sees it. Appends go in at the end through a
// cursor, so the box never re-lays out the text it already holds.
class LogForm::LogTextEcho final : public LogEchoTarget {
 public:
  explicit LogTextEcho(QPlainTextEdit* box) : box_(box) {}

  std::size_t TextLength() const override {
    // The document counts the paragraph separator after the last block.
    return static_cast<std::size_t>(
        std::max(0, box_->document()->characterCount() - 1));
  }

  void AppendText(const std::string& text) override {
    const QString s = QString::fromStdString(text);
    // The box holds less than kEchoLimit characters, so a long run cannot
    // grow it without bound; the log file still receives everything.
    if (TextLength() + static_cast<std::size_t>(s.size()) >= kEchoLimit) {
      return;
    }
    QTextCursor cursor = box_->textCursor();
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(s);
    box_->setTextCursor(cursor);
    box_->ensureCursorVisible();
    // The caret's line may be laid out only now, after the scroll above.
    QScrollBar* bar = box_->verticalScrollBar();
    bar->setValue(bar->maximum());
  }

  void ClearText() override { box_->clear(); }

 private:
  QPlainTextEdit* box_;
};

LogForm::LogForm(Program& program, QWidget* parent)
    : QWidget(parent, Qt::Window), program_(program) {
  setObjectName("LogForm");
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle("[Log/progress form]");

  close_btn_ = new QPushButton("[Close]", this);
  close_btn_->setObjectName("CloseBtn");
  close_btn_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

  status_txt_ = new QLabel("[Sync Status]", this);
  status_txt_->setObjectName("StatusTxt");
  // File names may look like markup.
  status_txt_->setTextFormat(Qt::PlainText);
  // Room for the two lines of "Performing actions" so that the log box
  // below does not move as the status changes; a long line is cut rather
  // than widening the window.
  status_txt_->setFixedHeight(2 * status_txt_->fontMetrics().lineSpacing() +
                              2 * status_txt_->margin());
  status_txt_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  status_txt_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);

  progress_bar_ = new QProgressBar(this);
  progress_bar_->setObjectName("ProgressBar");

  rate_txt_ = new QLabel(this);
  rate_txt_->setObjectName("RateTxt");
  rate_txt_->setTextFormat(Qt::PlainText);
  rate_txt_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);

  file_progress_bar_ = new QProgressBar(this);
  file_progress_bar_->setObjectName("FileProgressBar");
  file_progress_bar_->setRange(0, kBarSteps);
  // The bars show only while there is progress to show; their rows stay
  // when they are hidden, so that the log box never moves.
  QSizePolicy keep_room(QSizePolicy::Ignored, QSizePolicy::Fixed);
  keep_room.setRetainSizeWhenHidden(true);
  progress_bar_->setSizePolicy(keep_room);
  file_progress_bar_->setSizePolicy(keep_room);
  progress_bar_->hide();
  file_progress_bar_->hide();

  log_text_ = new QPlainTextEdit(this);
  log_text_->setObjectName("LogText");
  log_text_->setReadOnly(true);
  log_text_->setUndoRedoEnabled(false);
  log_text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  echo_ = std::make_unique<LogTextEcho>(log_text_);

  // The header rows are laid out; the log box takes the rest of the window
  // by hand (PlaceLogText), since a window made too small must leave it as
  // it was instead of squeezing it. No size constraint, so that the window
  // can be made that small.
  layout_ = new QVBoxLayout(this);
  layout_->setSizeConstraint(QLayout::SetNoConstraint);
  layout_->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  layout_->setSpacing(kSpacing);
  top_row_ = new QHBoxLayout;
  top_row_->setSpacing(kSpacing);
  top_row_->addWidget(close_btn_);
  top_row_->addWidget(status_txt_, 1);
  layout_->addLayout(top_row_);
  layout_->addWidget(progress_bar_);
  layout_->addWidget(rate_txt_);
  layout_->addWidget(file_progress_bar_);
  layout_->addStretch(1);
  resize(720, 440);

  timer_ = new QTimer(this);
  timer_->setObjectName("Timer");
  connect(timer_, &QTimer::timeout, this, &LogForm::OnTimer);
  connect(close_btn_, &QPushButton::clicked, this, &LogForm::OnCloseClicked);

  // Until the run reports its first status.
  status_ = "Starting...";
  status_txt_->setText(status_);
  // A run that is already going when the window appears is this window's
  // run, not a new one.
  seen_set_ = program_.Run().current_set;
  seen_stop_ = seen_set_ != nullptr && seen_set_->StopFlag;
  timer_->start(kTimerInterval);
}

LogForm::~LogForm() = default;

void LogForm::SetStatus(const QString& text) {
  status_ = text;
  // The status that ends the actions may come with no tick after it before
  // the run is over: the bar shows their outcome now.
  RefreshProgress();
}

LogEchoTarget* LogForm::Echo() { return echo_.get(); }

void LogForm::Unload() { CloseQuietly(); }

void LogForm::CloseQuietly() {
  closing_quietly_ = true;
  close();
  closing_quietly_ = false;
}

bool LogForm::ConfirmStop() const {
  return MsgBox(kBusyQuestion, kMbYesNo | kMbInformation) == kIdYes;
}

void LogForm::RequestStop() {
  Synchronizer* set = program_.Run().current_set;
  if (set == nullptr) return;
  set->StopFlag = true;
  seen_set_ = set;
  seen_stop_ = true;
}

bool LogForm::StopRequested() const {
  const Synchronizer* set = program_.Run().current_set;
  return set != nullptr ? set->StopFlag : seen_stop_;
}

void LogForm::OnTimer() {
  const RunState& run = program_.Run();
  const Synchronizer* set = run.current_set;
  if (set != nullptr) {
    // A set that appears after the window saw none is a new run shown in
    // the same window: its stop handshake starts over.
    if (seen_set_ == nullptr) finished_ = false;
    seen_stop_ = set->StopFlag;
  }
  seen_set_ = set;

  if (finished_) {
    close_btn_->setText("Close");
    status_txt_->setText(StopRequested() ? "Syncronization aborted."
                                         : "Syncronization complete.");
  } else {
    status_txt_->setText(status_);
    if (run.busy) {
      close_btn_->setText("Abort");
    } else if (run.first_phase) {
      close_btn_->setText("Cancel");
    } else {
      close_btn_->setText("Stop");
    }
  }
  RefreshProgress();
}

void LogForm::RefreshProgress() {
  const RunState& run = program_.Run();
  const Synchronizer* set = run.current_set;
  // Between runs the bar keeps what the last actions came to.
  if (set == nullptr) return;
  if (!run.busy || set->WFileCount() <= 0) {
    HideProgress();
    return;
  }
  const SyncProgress& progress = set->Progress();
  if (!ShowBytes(progress)) ShowFiles(*set, progress);
  progress_bar_->show();
  ShowRate(progress);
  ShowFileProgress(progress);
}

void LogForm::HideProgress() {
  progress_bar_->hide();
  rate_.Reset();
  rate_txt_->clear();
  file_progress_bar_->hide();
}

namespace {

int Steps(std::int64_t done, std::int64_t total) {
  if (total <= 0) return 0;
  return static_cast<int>(std::clamp<std::int64_t>(done, 0, total) *
                          kBarSteps / total);
}

QString Bytes(std::int64_t bytes) {
  return QString::fromStdString(ByteCountText(bytes));
}

}  // namespace

bool LogForm::ShowBytes(const SyncProgress& progress) {
  if (progress.bytes_total <= 0) return false;
  if (progress_bar_->maximum() != kBarSteps) {
    progress_bar_->setRange(0, kBarSteps);
  }
  progress_bar_->setValue(static_cast<int>(progress.PartsDone(kBarSteps)));
  // The percentage is the bar's own (%p); the counts are written out.
  progress_bar_->setFormat("%p% - " + Bytes(progress.bytes_done) + " of " +
                           Bytes(progress.bytes_total));
  return true;
}

void LogForm::ShowFiles(const Synchronizer& set, const SyncProgress& progress) {
  const long count = std::min<long>(set.WFileCount(), INT_MAX);
  // CurrentAction is the file being worked on now: those before it are
  // done, and all of them once the actions are over without a stop.
  long done = set.CurrentAction() - 1;
  if (!progress.performing && !set.StopFlag) done = count;
  if (progress_bar_->maximum() != count) {
    progress_bar_->setRange(0, static_cast<int>(count));
  }
  progress_bar_->setFormat(count == 1 ? "%v of %m file" : "%v of %m files");
  progress_bar_->setValue(static_cast<int>(std::clamp<long>(done, 0, count)));
}

void LogForm::ShowRate(const SyncProgress& progress) {
  if (!progress.performing || progress.files_total <= 0) {
    rate_txt_->clear();
    return;
  }
  rate_.Add(progress.bytes_done, TickCount());
  QString text =
      QString::number(progress.files_done) + " of " +
      QString::fromStdString(CountText(progress.files_total, "copy", "copies"));
  const std::string speed = SpeedText(rate_.BytesPerSecond());
  const std::string left = TimeLeftText(
      rate_.SecondsLeft(progress.bytes_total - progress.bytes_done));
  if (!speed.empty()) text += ", " + QString::fromStdString(speed);
  if (!left.empty()) text += ", " + QString::fromStdString(left);
  rate_txt_->setText(text);
}

void LogForm::ShowFileProgress(const SyncProgress& progress) {
  if (!progress.performing || progress.current_bytes_total < kLargeFile) {
    file_progress_bar_->hide();
    return;
  }
  file_progress_bar_->setValue(
      Steps(progress.current_bytes_done, progress.current_bytes_total));
  // A "%" of the name is the name's, not a placeholder of the bar's.
  QString name = QString::fromStdString(progress.current_file);
  name.replace("%", "%%");
  file_progress_bar_->setFormat(name + ": " +
      Bytes(progress.current_bytes_done) + " of " +
      Bytes(progress.current_bytes_total));
  file_progress_bar_->show();
}

void LogForm::OnCloseClicked() {
  if (program_.Run().busy && !ConfirmStop()) return;
  RequestStop();
  // The run may have ended while the question was up; read the flag now.
  if (program_.Run().first_phase || finished_) {
    CloseQuietly();
    return;
  }
  finished_ = true;
}

void LogForm::closeEvent(QCloseEvent* event) {
  if (!closing_quietly_) {
    if (program_.Run().busy && !ConfirmStop()) {
      event->ignore();
      return;
    }
    RequestStop();
    finished_ = true;
  }
  DetachEcho();
  event->accept();
}

void LogForm::DetachEcho() {
  // The window is about to go: the log must not echo into it any more.
  LogEchoTarget* echo = echo_.get();
  LogFile& log = program_.TheLogFile();
  if (log.EchoTextBox == echo) log.EchoTextBox = nullptr;
  SyncSetList& sets = program_.SyncSets();
  for (int i = 1; i <= sets.Count(); ++i) {
    LogFile& own = sets.Item(i).TheLog();
    if (own.EchoTextBox == echo) own.EchoTextBox = nullptr;
  }
}

bool LogForm::event(QEvent* event) {
  const bool handled = QWidget::event(event);
  // The layout has just placed the header rows again.
  if (event->type() == QEvent::LayoutRequest) PlaceLogText();
  return handled;
}

void LogForm::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  PlaceLogText();
}

void LogForm::PlaceLogText() {
  const QRect area = layout_->contentsRect();
  const int left = area.left();
  // Where the header rows end at their natural heights: a window too short
  // for them squeezes the rows but does not move the box.
  const int top = layout_->contentsMargins().top() +
                  top_row_->sizeHint().height() + kSpacing +
                  progress_bar_->sizeHint().height() + kSpacing +
                  rate_txt_->sizeHint().height() + kSpacing +
                  file_progress_bar_->sizeHint().height() + kSpacing;
  QSize size = log_text_->size();
  const int width = area.right() + 1 - left;
  const int height = area.bottom() + 1 - top;
  if (width > 0) size.setWidth(width);
  if (height > 0) size.setHeight(height);
  log_text_->setGeometry(QRect(QPoint(left, top), size));
}

}  // namespace pairwell
