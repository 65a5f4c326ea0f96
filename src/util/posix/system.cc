#include "util/system.h"

#include <errno.h>
#include <limits.h>
#include <pwd.h>
#include <string.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <vector>

namespace pairwell {

std::string ErrorText(int error_number) {
  static const char kUnknown[] = "The reason for the failure is unknown.";
  if (error_number == 0) return kUnknown;
  char buffer[256];
  // The GNU strerror_r returns its text rather than filling the buffer.
  const char* text = strerror_r(error_number, buffer, sizeof buffer);
  if (text == nullptr || *text == '\0' ||
      strncmp(text, "Unknown error", 13) == 0) {
    return kUnknown;
  }
  return text;
}

int SystemErrorCode(int error_number) { return error_number; }

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return std::vector<std::string>(argv + 1, argv + argc);
}

std::string ExecutableFolder() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return std::string();
  std::string result(path, static_cast<size_t>(length));
  const std::string::size_type slash = result.find_last_of('/');
  if (slash == std::string::npos) return std::string();
  return slash == 0 ? std::string("/") : result.substr(0, slash);
}

std::string EnvironmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

int SetEnvironmentValue(const char* name, const std::string& value) {
  return setenv(name, value.c_str(), 1) == 0 ? 0 : errno;
}

std::string HomeFolder() {
  const std::string home = EnvironmentValue("HOME");
  if (!home.empty()) return home;
  struct passwd entry;
  struct passwd* found = nullptr;
  std::vector<char> buffer(16384);
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
      found == nullptr || found->pw_dir == nullptr) {
    return std::string();
  }
  return found->pw_dir;
}

namespace {

// $variable when it holds an absolute path (a relative one is to be
// ignored), else the home folder joined with fallback.
std::string XdgFolder(const char* variable, const char* fallback) {
  const std::string value = EnvironmentValue(variable);
  if (!value.empty() && value[0] == '/') return value;
  const std::string home = HomeFolder();
  if (home.empty()) return std::string();
  return home + (home.back() == '/' ? "" : "/") + fallback;
}

}  // namespace

std::string UserConfigFolder() {
  return XdgFolder("XDG_CONFIG_HOME", ".config");
}

std::string UserStateFolder() {
  return XdgFolder("XDG_STATE_HOME", ".local/state");
}

std::string UserFolderName(const std::string& program) {
  std::string name = program;
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

std::uint64_t TickCount() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000 +
         static_cast<std::uint64_t>(now.tv_nsec / 1000000);
}

}  // namespace pairwell
