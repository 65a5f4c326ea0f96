#include "ui/help_pages.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <string>

#include "util/user_interface.h"

namespace pairwell {

void OpenHelpPage(QWidget* /*parent*/, const QString& file_name) {
  const QString path = QDir::cleanPath(
      QDir(QCoreApplication::applicationDirPath()).filePath(file_name));
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
