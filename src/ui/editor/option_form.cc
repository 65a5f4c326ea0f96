#include "ui/editor/option_form.h"

#include <QCheckBox>
#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpression>
#include <QTime>
#include <QTimeZone>
#include <QVBoxLayout>
#include <string>
#include <utility>
#include <vector>

#include "engine/synchronizer.h"
#include "ui/editor/cr_option_form.h"
#include "ui/help_pages.h"
#include "util/date_time.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

// Read-only handling bits of the set's default action flags.
constexpr int kOverwriteReadOnlyFlag = 2;
constexpr int kDeleteReadOnlyFlag = 16;

constexpr char kBadDateMessage[] =
    "The Last Synchronization date you entered could not be understood as a "
    "date.  Please type a valid date, or clear the field to use the old "
    "value.";
constexpr char kArchivePrompt[] =
    "Select the folder in which to archive files.";

QString Q(const std::string& text) { return QString::fromStdString(text); }

template <typename T>
T* Named(T* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

// Newer locale data puts narrow or non-breaking spaces into times ("2:05
// PM"); a person types an ordinary one.
QString PlainSpaces(QString text) {
  text.replace(QChar(0x202F), QLatin1Char(' '));
  text.replace(QChar(0x00A0), QLatin1Char(' '));
  return text.simplified();
}

bool HasFourDigitYear(const QString& format) {
  return format.contains(QLatin1String("yyyy"));
}

// The century a two-digit year is read in: from 80 years before this one
// to 19 after, so a recent sync reads back as the year it showed.
int WidenYear(int two_digit_year) {
  const int this_year = QDate::currentDate().year();
  const int low = this_year - 80;
  int year = low - low % 100 + two_digit_year;
  if (year < low) year += 100;
  return year;
}

enum class YearDigits { kAsFormat, kWidened, kTwo };

struct Pattern {
  QString format;
  YearDigits year;
};

// A locale pattern in the forms worth trying: with a four-digit year first
// (what people type when they write the year out), then as shown; each
// without a time zone as well, which nobody types.
void AddLocalePattern(const QString& raw, std::vector<Pattern>* patterns) {
  QString format = PlainSpaces(raw);
  std::vector<QString> variants{format};
  static const QRegularExpression kZone(
      QStringLiteral("(?<![A-Za-z'])t+(?![A-Za-z'])"));
  QString no_zone = format;
  no_zone.remove(kZone);
  no_zone = no_zone.simplified();
  if (no_zone != format) variants.push_back(no_zone);
  for (const QString& variant : variants) {
    if (!HasFourDigitYear(variant) && variant.contains(QLatin1String("yy"))) {
      QString widened = variant;
      widened.replace(QLatin1String("yy"), QLatin1String("yyyy"));
      patterns->push_back({widened, YearDigits::kWidened});
      patterns->push_back({variant, YearDigits::kTwo});
    } else {
      patterns->push_back({variant, YearDigits::kAsFormat});
    }
  }
}

double DayCount(const QDate& date, const QTime& time) {
  DateParts parts;
  parts.year = date.year();
  parts.month = date.month();
  parts.day = date.day();
  parts.hour = time.hour();
  parts.minute = time.minute();
  parts.second = time.second();
  parts.millisecond = time.msec();
  return DateFromParts(parts);
}

// The date a pattern read, or an invalid one when the pattern does not
// really fit the text.
QDate FixYear(const QDate& date, YearDigits year) {
  if (!date.isValid()) return date;
  switch (year) {
    case YearDigits::kAsFormat:
      return date;
    case YearDigits::kWidened:
      // "yyyy" takes two digits as well, as the year 26; those are left to
      // the two-digit pattern.
      return date.year() >= 1000 ? date : QDate();
    case YearDigits::kTwo:
      // Two digits parse into the 1900s.
      return QDate(WidenYear(date.year() % 100), date.month(), date.day());
  }
  return date;
}

}  // namespace

QString LastSyncDateText(double date, const QLocale& locale) {
  if (date < 1) return QString::fromLatin1(kNeverText);
  const DateParts p = PartsFromDate(date);
  // UTC keeps the fields as stored: a local time skipped by a daylight
  // saving change would otherwise move.
  const QDateTime shown(QDate(p.year, p.month, p.day),
                        QTime(p.hour, p.minute, p.second, p.millisecond),
                        QTimeZone::utc());
  return locale.toString(shown, QLocale::ShortFormat);
}

