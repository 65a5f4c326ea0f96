// Where the program's files are: the configuration file, the files it
// ships (the default configuration, the help pages) and the logs. The same
// rules serve the desktop program and the CLI, installed or not.
#ifndef PAIRWELL_APP_CONFIG_LOCATION_H_
#define PAIRWELL_APP_CONFIG_LOCATION_H_

#include <string>

namespace pairwell {

// The environment variable that names the configuration file.
constexpr char kIniPathVariable[] = "PAIRWELL_INI";
// The configuration file's name, beside the executable or in the person's
// configuration folder.
constexpr char kIniFileName[] = "Pairwell.ini";

// Where the configuration file was found, in the order it is looked for.
enum class ConfigPlace {
  kEnvironment,  // $PAIRWELL_INI (the CLI's --ini sets it)
  kPortable,     // Pairwell.ini beside the executable, when that file exists
  kUser,         // $XDG_CONFIG_HOME/pairwell/Pairwell.ini (~/.config/...)
};

ConfigPlace FindConfigPlace();

// The configuration file's full path, by FindConfigPlace().
std::string GetINIPath();

// The folder of the configuration file.
std::string ConfigFolder();

// The folder relative log names are taken in: the configuration's folder,
// but for a configuration in the person's folder the state folder
// ($XDG_STATE_HOME/pairwell, ~/.local/state/pairwell).
std::string LogFolder();

// The folder of the files the program ships: ../share/pairwell beside the
// executable's folder when there is one (an installed program, under any
// prefix), else the executable's own folder (a build).
std::string SharedDataFolder();

// For a configuration in the person's folder that does not exist yet:
// creates it from the shipped default, makes the log folder, and tells the
// person which file was made (or why none could be). False only when the
// file was needed and could not be made.
bool CreateUserConfig();

}  // namespace pairwell

#endif  // PAIRWELL_APP_CONFIG_LOCATION_H_
