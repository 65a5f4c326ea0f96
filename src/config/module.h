// Program-wide state and the start-up procedure shared by the GUI and the
// CLI. One instance of each piece of state lives from Main() to the end of
// the program.
#ifndef PAIRWELL_CONFIG_MODULE_H_
#define PAIRWELL_CONFIG_MODULE_H_

#include <string>
#include <vector>

#include "config/ini_file.h"
#include "config/sync_set_list.h"
#include "engine/log_file.h"
#include "engine/synchronizer.h"

namespace pairwell {

// The environment variable that names the configuration file; when it is
// not set, the file is "Pairwell.ini" beside the executable.
constexpr char kIniPathVariable[] = "PAIRWELL_INI";

INIFile& TheINIFile();
SyncSetList& SyncSets();
LogFile& TheLogFile();
bool SimulationMode();
void SetSimulationMode(bool on);

// The configuration file's full path: $PAIRWELL_INI when set, else the
// executable's folder joined with "Pairwell.ini".
std::string GetINIPath();

// Loads the configuration file and creates one set per "Sec:" section, in
// file order, taking those sections out of the store. Tells the person when
// the "Conflict Types" section is missing. Returns false when the file could
// not be read or the catalogue is missing.
bool LoadSettings();

// Appends a new set with default settings and that name, connects it to
// TheLogFile and lets it read the conflict types (creating an empty "Conflict
// Types" section when there is none). Returns the new set.
Synchronizer& NewSyncSet(const std::string& name);

// Writes every set into a "Sec: <name>" section after all other sections
// and saves the store to GetINIPath(). A write failure throws
// std::system_error; the file on disk then stays as it was.
void SaveSettings();

// Writes the LastSyncDate of each given set into the configuration file as
// it is on disk now, changing nothing else in it (every other section, key
// and comment stays; the file is replaced whole only once written). Returns
// false, after telling the person, when the file cannot be read or written
// or lacks a set's section.
bool SaveLastSyncDates(const std::vector<const Synchronizer*>& sets);

// The folder of the configuration file; relative log names are taken
// relative to it.
std::string ConfigFolder();

// When the set clears its log daily: looks the trimmed log name up with
// GetFileInfo and deletes it, errors ignored, when what was found was last
// modified before today. GetFileInfo finds folders only, so an ordinary log
// file is kept.
void ClearLogIfOld(const Synchronizer& set);

// The start-up procedure up to showing the main window: fresh state, the
// configuration file loaded, SimulationMode read, the command-line switches
// applied ("/Q" or "-Q" quiet mode for every set, "/?" the not-implemented
// notice, other switches a notice that they are ignored), an "Untitled" set
// when none was loaded, and the log's flags cleared. Returns false when the
// configuration file could not be read or has no "Conflict Types" (the
// person has been told; the program may still go on).
bool Main(const std::string& command_line);

}  // namespace pairwell

#endif  // PAIRWELL_CONFIG_MODULE_H_