bool ParseLastSyncDate(const QString& text, const QLocale& locale,
                       double* date) {
  const QString typed = PlainSpaces(text);
  if (typed.isEmpty()) return false;

  std::vector<Pattern> date_times;
  AddLocalePattern(locale.dateTimeFormat(QLocale::ShortFormat), &date_times);
  AddLocalePattern(locale.dateTimeFormat(QLocale::LongFormat), &date_times);
  for (const Pattern& p : date_times) {
    const QDateTime read = locale.toDateTime(typed, p.format);
    if (!read.isValid()) continue;
    const QDate day = FixYear(read.date(), p.year);
    if (!day.isValid()) continue;
    *date = DayCount(day, read.time());
    return true;
  }

  std::vector<Pattern> days;
  AddLocalePattern(locale.dateFormat(QLocale::ShortFormat), &days);
  AddLocalePattern(locale.dateFormat(QLocale::LongFormat), &days);
  for (const Pattern& p : days) {
    const QDate read = FixYear(locale.toDate(typed, p.format), p.year);
    if (!read.isValid()) continue;
    *date = DayCount(read, QTime(0, 0));
    return true;
  }

  static const char* const kIsoFormats[] = {
      "yyyy-MM-dd HH:mm:ss.zzz", "yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd HH:mm",
      "yyyy-MM-ddTHH:mm:ss.zzz", "yyyy-MM-ddTHH:mm:ss", "yyyy-MM-ddTHH:mm"};
  for (const char* format : kIsoFormats) {
    const QDateTime read =
        QLocale::c().toDateTime(typed, QString::fromLatin1(format));
    if (!read.isValid()) continue;
    *date = DayCount(read.date(), read.time());
    return true;
  }

  // The stored form and the older forms the configuration file may hold.
  return ParseDateText(typed.toStdString(), date);
}

OptionForm::OptionForm(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("OptionForm"));
  setWindowTitle(QStringLiteral("Options for ?"));
  setModal(true);
  CreateControls();
  ConnectControls();
  log_file_picker_ = [this] { return AskLogFile(); };
}

OptionForm::~OptionForm() = default;

