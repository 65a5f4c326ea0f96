#include "util/file_system.h"

#include <errno.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <random>
#include <vector>

#include "util/date_time.h"
#include "util/file_system_shared.h"
#include "util/path.h"
#include "util/system.h"
#include "util/win32/error_number.h"
#include "util/win32/file_time.h"
#include "util/win32/long_path.h"
#include "util/win32/unicode.h"
#include "util/win32/win32_api.h"
#include "util/win32/write_all.h"
// After windows.h, which it needs.
#include <shellapi.h>

namespace pairwell {

namespace {

// The attribute bits the program's model shares with Windows: the same
// values, so they pass as they are.
constexpr DWORD kModelAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
    FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_ARCHIVE;
// Those SetFileAttributesW may set, a cloud file's pinning among them: a
// change of one bit keeps the others as they were.
constexpr DWORD kAttributePinned = 0x00080000;
constexpr DWORD kAttributeUnpinned = 0x00100000;
constexpr DWORD kSettableAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
    FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
    FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | kAttributePinned | kAttributeUnpinned;
// Those a copy takes from its source: whether the file is offline, in the
// cloud or temporary belongs to where it lies, not to its content.
constexpr DWORD kCopiedAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
    FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

constexpr DWORD kShareAll =
    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Closes a handle when it goes out of scope.
class Handle {
 public:
  explicit Handle(HANDLE handle = INVALID_HANDLE_VALUE) : handle_(handle) {}
  ~Handle() { Close(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  HANDLE get() const { return handle_; }
  bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }
  void Reset(HANDLE handle) {
    Close();
    handle_ = handle;
  }
  // Returns 0, or the error number of the close.
  int Close() {
    if (!valid()) return 0;
    const bool closed = CloseHandle(handle_) != 0;
    handle_ = INVALID_HANDLE_VALUE;
    return closed ? 0 : LastErrno();
  }

 private:
  HANDLE handle_;
};

// A find handle, closed with FindClose.
class FindHandle {
 public:
  explicit FindHandle(HANDLE handle) : handle_(handle) {}
  ~FindHandle() {
    if (valid()) FindClose(handle_);
  }
  FindHandle(const FindHandle&) = delete;
  FindHandle& operator=(const FindHandle&) = delete;

