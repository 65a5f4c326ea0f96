// The checks of the fuzz targets: a property that does not hold stops the
// run with a message, and libFuzzer saves the input as a crash.
#ifndef PAIRWELL_FUZZ_FUZZ_CHECK_H_
#define PAIRWELL_FUZZ_FUZZ_CHECK_H_

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition)                                               \
  do {                                                                      \
    if (!(condition)) {                                                     \
      std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, \
                   #condition);                                             \
      std::abort();                                                         \
    }                                                                       \
  } while (false)

#endif  // PAIRWELL_FUZZ_FUZZ_CHECK_H_
