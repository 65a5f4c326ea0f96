// Programs started with posix_spawn, waited for with waitpid and killed
// with SIGKILL.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "support/cli_process.h"

extern char** environ;

namespace pairwell {

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

ProcessHandle StartProcess(const std::vector<std::string>& argv,
                           const std::string& out_path,
                           const std::string& err_path) {
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

int WaitForExit(ProcessHandle process) {
  int status = 0;
  return Reap(process, &status) ? ExitCodeOf(status) : -1;
}

bool HasEnded(ProcessHandle process, int* exit_code) {
  int status = 0;
  pid_t ended;
  while ((ended = waitpid(process, &status, WNOHANG)) < 0 && errno == EINTR) {
  }
  if (ended == 0) return false;
  // Gone without a status to tell (it was reaped elsewhere): ended all the
  // same.
  *exit_code = ended == process ? ExitCodeOf(status) : -1;
  return true;
}

bool KillProcess(ProcessHandle process, int* exit_code) {
  kill(process, SIGKILL);
  int status = 0;
  if (!Reap(process, &status)) {
    *exit_code = -1;
    return false;
  }
  *exit_code = ExitCodeOf(status);
  // A run may end on its own just as the signal is sent: the status says
  // which came first.
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

}  // namespace pairwell
