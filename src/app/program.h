// Program-wide state and the start-up procedure shared by the GUI and the
// CLI. main owns one Program for the life of the process (tests make a
// fresh one for each test); everything a run shares lives in it.
#ifndef PAIRWELL_APP_PROGRAM_H_
#define PAIRWELL_APP_PROGRAM_H_

#include <memory>
#include <string>
#include <vector>

#include "app/config_location.h"
#include "app/front_end.h"
#include "config/ini_file.h"
#include "engine/log_file.h"
#include "engine/run_state.h"
#include "engine/sync_set_list.h"
#include "engine/synchronizer.h"

namespace pairwell {

// When the set clears its log daily: looks the trimmed log name up with
// GetFileInfo and deletes it, errors ignored, when what was found was last
// modified before today. GetFileInfo finds folders only, so an ordinary log
// file is kept.
void ClearLogIfOld(const Synchronizer& set);

class Program {
 public:
  // Installs the front end (not owned; it must outlive the program) as the
  // interface the core talks to, until the program is destroyed.
  explicit Program(FrontEnd& front_end);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  INIFile& TheINIFile() { return *ini_file_; }
  SyncSetList& SyncSets() { return *sync_sets_; }
  LogFile& TheLogFile() { return *log_file_; }
  bool SimulationMode() const { return run_state_.simulation_mode; }
  void SetSimulationMode(bool on) { run_state_.simulation_mode = on; }
  // The run flags the windows read and the engine polls.
  RunState& Run() { return run_state_; }
  FrontEnd& UI() { return front_end_; }

  // The start-up procedure up to showing the main window: fresh state, the
  // configuration file loaded, SimulationMode read, the command-line
  // switches applied ("/Q" or "-Q" quiet mode for every set, "/?" the
  // not-implemented notice, other switches a notice that they are ignored),
  // an "Untitled" set when none was loaded, and the log's flags cleared.
  // Returns false when the configuration file could not be read or has no
  // "Conflict Types" (the person has been told; the program may still go
  // on).
  bool Main(const std::string& command_line);

  // Loads the configuration file and creates one set per "Sec:" section, in
  // file order, taking those sections out of the store. Tells the person
  // when the "Conflict Types" section is missing. Returns false when the
  // file could not be read or the catalogue is missing.
  bool LoadSettings();

  // Appends a new set with default settings and that name, connects it to
  // TheLogFile and the run state and lets it read the conflict types
  // (creating an empty "Conflict Types" section when there is none).
  // Returns the new set.
  Synchronizer& NewSyncSet(const std::string& name);

  // Writes every set into a "Sec: <name>" section after all other sections
  // and saves the store to GetINIPath(). A write failure throws
  // std::system_error; the file on disk then stays as it was.
  void SaveSettings();

  // Writes the LastSyncDate of each given set into the configuration file as
  // it is on disk now, changing nothing else in it (every other section, key
  // and comment stays; the file is replaced whole only once written).
  // Returns false, after telling the person, when the file cannot be read or
  // written or lacks a set's section.
  bool SaveLastSyncDates(const std::vector<const Synchronizer*>& sets);

  // The set named by `which` (ignoring case), else the set of that number
  // (1-based); null when neither is.
  Synchronizer* FindSyncSet(const std::string& which);

 private:
  void ApplySwitch(const std::string& arg);

  FrontEnd& front_end_;
  ScopedUserInterface installed_ui_;
  RunState run_state_;
  std::unique_ptr<INIFile> ini_file_ = std::make_unique<INIFile>();
  std::unique_ptr<LogFile> log_file_ = std::make_unique<LogFile>();
  // Last: the sets refer to the log and the run state.
  std::unique_ptr<SyncSetList> sync_sets_ = std::make_unique<SyncSetList>();
};

}  // namespace pairwell

#endif  // PAIRWELL_APP_PROGRAM_H_
