// pairwell: the desktop program. Start-up loads the configuration file,
// applies the command-line switches and shows the main window; from then on
// everything runs from window events.
#include <QApplication>
#include <QIcon>
#include <QString>
#include <string>

#include "app/program.h"
#include "ui/editor/sync_form.h"
#include "ui/qt_front_end.h"

namespace {

// The arguments as one command line, each holding a blank quoted, so that
// the start-up splits them back as they were given.
std::string CommandLine(int argc, char** argv) {
  std::string line;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (!line.empty()) line += ' ';
    const bool quote = arg.find_first_of(" \t") != std::string::npos;
    line += quote ? "\"" + arg + "\"" : arg;
  }
  return line;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Pairwell"));
  QApplication::setApplicationVersion(QStringLiteral(PAIRWELL_VERSION));
  // The installed icon and menu entry; a build not installed borrows the
  // theme's.
  QGuiApplication::setDesktopFileName(QStringLiteral("org.pairwell.Pairwell"));
  QApplication::setWindowIcon(
      QIcon::fromTheme(QStringLiteral("org.pairwell.Pairwell"),
                       QIcon::fromTheme(QStringLiteral("folder-sync"))));
  pairwell::QtFrontEnd front_end;
  pairwell::Program program(front_end);
  front_end.SetProgram(&program);
  program.Main(CommandLine(argc, argv));
  pairwell::SyncForm form(program, front_end);
  front_end.SetMainWindow(&form);
  form.show();
  return app.exec();
}
