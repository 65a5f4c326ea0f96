#include "ui/editor/option_form.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "app/program.h"
#include "config/ini_file_section.h"
#include "engine/synchronizer.h"
#include "support/test_dates.h"
#include "ui/editor/cr_option_form.h"
#include "ui/modal_driver.h"
#include "ui/scripted_front_end.h"
#include "util/date_time.h"

using pairwell::CROptionForm;
using pairwell::MakeDate;
using pairwell::ModalDriver;
using pairwell::OptionForm;
using pairwell::Program;
using pairwell::ScriptedFrontEnd;
using pairwell::Synchronizer;

namespace {

const char kBadDate[] =
    "The Last Synchronization date you entered could not be understood as a "
    "date.  Please type a valid date, or clear the field to use the old "
    "value.";

// Dates count in days; one millisecond is about 1.16e-8.
constexpr double kMs = 1.0 / 86400000.0;

// One program with one set, as the main window would have it.
struct Fixture {
  ScriptedFrontEnd ui;
  Program program{ui};
  Synchronizer* set = nullptr;
  Fixture() {
    ui.SetProgram(&program);
    set = &program.NewSyncSet("Docs");
  }
};

// Every option the dialog edits, to compare a set before and after.
struct Options {
  bool archive_deleted, archive_overwritten, smart_sync, recursive,
      sync_folders, warn_future_date, use_create_date, clear_archive_on_copy,
      match_cdate_on_copy, use_log_file, clear_log_daily;
  int def_action_flags;
  double last_sync_date;
  std::string archive_path, log_file_name;

  explicit Options(const Synchronizer& s)
      : archive_deleted(s.ArchiveDeleted),
        archive_overwritten(s.ArchiveOverwritten),
        smart_sync(s.SmartSync),
        recursive(s.Recursive),
        sync_folders(s.SyncFolders),
        warn_future_date(s.WarnFutureDate),
        use_create_date(s.UseCreateDate),
        clear_archive_on_copy(s.ClearArchiveOnCopy),
        match_cdate_on_copy(s.MatchCDateOnCopy),
        use_log_file(s.UseLogFile),
        clear_log_daily(s.ClearLogDaily),
        def_action_flags(s.DefActionFlags),
        last_sync_date(s.LastSyncDate),
        archive_path(s.ArchivePath),
        log_file_name(s.LogFileName) {}

  bool operator==(const Options& o) const {
    return archive_deleted == o.archive_deleted &&
           archive_overwritten == o.archive_overwritten &&
           smart_sync == o.smart_sync && recursive == o.recursive &&
           sync_folders == o.sync_folders &&
           warn_future_date == o.warn_future_date &&
           use_create_date == o.use_create_date &&
           clear_archive_on_copy == o.clear_archive_on_copy &&
           match_cdate_on_copy == o.match_cdate_on_copy &&
           use_log_file == o.use_log_file &&
           clear_log_daily == o.clear_log_daily &&
           def_action_flags == o.def_action_flags &&
           last_sync_date == o.last_sync_date &&
           archive_path == o.archive_path && log_file_name == o.log_file_name;
  }
};

QCheckBox* Box(QWidget& form, const char* name) {
  auto* w = form.findChild<QCheckBox*>(QString::fromLatin1(name));
  if (w == nullptr) qFatal("no check box %s", name);
  return w;
}
QLineEdit* Edit(QWidget& form, const char* name) {
  auto* w = form.findChild<QLineEdit*>(QString::fromLatin1(name));
  if (w == nullptr) qFatal("no text box %s", name);
  return w;
}
QPushButton* Button(QWidget& form, const char* name) {
  auto* w = form.findChild<QPushButton*>(QString::fromLatin1(name));
  if (w == nullptr) qFatal("no button %s", name);
  return w;
}

// Types into a text box as a person would, replacing what it held.
void Type(QWidget& form, const char* name, const QString& text) {
  QLineEdit* edit = Edit(form, name);
  edit->selectAll();
  QTest::keyClick(edit, Qt::Key_Delete);
  QTest::keyClicks(edit, text);
}

struct RunResult {
  bool shown = false;      // the script ran with the dialog modal
  bool left_open = false;  // the dialog was still up when the script ended
  QString caption;
};

// Opens the dialog on the set and plays the script once the dialog is the
// active modal window; closes it with Cancel when the script leaves it up.
RunResult Run(OptionForm& form, Synchronizer& set,
              const std::function<void(OptionForm&)>& script) {
  RunResult result;
  ModalDriver driver(
      [&](QWidget&) {
        result.shown = true;
        result.caption = form.windowTitle();
        script(form);
        result.left_open = form.isVisible();
        if (form.isVisible()) Button(form, "CancelBtn")->click();
      },
      &form);
  form.DoOptionsDialog(set);
  return result;
}

}  // namespace

class OptionFormTest : public QObject {
  Q_OBJECT

 private slots:
  void init() {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
  }
  void cleanup() { init(); }

