#include "util/file_system.h"

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/immutable_guard.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/date_time.h"
#include "util/system.h"

namespace pairwell {
namespace {

class FileSystemTest : public ::testing::Test {
 protected:
  // The rows ListFolder appended, sorted by name.
  std::vector<FolderEntry> Listed() const {
    std::vector<FolderEntry> rows = entries_;
    std::sort(rows.begin(), rows.end(),
              [](const FolderEntry& a, const FolderEntry& b) {
                return a.name < b.name;
              });
    return rows;
  }

  void SetModifyTime(const std::string& path, std::int64_t seconds,
                     long nanos) {
    ASSERT_TRUE(pairwell::SetModifyTime(path, seconds, nanos)) << path;
  }

  RecordingUserInterface ui_;
  TempDir dir_;
  std::vector<FolderEntry> entries_;
};

TEST_F(FileSystemTest, FolderExistsOnlyForFolders) {
  dir_.WriteFile("file", "x");
  EXPECT_TRUE(FolderExists(dir_.path()));
  EXPECT_FALSE(FolderExists(dir_.Join("file")));
  EXPECT_FALSE(FolderExists(dir_.Join("missing")));
  EXPECT_FALSE(FolderExists(""));
}

TEST_F(FileSystemTest, MakeDirectoryCreatesThreeMissingLevels) {
  const std::string deep = dir_.Join("a/b/c");
  EXPECT_TRUE(MakeDirectory(deep));
  EXPECT_TRUE(FolderExists(dir_.Join("a")));
  EXPECT_TRUE(FolderExists(dir_.Join("a/b")));
  EXPECT_TRUE(FolderExists(deep));
  // An existing folder is success at once.
  EXPECT_TRUE(MakeDirectory(deep));
}

TEST_F(FileSystemTest, MakeDirectoryAcceptsTrailingSlashAndBackslashes) {
  EXPECT_TRUE(MakeDirectory(dir_.Join("x/y/")));
  EXPECT_TRUE(FolderExists(dir_.Join("x/y")));
  // "\" counts as a slash when the parent is searched for.
  EXPECT_TRUE(MakeDirectory(dir_.Join("p\\q")));
  EXPECT_TRUE(FolderExists(dir_.Join("p\\q")));
}

TEST_F(FileSystemTest, MakeDirectoryRefusesWithoutAnExistingParent) {
  // The root itself is never taken as the parent to create under.
  EXPECT_FALSE(MakeDirectory("/pairwell-no-such-root-folder/a/b"));
  EXPECT_FALSE(FolderExists("/pairwell-no-such-root-folder"));
  // A relative path whose first level is missing has no parent.
  EXPECT_FALSE(MakeDirectory("pairwell-no-such-relative-folder"));
}

TEST_F(FileSystemTest, MakeDirectoryNeverCreatesAShareRoot) {
  // The search stops at the doubled slash before it reaches the folder.
  EXPECT_FALSE(MakeDirectory("//pairwell-server/share/x"));
  const std::string doubled = dir_.path() + "//new";
  EXPECT_FALSE(MakeDirectory(doubled));
  EXPECT_FALSE(dir_.Exists("new"));
}

TEST_F(FileSystemTest, MakeDirectoryStopsAtADriveButNotAtOtherColons) {
  EXPECT_FALSE(MakeDirectory("Q:"));
  EXPECT_FALSE(MakeDirectory("Q:/pairwell/x"));
#ifndef _WIN32
  // Windows names cannot hold a ":".
  EXPECT_TRUE(MakeDirectory(dir_.Join("backup:2026/new")));
  EXPECT_TRUE(FolderExists(dir_.Join("backup:2026/new")));
#endif
}

TEST_F(FileSystemTest, MakeDirectoryReportsFailureUnderReadOnlyParent) {
  ASSERT_TRUE(MakeDirectory(dir_.Join("locked")));
  ImmutableGuard guard(dir_.Join("locked"));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  EXPECT_FALSE(MakeDirectory(dir_.Join("locked/a/b")));
  EXPECT_FALSE(FolderExists(dir_.Join("locked/a")));
}

TEST_F(FileSystemTest, MakeDirectoryFailsWhereAFileStands) {
  dir_.WriteFile("file", "x");
  EXPECT_FALSE(MakeDirectory(dir_.Join("file/sub")));
  EXPECT_FALSE(MakeDirectory(dir_.Join("file")));
}

TEST_F(FileSystemTest, GetFileInfoFindsFoldersAsTheirDotEntryOnly) {
  dir_.WriteFile("file.txt", "x");
  ASSERT_TRUE(MakeDirectory(dir_.Join("sub")));
  SetModifyTime(dir_.Join("sub"), 1700000000, 0);
  FolderEntry entry;
  EXPECT_FALSE(GetFileInfo(dir_.Join("file.txt"), &entry));
  EXPECT_FALSE(GetFileInfo(dir_.Join("missing"), &entry));
  ASSERT_TRUE(GetFileInfo(dir_.Join("sub"), &entry));
  EXPECT_EQ(entry.name, ".");
  EXPECT_EQ(entry.attributes & kAttrDirectory, kAttrDirectory);
  EXPECT_DOUBLE_EQ(entry.modify_date, FileTimeToDate(1700000000, 0));
}

TEST_F(FileSystemTest, ListFolderOnMissingFolderAppendsNothing) {
  entries_.push_back(FolderEntry{});
  EXPECT_EQ(ListFolder(dir_.Join("missing"), &entries_), ENOENT);
  EXPECT_EQ(entries_.size(), 1u);
}

TEST_F(FileSystemTest, ListFolderAppendsEveryFileAndFolderWithItsModel) {
  dir_.WriteFile(".hidden", "12345");
  dir_.WriteFile("plain.txt", "abc");
  dir_.WriteFile("readonly.txt", "r");
  ASSERT_TRUE(SetMode(dir_.Join("readonly.txt"), 0444));
  ASSERT_TRUE(MakeDirectory(dir_.Join("sub")));
  SetModifyTime(dir_.Join("plain.txt"), 1700000000, 123000000);
  entries_.push_back(FolderEntry{"earlier", 0, 0, 0, 0});

  EXPECT_EQ(ListFolder(dir_.path(), &entries_), 0);
  ASSERT_EQ(entries_.size(), 5u);
  EXPECT_EQ(entries_[0].name, "earlier");  // appended after
  const std::vector<FolderEntry> rows = Listed();
  EXPECT_EQ(rows[0].name, ".hidden");
#ifdef _WIN32
  // The attributes are the file system's own: a leading "." hides nothing,
  // and new files are marked for archiving.
  EXPECT_EQ(rows[0].attributes, FileAttributesOf(dir_.Join(".hidden")));
  EXPECT_EQ(rows[0].attributes & (kAttrReadOnly | kAttrDirectory), 0);
#else
  EXPECT_EQ(rows[0].attributes, kAttrHidden);
#endif
  EXPECT_EQ(rows[0].size, 5);
  EXPECT_EQ(rows[2].name, "plain.txt");
#ifdef _WIN32
  EXPECT_EQ(rows[2].attributes, FileAttributesOf(dir_.Join("plain.txt")));
  EXPECT_EQ(rows[2].attributes & ~kAttrArchive, 0);
#else
  EXPECT_EQ(rows[2].attributes, 0);
#endif
  EXPECT_EQ(rows[2].size, 3);
  EXPECT_DOUBLE_EQ(rows[2].modify_date, FileTimeToDate(1700000000, 123000000));
  EXPECT_GT(rows[2].create_date, 0);
  EXPECT_EQ(rows[3].name, "readonly.txt");
#ifdef _WIN32
  EXPECT_EQ(rows[3].attributes, FileAttributesOf(dir_.Join("readonly.txt")));
  EXPECT_EQ(rows[3].attributes & ~kAttrArchive, kAttrReadOnly);
#else
  EXPECT_EQ(rows[3].attributes, kAttrReadOnly);
#endif
  EXPECT_EQ(rows[4].name, "sub");
#ifdef _WIN32
  EXPECT_EQ(rows[4].attributes, FileAttributesOf(dir_.Join("sub")));
  EXPECT_EQ(rows[4].attributes & ~kAttrArchive, kAttrDirectory);
#else
  EXPECT_EQ(rows[4].attributes, kAttrDirectory);
#endif
}

TEST_F(FileSystemTest, FileOver2GiBIsRecordedWithTheSizeCap) {
  const std::string path = dir_.Join("big.bin");
  dir_.WriteFile("big.bin", "");
  // A sparse file takes no disk space.
  ASSERT_TRUE(SetSize(path, 3LL * 1024 * 1024 * 1024));
  dir_.WriteFile("edge.bin", "");
  ASSERT_TRUE(SetSize(dir_.Join("edge.bin"), 0x7FFFFFFFLL));
  ASSERT_EQ(ListFolder(dir_.path(), &entries_), 0);
  const std::vector<FolderEntry> rows = Listed();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].size, 134217727);
  EXPECT_EQ(rows[1].size, 0x7FFFFFFF);
}

