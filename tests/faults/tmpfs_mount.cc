#include "faults/tmpfs_mount.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace pairwell {

TmpfsMount::TmpfsMount(std::string folder, const std::string& size)
    : folder_(std::move(folder)) {
  const std::string options = "size=" + size;
  mounted_ = mount("tmpfs", folder_.c_str(), "tmpfs", MS_NOSUID | MS_NODEV,
                   options.c_str()) == 0;
  if (!mounted_) error_ = std::strerror(errno);
}

TmpfsMount::~TmpfsMount() {
  if (mounted_ && umount2(folder_.c_str(), 0) != 0) {
    umount2(folder_.c_str(), MNT_DETACH);
  }
}

bool FillUp(const std::string& path) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) return false;
  const std::vector<char> block(64 * 1024, 'x');
  int error_number = 0;
  // Down to single bytes, so that not even a partial block stays free.
  for (std::size_t chunk = block.size(); chunk > 0 && error_number == 0;) {
    const ssize_t n = write(fd, block.data(), chunk);
    if (n < 0 && errno == ENOSPC) {
      chunk /= 2;
    } else if (n < 0 && errno != EINTR) {
      error_number = errno;
    }
  }
  close(fd);
  return error_number == 0;
}

}  // namespace pairwell