void OptionForm::CreateControls() {
  // Smart synchronize.
  smart_sync_group_ =
      Named(new QGroupBox(QStringLiteral("Smart synchronize"), this),
            "SmartSyncGroup");
  smart_sync_ = Named(
      new QCheckBox(QStringLiteral("&Enable (recommended)"), smart_sync_group_),
      "SmartSync");
  label1_ =
      Named(new QLabel(QStringLiteral("Last sync date:"), smart_sync_group_),
            "Label1");
  last_sync_date_ = Named(new QLineEdit(smart_sync_group_), "LastSyncDate");
  label1_->setBuddy(last_sync_date_);
  {
    auto* grid = new QGridLayout(smart_sync_group_);
    grid->addWidget(smart_sync_, 0, 0, 1, 2);
    grid->addWidget(label1_, 1, 0);
    grid->addWidget(last_sync_date_, 1, 1);
    grid->setColumnStretch(1, 1);
  }

  // Archiving.
  archive_group_ =
      Named(new QGroupBox(QStringLiteral("Archiving"), this), "ArchiveGroup");
  archive_deleted_ = Named(
      new QCheckBox(QStringLiteral("Save &deleted files"), archive_group_),
      "ArchiveDeleted");
  archive_overwritten_ = Named(
      new QCheckBox(QStringLiteral("&Save overwritten files"), archive_group_),
      "ArchiveOverwritten");
  label4_ = Named(new QLabel(QStringLiteral("Ar&chive to:"), archive_group_),
                  "Label4");
  archive_path_ = Named(new QLineEdit(archive_group_), "ArchivePath");
  label4_->setBuddy(archive_path_);
  archive_browse_ =
      Named(new QPushButton(QStringLiteral("Browse..."), archive_group_),
            "ArchiveBrowse");
  archive_browse_->setAutoDefault(false);
  {
    auto* grid = new QGridLayout(archive_group_);
    grid->addWidget(archive_deleted_, 0, 0, 1, 3);
    grid->addWidget(archive_overwritten_, 1, 0, 1, 3);
    grid->addWidget(label4_, 2, 0);
    grid->addWidget(archive_path_, 2, 1);
    grid->addWidget(archive_browse_, 2, 2);
    grid->setColumnStretch(1, 1);
  }

  // When copying files.
  frame3_ = Named(new QGroupBox(QStringLiteral("When copying files"), this),
                  "Frame3");
  clear_archive_on_copy_ = Named(
      new QCheckBox(QStringLiteral("Clear archive attribute (both files)"),
                    frame3_),
      "ClearArchiveOnCopy");
  ow_read_only_ = Named(
      new QCheckBox(
          QStringLiteral("Allow read-only/system files to be &overwritten"),
          frame3_),
      "OWReadOnly");
  match_cdate_on_copy_ =
      Named(new QCheckBox(QStringLiteral("Set creation date on copy"), frame3_),
            "MatchCDateOnCopy");
  {
    auto* box = new QVBoxLayout(frame3_);
    box->addWidget(clear_archive_on_copy_);
    box->addWidget(ow_read_only_);
    box->addWidget(match_cdate_on_copy_);
  }

  // Miscellaneous.
  frame2_ =
      Named(new QGroupBox(QStringLiteral("Miscellaneous"), this), "Frame2");
  recursive_ = Named(new QCheckBox(QStringLiteral("&Recurse folders"), frame2_),
                     "Recursive");
  sync_folders_ = Named(
      new QCheckBox(QStringLiteral("Sync &folders even if empty"), frame2_),
      "SyncFolders");
  warn_future_date_ = Named(
      new QCheckBox(QStringLiteral("&Warn about dates in the future"), frame2_),
      "WarnFutureDate");
  d_read_only_ =
      Named(new QCheckBox(QStringLiteral("Allow read-only files to be deleted"),
                          frame2_),
            "DReadOnly");
  use_create_date_ =
      Named(new QCheckBox(
                QStringLiteral("Use crea&tion date when it seems appropriate"),
                frame2_),
            "UseCreateDate");
  cr_options_btn_ =
      Named(new QPushButton(QStringLiteral("Conflict-Resolution Options..."),
                            frame2_),
            "CROptionsBtn");
  cr_options_btn_->setAutoDefault(false);
  {
    auto* box = new QVBoxLayout(frame2_);
    box->addWidget(recursive_);
    box->addWidget(sync_folders_);
    box->addWidget(warn_future_date_);
    box->addWidget(d_read_only_);
    box->addWidget(use_create_date_);
    box->addWidget(cr_options_btn_, 0, Qt::AlignLeft);
  }

  // Logging.
  frame1_ = Named(new QGroupBox(QStringLiteral("Logging"), this), "Frame1");
  use_log_file_ = Named(new QCheckBox(QStringLiteral("&Log to file:"), frame1_),
                        "UseLogFile");
  log_file_name_ = Named(new QLineEdit(frame1_), "LogFileName");
  clear_daily_ = Named(
      new QCheckBox(QStringLiteral("Clear log daily"), frame1_), "ClearDaily");
  log_file_browse_ = Named(
      new QPushButton(QStringLiteral("Browse..."), frame1_), "LogFileBrowse");
  log_file_browse_->setAutoDefault(false);
  {
    auto* grid = new QGridLayout(frame1_);
    grid->addWidget(use_log_file_, 0, 0);
    grid->addWidget(log_file_name_, 0, 1);
    grid->addWidget(log_file_browse_, 0, 2);
    grid->addWidget(clear_daily_, 1, 1, 1, 2);
    grid->setColumnStretch(1, 1);
  }

  // Buttons.
  ok_btn_ = Named(new QPushButton(QStringLiteral("OK"), this), "OKBtn");
  ok_btn_->setDefault(true);
  cancel_btn_ =
      Named(new QPushButton(QStringLiteral("Cancel"), this), "CancelBtn");
  cancel_btn_->setAutoDefault(false);
  help_btn_ = Named(new QPushButton(QStringLiteral("&Help"), this), "HelpBtn");
  help_btn_->setAutoDefault(false);

  auto* left = new QVBoxLayout;
  left->addWidget(smart_sync_group_);
  left->addWidget(archive_group_);
  left->addWidget(frame3_);
  left->addStretch(1);
  auto* right = new QVBoxLayout;
  right->addWidget(frame2_);
  right->addWidget(frame1_);
  right->addStretch(1);
  auto* columns = new QHBoxLayout;
  columns->addLayout(left, 1);
  columns->addLayout(right, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok_btn_);
  buttons->addWidget(cancel_btn_);
  buttons->addWidget(help_btn_);
  auto* outer = new QVBoxLayout(this);
  outer->addLayout(columns);
  outer->addLayout(buttons);
}

