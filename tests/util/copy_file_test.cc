// The file-system steps a run performs, on real files: copying a file over
// another (at once, or staged and placed later), flushing to the disk,
// clearing the read-only attribute and creating folders with the reason of
// a failure.
#include <errno.h>
#include <gtest/gtest.h>
#ifndef _WIN32
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/disk_files.h"
#include "support/immutable_guard.h"
#include "support/temp_dir.h"
#include "support/test_files.h"
#include "util/file_system.h"

namespace pairwell {
namespace {

constexpr std::int64_t kOldTime = 1600000000;  // 2020-09-13
constexpr std::int64_t kNewTime = 1700000000;  // 2023-11-14

// The nanoseconds of the file's modification time.
long NanosecondsOf(const std::string& path) {
  std::int64_t seconds = 0;
  long nanoseconds = 0;
  EXPECT_TRUE(GetModifyTime(path, &seconds, &nanoseconds)) << path;
  return nanoseconds;
}

// Bytes that repeat only every 251 positions, so that a shifted or
// truncated block shows.
std::string Pattern(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>((i * 7 + i / 251) % 251);
  }
  return bytes;
}

#ifndef _WIN32
// Lowers the largest file the process may write, so that writing a copy
// fails half-way with EFBIG (root is bound by it too). SIGXFSZ is ignored
// while the limit holds.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved_);
    old_handler_ = signal(SIGXFSZ, SIG_IGN);
    struct rlimit limit = saved_;
    limit.rlim_cur = bytes;
    active_ = setrlimit(RLIMIT_FSIZE, &limit) == 0;
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &saved_);
    signal(SIGXFSZ, old_handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  bool active() const { return active_; }

 private:
  struct rlimit saved_;
  void (*old_handler_)(int) = SIG_DFL;
  bool active_ = false;
};
#endif

class CopyFileTest : public ::testing::Test {
 protected:
  TempDir tmp_;
};

// --- StageCopy, PlaceStagedCopy and the flushes --------------------------------

TEST_F(CopyFileTest, StagedCopyLeavesTheDestinationUntilItIsPlaced) {
  const std::string source = tmp_.Join("source.txt");
  const std::string dest = tmp_.Join("copy.txt");
  Put(source, Pattern(300000), kNewTime, 0, 0640);
  Put(dest, "the old version", kOldTime);
  std::string temp;

  ASSERT_EQ(StageCopy(source, dest, &temp), 0);

  EXPECT_EQ(Read(dest), "the old version");
  EXPECT_EQ(temp.rfind(tmp_.Join(kPartialCopyPrefix), 0), 0u) << temp;
  EXPECT_EQ(StateOf(temp), StateOf(source));
  ASSERT_EQ(PlaceStagedCopy(temp, dest), 0);
  EXPECT_EQ(StateOf(dest), StateOf(source));
  EXPECT_EQ(ModeOf(dest), KeptMode(0640));
  EXPECT_EQ(Entries(tmp_.path()),
            (std::vector<std::string>{"copy.txt", "source.txt"}));
}

TEST_F(CopyFileTest, StagedCopyThatFailsOrIsStoppedLeavesNothing) {
  const std::string dest = tmp_.Join("copy.txt");
  std::string temp = "stale";
  EXPECT_EQ(StageCopy(tmp_.Join("missing.txt"), dest, &temp), ENOENT);
  EXPECT_TRUE(temp.empty());

  const std::string source = tmp_.Join("big.bin");
  Put(source, Pattern(std::size_t{4} << 20), kNewTime);
  const CopyProgress stop = [](std::int64_t, std::int64_t) { return false; };
  EXPECT_EQ(StageCopy(source, dest, &temp, stop), ECANCELED);
  EXPECT_TRUE(temp.empty());
  EXPECT_EQ(Entries(tmp_.path()), (std::vector<std::string>{"big.bin"}));
}

