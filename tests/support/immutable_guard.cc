#include "support/immutable_guard.h"

#include <cstdlib>

namespace pairwell {

namespace {

bool Chattr(const char* flag, const std::string& path) {
#ifdef _WIN32
  // No immutable flag there: the guard stays inactive and the test skips.
  (void)flag;
  (void)path;
  return false;
#else
  const std::string command =
      std::string("chattr ") + flag + " '" + path + "' 2>/dev/null";
  return std::system(command.c_str()) == 0;
#endif
}

}  // namespace

ImmutableGuard::ImmutableGuard(std::string path)
    : path_(std::move(path)), active_(Chattr("+i", path_)) {}

ImmutableGuard::~ImmutableGuard() {
  if (active_) Chattr("-i", path_);
}

}  // namespace pairwell
