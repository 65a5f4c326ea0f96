// Writing a whole buffer through a Windows handle.
#ifndef PAIRWELL_UTIL_WIN32_WRITE_ALL_H_
#define PAIRWELL_UTIL_WIN32_WRITE_ALL_H_

#include <cstddef>

#include "util/win32/win32_api.h"

namespace pairwell {

// Writes all n bytes, in as many WriteFile calls as it takes; 0, or the
// error number. A call that writes nothing without an error is EIO rather
// than a loop that never ends.
int WriteAll(HANDLE out, const char* bytes, std::size_t n);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_WIN32_WRITE_ALL_H_
