#include "util/terminal.h"

#include <errno.h>
#include <io.h>
#include <stdlib.h>

#include "util/win32/error_number.h"
#include "util/win32/win32_api.h"

namespace pairwell {

namespace {

HANDLE HandleOf(std::FILE* stream) {
  const int fd = _fileno(stream);
  if (fd < 0) return INVALID_HANDLE_VALUE;
  return reinterpret_cast<HANDLE>(_get_osfhandle(fd));
}

// A console, not merely a character device: "NUL" is one of those too.
bool IsConsole(HANDLE handle) {
  DWORD mode = 0;
  return handle != INVALID_HANDLE_VALUE &&
         GetFileType(handle) == FILE_TYPE_CHAR &&
         GetConsoleMode(handle, &mode) != 0;
}

}  // namespace

bool IsTerminal(std::FILE* stream) { return IsConsole(HandleOf(stream)); }

int TerminalWidth(std::FILE* stream) {
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (!GetConsoleScreenBufferInfo(HandleOf(stream), &info)) return 0;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

bool SameOutput(std::FILE* a, std::FILE* b) {
  if (a == b) return true;
  const HANDLE first = HandleOf(a);
  const HANDLE second = HandleOf(b);
  if (first == INVALID_HANDLE_VALUE || second == INVALID_HANDLE_VALUE) {
    return false;
  }
  if (first == second) return true;
  // A process has one console: two streams on it write among each other.
  if (IsConsole(first) && IsConsole(second)) return true;
  BY_HANDLE_FILE_INFORMATION one;
  BY_HANDLE_FILE_INFORMATION other;
  if (GetFileType(first) != FILE_TYPE_DISK ||
      GetFileType(second) != FILE_TYPE_DISK ||
      !GetFileInformationByHandle(first, &one) ||
      !GetFileInformationByHandle(second, &other)) {
    // Two pipes cannot be told apart short of Windows 10's
    // CompareObjectHandles: taken as different.
    return false;
  }
  return one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
         one.nFileIndexHigh == other.nFileIndexHigh &&
         one.nFileIndexLow == other.nFileIndexLow;
}

void UseUtf8Console() {
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCP(CP_UTF8);
}

namespace {

// The C library keeps the Windows code of its last failed call beside
// errno, which it maps coarsely (Wine's maps a closed pipe to EINVAL).
int StreamError() {
  if (_doserrno != 0) return ErrnoFromWin32(static_cast<DWORD>(_doserrno));
  return errno != 0 ? errno : EIO;
}

}  // namespace

int WriteStream(std::FILE* stream, const char* bytes, std::size_t n) {
  _doserrno = 0;
  errno = 0;
  return std::fwrite(bytes, 1, n, stream) == n ? 0 : StreamError();
}

int FlushStream(std::FILE* stream) {
  _doserrno = 0;
  errno = 0;
  return std::fflush(stream) == 0 ? 0 : StreamError();
}

}  // namespace pairwell
