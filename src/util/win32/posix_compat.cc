#include "util/win32/posix_compat.h"

#include <errno.h>

#include <string>

#include "util/system.h"

extern "C" int setenv(const char* name, const char* value, int overwrite) {
  if (name == nullptr || value == nullptr) {
    errno = EINVAL;
    return -1;
  }
  if (overwrite == 0 && !pairwell::EnvironmentValue(name).empty()) return 0;
  const int error_number = pairwell::SetEnvironmentValue(name, value);
  if (error_number == 0) return 0;
  errno = error_number;
  return -1;
}
