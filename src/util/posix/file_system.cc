#include "util/file_system.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "util/date_time.h"
#include "util/file_system_shared.h"
#include "util/path.h"
#include "util/system.h"

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
  std::uint64_t inode = 0;
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
  info->inode = sx.stx_ino;
#else
  struct stat st;
  if (fstatat(dir_fd, name, &st, flags) != 0) return errno;
  info->mode = st.st_mode;
  info->size = st.st_size;
  info->modified = st.st_mtim;
  info->inode = st.st_ino;
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
  entry->inode = info.inode;
}

const char* SpecialKind(mode_t mode) {
  if (S_ISLNK(mode)) return "symbolic link, not followed";
  if (S_ISSOCK(mode)) return "socket, not copied";
  if (S_ISFIFO(mode)) return "fifo, not copied";
  return "device, not copied";
}

}  // namespace

bool CreateFolderLevel(const std::string& folder) {
  if (mkdir(folder.c_str(), 0777) == 0) return true;
  if (errno != EEXIST) return false;
  // A level that exists already (a trailing slash names it twice, or
  // another program made it meanwhile) is what was asked for; a file in its
  // place is not.
  if (FolderExists(folder)) return true;
  errno = ENOTDIR;
  return false;
}

bool FolderExists(const std::string& path) {
  struct stat st;
  return !path.empty() && !HasNul(path) && stat(path.c_str(), &st) == 0 &&
         S_ISDIR(st.st_mode);
}

