#include "support/pty_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "support/cli_process.h"

namespace pairwell {

namespace {

constexpr auto kLongest = std::chrono::minutes(1);

// The terminal's two ends: the test reads the master; the program writes to
// the slave, which is raw and `columns` wide. False when one is missing.
bool OpenTerminal(unsigned short columns, int* master, int* slave) {
  *master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (*master < 0 || grantpt(*master) != 0 || unlockpt(*master) != 0) {
    return false;
  }
  *slave = open(ptsname(*master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (*slave < 0) return false;
  struct termios mode;
  if (tcgetattr(*slave, &mode) != 0) return false;
  cfmakeraw(&mode);
  struct winsize size = {};
  size.ws_row = 24;
  size.ws_col = columns;
  return tcsetattr(*slave, TCSANOW, &mode) == 0 &&
         ioctl(*master, TIOCSWINSZ, &size) == 0;
}

pid_t Spawn(const std::vector<std::string>& argv, int slave,
            const std::string& out_path, bool output_on_terminal) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, slave, STDERR_FILENO);
  if (output_on_terminal) {
    posix_spawn_file_actions_adddup2(&actions, slave, STDOUT_FILENO);
  } else {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
  }
  const pid_t pid = SpawnProcess(argv, actions);
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

// Reads what the master has within the wait; false once every writer has
// gone (EIO) or on another error.
bool ReadSome(int master, std::chrono::milliseconds wait, std::string* into) {
  struct pollfd ready = {master, POLLIN, 0};
  const int polled = poll(&ready, 1, static_cast<int>(wait.count()));
  if (polled < 0) return errno == EINTR;
  if (polled == 0) return true;
  char buffer[65536];
  const ssize_t n = read(master, buffer, sizeof buffer);
  if (n > 0) {
    into->append(buffer, static_cast<std::size_t>(n));
    return true;
  }
  return n < 0 && errno == EINTR;
}

}  // namespace

TerminalResult RunOnTerminal(const std::vector<std::string>& argv,
                             const std::string& out_path,
                             const TerminalOptions& options) {
  TerminalResult result;
  int master = -1;
  int slave = -1;
  pid_t pid = -1;
  if (OpenTerminal(options.columns, &master, &slave)) {
    pid = Spawn(argv, slave, out_path, options.output_on_terminal);
  }
  // Only the program holds the slave now: its end shows as EIO.
  if (slave >= 0) close(slave);
  if (pid > 0) {
    std::this_thread::sleep_for(options.unread_for);
    const auto start = std::chrono::steady_clock::now();
    while (ReadSome(master, std::chrono::milliseconds(100), &result.terminal)) {
      if (std::chrono::steady_clock::now() - start > kLongest)
        kill(pid, SIGKILL);
    }
    result.exit_code = WaitForExit(pid);
  }
  if (master >= 0) close(master);
  if (!options.output_on_terminal) result.out = ReadOutput(out_path);
  return result;
}

}  // namespace pairwell
