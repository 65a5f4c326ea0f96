#include "support/cli_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <thread>

extern char** environ;

namespace pairwell {

std::string ReadOutput(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

namespace {

int ExitCodeOf(int status) {
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Waits for the process to end; false when it cannot be waited for.
bool Reap(pid_t pid, int* status) {
  while (waitpid(pid, status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

}  // namespace

pid_t SpawnProcess(const std::vector<std::string>& argv,
                   const posix_spawn_file_actions_t& actions) {
  std::vector<std::string> words = argv;
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(&word[0]);
  pointers.push_back(nullptr);
  pid_t pid = -1;
  if (posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers.data(),
                   environ) != 0) {
    pid = -1;
  }
  return pid;
}

pid_t StartProcess(const std::vector<std::string>& argv,
                   const std::string& out_path, const std::string& err_path) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  const pid_t pid = SpawnProcess(argv, actions);
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

int WaitForExit(pid_t pid) {
  int status = 0;
  return Reap(pid, &status) ? ExitCodeOf(status) : -1;
}

ProcessResult RunProcess(const std::vector<std::string>& argv,
                         const std::string& out_path,
                         const std::string& err_path) {
  ProcessResult result;
  const pid_t pid = StartProcess(argv, out_path, err_path);
  if (pid > 0) result.exit_code = WaitForExit(pid);
  result.out = ReadOutput(out_path);
  result.err = ReadOutput(err_path);
  return result;
}

KillOutcome RunAndKillAfter(const std::vector<std::string>& argv,
                            const std::string& out_path,
                            const std::string& err_path,
                            std::chrono::steady_clock::duration delay) {
  KillOutcome outcome;
  const auto start = std::chrono::steady_clock::now();
  const pid_t pid = StartProcess(argv, out_path, err_path);
  if (pid <= 0) return outcome;
  outcome.started = true;
  // Polled rather than slept through, so that a run that ends early is
  // seen (and timed) as soon as it ends.
  int status = 0;
  for (;;) {
    const pid_t ended = waitpid(pid, &status, WNOHANG);
    if (ended == pid) break;
    if (ended < 0 && errno != EINTR) return outcome;
    if (std::chrono::steady_clock::now() - start >= delay) {
      kill(pid, SIGKILL);
      if (!Reap(pid, &status)) return outcome;
      break;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  // A run may end on its own just as the signal is sent: the status says
  // which came first.
  outcome.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  outcome.lived = std::chrono::steady_clock::now() - start;
  outcome.exit_code = ExitCodeOf(status);
  return outcome;
}

std::vector<std::string> LinesStartingWith(const std::string& out,
                                           const std::string& prefix) {
  std::vector<std::string> found;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(prefix, 0) == 0) found.push_back(line);
  }
  return found;
}

}  // namespace pairwell
