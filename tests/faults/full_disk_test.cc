// Runs pairwell-cli against a destination, and a configuration file, on a
// tiny tmpfs that runs out of space.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "faults/fault_files.h"
#include "faults/tmpfs_mount.h"
#include "support/cli_process.h"
#include "support/disk_files.h"
#include "support/temp_dir.h"

namespace pairwell {
namespace {

constexpr std::size_t kMiB = 1024 * 1024;

std::string Pattern(std::size_t size, char seed) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(seed + i * 31 + i / 4093);
  }
  return bytes;
}

class FullDiskTest : public ::testing::Test {
 protected:
  FullDiskTest() : now_(std::time(nullptr)) {}

  void SetUp() override {
    ASSERT_EQ(mkdir(Source().c_str(), 0755), 0);
    ASSERT_EQ(mkdir(Small().c_str(), 0755), 0);
    mount_ = std::make_unique<TmpfsMount>(Small(), "4m");
    if (!mount_->mounted()) {
      GTEST_SKIP() << "cannot mount a 4 MiB tmpfs on " << Small() << " ("
                   << mount_->error()
                   << "): the full-disk tests need root with CAP_SYS_ADMIN";
    }
  }

  // Unmounted here, before the temporary folder goes, even after a failure.
  void TearDown() override { mount_.reset(); }

  std::string Source() const { return dir_.Join("src"); }
  // The tmpfs.
  std::string Small() const { return dir_.Join("small"); }

  // A set over src and dest whose last sync was half an hour ago.
  std::string SetSection(const std::string& dest) const {
    return "[Sec: Faults]\r\nDir1=" + Source() + "\r\nDir2=" + dest +
           "\r\nLastSyncDate=" + LocalDateText(now_ - 1800) + "\r\n";
  }

  ProcessResult Sync(const std::string& ini) {
    return RunProcess(
        {PAIRWELL_CLI_PATH, "--ini", ini, "sync", "--yes", "Faults"},
        dir_.Join("out"), dir_.Join("err"));
  }

  // Older than the last sync.
  time_t Old() const { return now_ - 7200; }
  // Since the last sync.
  time_t Edited() const { return now_ - 600; }

  const time_t now_;
  TempDir dir_;
  std::unique_ptr<TmpfsMount> mount_;
};

TEST_F(FullDiskTest, CopyThatDoesNotFitFailsAndKeepsTheOldFile) {
  // The new version needs 3 MiB while the old one still holds 2.5 MiB of
  // the 4 MiB.
  const std::string old_big = Pattern(5 * kMiB / 2, 'o');
  const std::string new_big = Pattern(3 * kMiB, 'n');
  ASSERT_TRUE(WriteFileAt(Small() + "/big.bin", old_big, Old()));
  ASSERT_TRUE(WriteFileAt(Source() + "/big.bin", new_big, Edited()));
  ASSERT_TRUE(WriteFileAt(Small() + "/keep.txt", "kept", Old()));
  ASSERT_TRUE(WriteFileAt(Source() + "/keep.txt", "kept", Old()));
  const std::string ini = dir_.Join("p.ini");
  dir_.WriteFile("p.ini", IniWithSets(SetSection(Small())));
  const std::string ini_before = dir_.ReadFile("p.ini");
  TreeEntry big_before;
  ASSERT_TRUE(ReadEntry(Small() + "/big.bin", &big_before));

  const ProcessResult r = Sync(ini);
  EXPECT_EQ(r.exit_code, 1) << r.out << r.err;
  EXPECT_NE(r.err.find(std::strerror(ENOSPC)), std::string::npos)
      << r.out << r.err;
  TreeEntry big_after;
  ASSERT_TRUE(ReadEntry(Small() + "/big.bin", &big_after));
  // Compared as digests: a failure printing 2.5 MiB of bytes helps nobody.
  EXPECT_TRUE(big_after.digest == DigestOf(old_big))
      << "big.bin is " << big_after.digest.size << " bytes, not the old "
      << old_big.size();
  EXPECT_EQ(big_after.mtime_ns, big_before.mtime_ns);
  EXPECT_EQ(Read(Small() + "/keep.txt"), "kept");
  // No temporary copy is left to hold the space.
  EXPECT_EQ(Entries(Small()),
            (std::vector<std::string>{"big.bin", "keep.txt"}));
  // The set failed: its last sync stays where it was.
  EXPECT_EQ(dir_.ReadFile("p.ini"), ini_before);
}

TEST_F(FullDiskTest, ConfigurationOnAFullDiskStaysWhole) {
  ASSERT_TRUE(WriteFileAt(Source() + "/a.txt", "new in the source", Edited()));
  const std::string dest = dir_.Join("dst");
  ASSERT_EQ(mkdir(dest.c_str(), 0755), 0);
  const std::string ini = Small() + "/p.ini";
  ASSERT_TRUE(WriteFileAt(ini, IniWithSets(SetSection(dest)), Old()));
  const std::string ini_before = Read(ini);
  ASSERT_TRUE(FillUp(Small() + "/filler"));

  const ProcessResult r = Sync(ini);
  EXPECT_EQ(r.exit_code, 1) << r.out << r.err;
  EXPECT_NE(r.err.find(std::strerror(ENOSPC)), std::string::npos)
      << r.out << r.err;
  // The run itself was done; only its date could not be saved.
  EXPECT_EQ(Read(dest + "/a.txt"), "new in the source");
  EXPECT_EQ(Read(ini), ini_before);
  // Nor is the temporary file of the failed save left beside it.
  EXPECT_EQ(Entries(Small()), (std::vector<std::string>{"filler", "p.ini"}));
}

}  // namespace
}  // namespace pairwell
