// Makes a folder refuse every change to its entries for the guard's life,
// even from root or an administrator, who ignore permission bits:
//   - on POSIX the folder is made immutable (chattr +i);
//   - on Windows nothing can be added to the folder (a deny entry in its
//     access list, or under Wine, whose files are Linux files and which
//     checks no access list, chattr +i on the Linux folder), and the folder
//     and each entry it holds are kept open without sharing their deletion,
//     so that none of them can be deleted or renamed.
// What the folder's files hold can still be read and written, as on POSIX.
#ifndef PAIRWELL_TESTS_SUPPORT_IMMUTABLE_GUARD_H_
#define PAIRWELL_TESTS_SUPPORT_IMMUTABLE_GUARD_H_

#include <memory>
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

  // The error number of an attempt to add an entry to the folder, or to
  // put another file in an entry's place: EPERM on POSIX, EACCES on
  // Windows.
  int error_number() const;
  // The system's code for that error, as the program reports it and its
  // ErrorHandling section names it: EPERM on POSIX, ERROR_ACCESS_DENIED (5)
  // on Windows.
  int error_code() const;
  // The error number of an attempt to delete an entry the folder held when
  // the guard began, or to rename it: EPERM on POSIX, EBUSY on Windows
  // (the entry is held open).
  int removal_error_number() const;

 private:
  struct Held;

  bool Lock();
  void Unlock();

  std::string path_;
  std::unique_ptr<Held> held_;
  bool active_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_IMMUTABLE_GUARD_H_