TEST_F(FileSystemTest, FileSizeIsTheWholeSizePastTheCap) {
  const std::string path = dir_.Join("big.bin");
  dir_.WriteFile("big.bin", "");
  ASSERT_TRUE(SetSize(path, 3LL * 1024 * 1024 * 1024));
  dir_.WriteFile("small.txt", "12345");
  EXPECT_EQ(FileSize(path), 3LL * 1024 * 1024 * 1024);
  EXPECT_EQ(FileSize(dir_.Join("small.txt")), 5);
}

TEST_F(FileSystemTest, FileSizeIsMinusOneWhereNoRegularFileStands) {
  dir_.WriteFile("target.txt", "t");
#ifndef _WIN32
  // Symbolic links need a privilege on Windows.
  ASSERT_EQ(symlink(dir_.Join("target.txt").c_str(), dir_.Join("link").c_str()),
            0);
  EXPECT_EQ(FileSize(dir_.Join("link")), -1);
#endif
  EXPECT_EQ(FileSize(dir_.path()), -1);
  EXPECT_EQ(FileSize(dir_.Join("missing")), -1);
  // The NUL would end the path early, at the file.
  EXPECT_EQ(FileSize(dir_.Join("target.txt") + std::string(1, '\0') + "x"), -1);
}

TEST_F(FileSystemTest, LinksAndSpecialFilesAreLeftOutAndNamed) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: symbolic links and fifos";
#else
  dir_.WriteFile("target.txt", "t");
  ASSERT_EQ(
      symlink(dir_.Join("target.txt").c_str(), dir_.Join("link.txt").c_str()),
      0);
  ASSERT_EQ(symlink(dir_.path().c_str(), dir_.Join("dirlink").c_str()), 0);
  ASSERT_EQ(mkfifo(dir_.Join("pipe").c_str(), 0600), 0);
  std::vector<LeftOutEntry> left_out;
  ASSERT_EQ(ListFolder(dir_.path(), &entries_, &left_out), 0);
  ASSERT_EQ(entries_.size(), 1u);
  EXPECT_EQ(entries_[0].name, "target.txt");
  std::sort(left_out.begin(), left_out.end(),
            [](const LeftOutEntry& a, const LeftOutEntry& b) {
              return a.path < b.path;
            });
  ASSERT_EQ(left_out.size(), 3u);
  EXPECT_EQ(left_out[0].path, dir_.Join("dirlink"));
  EXPECT_EQ(left_out[0].reason, "symbolic link, not followed");
  EXPECT_EQ(left_out[1].path, dir_.Join("link.txt"));
  EXPECT_EQ(left_out[2].path, dir_.Join("pipe"));
  EXPECT_EQ(left_out[2].reason, "fifo, not copied");
