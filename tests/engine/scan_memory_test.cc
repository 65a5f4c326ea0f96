// What a planned file costs in memory: the heap a set holds after scanning a
// few thousand files, per file. A million files a side must plan in well
// under the memory of a desktop program, so every byte per file counts.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>
#include <memory>
#include <string>

#include "engine/synchronizer.h"
#include "support/disk_files.h"
#include "support/recording_user_interface.h"
#include "support/temp_dir.h"

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's runtime provides it; not every compiler ships its header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace pairwell {
namespace {

// Bytes of heap the program holds now.
std::size_t HeapInUse() {
#if defined(__SANITIZE_ADDRESS__)
  // The sanitizer's allocator replaces malloc's, and counts what was asked.
  return __sanitizer_get_current_allocated_bytes();
#elif defined(_WIN32)
  // The C library's heap, walked block by block: the bytes of those in use.
  std::size_t used = 0;
  _HEAPINFO entry = {};
  while (_heapwalk(&entry) == _HEAPOK) {
    if (entry._useflag == _USEDENTRY) used += entry._size;
  }
  return used;
#else
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
#endif
}

// A two-folder set's file: its two copy records, its node in the name tree,
// its name's bytes, and its share of the blocks they are kept in.
constexpr std::size_t kMaxBytesPerFile = 160;

TEST(ScanMemoryTest, PlannedFileCostsAtMostItsBoundOfHeap) {
  constexpr int kFolders = 64;
  constexpr int kFilesPerFolder = 64;
  TempDir tmp;
  for (const char* side : {"a", "b"}) {
    MakeFolder(tmp.Join(side));
    for (int d = 0; d < kFolders; ++d) {
      const std::string folder = tmp.Join(side) + "/d" + std::to_string(d);
      MakeFolder(folder);
      for (int f = 0; f < kFilesPerFolder; ++f) {
        Put(folder + "/f" + std::to_string(1000 + f) + ".txt", side,
            1600000000);
      }
    }
  }
  RecordingUserInterface ui;
  auto set = std::make_unique<Synchronizer>();
  set->PathAdd(tmp.Join("a"));
  set->PathAdd(tmp.Join("b"));
  const std::size_t before = HeapInUse();

  ASSERT_TRUE(set->BuildActionList());

  ASSERT_EQ(set->WFileCount(), kFolders * kFilesPerFolder);
  const std::size_t held = HeapInUse() - before;
  const std::size_t per_file =
      held / static_cast<std::size_t>(set->WFileCount());
  EXPECT_LE(per_file, kMaxBytesPerFile) << held << " bytes held";
  // Freed again, the set keeps only lists that hold on to their capacity:
  // less than one block of names, far less than one of files.
  set->FreeSyncData();
  EXPECT_LT(HeapInUse() - before, std::size_t{48} << 10);
}

}  // namespace
}  // namespace pairwell