bool GetFileInfo(const std::string& path, FolderEntry* entry) {
  if (HasNul(path)) return false;
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
  if (HasNul(path) ||
      StatAt(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0 ||
      (!S_ISREG(info.mode) && !S_ISDIR(info.mode))) {
    return false;
  }
  const std::string::size_type slash = path.find_last_of('/');
  FillEntry(slash == std::string::npos ? path : path.substr(slash + 1), info,
            entry);
  return true;
}

std::int64_t FileSize(const std::string& path) {
  StatInfo info;
  if (HasNul(path) ||
      StatAt(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0 ||
      !S_ISREG(info.mode)) {
    return -1;
  }
  return info.size;
}

int ListFolder(const std::string& folder, std::vector<FolderEntry>* entries,
               std::vector<LeftOutEntry>* left_out) {
  if (HasNul(folder)) return EINVAL;
  DIR* dir = opendir(folder.c_str());
  if (dir == nullptr) return errno;
  const int dir_fd = dirfd(dir);
  auto leave_out = [&](const char* name, const std::string& reason,
                       bool error = false, const StatInfo* info = nullptr) {
    // Joined by hand: the name is as the folder holds it, "\\" included.
    if (left_out) {
      const bool slash = !folder.empty() && folder.back() == '/';
      left_out->push_back(
          {folder + (slash ? "" : "/") + name, name, reason, error,
           info == nullptr ? 0
                           : FileTimeToDate(info->modified.tv_sec,
                                            info->modified.tv_nsec)});
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
    if (S_ISDIR(info.mode) && name == kKeepFolderName) continue;
    if (name.compare(0, sizeof kPartialCopyPrefix - 1, kPartialCopyPrefix) ==
        0) {
      leave_out(d->d_name, "unfinished copy of an interrupted run", false,
                &info);
      continue;
    }
    entries->emplace_back();
    FillEntry(name, info, &entries->back());
  }
  closedir(dir);
  return result;
}

namespace {

// The buffer of the read and write loop.
constexpr std::size_t kPlainBufferSize = std::size_t{64} << 10;

// Errors of copy_file_range that only mean the kernel cannot copy between
// these two files; the read and write loop can.
bool KernelCopyUnsupported(int error_number) {
  return error_number == EXDEV || error_number == ENOSYS ||
         error_number == EINVAL || error_number == EOPNOTSUPP;
}

// Writes all n bytes; 0 or the error number.
int WriteAll(int out, const char* bytes, std::size_t n) {
  for (std::size_t done = 0; done < n;) {
    const ssize_t w = write(out, bytes + done, n - done);
    if (w < 0 && errno == EINTR) continue;
    if (w < 0) return errno;
    done += static_cast<std::size_t>(w);
  }
  return 0;
}

// Moves a file's bytes from one open file to another one chunk at a time:
// with copy_file_range while the kernel can, else with read and write.
class ChunkCopier {
 public:
  ChunkCopier(int in, int out, std::int64_t total)
      : in_(in), out_(out), total_(total) {}

  // Copies the next chunk of at most limit bytes. Returns the bytes copied
  // (0 once the source is done), or minus the error number.
  std::int64_t Next(std::int64_t limit);

  std::int64_t done() const { return done_; }

 private:
  std::int64_t KernelChunk(std::int64_t limit);
  std::int64_t PlainChunk(std::int64_t limit);

  const int in_;
  const int out_;
  const std::int64_t total_;
  std::int64_t done_ = 0;
  bool kernel_ = true;
  std::vector<char> buffer_;
};

std::int64_t ChunkCopier::Next(std::int64_t limit) {
  if (kernel_ && done_ < total_) {
    const std::int64_t n = KernelChunk(std::min(limit, total_ - done_));
    if (n != 0) return n;
  } else if (kernel_ && total_ > 0) {
    return 0;  // all that the source held when opened
  }
  // The kernel could not copy, or the source ended early or stats as empty
  // (as files under /proc do): reading tells its real end.
  return PlainChunk(limit);
}

std::int64_t ChunkCopier::KernelChunk(std::int64_t limit) {
  std::int64_t copied = 0;
  while (copied < limit) {
    const ssize_t n = copy_file_range(in_, nullptr, out_, nullptr,
                                      static_cast<size_t>(limit - copied), 0);
    if (n < 0 && errno == EINTR) continue;
    if (n == 0 || (n < 0 && KernelCopyUnsupported(errno))) {
      kernel_ = false;  // the plain loop goes on from the same offsets
      break;
    }
    if (n < 0) return -errno;
    copied += n;
  }
  done_ += copied;
  return copied;
}

std::int64_t ChunkCopier::PlainChunk(std::int64_t limit) {
  if (buffer_.empty()) buffer_.resize(kPlainBufferSize);
  std::int64_t copied = 0;
  while (copied < limit) {
    const std::size_t want = static_cast<std::size_t>(
        std::min<std::int64_t>(limit - copied, buffer_.size()));
    const ssize_t n = read(in_, buffer_.data(), want);
    if (n == 0) break;
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return -errno;
    const int error_number =
        WriteAll(out_, buffer_.data(), static_cast<std::size_t>(n));
    if (error_number != 0) return -error_number;
    copied += n;
  }
  done_ += copied;
  return copied;
}

// Hands the bytes just written to the disk without waiting for them, so
// that the flush that makes a copy durable has little left to wait for and
// a large copy never holds much unwritten data in memory.
void StartWriteback(int out, std::int64_t offset, std::int64_t length) {
  // Only a hint: where the file system cannot, the flush does it all.
  (void)sync_file_range(out, offset, length, SYNC_FILE_RANGE_WRITE);
}

// Copies everything from in to out, calling progress after every chunk; 0,
// ECANCELED when progress said stop, or the error number.
int CopyBytes(int in, int out, std::int64_t total, const CopyProgress& progress,
              Durability durability) {
  ChunkCopier copier(in, out, total);
  std::int64_t chunk_size = kFirstChunk;
  for (;;) {
    const auto start = std::chrono::steady_clock::now();
    const std::int64_t before = copier.done();
    const std::int64_t n = copier.Next(chunk_size);
    if (n < 0) return static_cast<int>(-n);
    if (n == 0) return 0;
    // A small file is written out with the rest at the flush: a call for
    // each would cost more than it saves.
    if (durability == Durability::kStartWriteback && total >= kFirstChunk) {
      StartWriteback(out, before, n);
    }
    AdjustChunkSize(n, std::chrono::steady_clock::now() - start, &chunk_size);
    if (progress && !progress(copier.done(), total)) return ECANCELED;
  }
}

std::string FolderOf(const std::string& path) {
  const std::string::size_type slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// Gives the open copy the source's owner, mode and dates; 0 or the error
// number.
int TakeAttributes(int out, const struct stat& source_info) {
  // Owner and mode as the source's, where the file system can hold them: a
  // FAT or CIFS mount, or a run without root, refuses some of them, and the
  // bytes matter more.
  static const uid_t kOwnUser = geteuid();
  static const gid_t kOwnGroup = getegid();
  const bool ours =
      source_info.st_uid == kOwnUser && source_info.st_gid == kOwnGroup;
  if (!ours && fchown(out, source_info.st_uid, source_info.st_gid) != 0 &&
      fchown(out, static_cast<uid_t>(-1), source_info.st_gid) != 0) {
    // Neither could be kept: the copy belongs to whoever runs the sync.
  }
  if (fchmod(out, source_info.st_mode & 07777) != 0 && errno != EPERM &&
      errno != ENOTSUP) {
    return errno;
  }
  const struct timespec times[2] = {source_info.st_atim, source_info.st_mtim};
  return futimens(out, times) == 0 ? 0 : errno;
}

// Writes the open source into a new temporary file beside dest, with the
// source's attributes; 0 and *temp named, or the error number and nothing
// left behind.
int CopyToTemp(int in, const struct stat& source_info, const std::string& dest,
               const CopyProgress& progress, Durability durability,
               std::string* temp) {
  *temp = CombinePath(FolderOf(dest), kPartialCopyPrefix);
  *temp += "XXXXXX";
  const int out = mkostemp(&(*temp)[0], O_CLOEXEC);
  if (out < 0) {
    const int error_number = errno;
    temp->clear();
    return error_number;
  }
  int error_number =
      CopyBytes(in, out, source_info.st_size, progress, durability);
  if (error_number == 0) error_number = TakeAttributes(out, source_info);
  if (error_number == 0 && durability == Durability::kFlushData &&
      fdatasync(out) != 0) {
    error_number = errno;
  }
  if (close(out) != 0 && error_number == 0) error_number = errno;
  if (error_number != 0) {
    unlink(temp->c_str());
    temp->clear();
  }
  return error_number;
}

// Opens the source as a regular file that is not dest itself: the open
// descriptor (to close), or minus the error number.
int OpenCopySource(const std::string& source, const std::string& dest,
                   struct stat* source_info) {
  if (HasNul(source) || HasNul(dest)) return -EINVAL;
  const int in = open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (in < 0) return -errno;
  struct stat dest_info;
  int error_number = 0;
  if (fstat(in, source_info) != 0) {
    error_number = errno;
  } else if (!S_ISREG(source_info->st_mode)) {
    error_number = S_ISDIR(source_info->st_mode) ? EISDIR : EINVAL;
  } else if (stat(dest.c_str(), &dest_info) == 0 &&
             dest_info.st_dev == source_info->st_dev &&
             dest_info.st_ino == source_info->st_ino) {
    error_number = EINVAL;  // the same file: copying it would destroy it
  }
  if (error_number == 0) return in;
  close(in);
  return -error_number;
}

}  // namespace

int StageCopy(const std::string& source, const std::string& dest,
              std::string* temp, const CopyProgress& progress,
              Durability durability) {
  temp->clear();
  struct stat source_info;
  const int in = OpenCopySource(source, dest, &source_info);
  if (in < 0) return -in;
  const int error_number =
      CopyToTemp(in, source_info, dest, progress, durability, temp);
  close(in);
  return error_number;
}

void ReadAhead(const std::string& path, std::int64_t bytes) {
  if (HasNul(path) || bytes <= 0) return;
  // Non-blocking: a name that has become a pipe since the scan must not hold
  // the caller up.
  const int fd =
      open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd < 0) return;
  // Advice only: when the system declines, the copy reads as it would have.
  (void)posix_fadvise(fd, 0, static_cast<off_t>(bytes), POSIX_FADV_WILLNEED);
  close(fd);
}

int PlaceStagedCopy(const std::string& temp, const std::string& dest) {
  if (HasNul(temp) || HasNul(dest)) return EINVAL;
  return rename(temp.c_str(), dest.c_str()) == 0 ? 0 : errno;
}

int FlushFolder(const std::string& folder) {
  if (HasNul(folder)) return EINVAL;
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return errno;
  // A file system that keeps no folder to flush says EINVAL: nothing to do.
  const int error_number = fsync(fd) == 0 || errno == EINVAL ? 0 : errno;
  close(fd);
  return error_number;
}

int FlushFileSystem(const std::string& path) {
  if (HasNul(path)) return EINVAL;
  // A folder given as a link is flushed where it leads.
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return errno;
  const int error_number = syncfs(fd) == 0 ? 0 : errno;
  close(fd);
  return error_number;
}

std::uint64_t FileSystemId(const std::string& path) {
  struct stat info;
  if (HasNul(path) || stat(path.c_str(), &info) != 0) return 0;
  return static_cast<std::uint64_t>(info.st_dev) + 1;
}

int CopyFileReplacing(const std::string& source, const std::string& dest,
                      const CopyProgress& progress,
                      const ReplaceCheck& may_replace) {
  struct stat source_info;
  const int in = OpenCopySource(source, dest, &source_info);
  if (in < 0) return -in;
  std::string temp;
  int error_number = CopyToTemp(in, source_info, dest, progress,
                                Durability::kFlushData, &temp);
  close(in);
  if (error_number != 0) return error_number;
  if (may_replace && !may_replace()) {
    error_number = kDestinationChanged;
  } else {
    error_number = PlaceStagedCopy(temp, dest);
  }
  if (error_number != 0) {
    unlink(temp.c_str());
    return error_number;
  }
  // The new name reaches the disk too, not only the bytes behind it.
  return FlushFolder(FolderOf(dest));
}

int ClearReadOnly(const std::string& path) {
  struct stat info;
  if (HasNul(path)) return EINVAL;
  if (stat(path.c_str(), &info) != 0) return errno;
  return chmod(path.c_str(), (info.st_mode & 07777) | S_IWUSR) == 0 ? 0 : errno;
}

int ClearArchiveAttribute(const std::string& path) {
  return HasNul(path) ? EINVAL : 0;
}

int DeleteFile(const std::string& path) {
  if (HasNul(path)) return EINVAL;
  return unlink(path.c_str()) == 0 ? 0 : errno;
}

int RenameFile(const std::string& from, const std::string& to) {
  if (HasNul(from) || HasNul(to)) return EINVAL;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int LinkFile(const std::string& existing, const std::string& new_name) {
  if (HasNul(existing) || HasNul(new_name)) return EINVAL;
  return link(existing.c_str(), new_name.c_str()) == 0 ? 0 : errno;
}

int RemoveFolder(const std::string& path) {
  if (HasNul(path)) return EINVAL;
  if (rmdir(path.c_str()) == 0) return 0;
  // Some systems say EEXIST for a folder that is not empty.
  return errno == EEXIST ? ENOTEMPTY : errno;
}

namespace {

// Removes what the open folder holds, depth first; the first error, or 0.
int RemoveContents(int dir_fd) {
  DIR* dir = fdopendir(dir_fd);
  if (dir == nullptr) {
    const int error_number = errno;
    close(dir_fd);
    return error_number;
  }
  int first_error = 0;
  const auto note = [&first_error](int error_number) {
    if (first_error == 0) first_error = error_number;
  };
  for (;;) {
    errno = 0;
    const struct dirent* d = readdir(dir);
    if (d == nullptr) {
      if (errno != 0) note(errno);
      break;
    }
    const std::string name = d->d_name;
    if (name == "." || name == "..") continue;
    if (unlinkat(dir_fd, d->d_name, 0) == 0) continue;
    if (errno != EISDIR && errno != EPERM) {
      note(errno);
      continue;
    }
    // A folder: emptied through a descriptor that cannot be a link.
    const int sub = openat(dir_fd, d->d_name,
                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (sub < 0) {
      note(errno);
      continue;
    }
    const int error_number = RemoveContents(sub);
    if (error_number != 0) note(error_number);
    if (unlinkat(dir_fd, d->d_name, AT_REMOVEDIR) != 0) note(errno);
  }
  closedir(dir);
  return first_error;
}

}  // namespace

int RemoveTree(const std::string& path) {
  if (HasNul(path)) return EINVAL;
  const int fd =
      open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return errno;
  const int error_number = RemoveContents(fd);
  if (rmdir(path.c_str()) != 0) return error_number != 0 ? error_number : errno;
  return error_number;
}

bool GetFileIdentity(const std::string& path, FileIdentity* identity) {
  struct stat info;
  if (HasNul(path) || lstat(path.c_str(), &info) != 0 ||
      !S_ISREG(info.st_mode)) {
    return false;
  }
  identity->size = info.st_size;
  identity->modified_ns =
      static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 +
      info.st_mtim.tv_nsec;
  identity->inode = info.st_ino;
  identity->mode = static_cast<int>(info.st_mode & 07777);
  return true;
}

int FileMode(const std::string& path) {
  struct stat info;
  if (HasNul(path) || lstat(path.c_str(), &info) != 0) return -1;
  return static_cast<int>(info.st_mode & 07777);
}

int SetFileMode(const std::string& path, int mode) {
  if (HasNul(path)) return EINVAL;
  return chmod(path.c_str(), static_cast<mode_t>(mode & 07777)) == 0 ? 0
                                                                     : errno;
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

int OpenWithDesktop(const std::string& file_name) {
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
  return code;
}

std::FILE* OpenFile(const std::string& path, const char* mode) {
  if (HasNul(path)) {
    errno = EINVAL;
    return nullptr;
  }
  return std::fopen(path.c_str(), mode);
}

}  // namespace pairwell
