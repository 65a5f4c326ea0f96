// What the file system gives only on Windows: real attributes, creation
// dates, names it cannot hold, files another program holds open, and
// paths longer than MAX_PATH.
#include <windows.h>
// The program's own DeleteFile, not the system's macro.
#undef DeleteFile

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "support/temp_dir.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/system.h"

namespace pairwell {
namespace {

std::wstring Wide(const std::string& text) {
  const int n = MultiByteToWideChar(CP_UTF8, 0, text.data(),
                                    static_cast<int>(text.size()), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(n), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                      wide.data(), n);
  return wide;
}

// The path as the system takes any name and length: "\\?\C:\...".
std::wstring Literal(const std::string& path) {
  std::wstring wide = Wide(path);
  std::replace(wide.begin(), wide.end(), L'/', L'\\');
  return L"\\\\?\\" + wide;
}

FILETIME FileTimeOfSeconds(std::int64_t unix_seconds) {
  const ULONGLONG ticks =
      static_cast<ULONGLONG>(unix_seconds + 11644473600LL) * 10000000ULL;
  FILETIME t;
  t.dwLowDateTime = static_cast<DWORD>(ticks);
  t.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return t;
}

// The creation date the file system itself reports, as a local date.
double DateOnDisk(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(Wide(path).c_str(), GetFileExInfoStandard,
                            &data)) {
    return -1;
  }
  const ULONGLONG ticks =
      (ULONGLONG{data.ftCreationTime.dwHighDateTime} << 32) |
      data.ftCreationTime.dwLowDateTime;
  return FileTimeToDate(
      static_cast<std::int64_t>(ticks / 10000000ULL) - 11644473600LL,
      static_cast<long>(ticks % 10000000ULL) * 100);
}

// Whether the file's creation time reads back as it was set: Wine on a
// POSIX file system, for one, keeps none.
bool KeepsCreationTimes(const std::string& path, const FILETIME& set) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  return GetFileAttributesExW(Wide(path).c_str(), GetFileExInfoStandard,
                              &data) &&
         CompareFileTime(&data.ftCreationTime, &set) == 0;
}

class WindowsFileSystemTest : public ::testing::Test {
 protected:
  std::vector<FolderEntry> List(const std::string& folder = "") {
    std::vector<FolderEntry> entries;
    left_out_.clear();
    EXPECT_EQ(
        ListFolder(folder.empty() ? dir_.path() : folder, &entries, &left_out_),
        0);
    return entries;
  }
  const FolderEntry* Find(const std::vector<FolderEntry>& entries,
                          const std::string& name) {
    for (const FolderEntry& e : entries) {
      if (e.name == name) return &e;
    }
    return nullptr;
  }
  bool LeftOut(const std::string& name) {
    return std::any_of(left_out_.begin(), left_out_.end(),
                       [&](const LeftOutEntry& e) { return e.name == name; });
  }

  TempDir dir_;
  std::vector<LeftOutEntry> left_out_;
};

// The four attribute bits the program keeps, as the file system has them.
std::uint16_t AttributesOnDisk(const std::string& path) {
  const DWORD a = GetFileAttributesW(Wide(path).c_str());
  return static_cast<std::uint16_t>(
      a & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
           FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE));
}

TEST_F(WindowsFileSystemTest, AttributesComeFromTheFileSystem) {
  dir_.WriteFile("plain.txt", "p");
  dir_.WriteFile("marked.txt", "m");
  dir_.WriteFile(".dotted", "d");
  ASSERT_TRUE(
      SetFileAttributesW(Wide(dir_.Join("marked.txt")).c_str(),
                         FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                             FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE));
  ASSERT_TRUE(SetFileAttributesW(Wide(dir_.Join("plain.txt")).c_str(),
                                 FILE_ATTRIBUTE_NORMAL));
  const std::vector<FolderEntry> entries = List();
  ASSERT_NE(Find(entries, "marked.txt"), nullptr);
  EXPECT_EQ(Find(entries, "marked.txt")->attributes,
            kAttrReadOnly | kAttrHidden | kAttrSystem | kAttrArchive);
  // Whatever the file system says of the others (Wine, say, keeps the
  // archive bit and hides names that start with a dot), the listing says.
  for (const char* name : {"plain.txt", ".dotted"}) {
    ASSERT_NE(Find(entries, name), nullptr) << name;
    EXPECT_EQ(Find(entries, name)->attributes,
              AttributesOnDisk(dir_.Join(name)))
        << name;
    EXPECT_EQ(Find(entries, name)->attributes & kAttrReadOnly, 0) << name;
  }
  ASSERT_TRUE(SetFileAttributesW(Wide(dir_.Join("marked.txt")).c_str(),
                                 FILE_ATTRIBUTE_NORMAL));
}