#endif
}

TEST_F(FileSystemTest, BackslashNamesAndUnfinishedCopiesAreLeftOut) {
#ifndef _WIN32
  // On Windows "\\" separates, so no name holds one.
  dir_.WriteFile("a\\b.txt", "x");
#endif
  dir_.WriteFile(".pairwell-partial-Ab12Cd", "half");
  dir_.WriteFile("kept.txt", "k");
  std::vector<LeftOutEntry> left_out;
  ASSERT_EQ(ListFolder(dir_.path(), &entries_, &left_out), 0);
  ASSERT_EQ(entries_.size(), 1u);
  EXPECT_EQ(entries_[0].name, "kept.txt");
  std::sort(left_out.begin(), left_out.end(),
            [](const LeftOutEntry& a, const LeftOutEntry& b) {
              return a.path < b.path;
            });
#ifdef _WIN32
  ASSERT_EQ(left_out.size(), 1u);
#else
  ASSERT_EQ(left_out.size(), 2u);
#endif
  EXPECT_EQ(left_out[0].path, dir_.Join(".pairwell-partial-Ab12Cd"));
  EXPECT_EQ(left_out[0].reason, "unfinished copy of an interrupted run");
#ifndef _WIN32
  EXPECT_EQ(left_out[1].path, dir_.path() + "/a\\b.txt");
  EXPECT_EQ(left_out[1].reason,
            "its name holds a \"\\\", read as a folder separator");
#endif
}

