// The copies of a set's actions: written ahead of their turn on other
// threads, taken in the order of the files, and put in place in batches once
// their bytes are on the disk.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <future>
#include <memory>
#include <utility>

#include "engine/log_file.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "util/file_system.h"
#include "util/system.h"

namespace pairwell {

namespace {

// How far the copies may run ahead of the file at hand: enough to keep the
// workers and the disk busy with small files, also while this thread puts a
// batch in place, little enough that a stop or an error wastes little and
// the temporary files take little room.
constexpr long kMaxCopiesAhead = 2048;
constexpr std::int64_t kMaxBytesAhead = std::int64_t{64} << 20;
// However large the copies, this many may be outstanding: the next one is
// written while the one at hand is flushed and put in place.
constexpr long kFewestCopiesAhead = 2;

// A batch is flushed and put in place at the first of these. One flush of a
// file system for many copies costs about what one per copy would for a
// few; the time bound keeps the copies taken from lingering beside their
// destinations.
constexpr std::size_t kMaxStagedCopies = 4096;
constexpr std::int64_t kMaxStagedBytes = std::int64_t{256} << 20;
constexpr std::uint64_t kMaxStagedMilliseconds = 2000;

// The event pump's pace while waiting for another thread.
constexpr auto kPumpInterval = std::chrono::milliseconds(50);

std::string FolderOfFile(const std::string& path) {
  const std::string::size_type slash = path.find_last_of("/\\");
  if (slash == std::string::npos) return ".";
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

}  // namespace

void Synchronizer::StartCopies() {
  turn_bytes_ = 0;
  tickets_.clear();
  submitted_through_ = 0;
  staged_.clear();
  staged_bytes_ = 0;
  ready_folders_.clear();
  folder_written_.assign(static_cast<std::size_t>(WPathCount()), false);
  written_file_systems_.clear();
  performing_ = true;
  if (!Run().simulation_mode) {
    copies_ = std::make_unique<CopyPipeline>(
        copy_threads_ > 0 ? copy_threads_ : kDefaultCopyThreads);
  }
}

bool Synchronizer::FolderReadyAhead(int d, const std::string& folder) {
  if (ready_folders_.count(folder) != 0) return true;
  if (MakeFolderIn(d, folder) != 0) return false;
  ready_folders_.insert(folder);
  return true;
}

void Synchronizer::SubmitCopiesAhead(long current) {
  if (!copies_) return;
  submitted_through_ = std::max(submitted_through_, current - 1);
  // Refilled once half the room is free, not after every copy taken: the
  // workers then wake once for many copies instead of once for each.
  const long outstanding = copies_->Outstanding();
  if (outstanding > kMaxCopiesAhead / 2 ||
      (outstanding >= kFewestCopiesAhead &&
       copies_->OutstandingBytes() > kMaxBytesAhead / 2)) {
    return;
  }
  while (submitted_through_ < WFileCount()) {
    // The file at hand always goes: little else is outstanding then.
    const long outstanding = copies_->Outstanding();
    if (outstanding >= kMaxCopiesAhead ||
        (outstanding >= kFewestCopiesAhead &&
         copies_->OutstandingBytes() >= kMaxBytesAhead)) {
      break;
    }
    const long k = ++submitted_through_;
    const SyncFile& file = WFile(k);
    const int s = file.SourceIndex;
    for (int d : file.CopyDestinations()) {
      const std::string dest = file.FullPath(d);
      if (!FolderReadyAhead(d, FolderOfFile(dest))) continue;
      NoteWritten(d);
      tickets_[{k, d}] = SubmitCopy(file, s, d);
    }
  }
}

long Synchronizer::SubmitCopy(const SyncFile& file, int s, int d) {
  std::string dest = file.FullPath(d);
  return copies_->Submit(file.FullPath(s), dest, file.CopySize(s),
                         [dest, seen = file.Copy(d)] {
                           return SyncFile::OnDiskAsRecorded(dest, seen);
                         });
}

void Synchronizer::CancelCopyAhead(int d) {
  const auto it = tickets_.find({current_action_, d});
  if (it == tickets_.end()) return;
  copies_->Cancel(it->second);
  tickets_.erase(it);
}

int Synchronizer::AwaitCopy(const SyncFile& file, int s, int d,
                            std::string* temp) {
  // Outside PerformActions (a single file's action) the copy is made now.
  if (!copies_) copies_ = std::make_unique<CopyPipeline>(1);
  long ticket = 0;
  const auto it = tickets_.find({current_action_, d});
  if (it != tickets_.end()) {
    ticket = it->second;
    tickets_.erase(it);
  } else {
    ticket = SubmitCopy(file, s, d);
  }
  progress_.current_bytes_total = file.CopySize(s);
  progress_.current_bytes_done = 0;
  while (!copies_->Wait(ticket, kPumpInterval)) {
    RefreshCopyProgress(ticket);
    ManageUI();
    if (StopFlag) {
      copies_->Cancel(ticket);
      return ECANCELED;
    }
  }
  CopyPipeline::Result result = copies_->Take(ticket);
  progress_.current_bytes_done = progress_.current_bytes_total;
  if (result.error != 0) return result.error;
  NoteWritten(d);
  *temp = std::move(result.temp);
  return 0;
}

void Synchronizer::RefreshCopyProgress(long ticket) {
  if (!copies_) return;
  // Read by the front ends at most every 50 ms: counting more often is
  // wasted on thousands of small files.
  const std::uint64_t now = TickCount();
  if (ticket == 0 && now - progress_tick_ < 50) return;
  progress_tick_ = now;
  if (ticket != 0) {
    progress_.current_bytes_done = std::min(copies_->BytesWritten(ticket),
                                            progress_.current_bytes_total);
  }
  const std::int64_t done = turn_bytes_ + copies_->BytesPending();
  progress_.bytes_done = std::max(progress_.bytes_done,
                                  std::min(done, progress_.bytes_total));
}

void Synchronizer::CopyTurnEnded(std::int64_t bytes) {
  turn_bytes_ += bytes;
  progress_.bytes_done = std::max(progress_.bytes_done, turn_bytes_);
  progress_.current_bytes_done = 0;
  progress_.current_bytes_total = 0;
  ++progress_.files_done;
}

void Synchronizer::PlaceWhenFlushed(SyncFile& file, int s, int d,
                                    const std::string& temp, int old_mode) {
  const std::int64_t bytes = file.CopySize(s);
  if (staged_.empty()) staged_since_tick_ = TickCount();
  staged_.push_back(StagedCopy{&file, s, d, temp, bytes, old_mode});
  staged_bytes_ += bytes;
  if (!performing_) {
    PlaceStagedCopies();
    FlushWritten();
  } else if (staged_.size() >= kMaxStagedCopies ||
             staged_bytes_ >= kMaxStagedBytes ||
             TickCount() - staged_since_tick_ >= kMaxStagedMilliseconds) {
    PlaceStagedCopies();
  }
}

void Synchronizer::NoteWritten(int folder) {
  const std::size_t k = static_cast<std::size_t>(folder - 1);
  if (folder_written_.size() <= k) folder_written_.resize(k + 1, false);
  if (folder_written_[k]) return;
  folder_written_[k] = true;
  written_file_systems_.emplace(FileSystemId(WPath(folder)), WPath(folder));
}

bool Synchronizer::FlushFileSystemOf(const std::string& path) {
  return WithErrorPolicy(
      "Unable to write the copies to the disk:\n\n" + path, [&] {
        // A flush can take seconds: it runs on a thread of its own while
        // the windows go on.
        std::future<int> flushed = std::async(
            std::launch::async, [path] { return FlushFileSystem(path); });
        while (flushed.wait_for(kPumpInterval) != std::future_status::ready) {
          ManageUI();
        }
        return flushed.get();
      });
}

bool Synchronizer::FlushStagedCopies(const std::vector<StagedCopy>& batch) {
  // One flush per file system that holds a copy of the batch; a folder may
  // be another file system mounted inside a working folder.
  std::unordered_set<std::string> folders;
  std::map<std::uint64_t, std::string> file_systems;
  for (const StagedCopy& copy : batch) {
    const std::string folder = FolderOfFile(copy.temp);
    if (!folders.insert(folder).second) continue;
    file_systems.emplace(FileSystemId(folder), folder);
  }
  for (const auto& [id, folder] : file_systems) {
    if (!FlushFileSystemOf(folder)) return false;
    written_file_systems_.emplace(id, folder);
  }
  return true;
}

void Synchronizer::PlaceStagedCopies() {
  if (staged_.empty()) return;
  std::vector<StagedCopy> batch;
  batch.swap(staged_);
  staged_bytes_ = 0;
  // The journal's steps go to the disk with the copies' bytes, before the
  // first of them is made.
  RecordStagedCopies(batch);
  const bool flushed = FlushStagedCopies(batch);
  std::size_t placed_so_far = 0;
  for (StagedCopy& copy : batch) {
    // Thousands of renames take a moment: the windows breathe meanwhile.
    if ((++placed_so_far & 127) == 0) ManageUI();
    SyncFile& file = *copy.file;
    const std::string dest = file.FullPath(copy.dest);
    if (!flushed) {
      DeleteFile(copy.temp);
      TheLog().PrintL("Copy stopped: ", dest, " stays as it was");
      NoteSkipped();
      continue;
    }
    // Checked again just before the rename: an edit made while the bytes
    // were being written would otherwise be lost.
    if (!file.SameAsScanned(copy.dest)) {
      DeleteFile(copy.temp);
      file.SkipChanged(copy.dest);
      continue;
    }
    const bool placed = WithErrorPolicy(
        "Unable to perform the copy operation:\n\n" +
            file.FullPath(copy.source) + " -> " + dest,
        [&] { return PutInPlace(copy, dest); });
    if (!placed) {
      DeleteFile(copy.temp);
      continue;
    }
    file.FinishCopy(copy.source, copy.dest);
  }
}

int Synchronizer::RecordCopy(const StagedCopy& copy) {
  const std::string dest = copy.file->FullPath(copy.dest);
  FileIdentity after;
  if (!GetFileIdentity(copy.temp, &after)) return ENOENT;
  // The destination is as the scan saw it: there when it had a copy.
  return copy.file->CopyExists(copy.dest)
             ? keeper_->RecordReplaced(copy.dest, dest, copy.old_mode, after)
             : keeper_->RecordCreated(copy.dest, dest, after);
}

void Synchronizer::RecordStagedCopies(std::vector<StagedCopy>& batch) {
  if (!keeper_) return;
  for (StagedCopy& copy : batch) copy.record_error = RecordCopy(copy);
  const int error_number = keeper_->WriteRecords();
  if (error_number == 0) return;
  for (StagedCopy& copy : batch) copy.record_error = error_number;
}

int Synchronizer::PutInPlace(StagedCopy& copy, const std::string& dest) {
  if (keeper_) {
    // A step that could not be recorded is not made (a retry records it).
    if (copy.record_error != 0) {
      copy.record_error = RecordCopy(copy);
      if (copy.record_error == 0) copy.record_error = keeper_->WriteRecords();
      if (copy.record_error != 0) return copy.record_error;
    }
    if (copy.file->CopyExists(copy.dest)) {
      const int error_number = keeper_->KeepOldCopy(copy.dest, dest);
      if (error_number != 0) return error_number;
    }
  }
  return PlaceStagedCopy(copy.temp, dest);
}

void Synchronizer::SettleCopies() {
  if (copies_) copies_->CancelAll();
  tickets_.clear();
  submitted_through_ = current_action_;
  PlaceStagedCopies();
}

void Synchronizer::FlushWritten() {
  std::map<std::uint64_t, std::string> file_systems;
  file_systems.swap(written_file_systems_);
  std::fill(folder_written_.begin(), folder_written_.end(), false);
  for (const auto& [id, path] : file_systems) {
    (void)id;
    FlushFileSystemOf(path);
  }
}

void Synchronizer::FinishCopies() {
  if (copies_) copies_->CancelAll();
  tickets_.clear();
  PlaceStagedCopies();
  // The workers end here, each removing the temporary file it was writing.
  copies_.reset();
  // What was written ahead and given up after a stop does not count.
  progress_.bytes_done = turn_bytes_;
  // Names put in place, deleted and created reach the disk before the run
  // may say it completed; so do the copies archived elsewhere.
  if (keeper_) {
    for (const std::string& folder : keeper_->OtherWrittenFolders()) {
      written_file_systems_.emplace(FileSystemId(folder), folder);
    }
  }
  FlushWritten();
  if (keeper_) keeper_->End(StopFlag);
  keeper_.reset();
  performing_ = false;
}

}  // namespace pairwell