TEST_F(WindowsFileSystemTest, ClearReadOnlyClearsTheAttribute) {
  dir_.WriteFile("r.txt", "r");
  const std::wstring path = Wide(dir_.Join("r.txt"));
  ASSERT_TRUE(SetFileAttributesW(
      path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE));
  EXPECT_EQ(ClearReadOnly(dir_.Join("r.txt")), 0);
  EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
  EXPECT_NE(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_ARCHIVE, 0u);
}

TEST_F(WindowsFileSystemTest, CreationDateComesFromTheFileSystem) {
  dir_.WriteFile("c.txt", "c");
  // 2020-01-02 03:04:05 UTC, and a modification a day later.
  const std::int64_t created_s = 1577934245;
  const std::int64_t modified_s = created_s + 86400;
  HANDLE h =
      CreateFileW(Wide(dir_.Join("c.txt")).c_str(), FILE_WRITE_ATTRIBUTES,
                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                  FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(h, INVALID_HANDLE_VALUE);
  const FILETIME created = FileTimeOfSeconds(created_s);
  const FILETIME modified = FileTimeOfSeconds(modified_s);
  ASSERT_TRUE(SetFileTime(h, &created, nullptr, &modified));
  CloseHandle(h);

  const std::vector<FolderEntry> entries = List();
  const FolderEntry* c = Find(entries, "c.txt");
  ASSERT_NE(c, nullptr);
  EXPECT_NEAR(c->modify_date, FileTimeToDate(modified_s, 0), 1e-6);
  // Whatever the file system keeps, the listing says the same.
  EXPECT_NEAR(c->create_date, DateOnDisk(dir_.Join("c.txt")), 1e-6);
  if (KeepsCreationTimes(dir_.Join("c.txt"), created)) {
    EXPECT_NEAR(c->modify_date - c->create_date, 1.0, 1e-6);
  }
}

TEST_F(WindowsFileSystemTest, SetCreationTimeSetsBothDates) {
  dir_.WriteFile("s.txt", "s");
  const double modify = FileTimeToDate(1600000000, 0);
  const double create = modify - 10;
  ASSERT_TRUE(SetCreationTime(dir_.Join("s.txt"), create, modify));

  const std::vector<FolderEntry> entries = List();
  const FolderEntry* s = Find(entries, "s.txt");
  ASSERT_NE(s, nullptr);
  EXPECT_NEAR(s->modify_date, modify, 2.31e-5);
  EXPECT_NEAR(s->create_date, DateOnDisk(dir_.Join("s.txt")), 1e-6);
  if (KeepsCreationTimes(dir_.Join("s.txt"),
                         FileTimeOfSeconds(1600000000 - 10 * 86400))) {
    EXPECT_NEAR(s->create_date, create, 2.31e-5);
  }
}

TEST_F(WindowsFileSystemTest, ReadOnlyNamesAreReplacedAndRemovedAsOnPosix) {
  dir_.WriteFile("new.txt", "new");
  dir_.WriteFile("old.txt", "old");
  ASSERT_TRUE(SetFileAttributesW(Wide(dir_.Join("old.txt")).c_str(),
                                 FILE_ATTRIBUTE_READONLY));
  const std::wstring folder = Wide(dir_.Join("folder"));
  ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
  ASSERT_TRUE(SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_READONLY));

  EXPECT_EQ(RenameFile(dir_.Join("new.txt"), dir_.Join("old.txt")), 0);
  EXPECT_EQ(RemoveFolder(dir_.Join("folder")), 0);

  EXPECT_EQ(dir_.ReadFile("old.txt"), "new");
  EXPECT_FALSE(dir_.Exists("new.txt"));
  EXPECT_FALSE(dir_.Exists("folder"));
}