TEST_F(FileSystemTest, ListFolderOfAFileIsAnError) {
  dir_.WriteFile("file", "x");
  EXPECT_EQ(ListFolder(dir_.Join("file"), &entries_), ENOTDIR);
  EXPECT_TRUE(entries_.empty());
}

TEST_F(FileSystemTest, UnreadableFolderIsAnErrorEvenForRoot) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: permission bits and other users";
#else
  ASSERT_TRUE(MakeDirectory(dir_.Join("closed")));
  ASSERT_EQ(chmod(dir_.Join("closed").c_str(), 0), 0);
  if (geteuid() == 0) {
    // Root reads it anyway; check the same path as an ordinary user.
    const std::string command =
        "runuser -u nobody -- ls '" + dir_.Join("closed") + "' >/dev/null 2>&1";
    if (std::system("runuser -u nobody -- true 2>/dev/null") != 0) {
      GTEST_SKIP() << "no unprivileged user to test with";
    }
    EXPECT_NE(std::system(command.c_str()), 0);
  } else {
    EXPECT_EQ(ListFolder(dir_.Join("closed"), &entries_), EACCES);
  }
  chmod(dir_.Join("closed").c_str(), 0755);
#endif
}

TEST_F(FileSystemTest, SetCreationTimeSetsTheModifyDate) {
  dir_.WriteFile("f", "x");
  DateParts when;
  when.year = 2025;
  when.month = 7;
  when.day = 14;
  when.hour = 9;
  when.minute = 30;
  when.second = 15;
  when.millisecond = 250;
  const double date = DateFromParts(when);
  EXPECT_TRUE(SetCreationTime(dir_.Join("f"), date, date));
  ASSERT_EQ(ListFolder(dir_.path(), &entries_), 0);
  ASSERT_EQ(entries_.size(), 1u);
  EXPECT_NEAR(entries_[0].modify_date, date, 1e-9);
  // Only a creation date: nothing POSIX can hold is set, so it is reported
  // as done when the file is there, read-only or not.
  ASSERT_TRUE(SetMode(dir_.Join("f"), 0444));
  EXPECT_TRUE(SetCreationTime(dir_.Join("f"), date + 1));
  EXPECT_FALSE(SetCreationTime(dir_.Join("missing"), date + 1));
}

TEST_F(FileSystemTest, SetCreationTimeFailsWhenTheFileCannotBeOpened) {
  EXPECT_FALSE(SetCreationTime(dir_.Join("missing"), 45000, 45000));
  ASSERT_TRUE(MakeDirectory(dir_.Join("folder")));
  EXPECT_FALSE(SetCreationTime(dir_.Join("folder"), 45000, 45000));
#ifndef _WIN32
  // Windows has no immutable file to try.
  dir_.WriteFile("locked", "x");
  ImmutableGuard guard(dir_.Join("locked"));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";
  EXPECT_FALSE(SetCreationTime(dir_.Join("locked"), 45000, 45000));
#endif
}

TEST_F(FileSystemTest, DeleteFileReportsTheError) {
  dir_.WriteFile("f", "x");
  EXPECT_EQ(DeleteFile(dir_.Join("f")), 0);
  EXPECT_FALSE(dir_.Exists("f"));
  EXPECT_EQ(DeleteFile(dir_.Join("f")), ENOENT);
}

