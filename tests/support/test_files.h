// What tests need from the system beside the program's own file routines,
// the same on POSIX and Windows: file times, the read-only state and mode,
// sizes, folders, links, environment variables and the local time of a
// moment. Paths are UTF-8; on
// Windows "/" and "\" both separate.
//
// Windows keeps times to 100 ns and of the permission bits only whether the
// file may be written; KeptNanoseconds and KeptMode give what a value set
// there reads back as, so that one expectation holds on both.
#ifndef PAIRWELL_TESTS_SUPPORT_TEST_FILES_H_
#define PAIRWELL_TESTS_SUPPORT_TEST_FILES_H_

#include <cstdint>
#include <ctime>
#include <string>

namespace pairwell {

// Sets the file's (or folder's) modification time, leaving its access time;
// a final symbolic link is followed. True on success.
bool SetModifyTime(const std::string& path, std::int64_t seconds,
                   long nanoseconds = 0);

// Reads the modification time (a final link followed); false when the path
// cannot be examined.
bool GetModifyTime(const std::string& path, std::int64_t* seconds,
                   long* nanoseconds);

// The nanoseconds a time set with these reads back as: all of them on
// POSIX, whole 100 ns on Windows.
long KeptNanoseconds(long nanoseconds);

// The permission bits (07777) of the file or folder, a final link followed;
// on Windows 0444 when it is read-only, else 0666. -1 when it cannot be
// examined.
int ModeOf(const std::string& path);

// Sets the permission bits; on Windows the file becomes read-only exactly
// when the owner's write bit (0200) is clear. True on success.
bool SetMode(const std::string& path, int mode);

// The bits ModeOf reads after SetMode(path, mode).
int KeptMode(int mode);

// Whether the owner may not write the file (the read-only attribute on
// Windows).
bool IsReadOnly(const std::string& path);

// Makes the file read-only, or gives the owner write permission again.
bool SetReadOnly(const std::string& path, bool read_only);

#ifdef _WIN32
// The file system's own attribute bits of the path, those the program's
// model holds (read-only, hidden, system, folder, archive: the same values
// there); 0 when it cannot be examined.
std::uint16_t FileAttributesOf(const std::string& path);
#endif

// Creates one folder (mode 0755 on POSIX); its parent must exist.
bool CreateFolder(const std::string& path);

// Whether a folder stands at the path (a final link followed).
bool IsFolder(const std::string& path);

// Removes the file (or the link itself). True on success.
bool RemoveFile(const std::string& path);

// The file's size (a final link followed); -1 when it cannot be examined.
std::int64_t SizeOf(const std::string& path);

// Sets the file's size, extending it with zeros (a hole where the file
// system has them) or cutting it short. True on success.
bool SetSize(const std::string& path, std::int64_t size);

// Writes the bytes into the existing file at the offset, leaving the rest.
bool WriteAt(const std::string& path, std::int64_t offset,
             const std::string& bytes);

// Gives the file a second name (a hard link). True on success.
bool MakeHardLink(const std::string& existing, const std::string& new_name);

// How many names the file has; 0 when it cannot be examined.
int LinkCount(const std::string& path);

// Sets or removes a variable of the process's environment.
void SetEnvironmentValue(const std::string& name, const std::string& value);
void UnsetEnvironmentValue(const std::string& name);

// The moment in the local zone (as TZ names it); false when it cannot be
// given.
bool LocalTimeOf(std::time_t seconds, std::tm* local);

// How many seconds the local zone is ahead of UTC at the moment; 0 when it
// cannot be told.
std::int64_t UtcOffsetAt(std::int64_t seconds);

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_TEST_FILES_H_
