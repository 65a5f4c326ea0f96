// A small tmpfs mounted on a folder for the object's life: a disk that
// fills up on purpose. Mounting needs root with CAP_SYS_ADMIN, which a
// container may lack; mounted() and error() say how it went.
#ifndef PAIRWELL_TESTS_FAULTS_TMPFS_MOUNT_H_
#define PAIRWELL_TESTS_FAULTS_TMPFS_MOUNT_H_

#include <string>

namespace pairwell {

class TmpfsMount {
 public:
  // Mounts a tmpfs of `size` (as mount's "size=" option takes it, "4m")
  // on the existing folder.
  TmpfsMount(std::string folder, const std::string& size);
  // Unmounts; lazily when something there is still open, so that the
  // folder is free to be removed afterwards.
  ~TmpfsMount();
  TmpfsMount(const TmpfsMount&) = delete;
  TmpfsMount& operator=(const TmpfsMount&) = delete;

  bool mounted() const { return mounted_; }
  // Why mounting failed; "" when it worked.
  const std::string& error() const { return error_; }

 private:
  std::string folder_;
  bool mounted_ = false;
  std::string error_;
};

// Writes a file into the folder until the file system holding it is full;
// false when the writes stopped for another reason than a full disk.
bool FillUp(const std::string& path);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_FAULTS_TMPFS_MOUNT_H_
