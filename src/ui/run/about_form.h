// The about box: the program's title and version, the alpha notice, a
// warning, and a button that starts the system's information tool.
#ifndef PAIRWELL_UI_RUN_ABOUT_FORM_H_
#define PAIRWELL_UI_RUN_ABOUT_FORM_H_

#include <QDialog>
#include <QString>
#include <QStringList>

namespace pairwell {

class AboutForm final : public QDialog {
  Q_OBJECT

 public:
  explicit AboutForm(QWidget* parent = nullptr);
  ~AboutForm() override;
  Q_DISABLE_COPY_MOVE(AboutForm)

  // The system information tools tried, in order of preference: program
  // names looked up on the search path.
  static QStringList DefaultSysInfoTools();
  void SetSysInfoTools(const QStringList& names) { sys_info_tools_ = names; }
  const QStringList& SysInfoTools() const { return sys_info_tools_; }
  // The folders searched for them; empty (the default) searches PATH.
  void SetSysInfoSearchPaths(const QStringList& paths) {
    sys_info_search_paths_ = paths;
  }

  // Starts the first tool found, in a process of its own; when none is
  // found or it cannot be started, says "System Information Is Unavailable
  // At This Time". Returns whether a tool was started.
  bool StartSysInfo();

  // "major.minor.revision" of a version text such as "3.0.0" (parts that
  // are missing read 0, parts after the third are left out).
  static QString VersionNumber(const QString& version);

 private:
  void Load();

  QStringList sys_info_tools_;
  QStringList sys_info_search_paths_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UI_RUN_ABOUT_FORM_H_