TEST_F(CopyFileTest, FlushesReachFoldersAndLinksToThem) {
  MakeFolder(tmp_.Join("real"));
#ifndef _WIN32
  // Symbolic links need a privilege on Windows.
  ASSERT_EQ(symlink(tmp_.Join("real").c_str(), tmp_.Join("link").c_str()), 0);

  EXPECT_EQ(FlushFileSystem(tmp_.Join("link")), 0);
#endif
  EXPECT_EQ(FlushFileSystem(tmp_.Join("real")), 0);
#ifndef _WIN32
  EXPECT_EQ(FlushFolder(tmp_.Join("link")), 0);
#else
  EXPECT_EQ(FlushFolder(tmp_.Join("real")), 0);
#endif
  EXPECT_EQ(FlushFileSystem(tmp_.Join("missing")), ENOENT);
  EXPECT_EQ(FlushFolder(tmp_.Join("missing")), ENOENT);
}

TEST_F(CopyFileTest, FileSystemIdTellsFileSystemsApart) {
  MakeFolder(tmp_.Join("a"));
  const std::uint64_t here = FileSystemId(tmp_.Join("a"));
  EXPECT_NE(here, 0u);
  EXPECT_EQ(FileSystemId(tmp_.path()), here);
  EXPECT_EQ(FileSystemId(tmp_.Join("missing")), 0u);
  // /proc is a file system of its own wherever it is mounted.
  if (FileSystemId("/proc/self") != 0) {
    EXPECT_NE(FileSystemId("/proc/self"), here);
  }
}

// --- CopyFileReplacing ------------------------------------------------------

TEST_F(CopyFileTest, NewCopyKeepsBytesModificationTimeAndMode) {
  const std::string source = tmp_.Join("source.txt");
  const std::string dest = tmp_.Join("copy.txt");
  Put(source, std::string("some bytes\0with a zero\n", 23), kNewTime, 123456789,
      0751);

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  EXPECT_EQ(StateOf(dest), StateOf(source));
  EXPECT_EQ(StateOf(dest).nanoseconds, KeptNanoseconds(123456789));
  EXPECT_EQ(ModeOf(dest), KeptMode(0751));
  EXPECT_EQ(Entries(tmp_.path()),
            (std::vector<std::string>{"copy.txt", "source.txt"}));
}

TEST_F(CopyFileTest, ModeIsTakenExactlyWhateverTheProcessUmask) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: the process umask";
#else
  const std::string source = tmp_.Join("source.txt");
  const std::string dest = tmp_.Join("copy.txt");
  Put(source, "x", kNewTime, 0, 0666);
  const mode_t saved = umask(077);

  const int result = CopyFileReplacing(source, dest);
  umask(saved);

  ASSERT_EQ(result, 0);
  EXPECT_EQ(ModeOf(dest), 0666);
#endif
}

TEST_F(CopyFileTest, ReplacesAnExistingFileWhole) {
  const std::string source = tmp_.Join("source.txt");
  const std::string dest = tmp_.Join("dest.txt");
  Put(source, "short", kNewTime, 5, 0640);
  Put(dest, "a much longer old destination", kOldTime, 0, 0600);

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  EXPECT_EQ(StateOf(dest), StateOf(source));
  EXPECT_EQ(Read(dest), "short");
  EXPECT_TRUE(PartialFiles(tmp_.path()).empty());
}

TEST_F(CopyFileTest, ReplacesARenamedNewFileSoOtherLinksKeepTheOldBytes) {
  const std::string source = tmp_.Join("source.txt");
  const std::string dest = tmp_.Join("dest.txt");
  const std::string other_link = tmp_.Join("link.txt");
  Put(source, "new bytes", kNewTime);
  Put(dest, "old bytes", kOldTime);
  ASSERT_TRUE(MakeHardLink(dest, other_link));

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  EXPECT_EQ(Read(dest), "new bytes");
  EXPECT_EQ(Read(other_link), "old bytes");
}

TEST_F(CopyFileTest, ReadOnlySourceGivesAReadOnlyCopyOverAReadOnlyFile) {
  const std::string source = tmp_.Join("source.txt");
  const std::string dest = tmp_.Join("dest.txt");
  Put(source, "locked new", kNewTime, 0, 0444);
  Put(dest, "locked old", kOldTime, 0, 0444);

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  EXPECT_EQ(StateOf(dest), StateOf(source));
}

TEST_F(CopyFileTest, EmptySourceGivesAnEmptyCopy) {
  const std::string source = tmp_.Join("empty");
  const std::string dest = tmp_.Join("dest");
  Put(source, "", kNewTime, 1);
  Put(dest, "not empty", kOldTime);

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  EXPECT_EQ(StateOf(dest), StateOf(source));
}

