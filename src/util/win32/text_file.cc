#include "util/text_file.h"

#include <errno.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <system_error>
#include <vector>

#include "util/file_system.h"
#include "util/win32/error_number.h"
#include "util/win32/file_time.h"
#include "util/win32/long_path.h"
#include "util/win32/unicode.h"
#include "util/win32/win32_api.h"
#include "util/win32/write_all.h"

namespace pairwell {

namespace {

// A replacement is written to "<name>.pairwell-" and six random characters.
constexpr char kReplacementSuffix[] = ".pairwell-";

constexpr DWORD kShareAll =
    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kSettableAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
    FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

[[noreturn]] void Fail(int error_number, const std::string& what,
                       const std::string& path) {
  throw std::system_error(error_number, std::generic_category(),
                          what + " " + path);
}

std::string RandomSuffix() {
  static const char kLetters[] =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  thread_local std::mt19937_64 generator(
      GetTickCount64() ^ (std::uint64_t{GetCurrentProcessId()} << 32) ^
      static_cast<std::uint64_t>(
          std::chrono::steady_clock::now().time_since_epoch().count()));
  std::string suffix(6, 'x');
  for (char& c : suffix) c = kLetters[generator() % (sizeof kLetters - 1)];
  return suffix;
}

// Where a symbolic link to the file leads, so that the link stays a link;
// the path itself when it is none.
std::string FileBehind(const std::string& path, const std::wstring& wide) {
  const DWORD attributes = GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES ||
      (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return path;
  }
  const HANDLE handle =
      CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return path;
  std::vector<wchar_t> buffer(MAX_PATH);
  DWORD length = 0;
  for (;;) {
    length = GetFinalPathNameByHandleW(handle, buffer.data(),
                                       static_cast<DWORD>(buffer.size()),
                                       FILE_NAME_NORMALIZED);
    if (length < buffer.size()) break;
    buffer.resize(length + 1);
  }
  CloseHandle(handle);
  std::string target;
  if (length == 0 ||
      !Narrow(WithoutLongPrefix(std::wstring(buffer.data(), length)),
              &target)) {
    return path;
  }
  return target;
}

}  // namespace

bool ReadTextFile(const std::string& path, std::string* content,
                  int* error_number) {
  content->clear();
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) {
    *error_number = path.empty() ? ENOENT : EINVAL;
    return false;
  }
  const HANDLE handle =
      CreateFileW(wide.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                  FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    *error_number = LastErrno();
    return false;
  }
  char buffer[65536];
  for (;;) {
    DWORD got = 0;
    if (!ReadFile(handle, buffer, sizeof buffer, &got, nullptr)) {
      *error_number = LastErrno();
      CloseHandle(handle);
      return false;
    }
    if (got == 0) break;
    content->append(buffer, got);
  }
  CloseHandle(handle);
  return true;
}

void ReplaceFileContent(const std::string& given_path,
                        const std::string& content) {
  std::wstring given_wide;
  if (HasNul(given_path) || !LongPath(given_path, &given_wide)) {
    Fail(EINVAL, "cannot write", given_path);
  }
  // A link to the file stays a link: its target is what gets replaced.
  const std::string path = FileBehind(given_path, given_wide);
  std::wstring wide;
  if (!LongPath(path, &wide)) Fail(EINVAL, "cannot write", path);
  std::string temp;
  std::wstring temp_wide;
  HANDLE out = INVALID_HANDLE_VALUE;
  for (int attempt = 0; attempt < 100 && out == INVALID_HANDLE_VALUE;
       ++attempt) {
    temp = path + kReplacementSuffix + RandomSuffix();
    if (!LongPath(temp, &temp_wide)) Fail(EINVAL, "cannot write", path);
    out = CreateFileW(temp_wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (out == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS &&
        GetLastError() != ERROR_ALREADY_EXISTS) {
      Fail(LastErrno(), "cannot create a temporary file beside", path);
    }
  }
  if (out == INVALID_HANDLE_VALUE) {
    Fail(EEXIST, "cannot create a temporary file beside", path);
  }
  int error_number = WriteAll(out, content.data(), content.size());
  if (error_number == 0 && !FlushFileBuffers(out)) error_number = LastErrno();
  if (!CloseHandle(out) && error_number == 0) error_number = LastErrno();
  // An existing file's attributes are kept. A read-only one is replaced
  // all the same, as a rename replaces it on POSIX: the attribute goes on
  // the new file.
  const DWORD existing = GetFileAttributesW(wide.c_str());
  const DWORD kept =
      existing == INVALID_FILE_ATTRIBUTES ? 0 : existing & kSettableAttributes;
  if (error_number == 0 && (kept & FILE_ATTRIBUTE_READONLY) != 0) {
    SetFileAttributesW(wide.c_str(),
                       (kept & ~DWORD{FILE_ATTRIBUTE_READONLY}) != 0
                           ? kept & ~DWORD{FILE_ATTRIBUTE_READONLY}
                           : FILE_ATTRIBUTE_NORMAL);
  }
  // Written through: the new name is on the disk when the call returns.
  if (error_number == 0 &&
      !MoveFileExW(temp_wide.c_str(), wide.c_str(),
                   MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    error_number = LastErrno();
    if (kept != 0) SetFileAttributesW(wide.c_str(), kept);
  }
  if (error_number != 0) {
    DeleteFileW(temp_wide.c_str());
    Fail(error_number, "cannot write", path);
  }
  if (kept != 0 && kept != FILE_ATTRIBUTE_ARCHIVE) {
    SetFileAttributesW(wide.c_str(), kept);
  }
}

std::vector<std::string> RemoveStaleReplacements(const std::string& path,
                                                 std::int64_t before) {
  std::vector<std::string> removed;
  const std::string::size_type slash = path.find_last_of("/\\");
  const std::string folder =
      slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const std::string prefix =
      (slash == std::string::npos ? path : path.substr(slash + 1)) +
      kReplacementSuffix;
  std::wstring pattern;
  if (HasNul(path) || !LongPath(folder + prefix + "??????", &pattern)) {
    return removed;
  }
  WIN32_FIND_DATAW found;
  const HANDLE find = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found,
                                       FindExSearchNameMatch, nullptr, 0);
  if (find == INVALID_HANDLE_VALUE) return removed;
  do {
    std::string name;
    if (!Narrow(found.cFileName, &name) || name.size() != prefix.size() + 6 ||
        (found.dwFileAttributes &
         (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0) {
      continue;
    }
    std::int64_t seconds = 0;
    long nanoseconds = 0;
    PosixFromFileTime(found.ftLastWriteTime, &seconds, &nanoseconds);
    const std::string stale = slash == std::string::npos ? name : folder + name;
    std::wstring stale_wide;
    if (seconds < before && LongPath(stale, &stale_wide) &&
        DeleteFileW(stale_wide.c_str())) {
      removed.push_back(stale);
    }
  } while (FindNextFileW(find, &found));
  FindClose(find);
  return removed;
}

}  // namespace pairwell
