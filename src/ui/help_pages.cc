#include "ui/help_pages.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <string>

#include "app/config_location.h"
#include "util/user_interface.h"

namespace pairwell {

void OpenHelpPage(QWidget* /*parent*/, const QString& file_name) {
  // Shipped with the program: beside it in a build, in its share folder
  // once installed.
  const QString path = QDir::cleanPath(
      QDir(QString::fromStdString(SharedDataFolder())).filePath(file_name));
  if (!QFileInfo(path).isFile()) {
    MsgBox("The help page " + QDir::toNativeSeparators(path).toStdString() +
               " could not be found.",
           kMbExclamation);
    return;
  }
  if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path))) {
    MsgBox("The help page " + QDir::toNativeSeparators(path).toStdString() +
               " could not be opened: no program to show it was found.",
           kMbExclamation);
  }
}

}  // namespace pairwell