#ifdef _WIN32
// ExecuteFile asks the shell to open the file as its type says: a command
// script runs, and the shell's own codes tell what failed.
class ExecuteFileTest : public FileSystemTest {
 protected:
  // The shell starts the script and returns at once: its mark is awaited
  // until it holds something.
  std::string AwaitMark(const std::string& name) const {
    std::string mark;
    for (int i = 0; i < 200 && mark.empty(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      if (dir_.Exists(name)) mark = dir_.ReadFile(name);
    }
    while (!mark.empty() && (mark.back() == '\n' || mark.back() == '\r')) {
      mark.pop_back();
    }
    return mark;
  }
};

TEST_F(ExecuteFileTest, SuccessShowsNothing) {
  std::string mark = dir_.Join("opened");
  std::replace(mark.begin(), mark.end(), '/', '\\');
  dir_.WriteFile("open.cmd", "@echo opened> \"" + mark + "\"\r\n");
  EXPECT_GT(ExecuteFile(dir_.Join("open.cmd")), 32);
  EXPECT_EQ(AwaitMark("opened"), "opened");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ExecuteFileTest, OpenerFailureIsReportedWithItsCode) {
  EXPECT_EQ(ExecuteFile(dir_.Join("missing.html")), 2);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "ExecuteFile : ShellExecute returned error code2");
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
}

TEST_F(ExecuteFileTest, MissingOpenerIsReported) {
  dir_.WriteFile("notes.pairwell-unknown", "x");
  EXPECT_EQ(ExecuteFile(dir_.Join("notes.pairwell-unknown")), 31);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "ExecuteFile : ShellExecute returned error code31");
}
#else
// ExecuteFile runs whatever "xdg-open" the PATH finds; the tests put a
// stand-in first.
class ExecuteFileTest : public FileSystemTest {
 protected:
  ExecuteFileTest() : old_path_(EnvironmentValue("PATH")) {
    SetEnvironmentValue("PATH", dir_.path());
  }
  ~ExecuteFileTest() override { SetEnvironmentValue("PATH", old_path_); }

  void InstallOpener(int exit_code) {
    // The PATH holds only the test folder, so the script uses builtins.
    dir_.WriteFile("xdg-open", "#!/bin/sh\necho \"$1\" > '" +
                                   dir_.Join("opened") + "'\nexit " +
                                   std::to_string(exit_code) + "\n");
    SetMode(dir_.Join("xdg-open"), 0755);
  }

  std::string old_path_;
};

TEST_F(ExecuteFileTest, SuccessShowsNothing) {
  InstallOpener(0);
  EXPECT_GT(ExecuteFile("readme.html"), 32);
  EXPECT_EQ(dir_.ReadFile("opened"), "readme.html\n");
  EXPECT_TRUE(ui_.messages.empty());
}

TEST_F(ExecuteFileTest, OpenerFailureIsReportedWithItsCode) {
  InstallOpener(2);
  EXPECT_EQ(ExecuteFile("missing.html"), 2);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "ExecuteFile : ShellExecute returned error code2");
  EXPECT_EQ(ui_.messages[0].caption, "Pairwell");
}

TEST_F(ExecuteFileTest, MissingOpenerIsReported) {
  EXPECT_EQ(ExecuteFile("readme.html"), 31);
  ASSERT_EQ(ui_.messages.size(), 1u);
  EXPECT_EQ(ui_.messages[0].text,
            "ExecuteFile : ShellExecute returned error code31");
}
#endif

TEST(ErrorTextTest, SystemTextOrTheUnknownReason) {
#ifdef _WIN32
  // The Windows texts, which Wine words otherwise than Windows does.
  for (int error_number : {ENOENT, EACCES}) {
    EXPECT_FALSE(ErrorText(error_number).empty());
    EXPECT_NE(ErrorText(error_number),
              "The reason for the failure is unknown.");
  }
  EXPECT_NE(ErrorText(ENOENT), ErrorText(EACCES));
#else
  EXPECT_EQ(ErrorText(ENOENT), "No such file or directory");
  EXPECT_EQ(ErrorText(EACCES), "Permission denied");
#endif
  EXPECT_EQ(ErrorText(0), "The reason for the failure is unknown.");
  EXPECT_EQ(ErrorText(99999), "The reason for the failure is unknown.");
}

TEST(BrowseForFolderTest, AsksTheInstalledInterface) {
  RecordingUserInterface ui;
  ui.folder_answer = "/home/ann/Docs";
  EXPECT_EQ(BrowseForFolder("Choose a folder"), "/home/ann/Docs");
  ui.folder_answer = "";
  EXPECT_EQ(BrowseForFolder("Again"), "");
  EXPECT_EQ(ui.browse_prompts,
            (std::vector<std::string>{"Choose a folder", "Again"}));
}

}  // namespace
}  // namespace pairwell