  void ControlsHaveTheirNamesAndCaptions() {
    OptionForm form;
    QCOMPARE(form.windowTitle(), QStringLiteral("Options for ?"));
    const struct {
      const char* name;
      const char* kind;
      const char* caption;
    } expected[] = {
        {"SmartSyncGroup", "QGroupBox", "Smart synchronize"},
        {"SmartSync", "QCheckBox", "&Enable (recommended)"},
        {"Label1", "QLabel", "Last sync date:"},
        {"LastSyncDate", "QLineEdit", ""},
        {"ArchiveGroup", "QGroupBox", "Archiving"},
        {"ArchiveDeleted", "QCheckBox", "Save &deleted files"},
        {"ArchiveOverwritten", "QCheckBox", "&Save overwritten files"},
        {"Label4", "QLabel", "Ar&chive to:"},
        {"ArchivePath", "QLineEdit", ""},
        {"ArchiveBrowse", "QPushButton", "Browse..."},
        {"Frame3", "QGroupBox", "When copying files"},
        {"ClearArchiveOnCopy", "QCheckBox",
         "Clear archive attribute (both files)"},
        {"OWReadOnly", "QCheckBox",
         "Allow read-only/system files to be &overwritten"},
        {"MatchCDateOnCopy", "QCheckBox", "Set creation date on copy"},
        {"Frame2", "QGroupBox", "Miscellaneous"},
        {"Recursive", "QCheckBox", "&Recurse folders"},
        {"SyncFolders", "QCheckBox", "Sync &folders even if empty"},
        {"WarnFutureDate", "QCheckBox", "&Warn about dates in the future"},
        {"DReadOnly", "QCheckBox", "Allow read-only files to be deleted"},
        {"UseCreateDate", "QCheckBox",
         "Use crea&tion date when it seems appropriate"},
        {"CROptionsBtn", "QPushButton", "Conflict-Resolution Options..."},
        {"Frame1", "QGroupBox", "Logging"},
        {"UseLogFile", "QCheckBox", "&Log to file:"},
        {"LogFileName", "QLineEdit", ""},
        {"ClearDaily", "QCheckBox", "Clear log daily"},
        {"LogFileBrowse", "QPushButton", "Browse..."},
        {"OKBtn", "QPushButton", "OK"},
        {"CancelBtn", "QPushButton", "Cancel"},
        {"HelpBtn", "QPushButton", "&Help"},
    };
    for (const auto& e : expected) {
      const QString name = QString::fromLatin1(e.name);
      const QList<QWidget*> found = form.findChildren<QWidget*>(name);
      QVERIFY2(found.size() == 1, e.name);
      QWidget* w = found.front();
      QVERIFY2(w->inherits(e.kind), e.name);
      const QString caption = QString::fromLatin1(e.caption);
      if (auto* b = qobject_cast<QAbstractButton*>(w)) {
        QCOMPARE(b->text(), caption);
      } else if (auto* g = qobject_cast<QGroupBox*>(w)) {
        QCOMPARE(g->title(), caption);
      } else if (auto* l = qobject_cast<QLabel*>(w)) {
        QCOMPARE(l->text(), caption);
      }
    }
    QCOMPARE(form.findChild<QLabel*>(QStringLiteral("Label4"))->buddy(),
             Edit(form, "ArchivePath"));
    QVERIFY(Button(form, "OKBtn")->isDefault());
    // The two "Browse..." buttons belong to their own frames.
    QCOMPARE(Button(form, "ArchiveBrowse")->parentWidget()->objectName(),
             QStringLiteral("ArchiveGroup"));
    QCOMPARE(Button(form, "LogFileBrowse")->parentWidget()->objectName(),
             QStringLiteral("Frame1"));
  }

