#include "app/program.h"

#include <cmath>
#include <memory>
#include <system_error>
#include <vector>

#include "util/command_line.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/text.h"
#include "util/text_file.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr char kConflictTypesSection[] = "Conflict Types";
constexpr char kSetSectionPrefix[] = "Sec: ";

bool IsSetSection(const std::string& section_name) {
  return UpperCase(section_name.substr(0, 4)) == "SEC:";
}

bool IsSetSectionOf(const INIFileSection& section) {
  return IsSetSection(section.SecName);
}

// The section of the named set in a store read straight from the file.
std::shared_ptr<INIFileSection> FindSetSection(const INIFile& ini,
                                               const std::string& name) {
  for (long i = 1; i <= ini.SecCount(); ++i) {
    const std::shared_ptr<INIFileSection> section = ini.SectionI(i);
    if (IsSetSection(section->SecName) &&
        EqualsNoCase(LTrim(section->SecName.substr(4)), name)) {
      return section;
    }
  }
  return nullptr;
}

}  // namespace

void ClearLogIfOld(const Synchronizer& set) {
  if (!set.ClearLogDaily) return;
  const std::string path = CombinePath(LogFolder(), Trim(set.LogFileName));
  FolderEntry entry;
  if (GetFileInfo(path, &entry) && entry.modify_date < std::floor(Now())) {
    DeleteFile(path);  // a log that cannot be deleted is simply kept
  }
}

Program::Program(FrontEnd& front_end)
    : front_end_(front_end), installed_ui_(&front_end) {}

Program::~Program() = default;

bool Program::SaveLastSyncDates(const std::vector<const Synchronizer*>& sets) {
  INIFile on_disk;
  const std::string path = GetINIPath();
  if (!on_disk.LoadFile(path)) return false;
  bool ok = true;
  bool changed = false;
  for (const Synchronizer* set : sets) {
    const std::shared_ptr<INIFileSection> section =
        FindSetSection(on_disk, set->Name);
    if (!section) {
      MsgBox("The set '" + set->Name + "' is no longer in " + path +
                 "; its last synchronization date was not saved.",
             kMbExclamation);
      ok = false;
    } else {
      set->WriteLastSync(*section);
      changed = true;
    }
  }
  if (!changed) return ok;
  try {
    on_disk.SaveFile(path);
  } catch (const std::system_error& error) {
    MsgBox(std::string("The last synchronization dates could not be saved: ") +
               error.what(),
           kMbExclamation);
    return false;
  }
  return ok;
}

bool Program::LoadSettings() {
  INIFile& ini = TheINIFile();
  // A save cut short by a crash left its temporary file beside the file.
  RemoveStaleReplacements(GetINIPath(), NowMoment().seconds);
  const bool loaded = ini.LoadFile(GetINIPath());
  const bool has_catalogue = ini.IndexOfSection(kConflictTypesSection) >= 0;
  if (!has_catalogue) {
    MsgBox(
        "The .ini file this program requires is missing or incomplete.  "
        "Without it, the program will not be able to synchronize properly.",
        kMbCritical);
  }
  // The set sections are rewritten from the sets at every save.
  for (const std::shared_ptr<INIFileSection>& section :
       ini.RemoveSectionsIf(IsSetSectionOf)) {
    Synchronizer& set = NewSyncSet(LTrim(section->SecName.substr(4)));
    set.ReadFromINI(*section);
  }
  return loaded && has_catalogue;
}

Synchronizer& Program::NewSyncSet(const std::string& name) {
  Synchronizer& set = SyncSets().Add(std::make_unique<Synchronizer>());
  set.Name = name;
  set.SetLog(&TheLogFile());
  set.SetRunState(&run_state_);
  set.ReadConflictInfo(*TheINIFile().AddSection(kConflictTypesSection));
  return set;
}

void Program::SaveSettings() {
  INIFile& ini = TheINIFile();
  // Set sections left by an earlier save in this session are rebuilt, so a
  // removed folder or set leaves nothing behind.
  ini.RemoveSectionsIf(IsSetSectionOf);
  for (int k = 1; k <= SyncSets().Count(); ++k) {
    const Synchronizer& set = SyncSets().Item(k);
    set.WriteToINI(*ini.AddSection(kSetSectionPrefix + set.Name));
  }
  ini.SaveFile(GetINIPath());
}

Synchronizer* Program::FindSyncSet(const std::string& which) {
  SyncSetList& sets = SyncSets();
  for (int i = 1; i <= sets.Count(); ++i) {
    if (EqualsNoCase(sets.Item(i).Name, which)) return &sets.Item(i);
  }
  double number = 0;
  if (ParseNumber(which, &number) && number >= 1 && number <= sets.Count() &&
      number == static_cast<int>(number)) {
    return &sets.Item(static_cast<int>(number));
  }
  return nullptr;
}

void Program::ApplySwitch(const std::string& arg) {
  const std::string name = UpperCase(arg.substr(1));
  if (name == "Q") {
    for (int i = 1; i <= SyncSets().Count(); ++i) {
      SyncSets().Item(i).QuietMode = true;
    }
  } else if (name == "?") {
    MsgBox("COMMAND LINE SUPPORT NOT IMPLEMENTED", kMbOkOnly, "Pairwell");
  } else {
    MsgBox("Unknown command-line switch ignored: " + arg, kMbInformation);
  }
}

bool Program::Main(const std::string& command_line) {
  // The sets go first: they refer to the log.
  sync_sets_ = std::make_unique<SyncSetList>();
  ini_file_ = std::make_unique<INIFile>();
  log_file_ = std::make_unique<LogFile>();
  run_state_ = RunState();
  // A first start of an installed program makes the person's
  // configuration from the shipped one.
  CreateUserConfig();
  TheLogFile().SetBaseFolder(LogFolder());

  const std::vector<std::string> args = SplitCommandLine(command_line);
  const bool loaded = LoadSettings();
  SetSimulationMode(
      StrToBool(TheINIFile().SectionI(0)->FindVar2("SimulationMode", "False")));
  for (const std::string& arg : args) {
    if (!arg.empty() && (arg[0] == '/' || arg[0] == '-')) ApplySwitch(arg);
  }
  if (SyncSets().Count() == 0) NewSyncSet("Untitled");
  TheLogFile().LogFlags = 0;
  return loaded;
}

}  // namespace pairwell
