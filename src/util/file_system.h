// The file-system routines every other layer goes through. The rest of the
// program sees files in one model: attribute bits, local dates as day
// counts, sizes capped at 31 bits.
#ifndef PAIRWELL_UTIL_FILE_SYSTEM_H_
#define PAIRWELL_UTIL_FILE_SYSTEM_H_

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace pairwell {

// Attribute bits. Read-only is set when the owner may not write; hidden for
// names that start with "."; system and archive are never set here. On
// Windows all four are the file system's own (the same bit values).
constexpr std::uint16_t kAttrReadOnly = 1;
constexpr std::uint16_t kAttrHidden = 2;
constexpr std::uint16_t kAttrSystem = 4;
constexpr std::uint16_t kAttrDirectory = 16;
constexpr std::uint16_t kAttrArchive = 32;

// The size recorded for a file of 2 GiB or more.
constexpr std::int32_t kSizeCap = 134217727;

// One row of a folder listing.
struct FolderEntry {
  std::string name;
  std::int32_t size = 0;   // bytes; kSizeCap when it needs over 31 bits
  double modify_date = 0;  // local day count
  double create_date = 0;  // birth time where known, else modify_date
  std::uint16_t attributes = 0;
  std::uint64_t inode = 0;  // the file's serial number on its device
};

// An entry a listing left out (symbolic links, sockets, fifos, devices, and
// entries that vanished or could not be examined), with why.
struct LeftOutEntry {
  std::string path;
  std::string name;  // the last component, as the folder holds it
  std::string reason;
  // The entry could not be examined (not just a kind that is never synced):
  // what it holds is unknown.
  bool error = false;
  double modify_date = 0;  // local day count; 0 when it could not be read
};

// Opens the file as std::fopen does, the path taken as UTF-8 on every
// system (Windows' fopen would read it in the local code page). Null on
// failure, with errno set.
std::FILE* OpenFile(const std::string& path, const char* mode);

// Paths reach the system as C strings, where a NUL byte would end them
// early: "/a/b\0/c" would name "/a/b". Every routine here refuses such a
// path (EINVAL, or false).
bool HasNul(const std::string& path);

// True when the path names a folder (a link to a folder counts).
bool FolderExists(const std::string& path);

// Creates the folder and its missing parents below the nearest existing
// parent. True when the folder exists afterwards. Nothing is created when no
// parent exists, when the search meets a doubled slash (the root of a
// "//server/share" path) or a drive "X:"; a failed creation ends at once
// with false (levels made before it stay).
bool MakeDirectory(const std::string& path);
// MakeDirectory with the reason: 0 when the folder exists afterwards, else
// the system error number (ENOENT when no parent may be used).
int MakeDirectoryError(const std::string& path);

// Looks the path up as "path/*" and fills the entry from the first match:
// for a folder that is its own "." entry (its dates and attributes); an
// ordinary file or a missing path is not found (false).
bool GetFileInfo(const std::string& path, FolderEntry* entry);

// Looks the path itself up, without following a final symbolic link: true
// and the entry filled (named by the path's last component) for a file or a
// folder; false for anything else or when it is missing.
bool GetItemInfo(const std::string& path, FolderEntry* entry);

// The full size of the regular file at the path (a final symbolic link not
// followed), which a listing caps at kSizeCap; -1 when there is no such file.
std::int64_t FileSize(const std::string& path);

// Appends one row per file and folder of the folder ("." and ".." left out)
// to *entries, with one pass of the directory and one stat per entry
// relative to it. Symbolic links and special files are not followed or
// listed; they go to *left_out (when given) with the reason. Returns 0, or
// the system error number when the folder cannot be read (a missing folder
// appends nothing).
int ListFolder(const std::string& folder, std::vector<FolderEntry>* entries,
               std::vector<LeftOutEntry>* left_out = nullptr);

// The name prefix of the temporary file a copy is written to. A scan leaves
// such files out: they are what an interrupted copy left behind.
constexpr char kPartialCopyPrefix[] = ".pairwell-partial-";

// Called between chunks of a copy with the bytes copied so far and the
// source's size; returning false stops the copy.
using CopyProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

// Called when the copy is complete, just before it replaces the
// destination; returning false leaves the destination as it is.
using ReplaceCheck = std::function<bool()>;

// What CopyFileReplacing returns when the ReplaceCheck said no (not a
// system error number).
constexpr int kDestinationChanged = -1;

// How a copy's bytes are sent to the disk as they are written.
enum class Durability {
  // Left to the system: they reach the disk some time later.
  kLeftToSystem,
  // Handed to the disk chunk by chunk without waiting; a FlushFileSystem
  // afterwards waits for them.
  kStartWriteback,
  // On the disk before the copy is closed (fdatasync).
  kFlushData,
};

// Copies the file's bytes, permission bits and modification time over the
// destination (created or replaced). The bytes go to a temporary file in the
// destination's folder, reach the disk, and only then is the temporary file
// renamed over the destination, whose folder is flushed after it: a failed
// or interrupted copy, or a power cut at any moment, leaves the old
// destination whole or the new one; on failure the temporary file is
// removed. Copying a file onto itself fails with EINVAL. The bytes move in
// chunks of at most 8 MiB, each sized to take no more than about 50 ms, and
// progress (when given) is called after every chunk, so that a caller on a
// UI thread regains control often; total is the source's size when opened.
// When progress returns false the copy stops at once, the destination stays
// as it was (or absent) and the result is ECANCELED. When may_replace (if
// given) returns false once the bytes are written, the temporary file is
// removed and the result is kDestinationChanged. Returns 0, or the system
// error number.
int CopyFileReplacing(const std::string& source, const std::string& dest,
                      const CopyProgress& progress = CopyProgress(),
                      const ReplaceCheck& may_replace = ReplaceCheck());

// The first half of a copy, for callers that flush many copies at once:
// writes the source's bytes, permission bits and modification time into a
// new temporary file in dest's folder (named with kPartialCopyPrefix) and
// leaves dest as it is. progress as for CopyFileReplacing. Returns 0 with
// the temporary file's path in *temp, or the system error number with
// nothing left behind (*temp empty). Safe to call from several threads.
int StageCopy(const std::string& source, const std::string& dest,
              std::string* temp, const CopyProgress& progress = CopyProgress(),
              Durability durability = Durability::kStartWriteback);

// Asks the system to start reading the file's first `bytes` into memory and
// returns without waiting for them, so that a copy of it made soon after
// finds them there. Does nothing when the file cannot be opened.
void ReadAhead(const std::string& path, std::int64_t bytes);

// The second half: renames the staged copy over dest. Its bytes must be on
// the disk first (FlushFileSystem), and its folder flushed afterwards for
// the new name to be. Returns 0, or the system error number (temp stays).
int PlaceStagedCopy(const std::string& temp, const std::string& dest);

// Writes what the file system holding path keeps in memory (data, names,
// folders) to the disk and waits for it. Returns 0, or the system error
// number (a write that failed since the last flush counts).
int FlushFileSystem(const std::string& path);

// Makes the folder's entries (created, renamed, deleted names) durable.
// Returns 0, or the system error number.
int FlushFolder(const std::string& folder);

// A number that is the same for two paths on one file system and differs
// for two on different ones; 0 when the path cannot be examined.
std::uint64_t FileSystemId(const std::string& path);

// Clears the read-only attribute (gives the owner write permission).
// Returns 0, or the system error number.
int ClearReadOnly(const std::string& path);

// Clears the archive attribute, which Windows sets on every change of a
// file for backup programs to see. POSIX keeps none: nothing to do there.
// Returns 0, or the system error number.
int ClearArchiveAttribute(const std::string& path);

// Deletes the file. Returns 0, or the system error number.
int DeleteFile(const std::string& path);

// The folder at the top of a synced folder where runs keep the copies they
// replaced or deleted, and their journals. A listing never shows a folder of
// this name, at any depth: it holds no one's files to sync, and a set whose
// folder lies inside another set's sees the other's the same way.
constexpr char kKeepFolderName[] = ".pairwell";

// Renames the file or folder, replacing a file of the new name. Returns 0,
// or the system error number (EXDEV between two file systems).
int RenameFile(const std::string& from, const std::string& to);

// Gives the file a second name, which must be free. Returns 0, or the
// system error number (EXDEV between two file systems; EPERM or ENOTSUP
// where the file system has no such names, as FAT).
int LinkFile(const std::string& existing, const std::string& new_name);

// Removes the folder when it is empty. Returns 0, or the system error
// number (ENOTEMPTY while it holds anything).
int RemoveFolder(const std::string& path);

// Removes the folder and everything below it, never following a link (a
// link is removed as a name). Returns 0, or the first error met; what could
// be removed is gone.
int RemoveTree(const std::string& path);

// What tells a file from another put at the same name later: its full
// size, modification time, serial number and permission bits.
struct FileIdentity {
  std::int64_t size = 0;
  std::int64_t modified_ns = 0;  // POSIX time in nanoseconds
  std::uint64_t inode = 0;
  int mode = 0;  // permission bits
};

// Looks up the regular file at the path (a final link not followed); false
// when there is none.
bool GetFileIdentity(const std::string& path, FileIdentity* identity);

// The permission bits (07777) of the file or folder, a final link not
// followed; -1 when it cannot be examined.
int FileMode(const std::string& path);

// Sets the permission bits. Returns 0, or the system error number.
int SetFileMode(const std::string& path, int mode);

// Sets the file's dates. POSIX keeps no settable creation time, so only the
// modify date is set, when it is above 0; then false when the file cannot be
// opened for writing. With only a creation date nothing is set and the
// result tells whether the file exists. Windows sets the creation date too,
// when it is above 0.
bool SetCreationTime(const std::string& path, double create_date,
                     double modify_date = 0);

// Opens the file (a help page) with the desktop's opener, xdg-open. Returns
// a number above 32 on success; otherwise shows "ExecuteFile : ShellExecute
// returned error code" and the code (1..32), and returns it.
int ExecuteFile(const std::string& file_name);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_FILE_SYSTEM_H_
