#include "util/file_system.h"

#include <errno.h>

#include <algorithm>

#include "util/file_system_shared.h"
#include "util/path.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

// The 0-based position of the slash after which the first existing parent
// ends, or npos when no parent may be used.
std::string::size_type FindExistingParent(const std::string& path) {
  for (std::string::size_type i = path.size() - 1; i >= 1; --i) {
    // A drive "X:" ends the search; elsewhere ":" is an ordinary character
    // of a POSIX name.
    if (path[i] == ':' && i == 1) break;
    if (!IsSlash(path[i])) continue;
    // The root of a "//server/share" path is never created.
    if (IsSlash(path[i - 1])) break;
    std::string parent = path.substr(0, i);
    if (parent.back() == ':') parent.push_back(kPathSeparator);
    if (FolderExists(parent)) return i;
  }
  return std::string::npos;
}

}  // namespace

bool HasNul(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

bool MakeDirectory(const std::string& path) {
  if (FolderExists(path)) return true;
  if (path.size() < 2 || HasNul(path)) return false;
  std::string::size_type slash = FindExistingParent(path);
  if (slash == std::string::npos) return false;
  while (slash < path.size()) {
    std::string::size_type next = slash + 1;
    while (next < path.size() && !IsSlash(path[next])) ++next;
    if (!CreateFolderLevel(path.substr(0, next))) return false;
    slash = next;
  }
  return true;
}

int MakeDirectoryError(const std::string& path) {
  if (HasNul(path)) return EINVAL;
  errno = 0;
  if (MakeDirectory(path)) return 0;
  return errno != 0 ? errno : ENOENT;
}

void AdjustChunkSize(std::int64_t bytes,
                     std::chrono::steady_clock::duration took,
                     std::int64_t* size) {
  if (took > kSlowChunk) {
    const std::int64_t paced = bytes * (kSlowChunk / 2).count() / took.count();
    const std::int64_t whole = paced / kChunkGrain * kChunkGrain;
    *size = std::max(kMinChunk, std::min(*size, whole));
  } else if (took < kSlowChunk / 2 && bytes >= *size) {
    *size = std::min(kMaxChunk, *size * 2);
  }
}

int ExecuteFile(const std::string& file_name) {
  const int code = OpenWithDesktop(file_name);
  if (code <= 32) {
    MsgBox(
        "ExecuteFile : ShellExecute returned error code" + std::to_string(code),
        kMbExclamation);
  }
  return code;
}

}  // namespace pairwell
