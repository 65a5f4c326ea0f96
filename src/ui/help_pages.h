// The program's help pages, opened in the desktop's browser.
#ifndef PAIRWELL_UI_HELP_PAGES_H_
#define PAIRWELL_UI_HELP_PAGES_H_

#include <QString>

class QWidget;

namespace pairwell {

// Opens the help page of that file name ("readme.html", "syncdlg.html",
// ...), which lies beside the program, with the desktop's handler for
// local files. When the page is missing or nothing could open it, the
// person is told in a message naming the file. parent is the window that
// asks; the message goes through the installed interface, which chooses
// its owner.
void OpenHelpPage(QWidget* parent, const QString& file_name);

}  // namespace pairwell

#endif  // PAIRWELL_UI_HELP_PAGES_H_
