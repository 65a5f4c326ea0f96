#include "util/append_file.h"

#include <errno.h>
#include <fcntl.h>
#include <io.h>

#include <algorithm>

#include "util/file_system.h"
#include "util/win32/error_number.h"
#include "util/win32/long_path.h"
#include "util/win32/win32_api.h"
#include "util/win32/write_all.h"

// The file is opened by CreateFileW for appending only, so that every write
// lands at the end even when another process appends too, and kept as a C
// runtime descriptor (_open_osfhandle), which is what fd_ holds here.

namespace pairwell {

AppendFile::~AppendFile() { Close(); }

int AppendFile::Open(const std::string& path, bool create_new) {
  Close();
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  const HANDLE handle = CreateFileW(
      wide.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      create_new ? CREATE_NEW : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return LastErrno();
  fd_ = _open_osfhandle(reinterpret_cast<intptr_t>(handle),
                        _O_APPEND | _O_BINARY);
  if (fd_ < 0) {
    CloseHandle(handle);
    return EMFILE;
  }
  path_ = path;
  return 0;
}

int AppendFile::Append(const std::string& bytes) {
  if (fd_ < 0) return EBADF;
  const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(fd_));
  return WriteAll(handle, bytes.data(), bytes.size());
}

int AppendFile::Flush() {
  if (fd_ < 0) return EBADF;
  const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(fd_));
  return FlushFileBuffers(handle) ? 0 : LastErrno();
}

int AppendFile::Close() {
  if (fd_ < 0) return 0;
  // Closes the Windows handle too.
  const int result = _close(fd_) == 0 ? 0 : errno;
  fd_ = -1;
  return result;
}

}  // namespace pairwell
