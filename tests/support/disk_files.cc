#include "support/disk_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "util/file_system.h"

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

std::ostream& operator<<(std::ostream& out, const FileState& state) {
  const std::string shown = state.content.size() > 40
                                ? state.content.substr(0, 40) + "..."
                                : state.content;
  return out << "{\"" << shown << "\" (" << state.content.size() << " bytes), "
             << state.seconds << "." << state.nanoseconds << ", mode 0"
             << std::oct << state.mode << std::dec << "}";
}

FileState StateOf(const std::string& path) {
  FileState state;
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return state;
  state.content = Read(path);
  state.seconds = st.st_mtim.tv_sec;
  state.nanoseconds = st.st_mtim.tv_nsec;
  state.mode = st.st_mode & 07777;
  return state;
}

std::vector<std::string> Entries(const std::string& folder) {
  std::vector<std::string> names;
  DIR* dir = opendir(folder.c_str());
  if (dir == nullptr) return names;
  while (const struct dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    if (name != "." && name != ".." && name != ".pairwell") {
      names.push_back(name);
    }
  }
  closedir(dir);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> PartialFiles(const std::string& folder) {
  std::vector<std::string> found;
  for (const std::string& name : Entries(folder)) {
    if (name.rfind(kPartialCopyPrefix, 0) == 0) found.push_back(name);
  }
  return found;
}

}  // namespace pairwell
