#include "support/test_files.h"

#ifdef _WIN32
#include <stdlib.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#endif

namespace pairwell {

#ifdef _WIN32

namespace {

// Seconds from 1601-01-01, where FILETIME counts from, to the POSIX epoch.
constexpr std::int64_t kEpochOffsetSeconds = 11644473600;
constexpr std::int64_t kTicksPerSecond = 10000000;  // of 100 ns

std::wstring Widen(const std::string& text) {
  if (text.empty()) return std::wstring();
  const int length = MultiByteToWideChar(
      CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                      &wide[0], length);
  return wide;
}

// Opens the file or folder (folders need backup semantics) with the access
// asked; INVALID_HANDLE_VALUE on failure.
HANDLE OpenPath(const std::string& path, DWORD access) {
  return CreateFileW(Widen(path).c_str(), access,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                     nullptr);
}

bool Attributes(const std::string& path, WIN32_FILE_ATTRIBUTE_DATA* data) {
  return GetFileAttributesExW(Widen(path).c_str(), GetFileExInfoStandard,
                              data) != 0;
}

}  // namespace

bool SetModifyTime(const std::string& path, std::int64_t seconds,
                   long nanoseconds) {
  const std::int64_t ticks =
      (seconds + kEpochOffsetSeconds) * kTicksPerSecond + nanoseconds / 100;
  FILETIME time;
  time.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFF);
  time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  const HANDLE file = OpenPath(path, FILE_WRITE_ATTRIBUTES);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool done = SetFileTime(file, nullptr, nullptr, &time) != 0;
  CloseHandle(file);
  return done;
}

bool GetModifyTime(const std::string& path, std::int64_t* seconds,
                   long* nanoseconds) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!Attributes(path, &data)) return false;
  const std::int64_t ticks =
      (static_cast<std::int64_t>(data.ftLastWriteTime.dwHighDateTime) << 32 |
       data.ftLastWriteTime.dwLowDateTime) -
      kEpochOffsetSeconds * kTicksPerSecond;
  // Floored, so that a time before the epoch keeps 0 <= nanoseconds.
  std::int64_t whole = ticks / kTicksPerSecond;
  std::int64_t rest = ticks % kTicksPerSecond;
  if (rest < 0) {
    rest += kTicksPerSecond;
    --whole;
  }
  *seconds = whole;
  *nanoseconds = static_cast<long>(rest * 100);
  return true;
}

long KeptNanoseconds(long nanoseconds) { return nanoseconds / 100 * 100; }

