// Running a program from a test: to its end, or killed part-way. Its
// standard output and error go to files, so that a program that writes a
// lot never blocks on a full pipe while the test waits for it.
//
// The same calls on POSIX (posix_spawn, waitpid, SIGKILL) and on Windows
// (CreateProcessW, WaitForSingleObject, TerminateProcess).
#ifndef PAIRWELL_TESTS_SUPPORT_CLI_PROCESS_H_
#define PAIRWELL_TESTS_SUPPORT_CLI_PROCESS_H_

#ifndef _WIN32
#include <spawn.h>
#include <sys/types.h>
#endif

#include <chrono>
#include <string>
#include <vector>

namespace pairwell {

// A started program, until it has been waited for: its process id on
// POSIX, its process handle on Windows (closed once it has ended).
#ifdef _WIN32
using ProcessHandle = void*;
inline constexpr ProcessHandle kNoProcess = nullptr;
#else
using ProcessHandle = pid_t;
inline constexpr ProcessHandle kNoProcess = -1;
#endif

// What a finished program left behind.
struct ProcessResult {
  int exit_code = -1;  // -1 when a signal (or a kill) ended it
  std::string out;
  std::string err;
};

// How a run that was to be killed ended.
struct KillOutcome {
  bool started = false;
  bool killed = false;  // false: the program ended on its own first
  int exit_code = -1;   // as in ProcessResult
  std::chrono::steady_clock::duration lived{};
};

// The lines of a program's output that start with prefix, in order.
std::vector<std::string> LinesStartingWith(const std::string& out,
                                           const std::string& prefix);

// The whole content of a file; "" when it cannot be read.
std::string ReadOutput(const std::string& path);

// An out_path for an output that refuses every write: /dev/full on POSIX
// (no space left), on Windows a pipe whose reading end is closed.
#ifdef _WIN32
inline constexpr char kRefusingOutput[] = "|closed pipe|";
#else
inline constexpr char kRefusingOutput[] = "/dev/full";
#endif

// Starts argv[0] (looked up in PATH when it holds no slash) with the other
// words as its arguments, its standard output and error written to the
// files out_path and err_path (created or emptied); on Windows its standard
// input reads from NUL. kNoProcess when it could not be started.
ProcessHandle StartProcess(const std::vector<std::string>& argv,
                           const std::string& out_path,
                           const std::string& err_path);

// Waits for the process to end and reaps it; its exit code, or -1 when a
// signal (or a kill) ended it.
int WaitForExit(ProcessHandle process);

// Without waiting: true once the process has ended, which is then reaped,
// its exit code (as WaitForExit gives it) in *exit_code.
bool HasEnded(ProcessHandle process, int* exit_code);

// Kills the process at once (SIGKILL; TerminateProcess on Windows) and
// reaps it. True when the kill ended it; false when it had ended on its own
// first, its exit code then in *exit_code (-1 after a kill).
bool KillProcess(ProcessHandle process, int* exit_code);

// Runs the program to its end; the outputs are read back from the files.
// Windows programs end their lines with CR LF: there those are read as LF,
// so that one expectation holds on both systems.
ProcessResult RunProcess(const std::vector<std::string>& argv,
                         const std::string& out_path,
                         const std::string& err_path);

// Starts the program like StartProcess and kills it once delay has passed,
// unless it has ended by then; either way it is reaped before this returns.
KillOutcome RunAndKillAfter(const std::vector<std::string>& argv,
                            const std::string& out_path,
                            const std::string& err_path,
                            std::chrono::steady_clock::duration delay);

#ifndef _WIN32
// Starts argv[0] (looked up in PATH) with the file actions given, which
// stay the caller's; -1 when it cannot start.
pid_t SpawnProcess(const std::vector<std::string>& argv,
                   const posix_spawn_file_actions_t& actions);
#endif

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_CLI_PROCESS_H_
