// Small questions to the operating system that are not about files.
#ifndef PAIRWELL_UTIL_SYSTEM_H_
#define PAIRWELL_UTIL_SYSTEM_H_

#include <cstdint>
#include <string>
#include <vector>

namespace pairwell {

// The system's message for an error number (errno); "The reason for the
// failure is unknown." when there is none.
std::string ErrorText(int error_number);

// The program's arguments after its own name, in UTF-8: argv as it comes
// on POSIX; on Windows read again from the wide command line, since argv
// holds them in the local code page, where most names do not fit.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// The number the system itself gives the error that error_number stands
// for, as a person looks it up and as the "ErrorHandling" table is keyed:
// errno on POSIX, the Windows error code (5 for access denied, 32 for a file
// another program holds open) on Windows.
int SystemErrorCode(int error_number);

// The folder holding the running executable, without a trailing slash;
// empty when the system cannot tell.
std::string ExecutableFolder();

// The value of an environment variable; empty when it is not set.
std::string EnvironmentValue(const char* name);

// Sets an environment variable for this process and the programs it starts.
// Returns 0, or the system error number.
int SetEnvironmentValue(const char* name, const std::string& value);

// The person's home folder: $HOME, else the account's home; empty when
// neither is known.
std::string HomeFolder();

// The folders where programs keep a person's configuration and their state
// (logs): $XDG_CONFIG_HOME and $XDG_STATE_HOME when they hold absolute
// paths, else ~/.config and ~/.local/state; on Windows %APPDATA% and
// %LOCALAPPDATA%, else the shell's folders of those. Empty when no home is
// known.
std::string UserConfigFolder();
std::string UserStateFolder();

// The name a program's own folder takes inside UserConfigFolder() and
// UserStateFolder(): in lower case where those folders hold lower-case
// names (POSIX: "pairwell"), as given on Windows ("Pairwell").
std::string UserFolderName(const std::string& program);

// Milliseconds from a fixed point in the past, never going back.
std::uint64_t TickCount();

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_SYSTEM_H_
