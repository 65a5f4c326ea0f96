#include "ui/main_window_harness.h"

#include <QFile>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>
#include <QtTest>
#include <algorithm>

namespace pairwell {

QString ReadAll(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return QString();
  return QString::fromUtf8(file.readAll());
}

std::string SetSection(const std::string& name,
                       const std::vector<std::string>& folders,
                       const std::vector<int>& flags) {
  std::string text = "[Sec: " + name + "]\r\n";
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const std::string n = std::to_string(i + 1);
    text += "Dir" + n + "=" + folders[i] + "\r\n";
    text += "Dir" + n + "Flags=" +
            std::to_string(i < flags.size() ? flags[i] : 4) + "\r\n";
  }
  return text;
}

MainWindowHarness::MainWindowHarness(const std::string& ini_text,
                                     const std::string& command_line,
                                     bool with_catalogue) {
  ini_path_ = dir_.filePath(QStringLiteral("Pairwell.ini"));
  const std::size_t sections = std::min(ini_text.find('['), ini_text.size());
  std::string catalogue = "[Conflict Types]\r\n";
  if (with_catalogue) {
    catalogue = ReadAll(QStringLiteral(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini"))
                    .toStdString();
  }
  QFile file(ini_path_);
  if (file.open(QIODevice::WriteOnly)) {
    file.write(QByteArray::fromStdString(ini_text.substr(0, sections) +
                                         catalogue + ini_text.substr(sections)));
  }
  file.close();
  qputenv("PAIRWELL_INI", ini_path_.toUtf8());
  program_ = std::make_unique<Program>(ui);
  ui.SetProgram(program_.get());
  program_->Main(command_line);
  form_ = std::make_unique<SyncForm>(*program_, ui);
  ui.SetMainWindow(form_.get());
}

MainWindowHarness::~MainWindowHarness() {
  ui.SetMainWindow(nullptr);
  form_.reset();
  program_.reset();
  qunsetenv("PAIRWELL_INI");
}

void MainWindowHarness::SelectRow(int r) {
  Folders()->setCurrentItem(Row(r));
  emit Folders()->itemClicked(Row(r), 0);
}

namespace {

// A view's item as its delegate paints it, for the rectangles of its parts.
class ItemOption final : public QStyledItemDelegate {
 public:
  QStyleOptionViewItem Of(const QAbstractItemView& view,
                          const QModelIndex& index) const {
    QStyleOptionViewItem option;
    option.initFrom(view.viewport());
    option.widget = &view;
    option.rect = view.visualRect(index);
    initStyleOption(&option, index);
    return option;
  }
};

}  // namespace

void MainWindowHarness::ClickRow(int r) {
  QTreeWidget* list = Folders();
  const QRect cell = list->visualRect(list->model()->index(r - 1, 1));
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
}

void MainWindowHarness::ClickCheckBox(int r) {
  QTreeWidget* list = Folders();
  const QStyleOptionViewItem option =
      ItemOption().Of(*list, list->model()->index(r - 1, 0));
  const QRect box = list->style()->subElementRect(
      QStyle::SE_ItemViewItemCheckIndicator, &option, list);
  QTest::mousePress(list->viewport(), Qt::LeftButton, {}, box.center());
  QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, box.center());
}

QStringList MainWindowHarness::SetMenuTexts() {
  QStringList texts;
  for (QAction* a :
       form_->findChildren<QAction*>(QStringLiteral("mnuSetList"))) {
    if (!a->isSeparator()) texts << a->text();
  }
  return texts;
}

int MainWindowHarness::CheckedSetMenuEntry() {
  for (QAction* a :
       form_->findChildren<QAction*>(QStringLiteral("mnuSetList"))) {
    if (a->isChecked()) return a->data().toInt();
  }
  return 0;
}

}  // namespace pairwell