TEST_F(CopyFileTest, IntoAMissingFolderFailsWithENOENTAndLeavesNothing) {
  const std::string source = tmp_.Join("source.txt");
  Put(source, "bytes", kNewTime);

  EXPECT_EQ(CopyFileReplacing(source, tmp_.Join("missing/dest.txt")), ENOENT);

  EXPECT_FALSE(Exists(tmp_.Join("missing")));
  EXPECT_EQ(Entries(tmp_.path()), std::vector<std::string>{"source.txt"});
}

TEST_F(CopyFileTest, MissingSourceFailsWithENOENTAndKeepsTheDestination) {
  const std::string dest = tmp_.Join("dest.txt");
  Put(dest, "kept", kOldTime, 9);
  const FileState before = StateOf(dest);

  EXPECT_EQ(CopyFileReplacing(tmp_.Join("gone.txt"), dest), ENOENT);

  EXPECT_EQ(StateOf(dest), before);
  EXPECT_EQ(Entries(tmp_.path()), std::vector<std::string>{"dest.txt"});
}

TEST_F(CopyFileTest, OntoItselfFailsWithEINVALAndKeepsTheFile) {
  const std::string path = tmp_.Join("self.txt");
  Put(path, "precious", kNewTime, 77, 0640);
  const FileState before = StateOf(path);

  EXPECT_EQ(CopyFileReplacing(path, path), EINVAL);

  EXPECT_EQ(StateOf(path), before);
  EXPECT_EQ(Entries(tmp_.path()), std::vector<std::string>{"self.txt"});
}

TEST_F(CopyFileTest, OntoAnotherNameOfTheSameFileFailsWithEINVAL) {
  const std::string path = tmp_.Join("self.txt");
  const std::string hard_link = tmp_.Join("other-name.txt");
  Put(path, "precious", kNewTime, 77);
  ASSERT_TRUE(MakeHardLink(path, hard_link));
  ASSERT_TRUE(CreateFolder(tmp_.Join("real")));
#ifndef _WIN32
  // Symbolic links need a privilege on Windows.
  ASSERT_EQ(symlink(tmp_.path().c_str(), tmp_.Join("real/alias").c_str()), 0);
#endif
  const FileState before = StateOf(path);

  EXPECT_EQ(CopyFileReplacing(path, hard_link), EINVAL);
#ifndef _WIN32
  EXPECT_EQ(CopyFileReplacing(path, tmp_.Join("real/alias/self.txt")), EINVAL);
#endif

  EXPECT_EQ(StateOf(path), before);
  EXPECT_EQ(LinkCount(path), 2);
  EXPECT_TRUE(PartialFiles(tmp_.path()).empty());
}

TEST_F(CopyFileTest, FolderAsSourceFailsWithEISDIR) {
  ASSERT_TRUE(CreateFolder(tmp_.Join("folder")));

  EXPECT_EQ(CopyFileReplacing(tmp_.Join("folder"), tmp_.Join("dest")), EISDIR);

  EXPECT_FALSE(Exists(tmp_.Join("dest")));
  EXPECT_TRUE(PartialFiles(tmp_.path()).empty());
}

TEST_F(CopyFileTest, FolderAsDestinationFailsAndRemovesTheTemporaryFile) {
  const std::string source = tmp_.Join("source.txt");
  Put(source, "bytes", kNewTime);
  ASSERT_TRUE(CreateFolder(tmp_.Join("folder")));

  EXPECT_NE(CopyFileReplacing(source, tmp_.Join("folder")), 0);

  EXPECT_TRUE(Entries(tmp_.Join("folder")).empty());
  EXPECT_EQ(Entries(tmp_.path()),
            (std::vector<std::string>{"folder", "source.txt"}));
}

TEST_F(CopyFileTest, ImmutableDestinationFolderFailsWithItsError) {
  const std::string source = tmp_.Join("source.txt");
  ASSERT_TRUE(CreateFolder(tmp_.Join("locked")));
  const std::string dest = tmp_.Join("locked/dest.txt");
  Put(source, "new", kNewTime);
  Put(dest, "old destination", kOldTime, 3);
  const FileState before = StateOf(dest);
  ImmutableGuard guard(tmp_.Join("locked"));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";

  EXPECT_EQ(CopyFileReplacing(source, dest), guard.error_number());

  EXPECT_EQ(StateOf(dest), before);
  EXPECT_EQ(Entries(tmp_.Join("locked")), std::vector<std::string>{"dest.txt"});
}