TEST_F(WindowsFileSystemTest, ClearingTheArchiveBitKeepsTheOthers) {
  dir_.WriteFile("only.txt", "o");
  dir_.WriteFile("more.txt", "m");
  ASSERT_TRUE(SetFileAttributesW(Wide(dir_.Join("only.txt")).c_str(),
                                 FILE_ATTRIBUTE_ARCHIVE));
  ASSERT_TRUE(SetFileAttributesW(
      Wide(dir_.Join("more.txt")).c_str(),
      FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));

  // Wine marks every file for archiving, whatever was set.
  dir_.WriteFile("probe.txt", "p");
  ASSERT_TRUE(SetFileAttributesW(Wide(dir_.Join("probe.txt")).c_str(),
                                 FILE_ATTRIBUTE_HIDDEN));
  const bool clearable =
      (AttributesOnDisk(dir_.Join("probe.txt")) & FILE_ATTRIBUTE_ARCHIVE) == 0;

  EXPECT_EQ(ClearArchiveAttribute(dir_.Join("only.txt")), 0);
  EXPECT_EQ(ClearArchiveAttribute(dir_.Join("more.txt")), 0);

  const DWORD others = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY;
  EXPECT_EQ(AttributesOnDisk(dir_.Join("more.txt")) & ~FILE_ATTRIBUTE_ARCHIVE,
            others);
  if (clearable) {
    EXPECT_EQ(AttributesOnDisk(dir_.Join("only.txt")), 0);
    EXPECT_EQ(AttributesOnDisk(dir_.Join("more.txt")), others);
  }
}

// A drive's root holds folders of Windows' own, hidden and marked as the
// system's; a folder of the same name without those marks is the
// person's.
TEST_F(WindowsFileSystemTest, FoldersWindowsKeepsAreLeftOutAndSaid) {
  const DWORD marks = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  for (const char* name : {"System Volume Information", "$RECYCLE.BIN"}) {
    const std::wstring folder = Wide(dir_.Join(name));
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    ASSERT_TRUE(SetFileAttributesW(folder.c_str(), marks));
  }
  ASSERT_TRUE(CreateDirectoryW(Wide(dir_.Join("$Recycle.Bin.mine")).c_str(),
                               nullptr));
  const std::vector<FolderEntry> entries = List();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, "$Recycle.Bin.mine");
  ASSERT_EQ(left_out_.size(), 2u);
  for (const LeftOutEntry& e : left_out_) {
    EXPECT_EQ(e.reason, "a folder Windows keeps for itself");
    EXPECT_FALSE(e.error);
  }
}

// Device names (CON, aux.txt) cannot even be made from inside Wine, where
// they open the device: tests/windows/cli_test.sh makes them from outside.
TEST_F(WindowsFileSystemTest, NamesWindowsCannotHoldAreLeftOutAndSaid) {
  dir_.WriteFile("ok.txt", "ok");
  int made = 0;
  for (const char* name : {"trailing.", "trailing "}) {
    HANDLE h = CreateFileW(Literal(dir_.Join(name)).c_str(), GENERIC_WRITE, 0,
                           nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) continue;
    CloseHandle(h);
    ++made;
  }
  if (made == 0) GTEST_SKIP() << "this file system refuses such names";
  const std::vector<FolderEntry> entries = List();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, "ok.txt");
  EXPECT_EQ(left_out_.size(), static_cast<std::size_t>(made));
  for (const LeftOutEntry& e : left_out_) EXPECT_FALSE(e.reason.empty());
  // Only a literal name reaches them again; the temporary folder's own
  // clean-up would not.
  for (const char* name : {"trailing.", "trailing "}) {
    DeleteFileW(Literal(dir_.Join(name)).c_str());
  }
}

