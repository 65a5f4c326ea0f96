#include "support/disk_files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

namespace pairwell {

void MakeFolder(const std::string& path) {
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0) << path;
}

void Put(const std::string& path, const std::string& content,
         std::int64_t seconds, long nanoseconds, mode_t mode) {
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    ASSERT_TRUE(out.good()) << path;
  }
  ASSERT_EQ(chmod(path.c_str(), mode), 0) << path;
  const struct timespec times[2] = {
      {0, UTIME_OMIT}, {static_cast<time_t>(seconds), nanoseconds}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

std::string Read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool Exists(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0;
}

}  // namespace pairwell