TEST_F(CopyFileTest, CopyFailingHalfWayLeavesTheOldDestinationAndNoTrace) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: a file size limit (setrlimit)";
#else
  const std::string source = tmp_.Join("big.bin");
  const std::string dest = tmp_.Join("dest.bin");
  Put(source, Pattern(4 << 20), kNewTime);
  Put(dest, "old destination", kOldTime, 5, 0600);
  const FileState before = StateOf(dest);
  int result = 0;
  {
    FileSizeLimit limit(1 << 20);
    if (!limit.active()) GTEST_SKIP() << "setrlimit refused";
    result = CopyFileReplacing(source, dest);
  }

  EXPECT_EQ(result, EFBIG);
  EXPECT_EQ(StateOf(dest), before);
  EXPECT_EQ(Entries(tmp_.path()),
            (std::vector<std::string>{"big.bin", "dest.bin"}));
#endif
}

TEST_F(CopyFileTest, LargeFileIsCopiedByteForByte) {
  const std::string source = tmp_.Join("large.bin");
  const std::string dest = tmp_.Join("copy.bin");
  const std::string bytes = Pattern((5 << 20) + 12345);
  Put(source, bytes, kNewTime, 500000000);
  Put(dest, "old", kOldTime);

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  EXPECT_EQ(SizeOf(dest), static_cast<std::int64_t>(bytes.size()));
  EXPECT_TRUE(Read(dest) == bytes) << "the copy's bytes differ";
  EXPECT_EQ(NanosecondsOf(dest), 500000000);
}

TEST_F(CopyFileTest, SparseFileIsCopiedWithItsHolesReadAsZeros) {
  const std::string source = tmp_.Join("sparse.bin");
  const std::string dest = tmp_.Join("copy.bin");
  const std::int64_t size = 6 << 20;
  Put(source, "", kNewTime);
  ASSERT_TRUE(SetSize(source, size));
  ASSERT_TRUE(WriteAt(source, 0, "head"));
  ASSERT_TRUE(WriteAt(source, 3 << 20, "middle"));
  ASSERT_TRUE(WriteAt(source, size - 4, "tail"));
  ASSERT_TRUE(SetModifyTime(source, kNewTime, 1));

  ASSERT_EQ(CopyFileReplacing(source, dest), 0);

  const std::string copied = Read(dest);
  ASSERT_EQ(copied.size(), static_cast<std::size_t>(size));
  EXPECT_TRUE(copied == Read(source)) << "the copy's bytes differ";
  EXPECT_EQ(copied.substr(0, 4), "head");
  EXPECT_EQ(copied.substr(3 << 20, 6), "middle");
  EXPECT_EQ(copied.substr(size - 4), "tail");
  EXPECT_EQ(copied[1 << 20], '\0');
  EXPECT_EQ(StateOf(dest).nanoseconds, KeptNanoseconds(1));
}

// --- CopyFileReplacing with progress ----------------------------------------

// Larger than two chunks of the biggest size a copy uses (8 MiB).
constexpr std::int64_t kSeveralChunks = std::int64_t{20} << 20;
constexpr std::int64_t kMaxChunkBytes = std::int64_t{8} << 20;

// One call of a progress callback.
struct ProgressCall {
  std::int64_t done;
  std::int64_t total;
};

// A file of the given size that is all hole but for a few marked bytes:
// quick to make, and a truncated or shifted copy shows.
void PutSparse(const std::string& path, std::int64_t size) {
  Put(path, "", kNewTime);
  ASSERT_TRUE(SetSize(path, size)) << path;
  ASSERT_TRUE(WriteAt(path, 0, "head"));
  ASSERT_TRUE(WriteAt(path, size / 2 + 1, "middle"));
  ASSERT_TRUE(WriteAt(path, size - 4, "tail"));
  ASSERT_TRUE(SetModifyTime(path, kNewTime, 3));
}

