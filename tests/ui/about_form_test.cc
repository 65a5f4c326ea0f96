// The about box, its system information button, and the help pages'
// opener.
#include "ui/run/about_form.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QUrl>
#include <QtTest>
#include <string>

#include "support/temp_dir.h"
#include "ui/help_pages.h"
#include "ui/scripted_front_end.h"
#include "util/user_interface.h"

using pairwell::AboutForm;
using pairwell::ScopedUserInterface;
using pairwell::ScriptedFrontEnd;
using pairwell::TempDir;

namespace {

const char kUnavailable[] = "System Information Is Unavailable At This Time";

// Receives the links the program hands to the desktop, instead of a
// browser.
class UrlCatcher : public QObject {
  Q_OBJECT

 public:
  QList<QUrl> urls;
  Q_INVOKABLE void Open(const QUrl& url) { urls << url; }
};

// Writes an executable shell script that leaves "<its path>.ran" behind
// when it runs.
void WriteTool(const TempDir& dir, const QString& name) {
  dir.WriteFile(name.toStdString(), "#!/bin/sh\n: > \"$0.ran\"\n");
  QFile::setPermissions(QString::fromStdString(dir.Join(name.toStdString())),
                        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool Ran(const TempDir& dir, const QString& name) {
  return dir.Exists(name.toStdString() + ".ran");
}

QPushButton* SysInfoButton(AboutForm& form) {
  return form.findChild<QPushButton*>(QStringLiteral("cmdSysInfo"));
}

}  // namespace

class AboutFormTest : public QObject {
  Q_OBJECT

 private slots:
  void CaptionAndTexts();
  void ControlsAndIcon();
  void VersionNumber();
  void OkClosesTheWindow();
  void SysInfoStartsTheFirstToolFound();
  void SysInfoLooksOnThePath();
  void SysInfoWithoutAToolSaysSo();
  void SysInfoSkipsFilesThatCannotRun();
  void HelpPageMissingIsTold();
  void HelpPageBesideTheProgramIsOpened();
};

void AboutFormTest::CaptionAndTexts() {
  AboutForm form;
  QCOMPARE(form.windowTitle(), QStringLiteral("About Pairwell"));
  auto text = [&](const char* name) {
    auto* label = form.findChild<QLabel*>(QString::fromLatin1(name));
    return label != nullptr ? label->text() : QStringLiteral("<missing>");
  };
  QCOMPARE(text("lblTitle"), QStringLiteral("Pairwell"));
  QCOMPARE(text("lblVersion"),
           QStringLiteral("Version ") +
               AboutForm::VersionNumber(QStringLiteral(PAIRWELL_VERSION)));
  QVERIFY(QRegularExpression(QStringLiteral("^Version \\d+\\.\\d+\\.\\d+$"))
              .match(text("lblVersion"))
              .hasMatch());
  QCOMPARE(text("lblDescription"),
           QStringLiteral(
               "This software is an alpha version, meaning it is largely "
               "untested and not fit for general use.  It may contain bugs "
               "that could destroy data.  I advise you to back up any data "
               "in any folders involved in a synchronization you attempt "
               "with this software, because it may not behave reliably.  I "
               "will not accept responsibility for any data loss caused by "
               "this program."));
  QVERIFY(text("lblDisclaimer").size() > 20);
  QVERIFY(text("lblDisclaimer") != QStringLiteral("<missing>"));
}

void AboutFormTest::ControlsAndIcon() {
  AboutForm form;
  auto* ok = form.findChild<QPushButton*>(QStringLiteral("cmdOK"));
  QVERIFY(ok != nullptr);
  QCOMPARE(ok->text(), QStringLiteral("OK"));
  QVERIFY(ok->isDefault());
  QVERIFY(SysInfoButton(form) != nullptr);
  QCOMPARE(SysInfoButton(form)->text(), QStringLiteral("&System Info..."));
  const QList<QFrame*> lines =
      form.findChildren<QFrame*>(QStringLiteral("Line1"));
  QCOMPARE(lines.size(), 2);
  for (const QFrame* line : lines) QCOMPARE(line->frameShape(), QFrame::HLine);
  auto* icon = form.findChild<QLabel*>(QStringLiteral("picIcon"));
  QVERIFY(icon != nullptr);
  QVERIFY(!icon->pixmap().isNull());
  QVERIFY(!AboutForm::DefaultSysInfoTools().isEmpty());
  QCOMPARE(form.SysInfoTools(), AboutForm::DefaultSysInfoTools());
}

void AboutFormTest::VersionNumber() {
  QCOMPARE(AboutForm::VersionNumber(QStringLiteral("3.0.0")),
           QStringLiteral("3.0.0"));
  QCOMPARE(AboutForm::VersionNumber(QStringLiteral("4.12")),
           QStringLiteral("4.12.0"));
  QCOMPARE(AboutForm::VersionNumber(QStringLiteral("1.2.3.4")),
           QStringLiteral("1.2.3"));
  QCOMPARE(AboutForm::VersionNumber(QString()), QStringLiteral("0.0.0"));
}

void AboutFormTest::OkClosesTheWindow() {
  AboutForm form;
  bool was_visible = false;
  bool left_open = false;
  QTimer::singleShot(0, &form, [&] {
    was_visible = form.isVisible();
    QTest::mouseClick(form.findChild<QPushButton*>(QStringLiteral("cmdOK")),
                      Qt::LeftButton);
    if (form.isVisible()) {
      left_open = true;
      form.done(-1);
    }
  });
  const int result = form.exec();
  QVERIFY(was_visible);
  QVERIFY(!left_open);
  QCOMPARE(result, static_cast<int>(QDialog::Accepted));
}

void AboutFormTest::SysInfoStartsTheFirstToolFound() {
  ScriptedFrontEnd ui;
  ScopedUserInterface installed(&ui);
  TempDir dir;
  WriteTool(dir, QStringLiteral("fake-info-a"));
  WriteTool(dir, QStringLiteral("fake-info-b"));
  AboutForm form;
  form.SetSysInfoTools({QStringLiteral("pairwell-no-such-tool"),
                        QStringLiteral("fake-info-a"),
                        QStringLiteral("fake-info-b")});
  form.SetSysInfoSearchPaths({QString::fromStdString(dir.path())});
  form.show();
  QTest::mouseClick(SysInfoButton(form), Qt::LeftButton);
  QTRY_VERIFY_WITH_TIMEOUT(Ran(dir, QStringLiteral("fake-info-a")), 10000);
  QTest::qWait(300);
  QVERIFY(!Ran(dir, QStringLiteral("fake-info-b")));
  QVERIFY(ui.messages.empty());
  QVERIFY(form.isVisible());
}

void AboutFormTest::SysInfoLooksOnThePath() {
  ScriptedFrontEnd ui;
  ScopedUserInterface installed(&ui);
  TempDir dir;
  const QString tool = AboutForm::DefaultSysInfoTools().last();
  WriteTool(dir, tool);
  const QByteArray old_path = qgetenv("PATH");
  qputenv("PATH", QByteArray::fromStdString(dir.path()));
  AboutForm form;  // the shipped list, searched on PATH
  const bool started = form.StartSysInfo();
  qputenv("PATH", old_path);
  QVERIFY(started);
  QTRY_VERIFY_WITH_TIMEOUT(Ran(dir, tool), 10000);
  QVERIFY(ui.messages.empty());
}

void AboutFormTest::SysInfoWithoutAToolSaysSo() {
  ScriptedFrontEnd ui;
  ScopedUserInterface installed(&ui);
  TempDir dir;
  AboutForm form;
  form.SetSysInfoTools({QStringLiteral("pairwell-no-such-tool")});
  form.SetSysInfoSearchPaths({QString::fromStdString(dir.path())});
  QTest::mouseClick(SysInfoButton(form), Qt::LeftButton);
  QCOMPARE(ui.messages.size(), std::size_t{1});
  QCOMPARE(ui.messages[0].text, std::string(kUnavailable));
  QCOMPARE(ui.messages[0].style, pairwell::kMbOkOnly);
  QCOMPARE(ui.messages[0].caption, std::string("Pairwell"));
  QVERIFY(!form.StartSysInfo());
  QCOMPARE(ui.messages.size(), std::size_t{2});
}

void AboutFormTest::SysInfoSkipsFilesThatCannotRun() {
  ScriptedFrontEnd ui;
  ScopedUserInterface installed(&ui);
  TempDir dir;
  // A file of the tool's name that is not executable is no tool.
  dir.WriteFile("fake-info", "#!/bin/sh\n: > \"$0.ran\"\n");
  AboutForm form;
  form.SetSysInfoTools({QStringLiteral("fake-info")});
  form.SetSysInfoSearchPaths({QString::fromStdString(dir.path())});
  QVERIFY(!form.StartSysInfo());
  QCOMPARE(ui.Texts(), std::vector<std::string>{kUnavailable});
  QVERIFY(!Ran(dir, QStringLiteral("fake-info")));
}

void AboutFormTest::HelpPageMissingIsTold() {
  ScriptedFrontEnd ui;
  ScopedUserInterface installed(&ui);
  UrlCatcher catcher;
  QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "Open");
  pairwell::OpenHelpPage(nullptr, QStringLiteral("pairwell-no-such-page.html"));
  QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
  QCOMPARE(ui.messages.size(), std::size_t{1});
  const std::string& text = ui.messages[0].text;
  QVERIFY2(text.find("pairwell-no-such-page.html") != std::string::npos,
           text.c_str());
  QVERIFY2(text.find(QCoreApplication::applicationDirPath().toStdString()) !=
               std::string::npos,
           text.c_str());
  QCOMPARE(ui.messages[0].style, pairwell::kMbExclamation);
  QCOMPARE(ui.messages[0].caption, std::string("Pairwell"));
  QVERIFY(catcher.urls.isEmpty());
}

void AboutFormTest::HelpPageBesideTheProgramIsOpened() {
  ScriptedFrontEnd ui;
  ScopedUserInterface installed(&ui);
  const QString name = QStringLiteral("pairwell-test-page-%1.html")
                           .arg(QCoreApplication::applicationPid());
  const QString path =
      QDir(QCoreApplication::applicationDirPath()).filePath(name);
  {
    QFile page(path);
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write("<!DOCTYPE html><title>t</title>");
  }
  UrlCatcher catcher;
  QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "Open");
  pairwell::OpenHelpPage(nullptr, name);
  QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
  QFile::remove(path);
  QVERIFY(ui.messages.empty());
  QCOMPARE(catcher.urls.size(), 1);
  QCOMPARE(QDir::cleanPath(catcher.urls[0].toLocalFile()),
           QDir::cleanPath(path));
}

QTEST_MAIN(AboutFormTest)
#include "about_form_test.moc"
