// Windows error codes as the errno values the rest of the program works
// with, and back to Windows' own text for them.
#ifndef PAIRWELL_UTIL_WIN32_ERROR_NUMBER_H_
#define PAIRWELL_UTIL_WIN32_ERROR_NUMBER_H_

namespace pairwell {

// The errno value for a Windows error code (GetLastError), EIO for one
// without a closer match. The code is remembered as the latest behind that
// errno value, so that ErrorText can give Windows' own text for it.
int ErrnoFromWin32(unsigned long code);

// ErrnoFromWin32(GetLastError()).
int LastErrno();

// The Windows code whose text describes the errno value: the latest code
// ErrnoFromWin32 mapped to it, else the usual one; 0 when there is none.
unsigned long Win32CodeOf(int error_number);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_WIN32_ERROR_NUMBER_H_
