// The options dialog of one sync set.
#ifndef PAIRWELL_UI_EDITOR_OPTION_FORM_H_
#define PAIRWELL_UI_EDITOR_OPTION_FORM_H_

#include <QDialog>
#include <QString>
#include <functional>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QLocale;
class QPushButton;

namespace pairwell {

class CROptionForm;
class Synchronizer;

// The text the date box shows for a set never synchronized.
inline constexpr char kNeverText[] = "Never";

// The date box's text for a day count: "Never" below 1, otherwise the date
// and time in the locale's short style.
QString LastSyncDateText(double date, const QLocale& locale);

// Reads a date typed into the date box: the locale's short and long
// date-and-time styles (a two-digit year falls in the 80 years before and
// the 19 after this one; four digits are accepted as well), the locale's
// short and long date alone (midnight), ISO 8601 ("2026-11-22 14:05",
// with or without seconds, with a space or a "T"), and the stored form
// "YYYY-MM-DD HH:MM:SS" with the older forms the configuration file still
// accepts. Returns false and leaves *date alone when nothing fits or the
// text names no real date. "Never" is not handled here.
bool ParseLastSyncDate(const QString& text, const QLocale& locale,
                       double* date);

class OptionForm final : public QDialog {
  Q_OBJECT

 public:
  // Asks for the log file; "" when the person cancelled.
  using FilePicker = std::function<QString()>;

  explicit OptionForm(QWidget* parent = nullptr);
  ~OptionForm() override;
  Q_DISABLE_COPY_MOVE(OptionForm)

  // Loads the set into the controls and shows the dialog modally; the set
  // changes only when the person confirms with OK.
  void DoOptionsDialog(Synchronizer& set);

  // Enables the controls that depend on a check box.
  void AutoEnable();

  // Replaces the log file picker (the system's save-file dialog by
  // default); tests script it through this.
  void SetLogFilePicker(FilePicker picker);

 private:
  void CreateControls();
  void ConnectControls();
  void LoadControls();
  // Writes the controls into the set; false (and the dialog stays open)
  // when the last-sync date cannot be read.
  bool SaveControls();
  QString AskLogFile();

  void OnOK();
  void OnArchiveBrowse();
  void OnLogFileBrowse();
  void OnCROptions();
  void OnHelp();
  void OnClearArchiveToggled(bool checked);
  void OnMatchCDateToggled(bool checked);

  Synchronizer* set_ = nullptr;
  // The date text as loaded: OK with it unchanged keeps the stored date to
  // the millisecond, which the short style would round to the minute.
  QString loaded_date_text_;
  FilePicker log_file_picker_;
  CROptionForm* cr_option_form_ = nullptr;

  QGroupBox* smart_sync_group_ = nullptr;
  QCheckBox* smart_sync_ = nullptr;
  QLabel* label1_ = nullptr;
  QLineEdit* last_sync_date_ = nullptr;
  QGroupBox* archive_group_ = nullptr;
  QCheckBox* archive_deleted_ = nullptr;
  QCheckBox* archive_overwritten_ = nullptr;
  QLabel* label4_ = nullptr;
  QLineEdit* archive_path_ = nullptr;
  QPushButton* archive_browse_ = nullptr;
  QGroupBox* frame3_ = nullptr;
  QCheckBox* clear_archive_on_copy_ = nullptr;
  QCheckBox* ow_read_only_ = nullptr;
  QCheckBox* match_cdate_on_copy_ = nullptr;
  QGroupBox* frame2_ = nullptr;
  QCheckBox* recursive_ = nullptr;
  QCheckBox* sync_folders_ = nullptr;
  QCheckBox* warn_future_date_ = nullptr;
  QCheckBox* d_read_only_ = nullptr;
  QCheckBox* use_create_date_ = nullptr;
  QPushButton* cr_options_btn_ = nullptr;
  QGroupBox* frame1_ = nullptr;
  QCheckBox* use_log_file_ = nullptr;
  QLineEdit* log_file_name_ = nullptr;
  QCheckBox* clear_daily_ = nullptr;
  QPushButton* log_file_browse_ = nullptr;
  QPushButton* ok_btn_ = nullptr;
  QPushButton* cancel_btn_ = nullptr;
  QPushButton* help_btn_ = nullptr;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_EDITOR_OPTION_FORM_H_