  HANDLE get() const { return handle_; }
  bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

std::int64_t SizeOf(DWORD high, DWORD low) {
  return static_cast<std::int64_t>((static_cast<std::uint64_t>(high) << 32) |
                                   low);
}

// A reparse point that stands for another name (a symbolic link, a
// junction) rather than holding the file's own data, as deduplicated and
// cloud files do: never followed, never copied.
bool IsLink(DWORD attributes, DWORD tag) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         IsReparseTagNameSurrogate(tag);
}

const char* LinkKind(DWORD tag) {
  if (tag == IO_REPARSE_TAG_SYMLINK) return "symbolic link, not followed";
  if (tag == IO_REPARSE_TAG_MOUNT_POINT) return "junction, not followed";
  return "reparse point, not followed";
}

// Why Windows cannot hold the name, or nullptr when it can. Windows itself
// lists such names only when other systems made them (a network share, a
// Linux subsystem); a copy would fail half-way or land under another name.
const char* UnusableName(const std::wstring& name) {
  static const std::wstring kForbidden = L"<>:\"|?*";
  for (const wchar_t c : name) {
    if (c < 32 || kForbidden.find(c) != std::wstring::npos) {
      return "its name holds a character Windows does not allow";
    }
  }
  if (!name.empty() && (name.back() == L'.' || name.back() == L' ')) {
    return "its name ends in a dot or a blank, which Windows drops";
  }
  // A device name stays a device with any extension: "nul.txt" is NUL.
  std::wstring base = name.substr(0, name.find(L'.'));
  while (!base.empty() && base.back() == L' ') base.pop_back();
  for (wchar_t& c : base) {
    if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - L'a' + L'A');
  }
  static const wchar_t* const kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL"};
  bool device = std::find(std::begin(kDevices), std::end(kDevices), base) !=
                std::end(kDevices);
  if (base.size() == 4 &&
      (base.compare(0, 3, L"COM") == 0 || base.compare(0, 3, L"LPT") == 0)) {
    const wchar_t digit = base[3];
    device = (digit >= L'1' && digit <= L'9') || digit == L'\u00B9' ||
             digit == L'\u00B2' || digit == L'\u00B3';
  }
  return device ? "its name is reserved by Windows for a device" : nullptr;
}

bool EqualsIgnoringCase(const std::string& text, const char* other,
                        std::string::size_type length) {
  if (text.size() < length) return false;
  for (std::string::size_type i = 0; i < length; ++i) {
    char a = text[i];
    char b = other[i];
    if (a >= 'A' && a <= 'Z') a = static_cast<char>(a - 'A' + 'a');
    if (b >= 'A' && b <= 'Z') b = static_cast<char>(b - 'A' + 'a');
    if (a != b) return false;
  }
  return true;
}

// The folders Windows keeps at a volume's root, hidden and marked as the
// system's: its restore points and the recycle bin. Listing the first
// fails on NTFS, and neither is the person's to synchronize.
bool IsKeptByWindows(const std::string& name, DWORD attributes) {
  constexpr DWORD kMarks = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN |
                           FILE_ATTRIBUTE_SYSTEM;
  if ((attributes & kMarks) != kMarks) return false;
  for (const char* kept : {"System Volume Information", "$Recycle.Bin"}) {
    if (name.size() == std::char_traits<char>::length(kept) &&
        EqualsIgnoringCase(name, kept, name.size())) {
      return true;
    }
  }
  return false;
}

// What the model keeps of a file's Windows data (a listing's or
// GetFileAttributesExW's). Windows has no serial number in either: 0, which
// the checks that use one take as unknown.
template <typename Data>
void FillEntry(const std::string& name, const Data& data, FolderEntry* entry) {
  entry->name = name;
  const std::int64_t size = SizeOf(data.nFileSizeHigh, data.nFileSizeLow);
  entry->size = size > 0x7FFFFFFF ? kSizeCap : static_cast<std::int32_t>(size);
  entry->modify_date = DateOfFileTime(data.ftLastWriteTime);
  const std::int64_t born = TicksOf(data.ftCreationTime);
  entry->create_date =
      born != 0 ? DateOfFileTime(data.ftCreationTime) : entry->modify_date;
  entry->attributes =
      static_cast<std::uint16_t>(data.dwFileAttributes & kModelAttributes);
  entry->inode = 0;
}

bool AttributeData(const std::wstring& wide, WIN32_FILE_ATTRIBUTE_DATA* data) {
  return GetFileAttributesExW(wide.c_str(), GetFileExInfoStandard, data) != 0;
}

// The reparse tag of the entry at the path; 0 when it cannot be read.
DWORD ReparseTagOf(const std::wstring& wide) {
  WIN32_FIND_DATAW found;
  FindHandle find(FindFirstFileExW(wide.c_str(), FindExInfoBasic, &found,
                                   FindExSearchNameMatch, nullptr, 0));
  return find.valid() ? found.dwReserved0 : 0;
}

// The path's own entry, a final link not followed: false when it cannot be
// examined or is a link.
bool ItemData(const std::string& path, std::wstring* wide,
              WIN32_FILE_ATTRIBUTE_DATA* data) {
  if (HasNul(path) || !LongPath(path, wide) || !AttributeData(*wide, data)) {
    return false;
  }
  return (data->dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 ||
         !IsLink(data->dwFileAttributes, ReparseTagOf(*wide));
}

// The file's index on its volume, as a listing reads it with the entry
// (ListFolder); 0 when it cannot be read.
std::uint64_t FileIndexOf(const std::wstring& wide) {
  const HANDLE handle = CreateFileW(
      wide.c_str(), FILE_READ_ATTRIBUTES,
      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
      nullptr);
  if (handle == INVALID_HANDLE_VALUE) return 0;
  BY_HANDLE_FILE_INFORMATION info;
  const bool read = GetFileInformationByHandle(handle, &info) != 0;
  CloseHandle(handle);
  return read ? (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow
              : 0;
}

// The last component of a path, either slash counting.
std::string LastComponent(const std::string& path) {
  const std::string::size_type slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::wstring JoinWide(const std::wstring& folder, const std::wstring& name) {
  if (!folder.empty() && folder.back() == L'\\') return folder + name;
  return folder + L'\\' + name;
}

// Lifts the read-only attribute, which stops Windows from deleting or
// replacing a file where POSIX would not care. True when it was set.
bool LiftReadOnly(const std::wstring& wide, DWORD* attributes) {
  *attributes = GetFileAttributesW(wide.c_str());
  if (*attributes == INVALID_FILE_ATTRIBUTES ||
      (*attributes & FILE_ATTRIBUTE_READONLY) == 0) {
    return false;
  }
  const DWORD rest =
      *attributes & kSettableAttributes & ~DWORD{FILE_ATTRIBUTE_READONLY};
  return SetFileAttributesW(wide.c_str(),
                            rest != 0 ? rest : FILE_ATTRIBUTE_NORMAL) != 0;
}

// Does what change() does to target as POSIX would: a read-only
// attribute, which Windows heeds where POSIX looks only at the folder, does
// not stop it. When it fails all the same, the attribute is put back.
// Returns 0, or the error number.
template <typename Change>
int IgnoringReadOnly(const std::wstring& target, Change change) {
  if (change()) return 0;
  const DWORD code = GetLastError();
  DWORD attributes = 0;
  if (code == ERROR_ACCESS_DENIED && LiftReadOnly(target, &attributes)) {
    if (change()) return 0;
    const DWORD again = GetLastError();
    SetFileAttributesW(target.c_str(), attributes & kSettableAttributes);
    return ErrnoFromWin32(again);
  }
  return ErrnoFromWin32(code);
}

int DeleteWide(const std::wstring& wide) {
  return IgnoringReadOnly(wide, [&] { return DeleteFileW(wide.c_str()); });
}

int RemoveDirectoryWide(const std::wstring& wide) {
  return IgnoringReadOnly(wide,
                          [&] { return RemoveDirectoryW(wide.c_str()); });
}

}  // namespace

bool FolderExists(const std::string& path) {
  std::wstring wide;
  WIN32_FILE_ATTRIBUTE_DATA data;
  // A link to a folder counts, as it would where stat follows it.
  return !path.empty() && !HasNul(path) && LongPath(path, &wide) &&
         AttributeData(wide, &data) &&
         (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool CreateFolderLevel(const std::string& folder) {
  std::wstring wide;
  if (!LongPath(folder, &wide)) {
    errno = EINVAL;
    return false;
  }
  if (CreateDirectoryW(wide.c_str(), nullptr)) return true;
  const DWORD code = GetLastError();
  if (code == ERROR_ALREADY_EXISTS) {
    // Another program may have made it meanwhile; a file in its place is
    // not what was asked for.
    if (FolderExists(folder)) return true;
    errno = ENOTDIR;
    return false;
  }
  errno = ErrnoFromWin32(code);
  return false;
}

bool GetFileInfo(const std::string& path, FolderEntry* entry) {
  std::wstring wide;
  WIN32_FILE_ATTRIBUTE_DATA data;
  // The folder's own dates and attributes, as its "." entry holds them; a
  // drive's root has no "." entry, but has these.
  if (HasNul(path) || !LongPath(path, &wide) || !AttributeData(wide, &data) ||
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    return false;
  }
  FillEntry(".", data, entry);
  return true;
}

bool GetItemInfo(const std::string& path, FolderEntry* entry) {
  std::wstring wide;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!ItemData(path, &wide, &data)) return false;
  FillEntry(LastComponent(path), data, entry);
  entry->inode = FileIndexOf(wide);
  return true;
}

std::int64_t FileSize(const std::string& path) {
  std::wstring wide;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!ItemData(path, &wide, &data) ||
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return -1;
  }
  return SizeOf(data.nFileSizeHigh, data.nFileSizeLow);
}

namespace {

// The file time in a directory record.
FILETIME FileTimeOf(const LARGE_INTEGER& t) {
  FILETIME f;
  f.dwLowDateTime = t.LowPart;
  f.dwHighDateTime = static_cast<DWORD>(t.HighPart);
  return f;
}

// Calls each(found, id) for every entry of the open folder, read in bulk
// with each entry's file index, which tells a file from another renamed to
// its name later (FindFirstFile gives none). Returns 0 or the Windows
// error; ERROR_INVALID_PARAMETER (or ERROR_NOT_SUPPORTED) on a file system
// that lists no ids this way, before any entry.
template <typename Each>
DWORD ReadFolderWithIds(HANDLE folder, Each each) {
  std::vector<std::uint64_t> buffer(8192);  // 64 KiB, aligned for the records
  for (bool first = true;; first = false) {
    if (!GetFileInformationByHandleEx(
            folder,
            first ? FileIdBothDirectoryRestartInfo : FileIdBothDirectoryInfo,
            buffer.data(), static_cast<DWORD>(buffer.size() * 8))) {
      const DWORD code = GetLastError();
      return code == ERROR_NO_MORE_FILES ? 0 : code;
    }
    const char* record = reinterpret_cast<const char*>(buffer.data());
    for (;;) {
      const auto* info = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(record);
      WIN32_FIND_DATAW found{};
      found.dwFileAttributes = info->FileAttributes;
      found.ftCreationTime = FileTimeOf(info->CreationTime);
      found.ftLastAccessTime = FileTimeOf(info->LastAccessTime);
      found.ftLastWriteTime = FileTimeOf(info->LastWriteTime);
      found.nFileSizeHigh = static_cast<DWORD>(info->EndOfFile.HighPart);
      found.nFileSizeLow = info->EndOfFile.LowPart;
      // A reparse point's tag stands where FindFirstFile puts it.
      if ((info->FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        found.dwReserved0 = info->EaSize;
      }
      const std::size_t length = std::min<std::size_t>(
          info->FileNameLength / sizeof(wchar_t), MAX_PATH - 1);
      std::copy(info->FileName, info->FileName + length, found.cFileName);
      found.cFileName[length] = L'\0';
      each(found, static_cast<std::uint64_t>(info->FileId.QuadPart));
      if (info->NextEntryOffset == 0) break;
      record += info->NextEntryOffset;
    }
  }
}

}  // namespace

int ListFolder(const std::string& folder, std::vector<FolderEntry>* entries,
               std::vector<LeftOutEntry>* left_out) {
  std::wstring wide;
  if (HasNul(folder) || !LongPath(folder, &wide)) return EINVAL;
  auto leave_out = [&](const std::string& name, const std::string& reason,
                       bool error = false, const FILETIME* modified = nullptr) {
    if (left_out) {
      const bool slash = !folder.empty() && IsSlash(folder.back());
      left_out->push_back(
          {folder + (slash ? "" : std::string(1, kPathSeparator)) + name, name,
           reason, error, modified == nullptr ? 0 : DateOfFileTime(*modified)});
    }
  };
  auto take = [&](const WIN32_FIND_DATAW& found, std::uint64_t id) {
    const std::wstring wide_name = found.cFileName;
    if (wide_name == L"." || wide_name == L"..") return;
    std::string name;
    if (!Narrow(wide_name, &name)) {
      leave_out(NarrowForDisplay(wide_name),
                "its name is not valid Unicode and has no UTF-8 form");
      return;
    }
    const DWORD attributes = found.dwFileAttributes;
    if (IsLink(attributes, found.dwReserved0)) {
      leave_out(name, LinkKind(found.dwReserved0));
      return;
    }
    if (const char* reason = UnusableName(wide_name)) {
      leave_out(name, reason);
      return;
    }
    if (IsKeptByWindows(name, attributes)) {
      leave_out(name, "a folder Windows keeps for itself");
      return;
    }
    const bool is_folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // Windows takes ".PAIRWELL" for the same folder.
    if (is_folder && name.size() == sizeof kKeepFolderName - 1 &&
        EqualsIgnoringCase(name, kKeepFolderName, name.size())) {
      return;
    }
    if (EqualsIgnoringCase(name, kPartialCopyPrefix,
                           sizeof kPartialCopyPrefix - 1)) {
      leave_out(name, "unfinished copy of an interrupted run", false,
                &found.ftLastWriteTime);
      return;
    }
    entries->emplace_back();
    FillEntry(name, found, &entries->back());
    entries->back().inode = id;
  };

  const HANDLE handle =
      CreateFileW(wide.c_str(), FILE_LIST_DIRECTORY,
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle != INVALID_HANDLE_VALUE) {
    const std::size_t before = entries->size();
    const std::size_t left_before = left_out ? left_out->size() : 0;
    const DWORD code = ReadFolderWithIds(handle, take);
    CloseHandle(handle);
    if (code == 0) return 0;
    const bool nothing_read = entries->size() == before &&
                              (!left_out || left_out->size() == left_before);
    if (!nothing_read || code == ERROR_ACCESS_DENIED) {
      return ErrnoFromWin32(code);
    }
    // No ids this way (a file system that lists none, a drive's empty root
    // that says "not found", or not a folder): listed by name, ids unknown.
  }

  WIN32_FIND_DATAW found;
  FindHandle find(FindFirstFileExW(
      JoinWide(wide, L"*").c_str(), FindExInfoBasic, &found,
      FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
  if (!find.valid()) {
    const DWORD code = GetLastError();
    // A drive's empty root has not even a "." entry.
    if (code == ERROR_FILE_NOT_FOUND && FolderExists(folder)) return 0;
    // A file where the folder should be: Windows and Wine name it by
    // several codes, none of them "not a folder".
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      ErrnoFromWin32(ERROR_DIRECTORY);
      return ENOTDIR;
    }
    return ErrnoFromWin32(code);
  }
  do {
    take(found, 0);
  } while (FindNextFileW(find.get(), &found));
  const DWORD code = GetLastError();
  return code == ERROR_NO_MORE_FILES ? 0 : ErrnoFromWin32(code);
}

namespace {

// The buffer of the read and write loop: large, as each ReadFile and
// WriteFile is a call into the system.
constexpr DWORD kBufferSize = DWORD{1} << 20;

// Copies everything from in to out in chunks, calling progress after every
// chunk; 0, ECANCELED when progress said stop, or the error number. The
// source is read to its real end, which may lie past `total`.
int CopyBytes(HANDLE in, HANDLE out, std::int64_t total,
              const CopyProgress& progress) {
  std::vector<char> buffer(kBufferSize);
  std::int64_t chunk_size = kFirstChunk;
  std::int64_t done = 0;
  for (;;) {
    const auto start = std::chrono::steady_clock::now();
    std::int64_t copied = 0;
    bool end = false;
    while (copied < chunk_size) {
      const DWORD want = static_cast<DWORD>(
          std::min<std::int64_t>(chunk_size - copied, kBufferSize));
      DWORD got = 0;
      if (!ReadFile(in, buffer.data(), want, &got, nullptr)) return LastErrno();
      if (got == 0) {
        end = true;
        break;
      }
      const int error_number = WriteAll(out, buffer.data(), got);
      if (error_number != 0) return error_number;
      copied += got;
    }
    done += copied;
    if (copied == 0 && end) return 0;
    AdjustChunkSize(copied, std::chrono::steady_clock::now() - start,
                    &chunk_size);
    if (progress && !progress(done, total)) return ECANCELED;
    if (end) return 0;
  }
}

std::string FolderOf(const std::string& path) {
  const std::string::size_type slash = path.find_last_of("/\\");
  if (slash == std::string::npos) return ".";
  if (slash == 0) return path.substr(0, 1);
  // "C:\x" lies in "C:\": "C:" alone is the drive's current folder.
  if (slash == 2 && path[1] == ':') return path.substr(0, 3);
  return path.substr(0, slash);
}

// Six characters that make a temporary name unlikely to be taken.
std::string RandomSuffix() {
  static const char kLetters[] =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  thread_local std::mt19937_64 generator(
      GetTickCount64() ^ (std::uint64_t{GetCurrentProcessId()} << 32) ^
      (std::uint64_t{GetCurrentThreadId()} << 16) ^
      static_cast<std::uint64_t>(
          std::chrono::steady_clock::now().time_since_epoch().count()));
  std::string suffix(6, 'x');
  for (char& c : suffix) c = kLetters[generator() % (sizeof kLetters - 1)];
  return suffix;
}

// Removes a temporary file, read-only or not.
void RemoveTemp(const std::string& temp) {
  std::wstring wide;
  if (LongPath(temp, &wide)) DeleteWide(wide);
}

// Creates a new file prefix + six random characters; the open handle, with
// its path in *path, or the error number.
int CreateUniqueFile(const std::string& prefix, Handle* out,
                     std::string* path) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    *path = prefix + RandomSuffix();
    std::wstring wide;
    if (!LongPath(*path, &wide)) return EINVAL;
    out->Reset(CreateFileW(
        wide.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (out->valid()) return 0;
    const DWORD code = GetLastError();
    if (code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS) {
      return ErrnoFromWin32(code);
    }
  }
  return EEXIST;
}

// Writes the open source into a new temporary file beside dest, with the
// source's dates and attributes; 0 and *temp named, or the error number and
// nothing left behind. Windows' copies keep the attributes (read-only,
// hidden, system, archive) as POSIX ones keep the permission bits.
int CopyToTemp(HANDLE in, const BY_HANDLE_FILE_INFORMATION& source_info,
               const std::string& dest, const CopyProgress& progress,
               Durability durability, std::string* temp) {
  Handle out;
  int error_number = CreateUniqueFile(
      CombinePath(FolderOf(dest), kPartialCopyPrefix), &out, temp);
  if (error_number != 0) {
    temp->clear();
    return error_number;
  }
  error_number = CopyBytes(
      in, out.get(),
      SizeOf(source_info.nFileSizeHigh, source_info.nFileSizeLow), progress);
  // The dates go last: every write moves the modification time.
  if (error_number == 0 &&
      !SetFileTime(out.get(), nullptr, &source_info.ftLastAccessTime,
                   &source_info.ftLastWriteTime)) {
    error_number = LastErrno();
  }
  // A volume can be flushed only with administrator rights, so a staged
  // copy is flushed through its own handle here, before its rename, rather
  // than by a later FlushFileSystem.
  if (error_number == 0 && durability != Durability::kLeftToSystem &&
      !FlushFileBuffers(out.get())) {
    error_number = LastErrno();
  }
  const int close_error = out.Close();
  if (error_number == 0) error_number = close_error;
  const DWORD attributes = source_info.dwFileAttributes & kCopiedAttributes;
  std::wstring wide;
  if (error_number == 0 && attributes != FILE_ATTRIBUTE_ARCHIVE &&
      (!LongPath(*temp, &wide) ||
       !SetFileAttributesW(wide.c_str(), attributes != 0
                                             ? attributes
                                             : FILE_ATTRIBUTE_NORMAL))) {
    error_number = LastErrno();
  }
  if (error_number != 0) {
    RemoveTemp(*temp);
    temp->clear();
  }
  return error_number;
}

// The serial number of the volume and the file's number on it, following
// links; false when the path cannot be opened.
bool FileIdOf(const std::wstring& wide, BY_HANDLE_FILE_INFORMATION* info,
              DWORD flags = 0) {
  Handle handle(CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, kShareAll,
                            nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
  return handle.valid() && GetFileInformationByHandle(handle.get(), info);
}

// The reparse tag of an open file; 0 when it has none.
DWORD ReparseTagOfHandle(HANDLE handle) {
  FILE_ATTRIBUTE_TAG_INFO tag_info;
  if (!GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &tag_info,
                                    sizeof tag_info) ||
      (tag_info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return 0;
  }
  return tag_info.ReparseTag;
}

// The volume a handle's file lies on, as "\\?\Volume{...}"; "" when the
// system cannot say (a network share, Wine).
std::wstring VolumeOfHandle(HANDLE handle) {
  std::wstring path(MAX_PATH, L'\0');
  DWORD n = GetFinalPathNameByHandleW(handle, path.data(),
                                      static_cast<DWORD>(path.size()),
                                      VOLUME_NAME_GUID);
  if (n >= path.size()) {
    path.resize(n);
    n = GetFinalPathNameByHandleW(handle, path.data(),
                                  static_cast<DWORD>(path.size()),
                                  VOLUME_NAME_GUID);
  }
  if (n == 0 || n >= path.size()) return std::wstring();
  path.resize(n);
  const std::size_t end = path.find(L'\\', 4);  // after "\\?\"
  return end == std::wstring::npos ? path : path.substr(0, end);
}

// Whether dest is the source file itself. A cloned disk keeps its volume's
// serial number and its files' numbers, so where the system names the
// volumes they must be the same one too.
bool SameFile(HANDLE source, const BY_HANDLE_FILE_INFORMATION& source_info,
              const std::wstring& wide_dest) {
  if (source_info.nFileIndexHigh == 0 && source_info.nFileIndexLow == 0) {
    return false;  // a file system that numbers no files
  }
  Handle dest(CreateFileW(wide_dest.c_str(), FILE_READ_ATTRIBUTES, kShareAll,
                          nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                          nullptr));
  BY_HANDLE_FILE_INFORMATION dest_info;
  if (!dest.valid() || !GetFileInformationByHandle(dest.get(), &dest_info) ||
      dest_info.dwVolumeSerialNumber != source_info.dwVolumeSerialNumber ||
      dest_info.nFileIndexHigh != source_info.nFileIndexHigh ||
      dest_info.nFileIndexLow != source_info.nFileIndexLow) {
    return false;
  }
  const std::wstring source_volume = VolumeOfHandle(source);
  const std::wstring dest_volume = VolumeOfHandle(dest.get());
  return source_volume.empty() || dest_volume.empty() ||
         source_volume == dest_volume;
}

// Opens the source as a regular file that is not dest itself (a final link
// not followed); 0 with *in open, or the error number.
int OpenCopySource(const std::string& source, const std::string& dest,
                   Handle* in, BY_HANDLE_FILE_INFORMATION* source_info) {
  std::wstring wide_source;
  std::wstring wide_dest;
  if (HasNul(source) || HasNul(dest) || !LongPath(source, &wide_source) ||
      !LongPath(dest, &wide_dest)) {
    return EINVAL;
  }
  const DWORD flags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_FLAG_BACKUP_SEMANTICS;
  in->Reset(CreateFileW(wide_source.c_str(), GENERIC_READ, kShareAll, nullptr,
                        OPEN_EXISTING, flags | FILE_FLAG_OPEN_REPARSE_POINT,
                        nullptr));
  if (!in->valid()) return LastErrno();
  if (!GetFileInformationByHandle(in->get(), source_info)) return LastErrno();
  if ((source_info->dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    const DWORD tag = ReparseTagOfHandle(in->get());
    if (IsLink(source_info->dwFileAttributes, tag)) return ELOOP;
    // A reparse point that holds the file's own data (deduplicated, in the
    // cloud) is read through the file system, not as its reparse data.
    in->Reset(CreateFileW(wide_source.c_str(), GENERIC_READ, kShareAll, nullptr,
                          OPEN_EXISTING, flags, nullptr));
    if (!in->valid()) return LastErrno();
    if (!GetFileInformationByHandle(in->get(), source_info)) {
      return LastErrno();
    }
  }
  if ((source_info->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return EISDIR;
  }
  if (SameFile(in->get(), *source_info, wide_dest)) return EINVAL;
  return 0;
}

// Renames with MOVEFILE_WRITE_THROUGH, so that the new name is on the disk
// when it returns: Windows has no flush for a folder's entries.
int MoveWide(const std::string& from, const std::string& to) {
  std::wstring wide_from;
  std::wstring wide_to;
  if (HasNul(from) || HasNul(to) || !LongPath(from, &wide_from) ||
      !LongPath(to, &wide_to)) {
    return EINVAL;
  }
  // rename() replaces a read-only file: so does this.
  return IgnoringReadOnly(wide_to, [&] {
    return MoveFileExW(wide_from.c_str(), wide_to.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
  });
}

}  // namespace

int StageCopy(const std::string& source, const std::string& dest,
              std::string* temp, const CopyProgress& progress,
              Durability durability) {
  temp->clear();
  Handle in;
  BY_HANDLE_FILE_INFORMATION source_info;
  const int error_number = OpenCopySource(source, dest, &in, &source_info);
  if (error_number != 0) return error_number;
  return CopyToTemp(in.get(), source_info, dest, progress, durability, temp);
}

void ReadAhead(const std::string& path, std::int64_t bytes) {
  // Windows has no hint to read a file ahead short of reading it, which
  // would hold the caller up: the copy reads as it would have.
  (void)path;
  (void)bytes;
}

int PlaceStagedCopy(const std::string& temp, const std::string& dest) {
  return MoveWide(temp, dest);
}

int FlushFolder(const std::string& folder) {
  // Every rename here is written through (MOVEFILE_WRITE_THROUGH), and
  // Windows offers no flush of a folder's entries: only whether the folder
  // is there is left to tell.
  std::wstring wide;
  if (HasNul(folder) || !LongPath(folder, &wide)) return EINVAL;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!AttributeData(wide, &data)) return LastErrno();
  return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? 0 : ENOTDIR;
}

int FlushFileSystem(const std::string& path) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!AttributeData(wide, &data)) return LastErrno();
  // The volume is flushed where Windows lets it be: that needs
  // administrator rights. Without them the copies are on the disk all the
  // same, each flushed through its own handle before its rename (StageCopy
  // and CopyFileReplacing) and renamed with MOVEFILE_WRITE_THROUGH; only
  // deletions may then reach the disk a little later.
  wchar_t mount[MAX_PATH + 1];
  wchar_t volume[MAX_PATH + 1];
  if (!GetVolumePathNameW(wide.c_str(), mount, MAX_PATH) ||
      !GetVolumeNameForVolumeMountPointW(mount, volume, MAX_PATH)) {
    return 0;
  }
  std::wstring device = volume;
  if (!device.empty() && device.back() == L'\\') device.pop_back();
  Handle handle(CreateFileW(device.c_str(), GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, 0, nullptr));
  if (!handle.valid()) return 0;
  return FlushFileBuffers(handle.get()) ? 0 : LastErrno();
}

std::uint64_t FileSystemId(const std::string& path) {
  std::wstring wide;
  BY_HANDLE_FILE_INFORMATION info;
  if (HasNul(path) || !LongPath(path, &wide) || !FileIdOf(wide, &info)) {
    return 0;
  }
  // The volume's serial number; + 1 so that none is 0.
  return std::uint64_t{info.dwVolumeSerialNumber} + 1;
}

int CopyFileReplacing(const std::string& source, const std::string& dest,
                      const CopyProgress& progress,
                      const ReplaceCheck& may_replace) {
  Handle in;
  BY_HANDLE_FILE_INFORMATION source_info;
  int error_number = OpenCopySource(source, dest, &in, &source_info);
  if (error_number != 0) return error_number;
  std::string temp;
  error_number = CopyToTemp(in.get(), source_info, dest, progress,
                            Durability::kFlushData, &temp);
  in.Close();
  if (error_number != 0) return error_number;
  if (may_replace && !may_replace()) {
    error_number = kDestinationChanged;
  } else {
    error_number = PlaceStagedCopy(temp, dest);
  }
  if (error_number != 0) {
    RemoveTemp(temp);
    return error_number;
  }
  return FlushFolder(FolderOf(dest));
}

int ClearReadOnly(const std::string& path) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  DWORD attributes = 0;
  if (LiftReadOnly(wide, &attributes)) return 0;
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastErrno();
  return (attributes & FILE_ATTRIBUTE_READONLY) == 0 ? 0 : LastErrno();
}

int ClearArchiveAttribute(const std::string& path) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  const DWORD attributes = GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastErrno();
  if ((attributes & FILE_ATTRIBUTE_ARCHIVE) == 0) return 0;
  const DWORD rest =
      attributes & kSettableAttributes & ~DWORD{FILE_ATTRIBUTE_ARCHIVE};
  return SetFileAttributesW(wide.c_str(),
                            rest != 0 ? rest : FILE_ATTRIBUTE_NORMAL)
             ? 0
             : LastErrno();
}

int DeleteFile(const std::string& path) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  return DeleteWide(wide);
}

int RenameFile(const std::string& from, const std::string& to) {
  return MoveWide(from, to);
}

int LinkFile(const std::string& existing, const std::string& new_name) {
  std::wstring wide_existing;
  std::wstring wide_new;
  if (HasNul(existing) || HasNul(new_name) ||
      !LongPath(existing, &wide_existing) || !LongPath(new_name, &wide_new)) {
    return EINVAL;
  }
  // FAT and other volumes without such names say ERROR_INVALID_FUNCTION or
  // ERROR_NOT_SUPPORTED, both ENOTSUP.
  return CreateHardLinkW(wide_new.c_str(), wide_existing.c_str(), nullptr)
             ? 0
             : LastErrno();
}

int RemoveFolder(const std::string& path) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  return RemoveDirectoryWide(wide);
}

namespace {

// Removes what the folder holds, depth first; the first error, or 0. A link
// (a junction, a symbolic link) is removed as a name, never entered.
int RemoveContents(const std::wstring& folder) {
  WIN32_FIND_DATAW found;
  FindHandle find(FindFirstFileExW(
      JoinWide(folder, L"*").c_str(), FindExInfoBasic, &found,
      FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
  if (!find.valid()) {
    const DWORD code = GetLastError();
    return code == ERROR_FILE_NOT_FOUND ? 0 : ErrnoFromWin32(code);
  }
  int first_error = 0;
  const auto note = [&first_error](int error_number) {
    if (first_error == 0) first_error = error_number;
  };
  do {
    const std::wstring name = found.cFileName;
    if (name == L"." || name == L"..") continue;
    const std::wstring child = JoinWide(folder, name);
    const DWORD attributes = found.dwFileAttributes;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      const int error_number = DeleteWide(child);
      if (error_number != 0) note(error_number);
      continue;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
      const int error_number = RemoveContents(child);
      if (error_number != 0) note(error_number);
    }
    const int error_number = RemoveDirectoryWide(child);
    if (error_number != 0) note(error_number);
  } while (FindNextFileW(find.get(), &found));
  const DWORD code = GetLastError();
  if (code != ERROR_NO_MORE_FILES) note(ErrnoFromWin32(code));
  return first_error;
}

}  // namespace

int RemoveTree(const std::string& path) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!AttributeData(wide, &data)) return LastErrno();
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return ENOTDIR;
  // A link is never followed, here no more than below.
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    return ELOOP;
  }
  const int error_number = RemoveContents(wide);
  const int removed = RemoveDirectoryWide(wide);
  return error_number != 0 ? error_number : removed;
}

namespace {

// The permission bits Windows' C runtime shows for its attributes: all may
// read, and write unless the item is read-only; folders may be searched.
int ModeOf(DWORD attributes) {
  int mode = (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) mode |= 0111;
  return mode;
}

}  // namespace

bool GetFileIdentity(const std::string& path, FileIdentity* identity) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return false;
  Handle handle(CreateFileW(
      wide.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION info;
  if (!handle.valid() || !GetFileInformationByHandle(handle.get(), &info) ||
      (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ||
      IsLink(info.dwFileAttributes, ReparseTagOfHandle(handle.get()))) {
    return false;
  }
  identity->size = SizeOf(info.nFileSizeHigh, info.nFileSizeLow);
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  PosixFromFileTime(info.ftLastWriteTime, &seconds, &nanoseconds);
  identity->modified_ns = seconds * 1000000000 + nanoseconds;
  identity->inode =
      (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow;
  identity->mode = ModeOf(info.dwFileAttributes);
  return true;
}

int FileMode(const std::string& path) {
  std::wstring wide;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (HasNul(path) || !LongPath(path, &wide) || !AttributeData(wide, &data)) {
    return -1;
  }
  return ModeOf(data.dwFileAttributes);
}

int SetFileMode(const std::string& path, int mode) {
  // Of the bits, Windows holds one: whether the owner may write.
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return EINVAL;
  const DWORD attributes = GetFileAttributesW(wide.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return LastErrno();
  DWORD wanted = attributes & kSettableAttributes;
  if ((mode & 0200) != 0) {
    wanted &= ~DWORD{FILE_ATTRIBUTE_READONLY};
  } else {
    wanted |= FILE_ATTRIBUTE_READONLY;
  }
  if (wanted == (attributes & kSettableAttributes)) return 0;
  return SetFileAttributesW(wide.c_str(),
                            wanted != 0 ? wanted : FILE_ATTRIBUTE_NORMAL)
             ? 0
             : LastErrno();
}

bool SetCreationTime(const std::string& path, double create_date,
                     double modify_date) {
  std::wstring wide;
  if (HasNul(path) || !LongPath(path, &wide)) return false;
  FILETIME created;
  FILETIME modified;
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  bool set_created = false;
  bool set_modified = false;
  if (create_date > 0) {
    DateToFileTime(create_date, &seconds, &nanoseconds);
    set_created = FileTimeFromPosix(seconds, nanoseconds, &created);
  }
  if (modify_date > 0) {
    DateToFileTime(modify_date, &seconds, &nanoseconds);
    set_modified = FileTimeFromPosix(seconds, nanoseconds, &modified);
  }
  // Writing the dates needs no right to write the bytes, so a read-only
  // file takes them too.
  Handle handle(CreateFileW(
      wide.c_str(), FILE_WRITE_ATTRIBUTES | FILE_READ_ATTRIBUTES, kShareAll,
      nullptr, OPEN_EXISTING,
      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION info;
  if (!handle.valid() || !GetFileInformationByHandle(handle.get(), &info) ||
      (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return false;
  }
  if (!set_created && !set_modified) return true;
  return SetFileTime(handle.get(), set_created ? &created : nullptr, nullptr,
                     set_modified ? &modified : nullptr) != 0;
}

int OpenWithDesktop(const std::string& file_name) {
  std::wstring wide;
  int code = 2;  // the shell's "file not found"
  if (!HasNul(file_name) && Widen(file_name, &wide)) {
    for (wchar_t& c : wide) {
      if (c == L'/') c = L'\\';
    }
    code = static_cast<int>(reinterpret_cast<INT_PTR>(ShellExecuteW(
        nullptr, L"open", wide.c_str(), nullptr, nullptr, SW_SHOWNORMAL)));
  }
  return code;
}

std::FILE* OpenFile(const std::string& path, const char* mode) {
  std::wstring wide_path;
  std::wstring wide_mode;
  if (!LongPath(path, &wide_path) || !Widen(mode, &wide_mode)) {
    errno = EINVAL;
    return nullptr;
  }
  return _wfopen(wide_path.c_str(), wide_mode.c_str());
}

}  // namespace pairwell
