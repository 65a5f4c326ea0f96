// Speed of the confirm window on a run of 100,000 files.
//
// The working data come from a real scan: the window shows a set's working
// files, which only BuildActionList makes. Two source folders are written
// under a temporary folder, 100 subfolders of 1,000 empty files in A; B
// holds a third of them with A's date (the same: do nothing), a third with
// an older date (changed in both: needs confirmation, use newest) and lacks
// the last third (new in one folder: handled automatically). The conflict
// types are the shipped catalogue's. The run is interactive, so the window
// opens on "All files" with every file listed.
//
// Each step is timed from the call to the moment its events are handled and
// the window repainted. Usage: pairwell_bench_confirm [FILES]
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QTreeView>
#include <QWindow>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "app/program.h"
#include "config/ini_file_section.h"
#include "engine/synchronizer.h"
#include "ui/qt_front_end.h"
#include "ui/run/confirm_form.h"

namespace pairwell {
namespace {

constexpr int kFilesPerFolder = 1000;
constexpr std::int64_t kNewTime = 1700000000;  // 2023-11-14
constexpr std::int64_t kOldTime = 1690000000;  // 2023-07-22

void Fail(const std::string& what) {
  std::fprintf(stderr, "pairwell_bench_confirm: %s\n", what.c_str());
  std::exit(1);
}

void MakeEmptyFile(const std::string& path, std::int64_t seconds) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) Fail("cannot create " + path);
  const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
  if (::futimens(fd, times) != 0) Fail("cannot date " + path);
  ::close(fd);
}

// Writes the two trees; returns the folders A and B.
std::pair<std::string, std::string> WriteTrees(const std::string& root,
                                               long files) {
  const std::string a = root + "/A";
  const std::string b = root + "/B";
  std::filesystem::create_directories(a);
  std::filesystem::create_directories(b);
  for (long i = 0; i < files; ++i) {
    const std::string sub = "/d" + std::to_string(i / kFilesPerFolder);
    if (i % kFilesPerFolder == 0) {
      std::filesystem::create_directory(a + sub);
      std::filesystem::create_directory(b + sub);
    }
    const std::string name = sub + "/file" + std::to_string(i) + ".txt";
    MakeEmptyFile(a + name, kNewTime);
    switch (i % 3) {
      case 0:
        MakeEmptyFile(b + name, kNewTime);
        break;
      case 1:
        MakeEmptyFile(b + name, kOldTime);
        break;
      default:
        break;
    }
  }
  return {a, b};
}

// Lets every pending event run, then paints the window.
void Settle(QWidget& window) {
  QApplication::processEvents();
  window.repaint();
  QApplication::processEvents();
}

double Time(QWidget* window, const std::function<void()>& step) {
  QElapsedTimer timer;
  timer.start();
  step();
  if (window != nullptr) Settle(*window);
  return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

template <typename T>
T* Control(QWidget& form, const char* name) {
  T* control = form.findChild<T*>(QString::fromLatin1(name));
  if (control == nullptr) Fail(std::string("no control ") + name);
  return control;
}

void Report(const char* what, double seconds) {
  std::printf("  %-50s %8.3f s%s\n", what, seconds,
              seconds < 0.5 ? "" : "   (over 0.5 s)");
  std::fflush(stdout);
}

int Main(int argc, char** argv) {
  const long files = argc > 1 ? std::atol(argv[1]) : 100000;
  if (files < 1) Fail("the file count must be positive");

  char pattern[] = "/tmp/pairwell-bench-confirm.XXXXXX";
  if (::mkdtemp(pattern) == nullptr) Fail("cannot make a temporary folder");
  const std::string root = pattern;

  QtFrontEnd ui;
  Program program(ui);
  ui.SetProgram(&program);
  program.Run().interactive = true;

  std::printf("Confirm window, %ld files (two source folders, scanned)\n",
              files);
  QElapsedTimer prepare;
  prepare.start();
  const auto [a, b] = WriteTrees(root, files);
  std::printf("  %-50s %8.3f s\n", "(writing the trees, not counted)",
              static_cast<double>(prepare.nsecsElapsed()) / 1e9);

  Synchronizer& set = program.NewSyncSet("Bench");
  INIFileSection catalogue;
  if (!catalogue.LoadFromFile(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini",
                              "Conflict Types")) {
    Fail("cannot read the shipped conflict types");
  }
  set.ReadConflictInfo(catalogue);
  set.PathAdd(a);
  set.PathAdd(b);
  set.FileSpec = "*.*";
  prepare.restart();
  if (!set.BuildActionList() || set.WFileCount() != files) {
    Fail("the scan did not give the files written");
  }
  std::printf("  %-50s %8.3f s\n", "(scan and default actions, not counted)",
              static_cast<double>(prepare.nsecsElapsed()) / 1e9);

  {
    ConfirmForm* form = nullptr;
    Report("open (until shown and laid out)", Time(nullptr, [&] {
             form = new ConfirmForm(program, set);
             form->show();
             while (form->windowHandle() == nullptr ||
                    !form->windowHandle()->isExposed()) {
               QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
             }
             Settle(*form);
           }));
    QTreeView* list = Control<QTreeView>(*form, "FileList");
    QComboBox* show_mode = Control<QComboBox>(*form, "ShowMode");
    std::printf("  %-50s %s\n", "(statistics)",
                Control<QLabel>(*form, "StatsTxt")->text().toUtf8().data());

    Report("show mode: conflicts that need confirmation",
           Time(form, [&] { show_mode->setCurrentIndex(0); }));
    std::printf("  %-50s %d rows\n", "", list->model()->rowCount());
    Report("show mode: all files",
           Time(form, [&] { show_mode->setCurrentIndex(4); }));
    std::printf("  %-50s %d rows\n", "", list->model()->rowCount());

    Report("select all", Time(form, [&] { list->selectAll(); }));
    Report("apply \"Do nothing\" to all", Time(form, [&] {
             Control<QAbstractButton>(*form, "DoNothing")->click();
           }));
    Report("apply \"Use the newest\" to all", Time(form, [&] {
             Control<QAbstractButton>(*form, "UseNewest")->click();
           }));
    Report("apply a flag (re-copy) to all", Time(form, [&] {
             Control<QAbstractButton>(*form, "ForceCopy")->click();
           }));

    QHeaderView* header = list->header();
    const struct {
      const char* what;
      int column;
    } kSorts[] = {
        {"sort by File", 0},
        {"sort by File, descending", 0},
        {"sort by Status", 1},
        {"sort by Action", 2},
    };
    for (const auto& sort : kSorts) {
      Report(sort.what,
             Time(form, [&] { emit header->sectionClicked(sort.column); }));
    }

    Report("show mode: all files marked for action (sorted)",
           Time(form, [&] { show_mode->setCurrentIndex(2); }));
    Report("close", Time(nullptr, [&] { delete form; }));
  }

  set.FreeSyncData();
  std::filesystem::remove_all(root);
  return 0;
}

}  // namespace
}  // namespace pairwell

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication app(argc, argv);
  return pairwell::Main(argc, argv);
}
