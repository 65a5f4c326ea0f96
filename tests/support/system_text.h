// What a message quotes as the system's reason for an error.
#ifndef PAIRWELL_TESTS_SUPPORT_SYSTEM_TEXT_H_
#define PAIRWELL_TESTS_SUPPORT_SYSTEM_TEXT_H_

#include <string>

#include "util/system.h"

namespace pairwell {

// The C library's text on POSIX, given here so that the tests check it; on
// Windows the Windows text the program found, which Wine words otherwise
// than Windows itself does.
inline std::string SystemText(int error_number, const char* posix_text) {
#ifdef _WIN32
  static_cast<void>(posix_text);
  return ErrorText(error_number);
#else
  static_cast<void>(error_number);
  return posix_text;
#endif
}

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_SYSTEM_TEXT_H_