void OptionForm::ConnectControls() {
  // Toggles rather than clicks, so that the keyboard and loading keep the
  // dependent controls right too.
  for (QCheckBox* box :
       {archive_deleted_, archive_overwritten_, use_log_file_, smart_sync_}) {
    connect(box, &QCheckBox::toggled, this, &OptionForm::AutoEnable);
  }
  // Clicks only: loading shows the set's values as they are, even a pair
  // the dialog itself would not produce.
  connect(clear_archive_on_copy_, &QCheckBox::clicked, this,
          &OptionForm::OnClearArchiveToggled);
  connect(match_cdate_on_copy_, &QCheckBox::clicked, this,
          &OptionForm::OnMatchCDateToggled);
  connect(archive_browse_, &QPushButton::clicked, this,
          &OptionForm::OnArchiveBrowse);
  connect(log_file_browse_, &QPushButton::clicked, this,
          &OptionForm::OnLogFileBrowse);
  connect(cr_options_btn_, &QPushButton::clicked, this,
          &OptionForm::OnCROptions);
  connect(ok_btn_, &QPushButton::clicked, this, &OptionForm::OnOK);
  connect(cancel_btn_, &QPushButton::clicked, this, &OptionForm::reject);
  connect(help_btn_, &QPushButton::clicked, this, &OptionForm::OnHelp);
}

void OptionForm::DoOptionsDialog(Synchronizer& set) {
  set_ = &set;
  LoadControls();
  setWindowTitle(QStringLiteral("Options for ") + Q(set.Name));
  last_sync_date_->setFocus();
  exec();
  set_ = nullptr;
}

void OptionForm::AutoEnable() {
  const bool logging = use_log_file_->isChecked();
  log_file_name_->setEnabled(logging);
  clear_daily_->setEnabled(logging);
  log_file_browse_->setEnabled(logging);

  last_sync_date_->setEnabled(smart_sync_->isChecked());

  const bool archiving =
      archive_deleted_->isChecked() || archive_overwritten_->isChecked();
  archive_path_->setEnabled(archiving);
  archive_browse_->setEnabled(archiving);
}

void OptionForm::SetLogFilePicker(FilePicker picker) {
  log_file_picker_ = std::move(picker);
}

void OptionForm::LoadControls() {
  const Synchronizer& set = *set_;
  archive_deleted_->setChecked(set.ArchiveDeleted);
  archive_overwritten_->setChecked(set.ArchiveOverwritten);
  archive_path_->setText(Q(set.ArchivePath));

  smart_sync_->setChecked(set.SmartSync);

  // A text the program cannot use is shown as it stands, so that it is seen
  // and replaced.
  loaded_date_text_ = set.UnusableLastSyncDate().empty()
                          ? LastSyncDateText(set.LastSyncDate, QLocale())
                          : Q(set.UnusableLastSyncDate());
  last_sync_date_->setText(loaded_date_text_);

  recursive_->setChecked(set.Recursive);
  sync_folders_->setChecked(set.SyncFolders);
  ow_read_only_->setChecked((set.DefActionFlags & kOverwriteReadOnlyFlag) != 0);
  d_read_only_->setChecked((set.DefActionFlags & kDeleteReadOnlyFlag) != 0);
  warn_future_date_->setChecked(set.WarnFutureDate);
  use_create_date_->setChecked(set.UseCreateDate);
  clear_archive_on_copy_->setChecked(set.ClearArchiveOnCopy);
  match_cdate_on_copy_->setChecked(set.MatchCDateOnCopy);
  use_log_file_->setChecked(set.UseLogFile);
  clear_daily_->setChecked(set.ClearLogDaily);
  log_file_name_->setText(Q(set.LogFileName));

  AutoEnable();
}

