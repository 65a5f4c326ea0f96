// A started desktop program for window tests: a configuration file in a
// temporary folder, the program state, the scripted front end and the main
// window over them.
#ifndef PAIRWELL_TESTS_UI_MAIN_WINDOW_HARNESS_H_
#define PAIRWELL_TESTS_UI_MAIN_WINDOW_HARNESS_H_

#include <QAction>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <memory>
#include <string>
#include <vector>

#include "app/program.h"
#include "ui/editor/sync_form.h"
#include "ui/scripted_front_end.h"

namespace pairwell {

// The file's bytes as text; "" when it cannot be read.
QString ReadAll(const QString& path);

// "[Sec: <name>]" with the given folders, each an enabled source folder
// unless flags are given.
std::string SetSection(const std::string& name,
                       const std::vector<std::string>& folders,
                       const std::vector<int>& flags = {});

class MainWindowHarness {
 public:
  // Keys of ini_text before its first section stay at the head of the file;
  // a "[Conflict Types]" section follows them (the shipped catalogue when
  // with_catalogue, else an empty one), then the rest of ini_text.
  explicit MainWindowHarness(const std::string& ini_text,
                             const std::string& command_line = "",
                             bool with_catalogue = false);
  ~MainWindowHarness();
  MainWindowHarness(const MainWindowHarness&) = delete;
  MainWindowHarness& operator=(const MainWindowHarness&) = delete;

  ScriptedFrontEnd ui;
  Program& program() { return *program_; }
  SyncForm& form() { return *form_; }
  const QString& ini_path() const { return ini_path_; }
  // A path in the temporary folder.
  QString Path(const QString& name) const { return dir_.filePath(name); }

  // The main window's control of that name; a missing one ends the test run.
  template <typename T>
  T* Find(const char* name) {
    T* widget = form_->findChild<T*>(QString::fromLatin1(name));
    if (widget == nullptr) qFatal("no control %s", name);
    return widget;
  }
  QAction* Action(const char* name) { return Find<QAction>(name); }
  QTreeWidget* Folders() { return Find<QTreeWidget>("Folders"); }
  // Folder rows and their path flags, 1-based.
  QTreeWidgetItem* Row(int r) { return Folders()->topLevelItem(r - 1); }
  int Tag(int r) { return Row(r)->data(0, Qt::UserRole).toInt(); }
  // Makes row r current and clicks it.
  void SelectRow(int r);
  // A person's click (press and release) on row r's "Type" cell, and on
  // row r's check box where the view's style draws it. The window must be
  // shown.
  void ClickRow(int r);
  void ClickCheckBox(int r);
  // The set-list menu's captions 1..N, and the entry that carries the check.
  QStringList SetMenuTexts();
  int CheckedSetMenuEntry();

 private:
  QTemporaryDir dir_;
  QString ini_path_;
  std::unique_ptr<Program> program_;
  std::unique_ptr<SyncForm> form_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_UI_MAIN_WINDOW_HARNESS_H_
