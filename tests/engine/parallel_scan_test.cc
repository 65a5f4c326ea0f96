// A scan that lists folders ahead on other threads finds exactly what a scan
// on one thread finds, and stops as promptly.
#include <gtest/gtest.h>
#ifndef _WIN32
#include <unistd.h>
#endif

#include <algorithm>
#include <chrono>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "app/program.h"
#include "config/ini_file.h"
#include "engine/folder_prefetch.h"
#include "engine/log_file.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"
#include "support/test_dates.h"
#include "support/text_echo.h"

namespace pairwell {
namespace {

constexpr std::int64_t kOldTime = 1600000000;
constexpr std::int64_t kNewTime = 1700000000;

// Everything a scan decides about its files, one line each, and its log.
std::string ScanResult(Synchronizer& set, const TextEcho& echo) {
  std::ostringstream out;
  for (long f = 1; f <= set.WFileCount(); ++f) {
    const SyncFile& file = set.WFile(f);
    out << file.RelativeName() << " action " << file.Action << " source "
        << file.SourceIndex << " flags " << file.ActionFlags << " situation "
        << file.ComputeSituation(false) << " blocked " << file.Blocked();
    for (int i = 1; i <= set.WPathCount(); ++i) {
      const CopyRecord& copy = file.Copy(i);
      out << " | " << copy.modify_date << ' ' << copy.create_date << ' '
          << copy.size << ' ' << copy.attributes << ' ' << copy.inode << ' '
          << file.FullPath(i);
    }
    out << '\n';
  }
  // The log but its first line, which names the moment the scan began.
  const std::string::size_type after_start =
      echo.text.find('\n', echo.text.find("Synchronize started"));
  return out.str() + echo.text.substr(after_start);
}

class ParallelScanTest : public ::testing::Test {
 protected:
  ParallelScanTest() {
    log_.EchoTextBox = &echo_;
    EXPECT_TRUE(catalogue_file_.LoadFile(std::string(PAIRWELL_SOURCE_DIR) +
                                         "/data/Pairwell.ini"));
  }
  ~ParallelScanTest() override { log_.CloseLog(); }

  // A set over the given folders (full paths and flags), read as the
  // program reads one.
  std::unique_ptr<Synchronizer> NewSet(
      const std::vector<std::pair<std::string, std::int32_t>>& folders) {
    auto set = std::make_unique<Synchronizer>();
    set->Name = "Docs";
    set->SetLog(&log_);
    set->SetRunState(&program_.Run());
    set->ReadConflictInfo(*catalogue_file_.Section("Conflict Types"));
    for (const auto& [path, flags] : folders) {
      set->PathAdd(path);
      set->SetPathFlags(set->PathCount(), flags);
    }
    set->LastSyncDate = MakeDate(2022, 1, 1);
    set->FolderExcludeSpec = "skip*";
    set->ExcludeSpec = "*.tmp";
    return set;
  }

  // Builds the set's action list on `threads` threads; the scan's result.
  std::string Scan(Synchronizer& set, int threads) {
    echo_.text.clear();
    set.SetScanThreads(threads);
    EXPECT_TRUE(set.BuildActionList());
    EXPECT_TRUE(ui_.messages.empty()) << ui_.messages.front().text;
    const std::string result = ScanResult(set, echo_);
    set.FreeSyncData();
    return result;
  }