int ModeOf(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Widen(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return -1;
  return (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
}

bool SetMode(const std::string& path, int mode) {
  return SetReadOnly(path, (mode & 0200) == 0);
}

int KeptMode(int mode) { return (mode & 0200) == 0 ? 0444 : 0666; }

bool IsReadOnly(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Widen(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

bool SetReadOnly(const std::string& path, bool read_only) {
  const std::wstring wide = Widen(path);
  DWORD attributes = GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if (read_only) {
    attributes |= FILE_ATTRIBUTE_READONLY;
  } else {
    attributes &= ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  }
  if (attributes == 0) attributes = FILE_ATTRIBUTE_NORMAL;
  return SetFileAttributesW(wide.c_str(), attributes) != 0;
}

std::uint16_t FileAttributesOf(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Widen(path).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return 0;
  return static_cast<std::uint16_t>(
      attributes &
      (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
       FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_ARCHIVE));
}

bool CreateFolder(const std::string& path) {
  return CreateDirectoryW(Widen(path).c_str(), nullptr) != 0;
}

bool IsFolder(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Widen(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES &&
         (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool RemoveFile(const std::string& path) {
  return DeleteFileW(Widen(path).c_str()) != 0;
}

std::int64_t SizeOf(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!Attributes(path, &data)) return -1;
  return static_cast<std::int64_t>(data.nFileSizeHigh) << 32 |
         data.nFileSizeLow;
}

bool SetSize(const std::string& path, std::int64_t size) {
  const HANDLE file = OpenPath(path, GENERIC_WRITE);
  if (file == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER position;
  position.QuadPart = size;
  const bool done = SetFilePointerEx(file, position, nullptr, FILE_BEGIN) &&
                    SetEndOfFile(file);
  CloseHandle(file);
  return done;
}

bool WriteAt(const std::string& path, std::int64_t offset,
             const std::string& bytes) {
  const HANDLE file = OpenPath(path, GENERIC_WRITE);
  if (file == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER position;
  position.QuadPart = offset;
  DWORD written = 0;
  const bool done =
      SetFilePointerEx(file, position, nullptr, FILE_BEGIN) &&
      WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                nullptr) &&
      written == bytes.size();
  CloseHandle(file);
  return done;
}

bool MakeHardLink(const std::string& existing, const std::string& new_name) {
  return CreateHardLinkW(Widen(new_name).c_str(), Widen(existing).c_str(),
                         nullptr) != 0;
}

int LinkCount(const std::string& path) {
  const HANDLE file = OpenPath(path, FILE_READ_ATTRIBUTES);
  if (file == INVALID_HANDLE_VALUE) return 0;
  BY_HANDLE_FILE_INFORMATION info;
  const bool known = GetFileInformationByHandle(file, &info) != 0;
  CloseHandle(file);
  return known ? static_cast<int>(info.nNumberOfLinks) : 0;
}

// The C library keeps its own copy of the environment: both are changed.
void SetEnvironmentValue(const std::string& name, const std::string& value) {
  SetEnvironmentVariableW(Widen(name).c_str(), Widen(value).c_str());
  _wputenv_s(Widen(name).c_str(), Widen(value).c_str());
}

void UnsetEnvironmentValue(const std::string& name) {
  SetEnvironmentVariableW(Widen(name).c_str(), nullptr);
  _wputenv_s(Widen(name).c_str(), L"");
}

bool LocalTimeOf(std::time_t seconds, std::tm* local) {
  return localtime_s(local, &seconds) == 0;
}

std::int64_t UtcOffsetAt(std::int64_t seconds) {
  const std::time_t whole = static_cast<std::time_t>(seconds);
  std::tm local;
  if (!LocalTimeOf(whole, &local)) return 0;
  // The local fields read as if they were UTC, less the moment itself.
  return static_cast<std::int64_t>(_mkgmtime(&local)) - whole;
}

#else  // POSIX

bool SetModifyTime(const std::string& path, std::int64_t seconds,
                   long nanoseconds) {
  const struct timespec times[2] = {
      {0, UTIME_OMIT}, {static_cast<time_t>(seconds), nanoseconds}};
  return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

bool GetModifyTime(const std::string& path, std::int64_t* seconds,
                   long* nanoseconds) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return false;
  *seconds = st.st_mtim.tv_sec;
  *nanoseconds = st.st_mtim.tv_nsec;
  return true;
}

long KeptNanoseconds(long nanoseconds) { return nanoseconds; }

int ModeOf(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return -1;
  return static_cast<int>(st.st_mode & 07777);
}

bool SetMode(const std::string& path, int mode) {
  return chmod(path.c_str(), static_cast<mode_t>(mode)) == 0;
}

int KeptMode(int mode) { return mode; }

bool IsReadOnly(const std::string& path) {
  const int mode = ModeOf(path);
  return mode >= 0 && (mode & S_IWUSR) == 0;
}

bool SetReadOnly(const std::string& path, bool read_only) {
  const int mode = ModeOf(path);
  if (mode < 0) return false;
  return SetMode(path, read_only ? mode & ~0222 : mode | S_IWUSR);
}

bool CreateFolder(const std::string& path) {
  return mkdir(path.c_str(), 0755) == 0;
}

bool IsFolder(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool RemoveFile(const std::string& path) { return unlink(path.c_str()) == 0; }

std::int64_t SizeOf(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return -1;
  return st.st_size;
}

bool SetSize(const std::string& path, std::int64_t size) {
  return truncate(path.c_str(), static_cast<off_t>(size)) == 0;
}

bool WriteAt(const std::string& path, std::int64_t offset,
             const std::string& bytes) {
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool done =
      pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(offset)) ==
      static_cast<ssize_t>(bytes.size());
  return close(fd) == 0 && done;
}

bool MakeHardLink(const std::string& existing, const std::string& new_name) {
  return link(existing.c_str(), new_name.c_str()) == 0;
}

int LinkCount(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return 0;
  return static_cast<int>(st.st_nlink);
}

void SetEnvironmentValue(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

void UnsetEnvironmentValue(const std::string& name) { unsetenv(name.c_str()); }

bool LocalTimeOf(std::time_t seconds, std::tm* local) {
  return localtime_r(&seconds, local) != nullptr;
}

std::int64_t UtcOffsetAt(std::int64_t seconds) {
  const std::time_t whole = static_cast<std::time_t>(seconds);
  std::tm local;
  return LocalTimeOf(whole, &local) ? local.tm_gmtoff : 0;
}

#endif

}  // namespace pairwell
