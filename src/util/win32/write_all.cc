#include "util/win32/write_all.h"

#include <errno.h>

#include <algorithm>

#include "util/win32/error_number.h"

namespace pairwell {

int WriteAll(HANDLE out, const char* bytes, std::size_t n) {
  while (n > 0) {
    const DWORD want =
        static_cast<DWORD>(std::min<std::size_t>(n, std::size_t{1} << 30));
    DWORD written = 0;
    if (!WriteFile(out, bytes, want, &written, nullptr)) return LastErrno();
    if (written == 0) return EIO;
    bytes += written;
    n -= written;
  }
  return 0;
}

}  // namespace pairwell