// Whether the two files hold the same bytes (read a block at a time: quicker
// than Read for files of several chunks).
bool SameBytes(const std::string& a, const std::string& b) {
  std::ifstream in_a(a, std::ios::binary);
  std::ifstream in_b(b, std::ios::binary);
  std::vector<char> block_a(1 << 20);
  std::vector<char> block_b(1 << 20);
  while (in_a && in_b) {
    in_a.read(block_a.data(), block_a.size());
    in_b.read(block_b.data(), block_b.size());
    if (in_a.gcount() != in_b.gcount() ||
        !std::equal(block_a.begin(), block_a.begin() + in_a.gcount(),
                    block_b.begin())) {
      return false;
    }
  }
  return in_a.eof() && in_b.eof();
}

// Checks that the calls report a copy of a file of size bytes chunk by
// chunk: done rises by at most one chunk each time and ends at the size.
void ExpectChunkedProgress(const std::vector<ProgressCall>& calls,
                           std::int64_t size) {
  ASSERT_GE(calls.size(), 3u) << "a copy of " << size << " bytes in chunks";
  std::int64_t previous = 0;
  for (const ProgressCall& call : calls) {
    EXPECT_GT(call.done, previous);
    EXPECT_LE(call.done - previous, kMaxChunkBytes);
    EXPECT_EQ(call.total, size);
    previous = call.done;
  }
  EXPECT_EQ(calls.back().done, size);
}

#ifndef _WIN32
// A file on a tmpfs (/dev/shm), removed when the object goes. The kernel
// does not copy between a tmpfs and another kind of file system, so a copy
// from it goes through read and write.
class TmpfsFile {
 public:
  TmpfsFile() {
    std::string path = "/dev/shm/pairwell-copy-test-XXXXXX";
    const int fd = mkstemp(&path[0]);
    if (fd < 0) return;
    close(fd);
    path_ = path;
  }
  ~TmpfsFile() {
    if (!path_.empty()) unlink(path_.c_str());
  }
  TmpfsFile(const TmpfsFile&) = delete;
  TmpfsFile& operator=(const TmpfsFile&) = delete;

  // "" when /dev/shm could not be used.
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};
#endif

TEST_F(CopyFileTest, ProgressRisesChunkByChunkToTheSourceSize) {
  const std::string source = tmp_.Join("large.bin");
  const std::string dest = tmp_.Join("copy.bin");
  PutSparse(source, kSeveralChunks + 4321);
  ASSERT_TRUE(SetMode(source, 0640));
  std::vector<ProgressCall> calls;

  ASSERT_EQ(CopyFileReplacing(source, dest,
                              [&](std::int64_t done, std::int64_t total) {
                                calls.push_back({done, total});
                                return true;
                              }),
            0);

  ExpectChunkedProgress(calls, kSeveralChunks + 4321);
  EXPECT_TRUE(SameBytes(dest, source)) << "the copy's bytes differ";
  EXPECT_EQ(NanosecondsOf(dest), KeptNanoseconds(3));
  EXPECT_EQ(ModeOf(dest), KeptMode(0640));
}

TEST_F(CopyFileTest, CopyByReadAndWriteReportsProgressChunkByChunkToo) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: a tmpfs beside the temporary folder";
#else
  TmpfsFile source;
  struct statfs shm_info = {};
  struct statfs tmp_info = {};
  if (source.path().empty() || statfs(source.path().c_str(), &shm_info) != 0 ||
      statfs(tmp_.path().c_str(), &tmp_info) != 0 ||
      shm_info.f_type == tmp_info.f_type) {
    GTEST_SKIP() << "no tmpfs beside a different temporary folder";
  }
  PutSparse(source.path(), kSeveralChunks);
  const std::string dest = tmp_.Join("copy.bin");
  std::vector<ProgressCall> calls;

  ASSERT_EQ(CopyFileReplacing(source.path(), dest,
                              [&](std::int64_t done, std::int64_t total) {
                                calls.push_back({done, total});
                                return true;
                              }),
            0);

  ExpectChunkedProgress(calls, kSeveralChunks);
  EXPECT_TRUE(SameBytes(dest, source.path())) << "the copy's bytes differ";
  EXPECT_EQ(NanosecondsOf(dest), 3);
#endif
}

TEST_F(CopyFileTest, EmptyFileCopiesWithProgressGivenAndNoChunkReported) {
  const std::string source = tmp_.Join("empty");
  const std::string dest = tmp_.Join("dest");
  Put(source, "", kNewTime, 11, 0600);
  Put(dest, "not empty", kOldTime);
  int calls = 0;

  ASSERT_EQ(CopyFileReplacing(source, dest,
                              [&](std::int64_t, std::int64_t) {
                                ++calls;
                                return true;
                              }),
            0);

  EXPECT_EQ(StateOf(dest), StateOf(source));
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(Entries(tmp_.path()), (std::vector<std::string>{"dest", "empty"}));
}