  RecordingUserInterface ui_;
  Program program_{ui_};
  TempDir tmp_;
  TextEcho echo_;
  LogFile log_;
  INIFile catalogue_file_;
};

TEST_F(ParallelScanTest, ManyThreadsFindWhatOneThreadFinds) {
  const std::vector<std::string> names = {"a", "b", "c", "d"};
  for (const std::string& folder : names) MakeFolder(tmp_.Join(folder));
  // Sub-folders, names equal ignoring case, excluded names and folders,
  // links, a leftover, and files in some folders only.
  for (int d = 0; d < 30; ++d) {
    const std::string sub = "/d" + std::to_string(d);
    for (const char* folder : {"a", "b", "c"}) {
      MakeFolder(tmp_.Join(folder + sub));
      MakeFolder(tmp_.Join(folder + sub + "/deep"));
    }
    for (int f = 0; f < 20; ++f) {
      const std::string name = sub + "/f" + std::to_string(f) + ".txt";
      Put(tmp_.Join("a" + name), "a" + name, kOldTime);
      if (f % 3 != 0) Put(tmp_.Join("b" + name), "b" + name, kNewTime);
      if (f % 4 != 0) Put(tmp_.Join("c" + name), "a" + name, kOldTime);
      if (f % 5 == 0) {
        Put(tmp_.Join("c" + sub + "/deep/x" + std::to_string(f) + ".txt"), "x",
            kOldTime);
      }
    }
  }
  MakeFolder(tmp_.Join("d/d1"));
  Put(tmp_.Join("d/d1/f1.txt"), "merged", kNewTime);
  Put(tmp_.Join("d/only-here.txt"), "not joined", kNewTime);
  Put(tmp_.Join("b/Case.txt"), "upper", kOldTime);
  Put(tmp_.Join("b/case.txt"), "lower", kOldTime);
  Put(tmp_.Join("c/scratch.tmp"), "excluded", kOldTime);
  MakeFolder(tmp_.Join("b/skipped"));
  Put(tmp_.Join("b/skipped/no.txt"), "not read", kOldTime);
#ifndef _WIN32
  // Symbolic links need a privilege on Windows.
  ASSERT_EQ(symlink("nowhere", tmp_.Join("c/d3/link").c_str()), 0);
#endif
  Put(tmp_.Join("c/d4/.pairwell-partial-Ab12Cd"), "half", kOldTime);

  std::unique_ptr<Synchronizer> set =
      NewSet({{tmp_.Join("a"), kFolderEnabled | kFolderSource},
              {tmp_.Join("b"), kFolderEnabled | kFolderSource},
              {tmp_.Join("c"), kFolderEnabled | kFolderMirrorTo},
              {tmp_.Join("d"), kFolderEnabled | kFolderMergeTo}});
  const std::string one = Scan(*set, 1);
#ifndef _WIN32
  EXPECT_NE(one.find("d3/link (symbolic link, not followed)"),
            std::string::npos)
      << one;
#endif
  for (const int threads : {2, 3, 8}) {
    EXPECT_EQ(Scan(*set, threads), one) << threads << " threads";
  }
}

TEST_F(ParallelScanTest, StopWhileFoldersAreListedAheadEndsTheScan) {
  MakeFolder(tmp_.Join("a"));
  MakeFolder(tmp_.Join("b"));
  Put(tmp_.Join("a/one.txt"), "one", kOldTime);
  for (int d = 0; d < 200; ++d) {
    const std::string sub = tmp_.Join("b/d" + std::to_string(d));
    MakeFolder(sub);
    for (int f = 0; f < 20; ++f) {
      Put(sub + "/f" + std::to_string(f), "x", kOldTime);
    }
  }
  std::unique_ptr<Synchronizer> set =
      NewSet({{tmp_.Join("a"), kFolderEnabled | kFolderSource},
              {tmp_.Join("b"), kFolderEnabled | kFolderSource}});
  set->SetScanThreads(2);
  int reading_b = 0;
  ui_.on_events = [&] {
    if (set->SyncMsg.rfind("Reading folder " + tmp_.Join("b"), 0) == 0 &&
        ++reading_b == 5) {
      set->StopFlag = true;
    }
  };

  EXPECT_FALSE(set->BuildActionList());

  EXPECT_EQ(reading_b, 5);
  EXPECT_TRUE(set->StopFlag);
  EXPECT_TRUE(ui_.messages.empty());
}

TEST(FolderPrefetchTest, ListingErrorsAndFoldersNeverListedAreTold) {
  TempDir tmp;
  MakeFolder(tmp.Join("a"));
  MakeFolder(tmp.Join("a/sub"));
  MakeFolder(tmp.Join("a/skipped"));
  Put(tmp.Join("a/sub/x.txt"), "x", kOldTime);
  const std::string unreadable = tmp.Join("a") + std::string(1, '\0') + "b";
  FolderPrefetch prefetch(
      {tmp.Join("a"), unreadable},
      [](const std::string& name) { return name != "skipped"; }, 2);
  const auto forever = [] { return true; };
  FolderPrefetch::Listing listing;
  ASSERT_TRUE(prefetch.Take(0, "", &listing, forever));
  EXPECT_EQ(listing.error_number, 0);
  EXPECT_EQ(listing.entries.size(), 2u);
  ASSERT_TRUE(prefetch.Take(0, "sub/", &listing, forever));
  ASSERT_EQ(listing.entries.size(), 1u);
  EXPECT_EQ(listing.entries[0].name, "x.txt");
  // Left out by the filter: the caller lists it itself.
  EXPECT_FALSE(prefetch.Take(0, "skipped/", &listing, forever));
  ASSERT_TRUE(prefetch.Take(1, "", &listing, forever));
  EXPECT_EQ(listing.error_number, EINVAL);
}

// "d007" for 7: folders that sort as they are numbered.
std::string Numbered(int d) {
  const std::string digits = std::to_string(d);
  return "d" + std::string(3 - std::min<std::size_t>(3, digits.size()), '0') +
         digits;
}

// Folders d000/ .. d<count-1>/ under root, each with `files` files.
void MakeNumberedFolders(const std::string& root, int count, int files) {
  MakeFolder(root);
  for (int d = 0; d < count; ++d) {
    const std::string name = Numbered(d);
    MakeFolder(root + "/" + name);
    for (int f = 0; f < files; ++f) {
      Put(root + "/" + name + "/f" + std::to_string(f), "x", kOldTime);
    }
  }
}

TEST(FolderPrefetchTest, ListingRunsAheadOnlyAsFarAsItsBound) {
  TempDir tmp;
  constexpr int kCount = 600;
  static_assert(kCount > static_cast<int>(FolderPrefetch::kMaxHeldFolders),
                "more folders than the bound");
  MakeNumberedFolders(tmp.Join("a"), kCount, 2);
  FolderPrefetch prefetch(
      {tmp.Join("a")}, [](const std::string&) { return true; }, 2);
  const auto forever = [] { return true; };
  FolderPrefetch::Listing listing;
  ASSERT_TRUE(prefetch.Take(0, "", &listing, forever));
  // Nobody takes the sub-folders: the walk fills its bound and waits.
  for (int tries = 0;
       tries < 500 && prefetch.HeldFolders() < FolderPrefetch::kMaxHeldFolders;
       ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(prefetch.HeldFolders(), FolderPrefetch::kMaxHeldFolders);
  // Taken in the scan's order, every folder comes, and nothing stays held.
  for (int d = 0; d < kCount; ++d) {
    const std::string rel = Numbered(d) + "/";
    ASSERT_TRUE(prefetch.Take(0, rel, &listing, forever)) << rel;
    EXPECT_EQ(listing.entries.size(), 2u) << rel;
  }
  EXPECT_EQ(prefetch.HeldFolders(), 0u);
  EXPECT_EQ(prefetch.HeldEntries(), 0u);
}

TEST(FolderPrefetchTest, FoldersTheScanPassesAreDropped) {
  TempDir tmp;
  MakeNumberedFolders(tmp.Join("a"), 10, 1);
  FolderPrefetch prefetch(
      {tmp.Join("a")}, [](const std::string&) { return true; }, 2);
  const auto forever = [] { return true; };
  FolderPrefetch::Listing listing;
  ASSERT_TRUE(prefetch.Take(0, "", &listing, forever));
  ASSERT_TRUE(prefetch.Take(0, "d005/", &listing, forever));
  EXPECT_EQ(listing.entries.size(), 1u);
  // The scan went past d001/: it is no longer offered.
  EXPECT_FALSE(prefetch.Take(0, "d001/", &listing, forever));
  ASSERT_TRUE(prefetch.Take(0, "d006/", &listing, forever));
  EXPECT_EQ(listing.entries[0].name, "f0");
}

}  // namespace
}  // namespace pairwell