TEST_F(WindowsFileSystemTest, AFileHeldOpenGivesAnErrorNotAHang) {
  dir_.WriteFile("held.txt", "held");
  dir_.WriteFile("old.txt", "old");
  // Another program holds it open and shares it with nobody.
  HANDLE h = CreateFileW(Wide(dir_.Join("held.txt")).c_str(),
                         GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(h, INVALID_HANDLE_VALUE);
  const int copied =
      CopyFileReplacing(dir_.Join("held.txt"), dir_.Join("old.txt"));
  const int deleted = DeleteFile(dir_.Join("held.txt"));
  CloseHandle(h);
  EXPECT_NE(copied, 0);
  EXPECT_FALSE(ErrorText(copied).empty());
  EXPECT_NE(deleted, 0);
  // The destination stays whole, and nothing half-made is left.
  EXPECT_EQ(dir_.ReadFile("old.txt"), "old");
  std::vector<FolderEntry> entries = List();
  EXPECT_EQ(entries.size(), 2u);
}

// A symbolic link is never followed: the scan leaves it out and says what
// it is. Making one needs a privilege or developer mode; without either the
// test has nothing to look at.
TEST_F(WindowsFileSystemTest, SymbolicLinksAreLeftOutAndSaid) {
  ASSERT_TRUE(CreateDirectoryW(Wide(dir_.Join("target")).c_str(), nullptr));
  dir_.WriteFile("target/inside.txt", "x");
  dir_.WriteFile("file.txt", "x");
  const DWORD unprivileged = 0x2;  // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
  const bool file_link = CreateSymbolicLinkW(
      Wide(dir_.Join("file-link")).c_str(), Wide(dir_.Join("file.txt")).c_str(),
      unprivileged);
  const bool folder_link = CreateSymbolicLinkW(
      Wide(dir_.Join("folder-link")).c_str(), Wide(dir_.Join("target")).c_str(),
      SYMBOLIC_LINK_FLAG_DIRECTORY | unprivileged);
  // Wine 8 says yes and makes nothing.
  const auto made = [&](const char* name) {
    const DWORD a = GetFileAttributesW(Wide(dir_.Join(name)).c_str());
    return a != INVALID_FILE_ATTRIBUTES &&
           (a & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  };
  if (!file_link || !folder_link || !made("file-link") ||
      !made("folder-link")) {
    GTEST_SKIP() << "symbolic links cannot be made here";
  }
  const std::vector<FolderEntry> entries = List();
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_NE(Find(entries, "file.txt"), nullptr);
  EXPECT_NE(Find(entries, "target"), nullptr);
  EXPECT_TRUE(LeftOut("file-link"));
  EXPECT_TRUE(LeftOut("folder-link"));
  for (const LeftOutEntry& e : left_out_) {
    EXPECT_NE(e.reason.find("symbolic link"), std::string::npos) << e.reason;
  }
}

TEST_F(WindowsFileSystemTest, PathsLongerThanMaxPathWork) {
  std::string folder = dir_.path();
  while (folder.size() < 300) folder += "/a-folder-with-a-long-name";
  ASSERT_TRUE(MakeDirectory(folder));
  ASSERT_TRUE(FolderExists(folder));
  dir_.WriteFile("short.txt", "deep copy");
  ASSERT_EQ(CopyFileReplacing(dir_.Join("short.txt"), folder + "/deep.txt"), 0);
  const std::vector<FolderEntry> entries = List(folder);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, "deep.txt");
  EXPECT_EQ(entries[0].size, 9);
  EXPECT_EQ(DeleteFile(folder + "/deep.txt"), 0);
}

TEST_F(WindowsFileSystemTest, BackslashesAndDriveLettersAreFolders) {
  dir_.WriteFile("b.txt", "b");
  std::string backslashed = dir_.path();
  std::replace(backslashed.begin(), backslashed.end(), '/', '\\');
  EXPECT_TRUE(FolderExists(backslashed));
  EXPECT_TRUE(FolderExists(backslashed + "\\"));
  const std::vector<FolderEntry> entries = List(backslashed);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, "b.txt");
  ASSERT_GE(backslashed.size(), 3u);
  EXPECT_TRUE(FolderExists(backslashed.substr(0, 3)));  // "C:\"
}

TEST_F(WindowsFileSystemTest, NamesInOtherScriptsRoundTrip) {
  const std::string name =
      "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"
      " \xE2\x82\xAC \xF0\x9F\x98\x80.txt";  // Привет € 😀
  ASSERT_EQ(MakeDirectoryError(dir_.Join("sub")), 0);
  dir_.WriteFile("src.txt", "x");
  ASSERT_EQ(CopyFileReplacing(dir_.Join("src.txt"), dir_.Join("sub/" + name)),
            0);
  const std::vector<FolderEntry> entries = List(dir_.Join("sub"));
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, name);
}

}  // namespace
}  // namespace pairwell