bool OptionForm::SaveControls() {
  Synchronizer& set = *set_;

  const QString typed = last_sync_date_->text().trimmed();
  if (typed.isEmpty()) {
    // An empty box keeps the old date.
  } else if (typed.toUpper() == QLatin1String("NEVER")) {
    set.SetLastSyncDate(0);
  } else if (typed == loaded_date_text_.trimmed()) {
    // Untouched: the shown text has lost the seconds the stored date has.
  } else {
    double date = 0;
    if (!ParseLastSyncDate(typed, QLocale(), &date)) {
      MsgBox(kBadDateMessage, kMbOkOnly | kMbExclamation);
      return false;
    }
    // A date before the last day of 1899 is stored, then refused: the
    // person is asked again, and "Never" or a real date replaces it.
    set.SetLastSyncDate(date);
    if (set.LastSyncDate < 1) {
      MsgBox(kBadDateMessage, kMbOkOnly | kMbExclamation);
      return false;
    }
  }

  set.ArchiveDeleted = archive_deleted_->isChecked();
  set.ArchiveOverwritten = archive_overwritten_->isChecked();
  set.ArchivePath = archive_path_->text().toStdString();
  set.SmartSync = smart_sync_->isChecked();
  set.Recursive = recursive_->isChecked();
  set.SyncFolders = sync_folders_->isChecked();
  if (ow_read_only_->isChecked()) {
    set.DefActionFlags |= kOverwriteReadOnlyFlag;
  } else {
    set.DefActionFlags &= ~kOverwriteReadOnlyFlag;
  }
  if (d_read_only_->isChecked()) {
    set.DefActionFlags |= kDeleteReadOnlyFlag;
  } else {
    set.DefActionFlags &= ~kDeleteReadOnlyFlag;
  }
  set.WarnFutureDate = warn_future_date_->isChecked();
  set.UseCreateDate = use_create_date_->isChecked();
  set.ClearArchiveOnCopy = clear_archive_on_copy_->isChecked();
  set.MatchCDateOnCopy = match_cdate_on_copy_->isChecked();
  set.UseLogFile = use_log_file_->isChecked();
  set.ClearLogDaily = clear_daily_->isChecked();
  set.LogFileName = log_file_name_->text().toStdString();
  return true;
}

QString OptionForm::AskLogFile() {
  // The log is appended to, so choosing an existing file is no overwrite.
  return QFileDialog::getSaveFileName(
      this, QStringLiteral("Select the log file"), log_file_name_->text(),
      QStringLiteral("Text files (*.txt);;All files (*)"), nullptr,
      QFileDialog::DontConfirmOverwrite);
}

void OptionForm::OnOK() {
  if (set_ == nullptr) return;
  if (!SaveControls()) {
    last_sync_date_->setFocus();
    last_sync_date_->selectAll();
    return;
  }
  accept();
}

void OptionForm::OnArchiveBrowse() {
  const std::string folder = BrowseForFolder(kArchivePrompt);
  if (!folder.empty()) archive_path_->setText(Q(folder));
}

void OptionForm::OnLogFileBrowse() {
  if (!log_file_picker_) return;
  const QString file = log_file_picker_();
  if (!file.isEmpty()) log_file_name_->setText(QDir::toNativeSeparators(file));
}

void OptionForm::OnCROptions() {
  if (set_ == nullptr) return;
  if (cr_option_form_ == nullptr) cr_option_form_ = new CROptionForm(this);
  cr_option_form_->DoOptionsDialog(*set_);
}

void OptionForm::OnHelp() {
  OpenHelpPage(this, QStringLiteral("optionsdlg.html"));
}

void OptionForm::OnClearArchiveToggled(bool checked) {
  if (!checked) match_cdate_on_copy_->setChecked(true);
}

void OptionForm::OnMatchCDateToggled(bool checked) {
  if (!checked) clear_archive_on_copy_->setChecked(true);
}

}  // namespace pairwell
