// A small ext4 file system in an image file, mounted through a loop device
// for the object's life: a disk whose state at any moment can be copied, as
// a power cut would leave it. Needs root and loop devices; Problem() says
// what is missing.
#ifndef PAIRWELL_TESTS_FAULTS_LOOP_IMAGE_H_
#define PAIRWELL_TESTS_FAULTS_LOOP_IMAGE_H_

#include <string>

namespace pairwell {

// Runs a shell command line; its exit code, or -1 when it could not run or
// a signal ended it. Its output goes to *output when given.
int RunCommand(const std::string& command, std::string* output = nullptr);

class LoopImage {
 public:
  // Mounts `image` (made and formatted first when `format`) on the existing
  // folder `mount_point` with the given mount options ("commit=1", ...).
  LoopImage(std::string image, std::string mount_point,
            const std::string& options, bool format, int megabytes = 96);
  // Unmounts and detaches the loop device.
  ~LoopImage();
  LoopImage(const LoopImage&) = delete;
  LoopImage& operator=(const LoopImage&) = delete;

  bool mounted() const { return mounted_; }
  const std::string& error() const { return error_; }

  // Copies the image, as the disk holds it now, to `copy`: again and again
  // until two copies in a row are the same, so that nothing was written
  // while copying. False when that does not happen.
  bool CopyStableState(const std::string& copy) const;

  // Unmounts now (the destructor then does nothing but detach).
  void Unmount();

  // Why a machine cannot run these tests ("" when it can): not root, no
  // loop devices, a missing tool.
  static std::string Problem();

 private:
  std::string image_;
  std::string mount_point_;
  std::string device_;
  bool mounted_ = false;
  std::string error_;
};

// Switches off the background writeback of dirty file data for the
// object's life, the old values put back afterwards: data a program does
// not flush stays in memory, as it would be lost by a power cut.
class WritebackOff {
 public:
  WritebackOff();
  ~WritebackOff();
  WritebackOff(const WritebackOff&) = delete;
  WritebackOff& operator=(const WritebackOff&) = delete;

  bool active() const { return active_; }

 private:
  bool active_ = false;
  std::string writeback_centisecs_;
  std::string expire_centisecs_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_FAULTS_LOOP_IMAGE_H_
