// Running a program from a test: to its end, or killed part-way. Its
// standard output and error go to files, so that a program that writes a
// lot never blocks on a full pipe while the test waits for it.
#ifndef PAIRWELL_TESTS_SUPPORT_CLI_PROCESS_H_
#define PAIRWELL_TESTS_SUPPORT_CLI_PROCESS_H_

#include <spawn.h>
#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace pairwell {

// What a finished program left behind.
struct ProcessResult {
  int exit_code = -1;  // -1 when a signal ended it
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

// Starts argv[0] (looked up in PATH when it holds no slash) with the other
// words as its arguments, its standard output and error written to the
// files out_path and err_path (created or emptied). The process id, or -1
// when it could not be started.
// Starts argv[0] (looked up in PATH) with the file actions given, which
// stay the caller's; -1 when it cannot start.
pid_t SpawnProcess(const std::vector<std::string>& argv,
                   const posix_spawn_file_actions_t& actions);

// The lines of a program's output that start with prefix, in order.
std::vector<std::string> LinesStartingWith(const std::string& out,
                                           const std::string& prefix);

// The whole content of a file; "" when it cannot be read.
std::string ReadOutput(const std::string& path);

pid_t StartProcess(const std::vector<std::string>& argv,
                   const std::string& out_path, const std::string& err_path);

// Waits for the process to end and reaps it; its exit code, or -1 when a
// signal ended it.
int WaitForExit(pid_t pid);

// Runs the program to its end; the outputs are read back from the files.
ProcessResult RunProcess(const std::vector<std::string>& argv,
                         const std::string& out_path,
                         const std::string& err_path);

// Starts the program like StartProcess and sends it SIGKILL once delay has
// passed, unless it has ended by then; either way it is reaped before this
// returns.
KillOutcome RunAndKillAfter(const std::vector<std::string>& argv,
                            const std::string& out_path,
                            const std::string& err_path,
                            std::chrono::steady_clock::duration delay);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_CLI_PROCESS_H_