  void LoadsEveryOptionAndTheCaption() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.ArchiveDeleted = true;
    s.ArchiveOverwritten = false;
    s.ArchivePath = "/srv/archive";
    s.SmartSync = false;
    s.LastSyncDate = MakeDate(2026, 11, 22, 14, 5, 30);
    s.Recursive = false;
    s.SyncFolders = true;
    s.DefActionFlags = 8 | 16;
    s.WarnFutureDate = false;
    s.UseCreateDate = false;
    s.ClearArchiveOnCopy = true;
    s.MatchCDateOnCopy = false;
    s.UseLogFile = true;
    s.ClearLogDaily = true;
    s.LogFileName = "/var/log/sync.txt";
    const Options before(s);
    OptionForm form;
    const RunResult r = Run(form, s, [](OptionForm& d) {
      QVERIFY(Box(d, "ArchiveDeleted")->isChecked());
      QVERIFY(!Box(d, "ArchiveOverwritten")->isChecked());
      QCOMPARE(Edit(d, "ArchivePath")->text(), QStringLiteral("/srv/archive"));
      QVERIFY(!Box(d, "SmartSync")->isChecked());
      QCOMPARE(Edit(d, "LastSyncDate")->text(),
               QStringLiteral("11/22/26 2:05 PM"));
      QVERIFY(!Box(d, "Recursive")->isChecked());
      QVERIFY(Box(d, "SyncFolders")->isChecked());
      QVERIFY(!Box(d, "OWReadOnly")->isChecked());
      QVERIFY(Box(d, "DReadOnly")->isChecked());
      QVERIFY(!Box(d, "WarnFutureDate")->isChecked());
      QVERIFY(!Box(d, "UseCreateDate")->isChecked());
      QVERIFY(Box(d, "ClearArchiveOnCopy")->isChecked());
      QVERIFY(!Box(d, "MatchCDateOnCopy")->isChecked());
      QVERIFY(Box(d, "UseLogFile")->isChecked());
      QVERIFY(Box(d, "ClearDaily")->isChecked());
      QCOMPARE(Edit(d, "LogFileName")->text(),
               QStringLiteral("/var/log/sync.txt"));
      // Loading ran the enabling rules.
      QVERIFY(!Edit(d, "LastSyncDate")->isEnabled());
      QVERIFY(Edit(d, "ArchivePath")->isEnabled());
      QVERIFY(Edit(d, "LogFileName")->isEnabled());
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(!r.left_open);
    QCOMPARE(r.caption, QStringLiteral("Options for Docs"));
    QVERIFY(Options(s) == before);
  }

  void OkWritesEveryOption() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.DefActionFlags = 8 | 1 | 4 | 128;
    OptionForm form;
    const RunResult r = Run(form, s, [](OptionForm& d) {
      // Every check box the other way round from the new set's defaults.
      Box(d, "ArchiveDeleted")->click();
      Box(d, "ArchiveOverwritten")->click();
      Type(d, "ArchivePath", QStringLiteral(" /mnt/old files "));
      Type(d, "LastSyncDate", QStringLiteral("2025-03-04 05:06:07"));
      Box(d, "SmartSync")->click();
      Box(d, "Recursive")->click();
      Box(d, "SyncFolders")->click();
      Box(d, "OWReadOnly")->click();
      Box(d, "DReadOnly")->click();
      Box(d, "WarnFutureDate")->click();
      Box(d, "UseCreateDate")->click();
      Box(d, "ClearArchiveOnCopy")->click();
      Box(d, "UseLogFile")->click();
      Box(d, "ClearDaily")->click();
      Type(d, "LogFileName", QStringLiteral("/tmp/my log.txt"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(!r.left_open);
    QVERIFY(s.ArchiveDeleted);
    QVERIFY(s.ArchiveOverwritten);
    QCOMPARE(s.ArchivePath, std::string(" /mnt/old files "));
    QVERIFY(!s.SmartSync);
    QVERIFY(std::fabs(s.LastSyncDate - MakeDate(2025, 3, 4, 5, 6, 7)) < kMs);
    QVERIFY(!s.Recursive);
    QVERIFY(s.SyncFolders);
    // The read-only bits are set; the other bits stay as they were.
    QCOMPARE(s.DefActionFlags, 8 | 1 | 4 | 128 | 2 | 16);
    QVERIFY(!s.WarnFutureDate);
    QVERIFY(!s.UseCreateDate);
    QVERIFY(s.ClearArchiveOnCopy);
    QVERIFY(s.MatchCDateOnCopy);
    QVERIFY(s.UseLogFile);
    QVERIFY(s.ClearLogDaily);
    QCOMPARE(s.LogFileName, std::string("/tmp/my log.txt"));

    // And back: unticking clears just the two read-only bits.
    const RunResult back = Run(form, s, [](OptionForm& d) {
      QVERIFY(Box(d, "OWReadOnly")->isChecked());
      QVERIFY(Box(d, "DReadOnly")->isChecked());
      Box(d, "OWReadOnly")->click();
      Box(d, "DReadOnly")->click();
      Box(d, "ArchiveDeleted")->click();
      Box(d, "UseLogFile")->click();
      Button(d, "OKBtn")->click();
    });
    QVERIFY(back.shown);
    QCOMPARE(s.DefActionFlags, 8 | 1 | 4 | 128);
    QVERIFY(!s.ArchiveDeleted);
    QVERIFY(!s.UseLogFile);
    QVERIFY(std::fabs(s.LastSyncDate - MakeDate(2025, 3, 4, 5, 6, 7)) < kMs);
  }

  void CancelWritesNothing() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.LastSyncDate = MakeDate(2024, 1, 2, 3, 4, 5);
    s.LogFileName = "log.txt";
    const Options before(s);
    OptionForm form;
    const RunResult r = Run(form, s, [](OptionForm& d) {
      for (const char* name :
           {"ArchiveDeleted", "ArchiveOverwritten", "SmartSync", "Recursive",
            "SyncFolders", "OWReadOnly", "DReadOnly", "WarnFutureDate",
            "UseCreateDate", "ClearArchiveOnCopy", "UseLogFile",
            "ClearDaily"}) {
        Box(d, name)->click();
      }
      Type(d, "LastSyncDate", QStringLiteral("never"));
      Type(d, "ArchivePath", QStringLiteral("/x"));
      Type(d, "LogFileName", QStringLiteral("/y"));
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(!r.left_open);
    QVERIFY(Options(s) == before);

    // Escape cancels as well.
    const RunResult esc = Run(form, s, [](OptionForm& d) {
      Box(d, "Recursive")->click();
      QTest::keyClick(&d, Qt::Key_Escape);
    });
    QVERIFY(esc.shown);
    QVERIFY(!esc.left_open);
    QVERIFY(Options(s) == before);
  }

  void UnusableDateIsShownKeptUntilReplaced() {
    Fixture f;
    Synchronizer& s = *f.set;
    pairwell::INIFileSection section("Sec: Docs");
    section.AddVar("LastSyncDate", "1e308");
    s.ReadFromINI(section);
    QCOMPARE(s.UnusableLastSyncDate(), std::string("1e308"));
    OptionForm form;
    RunResult r = Run(form, s, [](OptionForm& d) {
      QCOMPARE(Edit(d, "LastSyncDate")->text(), QStringLiteral("1e308"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(!r.left_open);
    QCOMPARE(s.UnusableLastSyncDate(), std::string("1e308"));

    r = Run(form, s, [](OptionForm& d) {
      Type(d, "LastSyncDate", QStringLiteral("2025-03-04 05:06:07"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(!r.left_open);
    QVERIFY(s.UnusableLastSyncDate().empty());
    // The moment written beside the date is the moment of that date here.
    pairwell::INIFileSection written("Sec: Docs");
    s.WriteToINI(written);
    std::int64_t seconds = 0;
    long nanoseconds = 0;
    pairwell::DateToFileTime(MakeDate(2025, 3, 4, 5, 6, 7), &seconds,
                             &nanoseconds);
    QCOMPARE(written.FindVar("LastSyncDate"),
             std::string("2025-03-04 05:06:07"));
    QCOMPARE(written.FindVar("LastSyncMoment"),
             pairwell::FormatMoment(seconds));
    QVERIFY(f.ui.messages.empty());
  }

  void NeverBothWays() {
    Fixture f;
    Synchronizer& s = *f.set;
    OptionForm form;
    RunResult r = Run(form, s, [](OptionForm& d) {
      QCOMPARE(Edit(d, "LastSyncDate")->text(), QStringLiteral("Never"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(!r.left_open);
    QCOMPARE(s.LastSyncDate, 0.0);

    // Any date below 1 shows as never too.
    s.LastSyncDate = 0.75;
    r = Run(form, s, [](OptionForm& d) {
      QCOMPARE(Edit(d, "LastSyncDate")->text(), QStringLiteral("Never"));
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);

    for (const char* typed : {"never", "NEVER", "  nEvEr  "}) {
      s.LastSyncDate = MakeDate(2020, 5, 6, 7, 8, 9);
      r = Run(form, s, [typed](OptionForm& d) {
        Type(d, "LastSyncDate", QString::fromLatin1(typed));
        Button(d, "OKBtn")->click();
      });
      QVERIFY(r.shown);
      QVERIFY2(!r.left_open, typed);
      QCOMPARE(s.LastSyncDate, 0.0);
    }
    QVERIFY(f.ui.messages.empty());
  }

  void ClearedDateKeepsTheOldOne() {
    Fixture f;
    Synchronizer& s = *f.set;
    const double old = MakeDate(2021, 7, 8, 9, 10, 11) + 123 * kMs;
    s.LastSyncDate = old;
    OptionForm form;
    RunResult r = Run(form, s, [](OptionForm& d) {
      Type(d, "LastSyncDate", QString());
      Box(d, "Recursive")->click();
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(!r.left_open);
    QCOMPARE(s.LastSyncDate, old);
    QVERIFY(!s.Recursive);  // the rest was written

    r = Run(form, s, [](OptionForm& d) {
      Type(d, "LastSyncDate", QStringLiteral("   "));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(!r.left_open);
    QCOMPARE(s.LastSyncDate, old);

    // OK with the shown text untouched keeps the seconds the text lacks.
    r = Run(form, s, [](OptionForm& d) {
      QCOMPARE(Edit(d, "LastSyncDate")->text(),
               QStringLiteral("7/8/21 9:10 AM"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(!r.left_open);
    QCOMPARE(s.LastSyncDate, old);
    QVERIFY(f.ui.messages.empty());
  }

  void UnreadableDateKeepsTheDialogOpen_data() {
    QTest::addColumn<bool>("german");
    QTest::addColumn<QString>("typed");
    QTest::newRow("en 31/02/2005") << false << QStringLiteral("31/02/2005");
    QTest::newRow("en 2/31/2005") << false << QStringLiteral("2/31/2005");
    QTest::newRow("en yesterday") << false << QStringLiteral("yesterday");
    QTest::newRow("en 2026-13-01")
        << false << QStringLiteral("2026-13-01 10:00");
    QTest::newRow("de 31/02/2005") << true << QStringLiteral("31/02/2005");
    QTest::newRow("de 31.02.05 10:00")
        << true << QStringLiteral("31.02.05 10:00");
    QTest::newRow("de yesterday") << true << QStringLiteral("yesterday");
  }

  void UnreadableDateKeepsTheDialogOpen() {
    QFETCH(bool, german);
    QFETCH(QString, typed);
    if (german) QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    Fixture f;
    Synchronizer& s = *f.set;
    const double old = MakeDate(2022, 2, 3, 4, 5, 6);
    s.LastSyncDate = old;
    const Options before(s);
    bool still_open = false;
    QString text_after;
    OptionForm form;
    const RunResult r = Run(form, s, [&](OptionForm& d) {
      Type(d, "LastSyncDate", typed);
      Box(d, "Recursive")->click();
      Type(d, "LogFileName", QStringLiteral("changed.txt"));
      Button(d, "OKBtn")->click();
      still_open = d.isVisible();
      text_after = Edit(d, "LastSyncDate")->text();
    });
    QVERIFY(r.shown);
    QVERIFY(still_open);
    QVERIFY(r.left_open);
    QCOMPARE(text_after, typed);
    QCOMPARE(f.ui.messages.size(), std::size_t{1});
    QCOMPARE(f.ui.messages[0].text, std::string(kBadDate));
    QCOMPARE(f.ui.messages[0].caption, std::string("Pairwell"));
    // Nothing after the date was written, and Cancel closed it afterwards.
    QVERIFY(Options(s) == before);
  }

  void FailedSaveCanBeCorrected() {
    Fixture f;
    Synchronizer& s = *f.set;
    OptionForm form;
    bool open_after_first = false;
    const RunResult r = Run(form, s, [&](OptionForm& d) {
      Type(d, "LastSyncDate", QStringLiteral("soon"));
      Button(d, "OKBtn")->click();
      open_after_first = d.isVisible();
      Type(d, "LastSyncDate", QStringLiteral("2026-11-22 14:05"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(open_after_first);
    QVERIFY(!r.left_open);
    QCOMPARE(f.ui.messages.size(), std::size_t{1});
    QVERIFY(std::fabs(s.LastSyncDate - MakeDate(2026, 11, 22, 14, 5)) < kMs);

    // Reopening shows the set again, not the text typed last time.
    const RunResult again = Run(form, s, [](OptionForm& d) {
      QCOMPARE(Edit(d, "LastSyncDate")->text(),
               QStringLiteral("11/22/26 2:05 PM"));
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(again.shown);
  }

  void DateBefore1900IsStoredThenRefused() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.LastSyncDate = MakeDate(2022, 2, 3);
    s.Recursive = true;
    bool still_open = false;
    OptionForm form;
    const RunResult r = Run(form, s, [&](OptionForm& d) {
      Type(d, "LastSyncDate", QStringLiteral("1899-12-30 18:00"));
      Box(d, "Recursive")->click();
      Button(d, "OKBtn")->click();
      still_open = d.isVisible();
    });
    QVERIFY(r.shown);
    QVERIFY(still_open);
    QCOMPARE(f.ui.Texts(), std::vector<std::string>{kBadDate});
    // The early date is already in the set; the rest is not.
    QVERIFY(std::fabs(s.LastSyncDate - 0.75) < kMs);
    QVERIFY(s.Recursive);

    // The last day of 1899 is the first date accepted.
    const RunResult ok = Run(form, s, [](OptionForm& d) {
      Type(d, "LastSyncDate", QStringLiteral("1899-12-31 00:00:00"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(!ok.left_open);
    QCOMPARE(s.LastSyncDate, 1.0);
  }

  void ShowsTheShortStyle_data() {
    QTest::addColumn<bool>("german");
    QTest::addColumn<QString>("shown");
    QTest::newRow("en_US") << false << QStringLiteral("11/22/26 2:05 PM");
    QTest::newRow("de_DE") << true << QStringLiteral("22.11.26 14:05");
  }

  void ShowsTheShortStyle() {
    QFETCH(bool, german);
    QFETCH(QString, shown);
    if (german) QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QString expected = QLocale().toString(
        QDateTime(QDate(2026, 11, 22), QTime(14, 5, 30)), QLocale::ShortFormat);
    QCOMPARE(expected, shown);
    Fixture f;
    Synchronizer& s = *f.set;
    s.LastSyncDate = MakeDate(2026, 11, 22, 14, 5, 30);
    OptionForm form;
    QString text;
    const RunResult r = Run(form, s, [&](OptionForm& d) {
      text = Edit(d, "LastSyncDate")->text();
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);
    QCOMPARE(text, shown);
  }

  void ReadsTheAcceptedFormats_data() {
    QTest::addColumn<bool>("german");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("expected");
    const double minute = MakeDate(2026, 11, 22, 14, 5);
    const double second = MakeDate(2026, 11, 22, 14, 5, 7);
    const QDateTime with_seconds(QDate(2026, 11, 22), QTime(14, 5, 7));
    for (const bool german : {false, true}) {
      const QLocale locale =
          german ? QLocale(QLocale::German, QLocale::Germany)
                 : QLocale(QLocale::English, QLocale::UnitedStates);
      const char* tag = german ? "de " : "en ";
      auto row = [&](const char* name) {
        return &QTest::newRow((QByteArray(tag) + name).constData());
      };
      *row("short") << german
                    << locale.toString(with_seconds, QLocale::ShortFormat)
                    << minute;
      *row("long") << german
                   << locale.toString(with_seconds, QLocale::LongFormat)
                   << second;
      *row("iso minutes") << german << QStringLiteral("2026-11-22 14:05")
                          << minute;
      *row("iso seconds") << german << QStringLiteral("2026-11-22 14:05:07")
                          << second;
      *row("iso T") << german << QStringLiteral("2026-11-22T14:05:00")
                    << minute;
      *row("older stored form")
          << german << QStringLiteral("11/22/2026 2:05:07 PM") << second;
      *row("stored date") << german << QStringLiteral("2026-11-22")
                          << MakeDate(2026, 11, 22);
      *row("short date") << german
                         << locale.toString(QDate(2026, 11, 22),
                                            QLocale::ShortFormat)
                         << MakeDate(2026, 11, 22);
    }
    QTest::newRow("en literal short")
        << false << QStringLiteral("11/22/26 2:05 PM") << minute;
    QTest::newRow("en four-digit year")
        << false << QStringLiteral("11/22/2026 2:05 PM") << minute;
    QTest::newRow("en last century")
        << false << QStringLiteral("1/2/99 3:04 AM")
        << MakeDate(1999, 1, 2, 3, 4);
    QTest::newRow("de literal short")
        << true << QStringLiteral("22.11.26 14:05") << minute;
    QTest::newRow("de four-digit year")
        << true << QStringLiteral("22.11.2026 14:05") << minute;
  }

  void ReadsTheAcceptedFormats() {
    QFETCH(bool, german);
    QFETCH(QString, typed);
    QFETCH(double, expected);
    if (german) QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    Fixture f;
    Synchronizer& s = *f.set;
    s.LastSyncDate = MakeDate(2001, 1, 1);
    OptionForm form;
    const RunResult r = Run(form, s, [&](OptionForm& d) {
      Type(d, "LastSyncDate", typed);
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY2(!r.left_open, qPrintable(typed));
    QVERIFY(f.ui.messages.empty());
    QVERIFY2(std::fabs(s.LastSyncDate - expected) < kMs,
             qPrintable(QString::number(s.LastSyncDate, 'f', 8)));
  }

  void CopyOptionsAreCoupled() {
    Fixture f;
    Synchronizer& s = *f.set;
    OptionForm form;
    s.ClearArchiveOnCopy = true;
    s.MatchCDateOnCopy = true;
    RunResult r = Run(form, s, [](OptionForm& d) {
      QVERIFY(Box(d, "ClearArchiveOnCopy")->isChecked());
      QVERIFY(Box(d, "MatchCDateOnCopy")->isChecked());
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);
    // A pair the dialog would not produce loads as it is, even over the
    // ticks of the last opening.
    s.ClearArchiveOnCopy = false;
    s.MatchCDateOnCopy = false;
    r = Run(form, s, [](OptionForm& d) {
      QCheckBox* clear = Box(d, "ClearArchiveOnCopy");
      QCheckBox* match = Box(d, "MatchCDateOnCopy");
      QVERIFY(!clear->isChecked());
      QVERIFY(!match->isChecked());
      // Ticking changes nothing else.
      clear->click();
      QVERIFY(clear->isChecked());
      QVERIFY(!match->isChecked());
      // Unticking one ticks the other.
      clear->click();
      QVERIFY(!clear->isChecked());
      QVERIFY(match->isChecked());
      match->click();
      QVERIFY(!match->isChecked());
      QVERIFY(clear->isChecked());
      match->click();
      QVERIFY(match->isChecked());
      QVERIFY(clear->isChecked());
      // From the keyboard as well.
      match->setFocus();
      QTest::keyClick(match, Qt::Key_Space);
      QVERIFY(!match->isChecked());
      QVERIFY(clear->isChecked());
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(s.ClearArchiveOnCopy);
    QVERIFY(!s.MatchCDateOnCopy);

    r = Run(form, s, [](OptionForm& d) {
      QCheckBox* clear = Box(d, "ClearArchiveOnCopy");
      QCheckBox* match = Box(d, "MatchCDateOnCopy");
      QVERIFY(clear->isChecked());
      QVERIFY(!match->isChecked());
      QTest::mouseClick(clear, Qt::LeftButton, {},
                        QPoint(8, clear->height() / 2));
      QVERIFY(!clear->isChecked());
      QVERIFY(match->isChecked());
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(!s.ClearArchiveOnCopy);
    QVERIFY(s.MatchCDateOnCopy);
  }

  void AutoEnableFollowsTheBoxes() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.UseLogFile = false;
    s.SmartSync = true;
    s.ArchiveDeleted = false;
    s.ArchiveOverwritten = false;
    OptionForm form;
    const RunResult r = Run(form, s, [](OptionForm& d) {
      QLineEdit* log_name = Edit(d, "LogFileName");
      QCheckBox* daily = Box(d, "ClearDaily");
      QPushButton* log_browse = Button(d, "LogFileBrowse");
      QLineEdit* date = Edit(d, "LastSyncDate");
      QLineEdit* archive = Edit(d, "ArchivePath");
      QPushButton* archive_browse = Button(d, "ArchiveBrowse");

      // Logging off: its controls are off.
      QVERIFY(!log_name->isEnabled());
      QVERIFY(!daily->isEnabled());
      QVERIFY(!log_browse->isEnabled());
      Box(d, "UseLogFile")->click();
      QVERIFY(log_name->isEnabled());
      QVERIFY(daily->isEnabled());
      QVERIFY(log_browse->isEnabled());
      Box(d, "UseLogFile")->click();
      QVERIFY(!log_name->isEnabled());

      QVERIFY(date->isEnabled());
      Box(d, "SmartSync")->click();
      QVERIFY(!date->isEnabled());
      Box(d, "SmartSync")->click();
      QVERIFY(date->isEnabled());

      QVERIFY(!archive->isEnabled());
      QVERIFY(!archive_browse->isEnabled());
      Box(d, "ArchiveDeleted")->click();  // only "Save deleted files"
      QVERIFY(archive->isEnabled());
      QVERIFY(archive_browse->isEnabled());
      Box(d, "ArchiveOverwritten")->click();
      QVERIFY(archive->isEnabled());
      Box(d, "ArchiveDeleted")->click();  // only "Save overwritten files"
      QVERIFY(archive->isEnabled());
      QVERIFY(archive_browse->isEnabled());
      Box(d, "ArchiveOverwritten")->click();
      QVERIFY(!archive->isEnabled());
      QVERIFY(!archive_browse->isEnabled());

      // The public routine recomputes from the boxes as they stand.
      log_name->setEnabled(true);
      archive->setEnabled(true);
      d.AutoEnable();
      QVERIFY(!log_name->isEnabled());
      QVERIFY(!archive->isEnabled());
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);
  }

  void ArchiveBrowseAsksForAFolder() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.ArchiveDeleted = true;
    s.ArchivePath = "/old";
    f.ui.folders = {"", "/srv/archive"};
    OptionForm form;
    const RunResult r = Run(form, s, [](OptionForm& d) {
      Button(d, "ArchiveBrowse")->click();  // cancelled
      QCOMPARE(Edit(d, "ArchivePath")->text(), QStringLiteral("/old"));
      Button(d, "ArchiveBrowse")->click();
      QCOMPARE(Edit(d, "ArchivePath")->text(), QStringLiteral("/srv/archive"));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QCOMPARE(f.ui.browse_prompts,
             (std::vector<std::string>{
                 "Select the folder in which to archive files.",
                 "Select the folder in which to archive files."}));
    QCOMPARE(s.ArchivePath, std::string("/srv/archive"));
  }

  void LogFileBrowseOffersAPicker() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.UseLogFile = true;
    s.LogFileName = "SyncLog.txt";
    OptionForm form;
    std::vector<QString> answers{QString(),
                                 QStringLiteral("/tmp/logs/run.txt")};
    int asked = 0;
    form.SetLogFilePicker([&] { return answers.at(asked++); });
    const RunResult r = Run(form, s, [](OptionForm& d) {
      // Cancelling the picker leaves everything as it was.
      Button(d, "LogFileBrowse")->click();
      QCOMPARE(Edit(d, "LogFileName")->text(), QStringLiteral("SyncLog.txt"));
      Button(d, "LogFileBrowse")->click();
      QCOMPARE(Edit(d, "LogFileName")->text(),
               QDir::toNativeSeparators(QStringLiteral("/tmp/logs/run.txt")));
      Button(d, "OKBtn")->click();
    });
    QVERIFY(r.shown);
    QCOMPARE(asked, 2);
    QCOMPARE(QString::fromStdString(s.LogFileName),
             QDir::toNativeSeparators(QStringLiteral("/tmp/logs/run.txt")));
    QVERIFY(f.ui.browse_prompts.empty());
  }

  void ConflictOptionsOpenAtOnceForTheSameSet() {
    Fixture f;
    Synchronizer& s = *f.set;
    s.Name = "Photos";
    const Options before(s);
    OptionForm form;
    QString cr_caption;
    bool cr_seen = false;
    bool options_open_after = false;
    const RunResult r = Run(form, s, [&](OptionForm& d) {
      Box(d, "Recursive")->click();
      QTimer poll;
      poll.setInterval(20);
      QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* cr =
            qobject_cast<CROptionForm*>(QApplication::activeModalWidget());
        if (cr == nullptr) return;
        poll.stop();
        cr_seen = true;
        cr_caption = cr->windowTitle();
        cr->reject();
      });
      poll.start();
      QElapsedTimer clock;
      clock.start();
      Button(d, "CROptionsBtn")->click();
      // Give a dialog that did not open modally a moment to show up.
      while (!cr_seen && clock.elapsed() < 1000) {
        QTest::qWait(20);
      }
      options_open_after = d.isVisible();
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(r.shown);
    QVERIFY(cr_seen);
    QCOMPARE(cr_caption, QStringLiteral("Options for Photos"));
    QVERIFY(options_open_after);
    QCOMPARE(form.findChildren<CROptionForm*>().size(), 1);
    // Cancel here wrote nothing of this dialog's own.
    QVERIFY(Options(s) == before);

    // A second click reuses the dialog.
    bool seen_again = false;
    Run(form, s, [&](OptionForm& d) {
      QTimer poll;
      poll.setInterval(20);
      QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* cr =
            qobject_cast<CROptionForm*>(QApplication::activeModalWidget());
        if (cr == nullptr) return;
        poll.stop();
        seen_again = true;
        cr->reject();
      });
      poll.start();
      Button(d, "CROptionsBtn")->click();
      Button(d, "OKBtn")->click();
    });
    QVERIFY(seen_again);
    QCOMPARE(form.findChildren<CROptionForm*>().size(), 1);
  }

  void HelpOpensTheOptionsPage() {
    const QString page = QDir(QCoreApplication::applicationDirPath())
                             .filePath(QStringLiteral("optionsdlg.html"));
    if (QFileInfo(page).exists()) QSKIP("a help page lies beside the test");
    Fixture f;
    OptionForm form;
    bool open_after = false;
    Run(form, *f.set, [&](OptionForm& d) {
      Button(d, "HelpBtn")->click();
      open_after = d.isVisible();
      Button(d, "CancelBtn")->click();
    });
    QVERIFY(open_after);
    QCOMPARE(f.ui.messages.size(), std::size_t{1});
    QVERIFY(f.ui.messages[0].text.find("optionsdlg.html") != std::string::npos);
  }

  void TheDialogIsReusedForOtherSets() {
    Fixture f;
    Synchronizer& a = *f.set;
    Synchronizer& b = f.program.NewSyncSet("Music");
    a.UseLogFile = true;
    a.LogFileName = "a.txt";
    a.LastSyncDate = MakeDate(2020, 1, 1, 12, 0);
    b.UseLogFile = false;
    b.LogFileName = "b.txt";
    OptionForm form;
    RunResult r = Run(form, a, [](OptionForm& d) {
      Box(d, "Recursive")->click();
      Button(d, "OKBtn")->click();
    });
    QCOMPARE(r.caption, QStringLiteral("Options for Docs"));
    QVERIFY(!a.Recursive);
    r = Run(form, b, [](OptionForm& d) {
      QVERIFY(Box(d, "Recursive")->isChecked());
      QCOMPARE(Edit(d, "LogFileName")->text(), QStringLiteral("b.txt"));
      QVERIFY(!Edit(d, "LogFileName")->isEnabled());
      QCOMPARE(Edit(d, "LastSyncDate")->text(), QStringLiteral("Never"));
      Button(d, "OKBtn")->click();
    });
    QCOMPARE(r.caption, QStringLiteral("Options for Music"));
    QVERIFY(b.Recursive);
    QCOMPARE(b.LastSyncDate, 0.0);
    QVERIFY(!a.Recursive);
  }

  void ParsingHelpers() {
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    double date = 42;
    QVERIFY(!pairwell::ParseLastSyncDate(QStringLiteral(""), us, &date));
    QVERIFY(!pairwell::ParseLastSyncDate(QStringLiteral("Never"), us, &date));
    QVERIFY(
        !pairwell::ParseLastSyncDate(QStringLiteral("31/02/2005"), us, &date));
    QCOMPARE(date, 42.0);
    QCOMPARE(pairwell::LastSyncDateText(0, us), QStringLiteral("Never"));
    QCOMPARE(pairwell::LastSyncDateText(0.999, us), QStringLiteral("Never"));
    QCOMPARE(pairwell::LastSyncDateText(1, us),
             QStringLiteral("12/31/99 12:00 AM"));
    // What the box shows reads back as the same minute, in both locales.
    const QLocale de(QLocale::German, QLocale::Germany);
    for (const QLocale& locale : {us, de}) {
      for (const double d :
           {MakeDate(1999, 12, 31, 23, 59), MakeDate(2026, 1, 2, 3, 4),
            MakeDate(2045, 6, 7, 8, 9)}) {
        double back = 0;
        QVERIFY(pairwell::ParseLastSyncDate(
            pairwell::LastSyncDateText(d, locale), locale, &back));
        QVERIFY(std::fabs(back - d) < kMs);
      }
    }
  }
};

QTEST_MAIN(OptionFormTest)
#include "option_form_test.moc"
