#include "support/disk_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "support/test_files.h"
#include "util/file_system.h"

namespace pairwell {

void MakeFolder(const std::string& path) {
  ASSERT_TRUE(CreateFolder(path)) << path;
}

void Put(const std::string& path, const std::string& content,
         std::int64_t seconds, long nanoseconds, int mode) {
  {
    std::ofstream out(std::filesystem::u8path(path),
                      std::ios::binary | std::ios::trunc);
    out << content;
    ASSERT_TRUE(out.good()) << path;
  }
  ASSERT_TRUE(SetMode(path, mode)) << path;
  ASSERT_TRUE(SetModifyTime(path, seconds, nanoseconds)) << path;
}

std::string Read(const std::string& path) {
  std::ifstream in(std::filesystem::u8path(path), std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool Exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(
      std::filesystem::symlink_status(std::filesystem::u8path(path), error));
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
  const int mode = ModeOf(path);
  if (mode < 0 || !GetModifyTime(path, &state.seconds, &state.nanoseconds)) {
    return FileState();
  }
  state.content = Read(path);
  state.mode = mode;
  return state;
}

std::vector<std::string> Entries(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator entry(std::filesystem::u8path(folder),
                                            error);
  for (; !error && entry != std::filesystem::directory_iterator();
       entry.increment(error)) {
    const std::string name = entry->path().filename().u8string();
    if (name != kKeepFolderName) names.push_back(name);
  }
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
