#include "util/terminal.h"

#include <errno.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace pairwell {

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) == 1; }

int TerminalWidth(std::FILE* stream) {
  struct winsize size;
  if (ioctl(fileno(stream), TIOCGWINSZ, &size) != 0) return 0;
  return size.ws_col;
}

bool SameOutput(std::FILE* a, std::FILE* b) {
  if (a == b) return true;
  struct stat first;
  struct stat second;
  if (fstat(fileno(a), &first) != 0 || fstat(fileno(b), &second) != 0) {
    return false;
  }
  return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void UseUtf8Console() {}

int WriteStream(std::FILE* stream, const char* bytes, std::size_t n) {
  if (std::fwrite(bytes, 1, n, stream) == n) return 0;
  return errno != 0 ? errno : EIO;
}

int FlushStream(std::FILE* stream) {
  if (std::fflush(stream) == 0) return 0;
  return errno != 0 ? errno : EIO;
}

}  // namespace pairwell
