#include "util/file_system.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "util/date_time.h"
#include "util/path.h"
#include "util/system.h"
#include "util/user_interface.h"

extern char** environ;

namespace pairwell {

namespace {

// What one stat call tells about an entry.
struct StatInfo {
  mode_t mode = 0;
  std::int64_t size = 0;
  struct timespec modified = {0, 0};
  struct timespec born = {0, 0};
  bool has_birth = false;
};

// Examines name relative to the open folder dir_fd (or a path with
// AT_FDCWD), never following a final symbolic link.
int StatAt(int dir_fd, const char* name, int flags, StatInfo* info) {
#ifdef STATX_BTIME
  struct statx sx;
  if (statx(dir_fd, name, flags | AT_STATX_SYNC_AS_STAT,
            STATX_BASIC_STATS | STATX_BTIME, &sx) != 0) {
    return errno;
  }
  info->mode = sx.stx_mode;
  info->size = static_cast<std::int64_t>(sx.stx_size);
  info->modified = {static_cast<time_t>(sx.stx_mtime.tv_sec),
                    static_cast<long>(sx.stx_mtime.tv_nsec)};
  info->has_birth = (sx.stx_mask & STATX_BTIME) != 0;
  info->born = {static_cast<time_t>(sx.stx_btime.tv_sec),
                static_cast<long>(sx.stx_btime.tv_nsec)};
#else
  struct stat st;
  if (fstatat(dir_fd, name, &st, flags) != 0) return errno;
  info->mode = st.st_mode;
  info->size = st.st_size;
  info->modified = st.st_mtim;
#endif
  return 0;
}

void FillEntry(const std::string& name, const StatInfo& info,
               FolderEntry* entry) {
  entry->name = name;
  entry->size =
      info.size > 0x7FFFFFFF ? kSizeCap : static_cast<std::int32_t>(info.size);
  entry->modify_date =
      FileTimeToDate(info.modified.tv_sec, info.modified.tv_nsec);
  entry->create_date = info.has_birth
                           ? FileTimeToDate(info.born.tv_sec, info.born.tv_nsec)
                           : entry->modify_date;
  entry->attributes = 0;
  if ((info.mode & S_IWUSR) == 0) entry->attributes |= kAttrReadOnly;
  if (!name.empty() && name[0] == '.') entry->attributes |= kAttrHidden;
  if (S_ISDIR(info.mode)) entry->attributes |= kAttrDirectory;
}

const char* SpecialKind(mode_t mode) {
  if (S_ISLNK(mode)) return "symbolic link, not followed";
  if (S_ISSOCK(mode)) return "socket, not copied";
  if (S_ISFIFO(mode)) return "fifo, not copied";
  return "device, not copied";
}

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

bool CreateLevel(const std::string& folder) {
  if (mkdir(folder.c_str(), 0777) == 0) return true;
  if (errno != EEXIST) return false;
  // A level that exists already (a trailing slash names it twice, or
  // another program made it meanwhile) is what was asked for; a file in its
  // place is not.
  if (FolderExists(folder)) return true;
  errno = ENOTDIR;
  return false;
}

}  // namespace

std::vector<FolderEntry>& FolderEntries() {
  static std::vector<FolderEntry> entries;
  return entries;
}

bool FolderExists(const std::string& path) {
  struct stat st;
  return !path.empty() && stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool MakeDirectory(const std::string& path) {
  if (FolderExists(path)) return true;
  if (path.size() < 2) return false;
  std::string::size_type slash = FindExistingParent(path);
  if (slash == std::string::npos) return false;
  while (slash < path.size()) {
    std::string::size_type next = slash + 1;
    while (next < path.size() && !IsSlash(path[next])) ++next;
    if (!CreateLevel(path.substr(0, next))) return false;
    slash = next;
  }
  return true;
}

int MakeDirectoryError(const std::string& path) {
  errno = 0;
  if (MakeDirectory(path)) return 0;
  return errno != 0 ? errno : ENOENT;
}

bool GetFileInfo(const std::string& path, FolderEntry* entry) {
  // "path/*" finds the folder's own "." entry first; a file has no entries.
  const std::string folder = CombinePath(path, "*");
  const std::string dot = folder.substr(0, folder.size() - 1) + ".";
  StatInfo info;
  if (StatAt(AT_FDCWD, dot.c_str(), 0, &info) != 0 || !S_ISDIR(info.mode)) {
    return false;
  }
  FillEntry(".", info, entry);
  return true;
}

bool GetItemInfo(const std::string& path, FolderEntry* entry) {
  StatInfo info;
  if (StatAt(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0 ||
      (!S_ISREG(info.mode) && !S_ISDIR(info.mode))) {
    return false;
  }
  const std::string::size_type slash = path.find_last_of('/');
  FillEntry(slash == std::string::npos ? path : path.substr(slash + 1), info,
            entry);
  return true;
}

int ListFolder(const std::string& folder, std::vector<LeftOutEntry>* left_out) {
  DIR* dir = opendir(folder.c_str());
  if (dir == nullptr) return errno;
  const int dir_fd = dirfd(dir);
  std::vector<FolderEntry>& entries = FolderEntries();
  auto leave_out = [&](const char* name, const std::string& reason,
                       bool error = false) {
    // Joined by hand: the name is as the folder holds it, "\\" included.
    if (left_out) {
      const bool slash = !folder.empty() && folder.back() == '/';
      left_out->push_back(
          {folder + (slash ? "" : "/") + name, name, reason, error});
    }
  };
  int result = 0;
  for (;;) {
    errno = 0;
    const struct dirent* d = readdir(dir);
    if (d == nullptr) {
      result = errno;
      break;
    }
    const std::string name = d->d_name;
    if (name == "." || name == "..") continue;
    StatInfo info;
    const int error_number =
        StatAt(dir_fd, d->d_name, AT_SYMLINK_NOFOLLOW, &info);
    // An entry gone since readdir is simply not there; any other failure
    // hides what the entry holds.
    if (error_number != 0) {
      leave_out(d->d_name, ErrorText(error_number), error_number != ENOENT);
      continue;
    }
    if (!S_ISREG(info.mode) && !S_ISDIR(info.mode)) {
      leave_out(d->d_name, SpecialKind(info.mode));
      continue;
    }
    if (name.find('\\') != std::string::npos) {
      // Paths treat "\" as a slash too, so such a name would be taken for
      // a file in a sub-folder.
      leave_out(d->d_name,
                "its name holds a \"\\\", read as a folder separator");
      continue;
    }
    if (name.compare(0, sizeof kPartialCopyPrefix - 1, kPartialCopyPrefix) ==
        0) {
      leave_out(d->d_name, "unfinished copy of an interrupted run");
      continue;
    }
    entries.emplace_back();
    FillEntry(name, info, &entries.back());
  }
  closedir(dir);
  return result;
}

namespace {

// Copies everything from in to out; 0 or the error number.
int CopyBytes(int in, int out, std::int64_t size) {
  std::int64_t copied = 0;
  while (copied < size) {
    const ssize_t n = copy_file_range(in, nullptr, out, nullptr,
                                      static_cast<size_t>(size - copied), 0);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL ||
                  errno == EOPNOTSUPP)) {
      break;  // the plain loop below copies what is left
    }
    if (n < 0) return errno;
    if (n == 0) break;  // the read loop below tells a real end
    copied += n;
    if (copied == size) return 0;  // what the source held when opened
  }
  char buffer[1 << 16];
  for (;;) {
    const ssize_t n = read(in, buffer, sizeof buffer);
    if (n == 0) return 0;
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    for (ssize_t done = 0; done < n;) {
      const ssize_t w =
          write(out, buffer + done, static_cast<size_t>(n - done));
      if (w < 0 && errno == EINTR) continue;
      if (w < 0) return errno;
      done += w;
    }
  }
}

std::string FolderOf(const std::string& path) {
  const std::string::size_type slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// Writes the open source into a new temporary file beside dest and renames
// it over dest; 0 or the error number.
int CopyOpenFile(int in, const struct stat& source_info,
                 const std::string& dest) {
  std::string temp = CombinePath(FolderOf(dest), kPartialCopyPrefix);
  temp += "XXXXXX";
  const int out = mkostemp(&temp[0], O_CLOEXEC);
  if (out < 0) return errno;
  int error_number = CopyBytes(in, out, source_info.st_size);
  // Owner and mode as the source's, where the file system can hold them: a
  // FAT or CIFS mount, or a run without root, refuses some of them, and the
  // bytes matter more.
  if (fchown(out, source_info.st_uid, source_info.st_gid) != 0 &&
      fchown(out, static_cast<uid_t>(-1), source_info.st_gid) != 0) {
    // Neither could be kept: the copy belongs to whoever runs the sync.
  }
  if (error_number == 0 && fchmod(out, source_info.st_mode & 07777) != 0 &&
      errno != EPERM && errno != ENOTSUP) {
    error_number = errno;
  }
  const struct timespec times[2] = {source_info.st_atim, source_info.st_mtim};
  if (error_number == 0 && futimens(out, times) != 0) error_number = errno;
  if (close(out) != 0 && error_number == 0) error_number = errno;
  if (error_number == 0 && rename(temp.c_str(), dest.c_str()) != 0) {
    error_number = errno;
  }
  if (error_number != 0) unlink(temp.c_str());
  return error_number;
}

}  // namespace

int CopyFileReplacing(const std::string& source, const std::string& dest) {
  const int in = open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (in < 0) return errno;
  struct stat source_info;
  struct stat dest_info;
  int error_number = 0;
  if (fstat(in, &source_info) != 0) {
    error_number = errno;
  } else if (!S_ISREG(source_info.st_mode)) {
    error_number = S_ISDIR(source_info.st_mode) ? EISDIR : EINVAL;
  } else if (stat(dest.c_str(), &dest_info) == 0 &&
             dest_info.st_dev == source_info.st_dev &&
             dest_info.st_ino == source_info.st_ino) {
    error_number = EINVAL;  // the same file: copying it would destroy it
  } else {
    error_number = CopyOpenFile(in, source_info, dest);
  }
  close(in);
  return error_number;
}

int ClearReadOnly(const std::string& path) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return errno;
  return chmod(path.c_str(), (info.st_mode & 07777) | S_IWUSR) == 0 ? 0 : errno;
}

int DeleteFile(const std::string& path) {
  return unlink(path.c_str()) == 0 ? 0 : errno;
}

bool SetCreationTime(const std::string& path, double create_date,
                     double modify_date) {
  (void)create_date;  // POSIX file systems keep no settable birth time
  if (modify_date <= 0) {
    // Nothing that POSIX can hold is asked for: done, if the file is there.
    struct stat st;
    return lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
  }
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0) return false;
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  DateToFileTime(modify_date, &seconds, &nanoseconds);
  struct timespec times[2];
  times[0].tv_sec = 0;
  times[0].tv_nsec = UTIME_OMIT;  // the access time stays as it is
  times[1].tv_sec = static_cast<time_t>(seconds);
  times[1].tv_nsec = nanoseconds;
  const bool ok = futimens(fd, times) == 0;
  close(fd);
  return ok;
}

int ExecuteFile(const std::string& file_name) {
  // The codes the desktop opener gives stand in for the shell's: 1 bad
  // arguments, 2 file not found, 3 no opener, 4 the opening failed.
  constexpr int kNoOpener = 31;
  constexpr int kSuccess = 42;
  const char* argv[] = {"xdg-open", file_name.c_str(), nullptr};
  pid_t pid = 0;
  int code = kSuccess;
  if (posix_spawnp(&pid, "xdg-open", nullptr, nullptr,
                   const_cast<char* const*>(argv), environ) != 0) {
    code = kNoOpener;
  } else {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status)) {
      code = kNoOpener;
    } else if (WEXITSTATUS(status) != 0) {
      const int exit_code = WEXITSTATUS(status);
      code = exit_code <= 32 ? exit_code : kNoOpener;
    }
  }
  if (code <= 32) {
    MsgBox(
        "ExecuteFile : ShellExecute returned error code" + std::to_string(code),
        kMbExclamation);
  }
  return code;
}

}  // namespace pairwell
