#include "faults/loop_image.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <utility>

namespace pairwell {

namespace {

constexpr char kWritebackCentisecs[] = "/proc/sys/vm/dirty_writeback_centisecs";
constexpr char kExpireCentisecs[] = "/proc/sys/vm/dirty_expire_centisecs";

std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
}

std::string ReadSetting(const char* path) {
  std::ifstream in(path);
  std::string value;
  std::getline(in, value);
  return value;
}

bool WriteSetting(const char* path, const std::string& value) {
  std::ofstream out(path);
  out << value << "\n";
  out.close();
  return static_cast<bool>(out);
}

}  // namespace

int RunCommand(const std::string& command, std::string* output) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return -1;
  std::string text;
  char buffer[4096];
  for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    text.append(buffer, n);
  }
  const int status = pclose(pipe);
  if (output != nullptr) *output = text;
  if (status < 0 || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

LoopImage::LoopImage(std::string image, std::string mount_point,
                     const std::string& options, bool format, int megabytes)
    : image_(std::move(image)), mount_point_(std::move(mount_point)) {
  std::string output;
  if (format &&
      RunCommand("truncate -s " + std::to_string(megabytes) + "M " +
                     Quoted(image_) + " && mkfs.ext4 -q -F " + Quoted(image_),
                 &output) != 0) {
    error_ = "mkfs.ext4: " + output;
    return;
  }
  if (RunCommand("losetup --find --show " + Quoted(image_), &output) != 0) {
    error_ = "losetup: " + output;
    return;
  }
  device_ = output.substr(0, output.find('\n'));
  if (RunCommand("mount -t ext4 -o " + options + " " + Quoted(device_) + " " +
                     Quoted(mount_point_),
                 &output) != 0) {
    error_ = "mount: " + output;
    return;
  }
  mounted_ = true;
}

LoopImage::~LoopImage() {
  Unmount();
  if (!device_.empty()) RunCommand("losetup -d " + Quoted(device_));
}

void LoopImage::Unmount() {
  if (!mounted_) return;
  if (RunCommand("umount " + Quoted(mount_point_)) != 0) {
    RunCommand("umount -l " + Quoted(mount_point_));
  }
  mounted_ = false;
}

bool LoopImage::CopyStableState(const std::string& copy) const {
  const std::string other = copy + ".again";
  bool stable = false;
  for (int attempt = 0; attempt < 10 && !stable; ++attempt) {
    stable = RunCommand("cp " + Quoted(image_) + " " + Quoted(copy) + " && cp " +
                        Quoted(image_) + " " + Quoted(other) + " && cmp -s " +
                        Quoted(copy) + " " + Quoted(other)) == 0;
  }
  unlink(other.c_str());
  return stable;
}

std::string LoopImage::Problem() {
  if (geteuid() != 0) return "not root";
  if (access("/dev/loop-control", F_OK) != 0) return "no /dev/loop-control";
  for (const char* tool : {"mkfs.ext4", "e2fsck", "losetup", "mount"}) {
    if (RunCommand(std::string("command -v ") + tool) != 0) {
      return std::string("no ") + tool;
    }
  }
  std::ofstream probe(kWritebackCentisecs, std::ios::app);
  if (!probe) return std::string("cannot write ") + kWritebackCentisecs;
  return "";
}

WritebackOff::WritebackOff()
    : writeback_centisecs_(ReadSetting(kWritebackCentisecs)),
      expire_centisecs_(ReadSetting(kExpireCentisecs)) {
  active_ = !writeback_centisecs_.empty() && !expire_centisecs_.empty() &&
            WriteSetting(kWritebackCentisecs, "0") &&
            WriteSetting(kExpireCentisecs, "360000");
}

WritebackOff::~WritebackOff() {
  if (!writeback_centisecs_.empty()) {
    WriteSetting(kWritebackCentisecs, writeback_centisecs_);
  }
  if (!expire_centisecs_.empty()) {
    WriteSetting(kExpireCentisecs, expire_centisecs_);
  }
}

}  // namespace pairwell
