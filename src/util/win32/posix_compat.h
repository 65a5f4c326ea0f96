// POSIX calls that code above util still makes and Windows lacks, given to
// the Windows build by the compiler's -include until that code goes through
// util (SetEnvironmentValue).
#ifndef PAIRWELL_UTIL_WIN32_POSIX_COMPAT_H_
#define PAIRWELL_UTIL_WIN32_POSIX_COMPAT_H_

#ifdef __cplusplus
extern "C" {
#endif

// setenv as POSIX has it (overwrite 0 keeps a value that is set), through
// SetEnvironmentValue: UTF-8 names and values.
int setenv(const char* name, const char* value, int overwrite);

#ifdef __cplusplus
}
#endif

#endif  // PAIRWELL_UTIL_WIN32_POSIX_COMPAT_H_
