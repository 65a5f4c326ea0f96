#include "util/text_file.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <system_error>
#include <vector>

#include "util/file_system.h"

namespace pairwell {

bool ReadTextFile(const std::string& path, std::string* content,
                  int* error_number) {
  content->clear();
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    *error_number = errno;
    return false;
  }
  char buffer[65536];
  for (;;) {
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      *error_number = errno;
      close(fd);
      return false;
    }
    content->append(buffer, static_cast<size_t>(n));
  }
  close(fd);
  return true;
}

namespace {

// A replacement is written to "<name>.pairwell-" and six random characters.
constexpr char kReplacementSuffix[] = ".pairwell-";

[[noreturn]] void Fail(int error_number, const std::string& what,
                       const std::string& path) {
  throw std::system_error(error_number, std::generic_category(),
                          what + " " + path);
}

bool WriteAll(int fd, const std::string& content) {
  std::string::size_type done = 0;
  while (done < content.size()) {
    const ssize_t n = write(fd, content.data() + done, content.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    done += static_cast<std::string::size_type>(n);
  }
  return true;
}

// The process's file-creation mask; reading it means setting it, so it is
// put back at once.
mode_t CurrentUmask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

}  // namespace

void ReplaceFileContent(const std::string& given_path,
                        const std::string& content) {
  // A link to the file stays a link: its target is what gets replaced.
  std::string path = given_path;
  char resolved[PATH_MAX];
  struct stat link_info;
  if (lstat(given_path.c_str(), &link_info) == 0 &&
      S_ISLNK(link_info.st_mode) &&
      realpath(given_path.c_str(), resolved) != nullptr) {
    path = resolved;
  }
  std::vector<char> temp_name(path.begin(), path.end());
  const std::string suffix = std::string(kReplacementSuffix) + "XXXXXX";
  temp_name.insert(temp_name.end(), suffix.begin(), suffix.end());
  temp_name.push_back('\0');
  const int fd = mkstemp(temp_name.data());
  if (fd < 0) Fail(errno, "cannot create a temporary file beside", path);

  struct stat existing;
  const mode_t mode = stat(path.c_str(), &existing) == 0
                          ? existing.st_mode & 07777
                          : static_cast<mode_t>(0666 & ~CurrentUmask());
  int error_number = 0;
  if (!WriteAll(fd, content) || fchmod(fd, mode) != 0 || fsync(fd) != 0) {
    error_number = errno;
  }
  if (close(fd) != 0 && error_number == 0) error_number = errno;
  if (error_number == 0 && rename(temp_name.data(), path.c_str()) != 0) {
    error_number = errno;
  }
  if (error_number != 0) {
    unlink(temp_name.data());
    Fail(error_number, "cannot write", path);
  }
  // The rename itself reaches the disk only with its folder: until then a
  // power cut could bring the old file back, or none.
  const std::string::size_type slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? std::string(".")
                             : slash == 0 ? std::string("/")
                                          : path.substr(0, slash);
  error_number = FlushFolder(folder);
  if (error_number != 0) Fail(error_number, "cannot flush the folder of", path);
}

std::vector<std::string> RemoveStaleReplacements(const std::string& path,
                                                 std::int64_t before) {
  std::vector<std::string> removed;
  const std::string::size_type slash = path.find_last_of('/');
  const std::string folder =
      slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const std::string prefix =
      (slash == std::string::npos ? path : path.substr(slash + 1)) +
      kReplacementSuffix;
  DIR* dir =
      path.find('\0') == std::string::npos ? opendir(folder.c_str()) : nullptr;
  if (dir == nullptr) return removed;
  while (const struct dirent* d = readdir(dir)) {
    const std::string name = d->d_name;
    if (name.size() != prefix.size() + 6 ||
        name.compare(0, prefix.size(), prefix) != 0) {
      continue;
    }
    const std::string stale = slash == std::string::npos ? name : folder + name;
    struct stat info;
    if (lstat(stale.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
        info.st_mtim.tv_sec < before && unlink(stale.c_str()) == 0) {
      removed.push_back(stale);
    }
  }
  closedir(dir);
  return removed;
}

}  // namespace pairwell
