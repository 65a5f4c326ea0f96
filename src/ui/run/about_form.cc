#include "ui/run/about_form.h"

#include <QApplication>
#include <QFont>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QStyle>

#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr char kDescription[] =
    "This software is an alpha version, meaning it is largely untested and "
    "not fit for general use.  It may contain bugs that could destroy data.  "
    "I advise you to back up any data in any folders involved in a "
    "synchronization you attempt with this software, because it may not "
    "behave reliably.  I will not accept responsibility for any data loss "
    "caused by this program.";

constexpr char kDisclaimer[] =
    "Warning: this program is not a toy. Do not point it at your only copy "
    "of anything, at someone else's folders without asking, or at two "
    "folders you cannot tell apart. Keep away from children, pets and "
    "production servers.";

constexpr char kSysInfoUnavailable[] =
    "System Information Is Unavailable At This Time";

QLabel* MakeLabel(QWidget* parent, const char* name) {
  auto* label = new QLabel(parent);
  label->setObjectName(QString::fromLatin1(name));
  label->setTextFormat(Qt::PlainText);
  return label;
}

QFrame* MakeLine(QWidget* parent) {
  auto* line = new QFrame(parent);
  line->setObjectName(QStringLiteral("Line1"));
  line->setFrameShape(QFrame::HLine);
  line->setFrameShadow(QFrame::Sunken);
  return line;
}

}  // namespace

AboutForm::AboutForm(QWidget* parent)
    : QDialog(parent), sys_info_tools_(DefaultSysInfoTools()) {
  setObjectName(QStringLiteral("AboutForm"));
  setWindowTitle(QStringLiteral("[About]"));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);

  auto* icon = new QLabel(this);
  icon->setObjectName(QStringLiteral("picIcon"));
  icon->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
  QLabel* title = MakeLabel(this, "lblTitle");
  title->setText(QStringLiteral("[App.Title]"));
  QFont title_font = title->font();
  title_font.setBold(true);
  title_font.setPointSizeF(title_font.pointSizeF() * 1.6);
  title->setFont(title_font);
  QLabel* version = MakeLabel(this, "lblVersion");
  version->setText(QStringLiteral("Version"));
  QLabel* description = MakeLabel(this, "lblDescription");
  description->setWordWrap(true);
  description->setText(QString::fromUtf8(kDescription));
  QLabel* disclaimer = MakeLabel(this, "lblDisclaimer");
  disclaimer->setWordWrap(true);
  disclaimer->setText(QString::fromUtf8(kDisclaimer));
  // About sixty characters a line keeps the notice readable at any font.
  const int text_width = fontMetrics().averageCharWidth() * 60;
  description->setMinimumWidth(text_width);
  disclaimer->setMinimumWidth(text_width);

  auto* ok = new QPushButton(QStringLiteral("OK"), this);
  ok->setObjectName(QStringLiteral("cmdOK"));
  ok->setDefault(true);
  auto* sys_info = new QPushButton(QStringLiteral("&System Info..."), this);
  sys_info->setObjectName(QStringLiteral("cmdSysInfo"));
  sys_info->setAutoDefault(false);

  auto* grid = new QGridLayout(this);
  grid->addWidget(icon, 0, 0, 3, 1);
  grid->addWidget(title, 0, 1);
  grid->addWidget(version, 1, 1);
  grid->addWidget(description, 2, 1);
  grid->addWidget(MakeLine(this), 3, 0, 1, 2);
  grid->addWidget(disclaimer, 4, 1);
  grid->addWidget(MakeLine(this), 5, 0, 1, 2);
  auto* buttons = new QHBoxLayout();
  buttons->addStretch(1);
  buttons->addWidget(ok);
  buttons->addWidget(sys_info);
  grid->addLayout(buttons, 6, 0, 1, 2);
  grid->setColumnStretch(1, 1);
  grid->setSizeConstraint(QLayout::SetFixedSize);

  connect(ok, &QPushButton::clicked, this, &AboutForm::accept);
  connect(sys_info, &QPushButton::clicked, this, [this] { StartSysInfo(); });

  Load();
}

AboutForm::~AboutForm() = default;

void AboutForm::Load() {
  const QString app_title = QString::fromUtf8(kAppTitle);
  setWindowTitle(QStringLiteral("About ") + app_title);
  findChild<QLabel*>(QStringLiteral("lblTitle"))->setText(app_title);
  findChild<QLabel*>(QStringLiteral("lblVersion"))
      ->setText(QStringLiteral("Version ") +
                VersionNumber(QStringLiteral(PAIRWELL_VERSION)));

  // The program's own icon when it has one, else the style's.
  QIcon icon = QApplication::windowIcon();
  if (icon.isNull())
    icon = style()->standardIcon(QStyle::SP_MessageBoxInformation);
  const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  findChild<QLabel*>(QStringLiteral("picIcon"))
      ->setPixmap(icon.pixmap(size, size));
}

QStringList AboutForm::DefaultSysInfoTools() {
  // Hardware and system reports first, then the desktops' own overviews,
  // then task managers, which at least show the machine's load.
  return {QStringLiteral("hardinfo2"),
          QStringLiteral("hardinfo"),
          QStringLiteral("kinfocenter"),
          QStringLiteral("cpu-x"),
          QStringLiteral("gnome-system-monitor"),
          QStringLiteral("mate-system-monitor"),
          QStringLiteral("xfce4-taskmanager"),
          QStringLiteral("lxtask")};
}

bool AboutForm::StartSysInfo() {
  for (const QString& name : sys_info_tools_) {
    const QString program =
        QStandardPaths::findExecutable(name, sys_info_search_paths_);
    if (program.isEmpty()) continue;
    if (QProcess::startDetached(program, QStringList())) return true;
    // Found but not startable (a broken install): try the next one.
  }
  MsgBox(kSysInfoUnavailable, kMbOkOnly);
  return false;
}

QString AboutForm::VersionNumber(const QString& version) {
  const QStringList parts = version.split(QLatin1Char('.'));
  QStringList numbers;
  for (int i = 0; i < 3; ++i) {
    const int number = i < parts.size() ? parts[i].trimmed().toInt() : 0;
    numbers << QString::number(number);
  }
  return numbers.join(QLatin1Char('.'));
}

}  // namespace pairwell