TEST_F(CopyFileTest, StopAfterTheFirstChunkKeepsTheOldDestinationAndNoTrace) {
  const std::string source = tmp_.Join("large.bin");
  const std::string dest = tmp_.Join("dest.bin");
  PutSparse(source, kSeveralChunks);
  Put(dest, "old destination", kOldTime, 123, 0604);
  const FileState before = StateOf(dest);
  std::vector<ProgressCall> calls;

  const int result = CopyFileReplacing(
      source, dest, [&](std::int64_t done, std::int64_t total) {
        calls.push_back({done, total});
        return false;
      });

  EXPECT_EQ(result, ECANCELED);
  ASSERT_EQ(calls.size(), 1u) << "called again after it said stop";
  EXPECT_LT(calls[0].done, kSeveralChunks);
  EXPECT_EQ(StateOf(dest), before);
  EXPECT_EQ(Entries(tmp_.path()),
            (std::vector<std::string>{"dest.bin", "large.bin"}));
}

TEST_F(CopyFileTest, StopAfterTheFirstChunkLeavesAnAbsentDestinationAbsent) {
  const std::string source = tmp_.Join("large.bin");
  const std::string dest = tmp_.Join("dest.bin");
  PutSparse(source, kSeveralChunks);
  int calls = 0;

  const int result =
      CopyFileReplacing(source, dest, [&](std::int64_t, std::int64_t) {
        ++calls;
        return false;
      });

  EXPECT_EQ(result, ECANCELED);
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(Exists(dest));
  EXPECT_TRUE(PartialFiles(tmp_.path()).empty());
  EXPECT_EQ(Entries(tmp_.path()), std::vector<std::string>{"large.bin"});
}

TEST_F(CopyFileTest, StopLaterInTheCopyEndsItThereAndIsNotAskedAgain) {
  const std::string source = tmp_.Join("large.bin");
  const std::string dest = tmp_.Join("dest.bin");
  PutSparse(source, kSeveralChunks);
  Put(dest, "old destination", kOldTime, 5);
  const FileState before = StateOf(dest);
  std::vector<ProgressCall> calls;

  const int result = CopyFileReplacing(
      source, dest, [&](std::int64_t done, std::int64_t total) {
        calls.push_back({done, total});
        return calls.size() < 2;
      });

  EXPECT_EQ(result, ECANCELED);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_LT(calls[0].done, calls[1].done);
  EXPECT_EQ(StateOf(dest), before);
  EXPECT_TRUE(PartialFiles(tmp_.path()).empty());
}

TEST_F(CopyFileTest, ReplaceCheckThatSaysNoKeepsTheDestinationAndNoTrace) {
  const std::string source = tmp_.Join("small.txt");
  const std::string dest = tmp_.Join("dest.txt");
  Put(source, "new bytes", kNewTime);
  Put(dest, "old bytes", kOldTime, 8);
  const FileState before = StateOf(dest);
  int checks = 0;

  const int result = CopyFileReplacing(source, dest, CopyProgress(), [&] {
    // Asked once the copy is whole, just before the rename.
    EXPECT_EQ(PartialFiles(tmp_.path()).size(), 1u);
    ++checks;
    return false;
  });

  EXPECT_EQ(result, kDestinationChanged);
  EXPECT_EQ(checks, 1);
  EXPECT_EQ(StateOf(dest), before);
  EXPECT_TRUE(PartialFiles(tmp_.path()).empty());
  // A check that says yes lets the copy in.
  EXPECT_EQ(
      CopyFileReplacing(source, dest, CopyProgress(), [] { return true; }), 0);
  EXPECT_EQ(Read(dest), "new bytes");
}

