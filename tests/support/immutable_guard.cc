#include "support/immutable_guard.h"

#include <cstdlib>

namespace pairwell {

namespace {

bool Chattr(const char* flag, const std::string& path) {
  const std::string command =
      std::string("chattr ") + flag + " '" + path + "' 2>/dev/null";
  return std::system(command.c_str()) == 0;
}

}  // namespace

ImmutableGuard::ImmutableGuard(std::string path)
    : path_(std::move(path)), active_(Chattr("+i", path_)) {}

ImmutableGuard::~ImmutableGuard() {
  if (active_) Chattr("-i", path_);
}

}  // namespace pairwell
