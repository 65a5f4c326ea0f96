#include "util/win32/error_number.h"

#include <errno.h>

#include <atomic>

#include "util/win32/win32_api.h"

namespace pairwell {

namespace {

struct CodeMapping {
  DWORD code;
  int error_number;
};

// The first row of an errno value is the code whose text stands for it when
// no Windows error of that kind has been seen yet.
constexpr CodeMapping kMappings[] = {
    {ERROR_FILE_NOT_FOUND, ENOENT},
    {ERROR_PATH_NOT_FOUND, ENOENT},
    {ERROR_INVALID_DRIVE, ENOENT},
    {ERROR_BAD_PATHNAME, ENOENT},
    {ERROR_NO_MORE_FILES, ENOENT},
    {ERROR_ACCESS_DENIED, EACCES},
    {ERROR_NETWORK_ACCESS_DENIED, EACCES},
    {ERROR_WRITE_PROTECT, EROFS},
    {ERROR_CURRENT_DIRECTORY, EACCES},
    {ERROR_CANNOT_MAKE, EACCES},
    {ERROR_DRIVE_LOCKED, EACCES},
    {ERROR_NOT_SAME_DEVICE, EXDEV},
    {ERROR_DIR_NOT_EMPTY, ENOTEMPTY},
    {ERROR_SHARING_VIOLATION, EBUSY},
    {ERROR_LOCK_VIOLATION, EBUSY},
    {ERROR_BUSY, EBUSY},
    {ERROR_PATH_BUSY, EBUSY},
    {ERROR_USER_MAPPED_FILE, EBUSY},
    {ERROR_DISK_FULL, ENOSPC},
    {ERROR_HANDLE_DISK_FULL, ENOSPC},
    {ERROR_FILE_EXISTS, EEXIST},
    {ERROR_ALREADY_EXISTS, EEXIST},
    {ERROR_INVALID_PARAMETER, EINVAL},
    {ERROR_INVALID_NAME, EINVAL},
    {ERROR_NO_UNICODE_TRANSLATION, EINVAL},
    {ERROR_INVALID_ACCESS, EINVAL},
    {ERROR_INVALID_DATA, EINVAL},
    {ERROR_NEGATIVE_SEEK, EINVAL},
    {ERROR_DIRECTORY, ENOTDIR},
    {ERROR_FILENAME_EXCED_RANGE, ENAMETOOLONG},
    {ERROR_CANCELLED, ECANCELED},
    {ERROR_OPERATION_ABORTED, ECANCELED},
    {ERROR_REQUEST_ABORTED, ECANCELED},
    {ERROR_NOT_SUPPORTED, ENOTSUP},
    {ERROR_INVALID_FUNCTION, ENOTSUP},
    {ERROR_TOO_MANY_LINKS, EMLINK},
    {ERROR_CANT_RESOLVE_FILENAME, ELOOP},
    {ERROR_PRIVILEGE_NOT_HELD, EPERM},
    {ERROR_NOT_ENOUGH_MEMORY, ENOMEM},
    {ERROR_OUTOFMEMORY, ENOMEM},
    {ERROR_NOT_ENOUGH_QUOTA, ENOMEM},
    {ERROR_TOO_MANY_OPEN_FILES, EMFILE},
    {ERROR_INVALID_HANDLE, EBADF},
    {ERROR_BROKEN_PIPE, EPIPE},
    {ERROR_NO_DATA, EPIPE},
    {ERROR_NOT_READY, EIO},
    {ERROR_CRC, EIO},
    {ERROR_READ_FAULT, EIO},
    {ERROR_WRITE_FAULT, EIO},
    {ERROR_GEN_FAILURE, EIO},
    {ERROR_SEM_TIMEOUT, ETIMEDOUT},
    // A share out of reach is not a file that is gone.
    {ERROR_BAD_NETPATH, ENETUNREACH},
    {ERROR_BAD_NET_NAME, ENETUNREACH},
    {ERROR_NETNAME_DELETED, ENETUNREACH},
    {ERROR_UNEXP_NET_ERR, ENETUNREACH},
};

// The latest Windows code mapped to each errno value, for its text. Copies
// run on several threads, and the error is shown on another, so the codes
// are kept for the process rather than the thread.
constexpr int kRemembered = 256;
std::atomic<DWORD> latest_codes[kRemembered];

}  // namespace

int ErrnoFromWin32(unsigned long code) {
  int error_number = EIO;
  for (const CodeMapping& mapping : kMappings) {
    if (mapping.code == code) {
      error_number = mapping.error_number;
      break;
    }
  }
  if (error_number >= 0 && error_number < kRemembered && code != 0) {
    latest_codes[error_number].store(code, std::memory_order_relaxed);
  }
  return error_number;
}

int LastErrno() { return ErrnoFromWin32(GetLastError()); }

unsigned long Win32CodeOf(int error_number) {
  if (error_number > 0 && error_number < kRemembered) {
    const DWORD latest =
        latest_codes[error_number].load(std::memory_order_relaxed);
    if (latest != 0) return latest;
  }
  for (const CodeMapping& mapping : kMappings) {
    if (mapping.error_number == error_number) return mapping.code;
  }
  return 0;
}

}  // namespace pairwell
