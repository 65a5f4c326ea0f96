#include "util/append_file.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "util/file_system.h"

namespace pairwell {

AppendFile::~AppendFile() { Close(); }

int AppendFile::Open(const std::string& path, bool create_new) {
  Close();
  if (HasNul(path)) return EINVAL;
  const int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC |
                    (create_new ? O_EXCL : 0);
  fd_ = open(path.c_str(), flags, 0666);
  if (fd_ < 0) return errno;
  path_ = path;
  return 0;
}

int AppendFile::Append(const std::string& bytes) {
  if (fd_ < 0) return EBADF;
  const char* next = bytes.data();
  std::size_t left = bytes.size();
  while (left > 0) {
    const ssize_t written = write(fd_, next, left);
    if (written < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    next += written;
    left -= static_cast<std::size_t>(written);
  }
  return 0;
}

int AppendFile::Flush() {
  if (fd_ < 0) return EBADF;
  return fdatasync(fd_) == 0 ? 0 : errno;
}

int AppendFile::Close() {
  if (fd_ < 0) return 0;
  const int result = close(fd_) == 0 ? 0 : errno;
  fd_ = -1;
  return result;
}

}  // namespace pairwell
