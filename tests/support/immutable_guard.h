// Makes a folder immutable (chattr +i) for the guard's life, so that even
// root cannot write into it: tests run as root, which ignores permission
// bits.
#ifndef PAIRWELL_TESTS_SUPPORT_IMMUTABLE_GUARD_H_
#define PAIRWELL_TESTS_SUPPORT_IMMUTABLE_GUARD_H_

#include <string>

namespace pairwell {

class ImmutableGuard {
 public:
  explicit ImmutableGuard(std::string path);
  ~ImmutableGuard();
  ImmutableGuard(const ImmutableGuard&) = delete;
  ImmutableGuard& operator=(const ImmutableGuard&) = delete;

  // False when the file system or the machine refused (the test should then
  // skip).
  bool active() const { return active_; }

 private:
  std::string path_;
  bool active_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_IMMUTABLE_GUARD_H_