TEST_F(CopyFileTest, StopAtTheLastChunkStillKeepsTheOldDestination) {
  const std::string source = tmp_.Join("small.txt");
  const std::string dest = tmp_.Join("dest.txt");
  Put(source, "new bytes", kNewTime);
  Put(dest, "old bytes", kOldTime, 8);
  const FileState before = StateOf(dest);
  std::vector<ProgressCall> calls;

  const int result = CopyFileReplacing(
      source, dest, [&](std::int64_t done, std::int64_t total) {
        calls.push_back({done, total});
        return false;
      });

  EXPECT_EQ(result, ECANCELED);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].done, 9);
  EXPECT_EQ(calls[0].total, 9);
  EXPECT_EQ(StateOf(dest), before);
  EXPECT_EQ(Entries(tmp_.path()),
            (std::vector<std::string>{"dest.txt", "small.txt"}));
}

// --- ClearReadOnly ----------------------------------------------------------

TEST_F(CopyFileTest, ClearReadOnlyGivesTheOwnerWriteOnly) {
  const std::string path = tmp_.Join("locked.txt");
  Put(path, "bytes", kOldTime, 0, 0444);

  EXPECT_EQ(ClearReadOnly(path), 0);

  EXPECT_EQ(ModeOf(path), KeptMode(0644));
  EXPECT_EQ(Read(path), "bytes");
}

TEST_F(CopyFileTest, ClearReadOnlyKeepsTheOtherBits) {
  const std::string path = tmp_.Join("tool");
  Put(path, "bytes", kOldTime, 0, 0555);
  EXPECT_EQ(ClearReadOnly(path), 0);
  EXPECT_EQ(ModeOf(path), KeptMode(0755));

  const std::string writable = tmp_.Join("writable");
  Put(writable, "bytes", kOldTime, 0, 0640);
  EXPECT_EQ(ClearReadOnly(writable), 0);
  EXPECT_EQ(ModeOf(writable), KeptMode(0640));
}

TEST_F(CopyFileTest, ClearReadOnlyOfAMissingFileFailsWithENOENT) {
  EXPECT_EQ(ClearReadOnly(tmp_.Join("missing")), ENOENT);
}

// --- MakeDirectoryError -----------------------------------------------------

// A name that became a pipe since the scan must not hold the run up: left
// waiting for a writer, the test would be killed by the alarm.
TEST_F(CopyFileTest, ReadAheadOfAPipeOrAMissingFileReturnsAtOnce) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX only: a fifo and alarm()";
#else
  const std::string pipe = tmp_.Join("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  alarm(10);
  ReadAhead(pipe, 4096);
  ReadAhead(tmp_.Join("missing"), 4096);
  alarm(0);
  tmp_.WriteFile("data.txt", "kept as it is");
  ReadAhead(tmp_.Join("data.txt"), 13);
  EXPECT_EQ(tmp_.ReadFile("data.txt"), "kept as it is");
#endif
}

TEST_F(CopyFileTest, MakeDirectoryErrorCreatesMissingLevels) {
  const std::string deep = tmp_.Join("one/two/three");

  EXPECT_EQ(MakeDirectoryError(deep), 0);

  EXPECT_TRUE(FolderExists(deep));
  EXPECT_EQ(MakeDirectoryError(deep), 0);  // already there
}

TEST_F(CopyFileTest, MakeDirectoryErrorUnderARegularFileIsENOTDIR) {
  Put(tmp_.Join("file"), "not a folder", kOldTime);

  EXPECT_EQ(MakeDirectoryError(tmp_.Join("file/sub")), ENOTDIR);
  EXPECT_EQ(MakeDirectoryError(tmp_.Join("file/sub/deeper")), ENOTDIR);

  EXPECT_EQ(Read(tmp_.Join("file")), "not a folder");
}

TEST_F(CopyFileTest, MakeDirectoryErrorInAnImmutableFolderIsItsError) {
  ASSERT_TRUE(CreateFolder(tmp_.Join("locked")));
  ImmutableGuard guard(tmp_.Join("locked"));
  if (!guard.active()) GTEST_SKIP() << "no immutable folder here";

  EXPECT_EQ(MakeDirectoryError(tmp_.Join("locked/sub/deeper")),
            guard.error_number());

  EXPECT_TRUE(Entries(tmp_.Join("locked")).empty());
}

TEST_F(CopyFileTest, MakeDirectoryErrorWithoutAnyParentIsENOENT) {
  EXPECT_EQ(MakeDirectoryError("//pairwell-no-server/share/folder"), ENOENT);
  EXPECT_FALSE(Exists("/pairwell-no-server"));
}

}  // namespace
}  // namespace pairwell
