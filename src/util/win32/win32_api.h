// The Windows API as util's Windows code includes it. <windows.h> names
// some functions by macros (DeleteFile for DeleteFileW, MessageBox for
// MessageBoxW) that would rename util's own functions of the same names, so
// they are undone here; the Windows calls are always spelled with their W.
#ifndef PAIRWELL_UTIL_WIN32_WIN32_API_H_
#define PAIRWELL_UTIL_WIN32_WIN32_API_H_

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#undef DeleteFile
#undef MessageBox

#endif  // PAIRWELL_UTIL_WIN32_WIN32_API_H_
