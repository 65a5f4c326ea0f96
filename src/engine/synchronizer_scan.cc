// The scan side of a sync set: folder checks, folder reading and default
// actions.
#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <thread>

#include "engine/log_file.h"
#include "engine/sync_file.h"
#include "engine/synchronizer.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/text.h"
#include "util/user_interface.h"
#include "util/wildcard.h"

namespace pairwell {

namespace {

constexpr char kFewerThanTwo[] =
    "The synchronization cannot proceed because there are fewer than two "
    "directories enabled and available.";

}  // namespace

SyncFile& Synchronizer::WFile(long i) const {
  if (i < 1 || i > WFileCount()) {
    throw std::out_of_range("file index " + std::to_string(i) +
                            " is outside 1.." + std::to_string(WFileCount()));
  }
  return files_.At(static_cast<std::size_t>(i - 1));
}

const std::string& Synchronizer::FileFolder(std::uint32_t folder) const {
  if (folder >= file_folders_.size()) {
    throw std::out_of_range("file folder " + std::to_string(folder) +
                            " is outside 0.." +
                            std::to_string(file_folders_.size() - 1));
  }
  return file_folders_[folder];
}

std::uint32_t Synchronizer::FileFolderNumber(const std::string& rel) {
  if (rel.empty()) return 0;
  const auto inserted = file_folder_index_.emplace(
      rel, static_cast<std::uint32_t>(file_folders_.size()));
  if (inserted.second) file_folders_.push_back(rel);
  return inserted.first->second;
}

LogFile& Synchronizer::TheLog() { return log_ != nullptr ? *log_ : no_log_; }

const RunState& Synchronizer::Run() const {
  static const RunState kStandalone;
  return run_state_ != nullptr ? *run_state_ : kStandalone;
}

void Synchronizer::ManageUI() {
  UI().DoEvents();
  const std::uint64_t now = TickCount();
  if (!status_shown_ || now - last_status_tick_ >= 50) {
    UI().ShowStatus(SyncMsg);
    last_status_tick_ = now;
    status_shown_ = true;
  }
}

int Synchronizer::ShowErrToUser(const std::string& message, int style) {
  if (QuietMode) {
    TheLog().PrintErrL(
        "The following error occurred, but could not be shown because Quiet "
        "Mode is enabled.");
    TheLog().PrintErrL(message);
    return kIdNo;
  }
  if ((style & 122) == 0) style |= kMbExclamation;
  return MsgBox(message, style);
}

void Synchronizer::FreeSyncData() {
  files_.Clear();
  file_extras_.clear();
  file_folders_.resize(1);
  file_folder_index_.clear();
  work_folders_.clear();
  sub_folders_.clear();
  sub_folder_index_.clear();
  folder_spellings_.clear();
  left_out_names_.clear();
  leftovers_.clear();
  std::vector<FolderEntry>().swap(listing_);
  root_tree_->Clear();
  // The files and the tree are gone: nothing refers to the names.
  names_->Clear();
  current_action_ = 0;
  keeper_.reset();
}

bool Synchronizer::BuildActionList() {
  StopFlag = false;
  aborted_ = false;
  current_action_ = 0;
  scan_failed_ = false;
  ignored_errors_ = 0;
  FutureDateCount = 0;
  const Moment started = NowMoment();
  scan_started_moment_ = started.seconds;
  scan_started_ = FileTimeToDate(started.seconds, started.nanoseconds);
  TheLog().PrintL();
  TheLog().PrintL("Synchronize started: ", Name, " - ",
                  FormatGeneralDate(scan_started_));
  FreeSyncData();
  if (!CheckLastSyncDate() || !PrepareFolders() || StopFlag) {
    FreeSyncData();
    return false;
  }
  StartPrefetch();
  // Whatever way the reading ends, the threads listing ahead stop with it.
  struct StopPrefetch {
    std::unique_ptr<FolderPrefetch>& prefetch;
    ~StopPrefetch() { prefetch.reset(); }
  } stop_prefetch{prefetch_};
  for (const int i : ReadOrder()) {
    ReadFolderOfPath(i);
    if (StopFlag || scan_failed_) return false;
  }
  // The listings are in the files now; their memory goes back.
  std::vector<FolderEntry>().swap(listing_);
  BlockFiles();
  return ComputeDefaultActions() && CheckEmptySources();
}

bool Synchronizer::ComputeDefaultActions() {
  SyncMsg = "Computing default actions";
  for (long i = 1; i <= WFileCount(); ++i) {
    if ((i & 127) == 1) {
      ManageUI();
      if (StopFlag) return false;
    }
    SyncFile& file = WFile(i);
    file.ComputeDefAction();
    if (file.EmptyCopyHeld()) {
      const int s = file.GetNewestFileIndex(true);
      const int j = file.DataCopyAtRisk();
      TheLog().PrintL("Needs confirmation: ", file.FullPath(s),
                      " is empty while ", file.FullPath(j),
                      " of the same date holds ",
                      CountText(file.Copy(j).size, "byte", "bytes"),
                      "; an empty copy never replaces one with data "
                      "by itself");
    }
  }
  return !StopFlag;
}

bool Synchronizer::CheckLastSyncDate() {
  if (!SmartSync) return true;
  std::string problem;
  if (!unusable_last_sync_date_.empty()) {
    problem = "\"" + unusable_last_sync_date_ + "\", is not a date";
  } else if (LastSyncDate > scan_started_) {
    problem = FormatGeneralDate(LastSyncDate) +
              ", lies in the future (it is now " +
              FormatGeneralDate(scan_started_) + ")";
  } else {
    return true;
  }
  ShowErrToUser(
      "The synchronization cannot proceed because the last synchronization "
      "date of the set '" +
          Name + "', " + problem +
          ".  Compared with it, changed files would look unchanged and new "
          "files deleted.  To clear it, type Never as the last sync date in "
          "the set's options, or remove the LastSyncDate line from the set's "
          "section of the configuration file; the next run then treats every "
          "file as never synchronized.",
      kMbExclamation);
  return false;
}

bool Synchronizer::CheckFolderCounts() {
  int available = 0;
  int sources = 0;
  int enabled = 0;
  for (int i = 1; i <= PathCount(); ++i) {
    if ((PathFlags(i) & kFolderEnabled) == 0) continue;
    ++enabled;
    ManageUI();
    if (StopFlag) return false;
    if (FolderExists(Path(i))) {
      ++available;
      if (FolderTypeOf(PathFlags(i)) == kFolderSource) ++sources;
    } else if ((PathFlags(i) & kFolderAllowBaseCreation) != 0) {
      ++available;
    }
  }
  // A file keeps one record per folder, eight at most.
  if (enabled > kMaxFolders) {
    ShowErrToUser("The synchronization cannot proceed because more than " +
                      std::to_string(kMaxFolders) +
                      " folders are enabled.  Disable or remove folders "
                      "until no more than " +
                      std::to_string(kMaxFolders) + " are left.",
                  kMbInformation);
    return false;
  }
  if (sources == 0) {
    ShowErrToUser(
        "The synchronization cannot proceed because there are no source "
        "folders available.  Make sure that at least one folder exists and "
        "is set as a source.",
        kMbInformation);
    return false;
  }
  if (available < 2) {
    ShowErrToUser(kFewerThanTwo, kMbInformation);
    return false;
  }
  return true;
}

bool Synchronizer::PrepareFolders() {
  if (PathCount() < 2) {
    ShowErrToUser(
        "You need to select at least two directories to synchronize.  Add "
        "more directories and try again.",
        kMbInformation);
    return false;
  }
  SyncMsg = "Attempting to access folders to be synchronized";
  if (!CheckFolderCounts()) return false;
  // A simulated run changes nothing either.
  const bool dry_run = DryRun || Run().simulation_mode;
  for (int i = 1; i <= PathCount(); ++i) {
    std::int32_t flags = PathFlags(i);
    if ((flags & kFolderEnabled) == 0) continue;
    ManageUI();
    if (StopFlag) return false;
    bool exists = FolderExists(Path(i));
    bool created = false;
    if (!exists && (flags & kFolderAllowBaseCreation) != 0) {
      exists = created = dry_run || MakeDirectory(Path(i));
      if (created) {
        TheLog().PrintL(dry_run ? "Would create folder " : "Created folder ",
                        Path(i));
      }
    }
    if (!exists) {
      if ((flags & kFolderSkipOnError) != 0) continue;
      ShowErrToUser("The synchronization cannot proceed beacuse the folder '" +
                        Path(i) + "' could not be accessed.",
                    kMbOkOnly);
      return false;
    }
    // A source made just now has nothing to offer: this run it only
    // receives, like a merge-to folder.
    if (created && FolderTypeOf(flags) == kFolderSource) {
      flags = (flags & ~kFolderTypeMask) | kFolderMergeTo;
    }
    work_folders_.push_back(Folder{Path(i), flags, created && dry_run});
  }
  if (WPathCount() < 2) {
    ShowErrToUser(kFewerThanTwo, kMbExclamation);
    return false;
  }
  return true;
}

std::vector<int> Synchronizer::ReadOrder() const {
  // Sources first, so that merge-to folders find the names they may join.
  std::vector<int> order;
  for (const std::int32_t type :
       {kFolderSource, kFolderMergeTo, kFolderMirrorTo}) {
    for (int i = 1; i <= WPathCount(); ++i) {
      if (FolderTypeOf(WPathFlags(i)) == type) order.push_back(i);
    }
  }
  return order;
}

void Synchronizer::StartPrefetch() {
  const unsigned cores = std::thread::hardware_concurrency();
  const int threads =
      scan_threads_ > 0 ? scan_threads_ : static_cast<int>(std::max(cores, 1u));
  prefetch_root_.assign(static_cast<std::size_t>(WPathCount()), -1);
  if (threads < 2) return;
  // A merge-to folder is read only where the tree already has names, which
  // the walk cannot know: the set's thread reads it.
  std::vector<std::string> roots;
  for (const int i : ReadOrder()) {
    if (FolderTypeOf(WPathFlags(i)) == kFolderMergeTo ||
        At(work_folders_, i).missing) {
      continue;
    }
    prefetch_root_[static_cast<std::size_t>(i - 1)] =
        static_cast<int>(roots.size());
    roots.push_back(WPath(i));
  }
  if (roots.empty()) return;
  // The set's thread joins the listings into the tree meanwhile.
  prefetch_ = std::make_unique<FolderPrefetch>(
      std::move(roots),
      [this](const std::string& name) { return PassesFilters(name, true); },
      threads);
}

int Synchronizer::ListRows(int i, const std::string& rel,
                           const std::string& full_path,
                           std::vector<LeftOutEntry>* left_out) {
  const int root = prefetch_root_.empty()
                       ? -1
                       : prefetch_root_[static_cast<std::size_t>(i - 1)];
  FolderPrefetch::Listing listing;
  if (root >= 0 && prefetch_ &&
      prefetch_->Take(static_cast<std::size_t>(root), rel, &listing, [this] {
        ManageUI();
        return !StopFlag;
      })) {
    listing_.insert(listing_.end(),
                    std::make_move_iterator(listing.entries.begin()),
                    std::make_move_iterator(listing.entries.end()));
    *left_out = std::move(listing.left_out);
    return listing.error_number;
  }
  if (StopFlag) return 0;  // the scan ends without this listing
  return ListFolder(full_path, &listing_, left_out);
}

void Synchronizer::ReadFolderOfPath(int i) {
  listing_.clear();
  if (At(work_folders_, i).missing) return;  // empty until really created
  ReadFolder(i, WPath(i), "", *root_tree_,
             FolderTypeOf(WPathFlags(i)) == kFolderMergeTo);
}

std::vector<std::size_t> Synchronizer::UsableRows(
    std::size_t first, std::size_t last, const std::string& rel,
    const std::string& full_path) {
  std::vector<FolderEntry>& rows = listing_;
  // In the tree's order, so new names join it in one merge; names equal
  // ignoring case come next to each other, the first by bytes first.
  // A listing made ahead comes sorted already.
  const auto begin = rows.begin() + static_cast<std::ptrdiff_t>(first);
  const auto end = rows.begin() + static_cast<std::ptrdiff_t>(last);
  const auto less = [](const FolderEntry& a, const FolderEntry& b) {
    return ScanOrderLess(a.name, b.name);
  };
  if (!std::is_sorted(begin, end, less)) std::sort(begin, end, less);
  std::vector<std::size_t> usable;
  const std::string* kept = nullptr;
  for (std::size_t r = first; r < last; ++r) {
    const FolderEntry& row = rows[r];
    if (kept != nullptr && EqualsNoCase(*kept, row.name)) {
      TheLog().PrintL("Left out: ", JoinPath(full_path, row.name),
                      " (its name differs only in case from ",
                      JoinPath(full_path, *kept), ")");
      // Which of the two another folder's copy stands for is unknown.
      left_out_names_.insert(UpperCase(rel + row.name));
      continue;
    }
    kept = &row.name;
    if (PassesFilters(row.name, (row.attributes & kAttrDirectory) != 0)) {
      usable.push_back(r);
    }
  }
  return usable;
}

void Synchronizer::ReadFolder(int i, const std::string& folder,
                              const std::string& rel, StringTree& tree,
                              bool merge_only) {
  // rel ends in a separator below the top level; the folder's own path
  // does not.
  std::string full_path = JoinPath(folder, rel);
  if (!rel.empty()) full_path.pop_back();
  SyncMsg = "Reading folder " + full_path;
  ManageUI();
  if (StopFlag) return;
  folder_read_at_ = Now();

  const std::size_t first = listing_.size();
  std::vector<LeftOutEntry> left_out;
  const int error_number = ListRows(i, rel, full_path, &left_out);
  if (error_number == 0 && !NoteLeftOut(left_out, rel, full_path)) {
    scan_failed_ = true;
    return;
  }
  if (error_number != 0) {
    scan_failed_ = true;
    ShowErrToUser("The synchronization cannot proceed because the folder '" +
                      full_path +
                      "' could not be read: " + ErrorText(error_number),
                  kMbOkOnly);
    return;
  }
  const std::size_t last = listing_.size();
  const std::vector<std::size_t> usable =
      UsableRows(first, last, rel, full_path);

  if (!merge_only) {
    std::vector<std::string_view> new_names;
    for (std::size_t r : usable) {
      const std::string& name = listing_[r].name;
      if (tree.Find(name) < 0) new_names.push_back(name);
    }
    tree.AddSorted(new_names);
  }
  // The folder part of the names of files first met here.
  const std::uint32_t file_folder = FileFolderNumber(rel);
  for (std::size_t r : usable) {
    // Recursion below may move the array: the row is not used after it.
    const FolderEntry& row = listing_[r];
    const long node = tree.Find(row.name);
    if (node < 0) continue;  // a merge-to folder adds no names of its own
    if ((row.attributes & kAttrDirectory) == 0) {
      AddFileCopy(i, rel, file_folder, tree, node, row);
      continue;
    }
    std::shared_ptr<StringTree> sub = tree.SubTree(node);
    if (!sub && !merge_only) {
      sub = std::make_shared<StringTree>(names_);
      tree.SetSubTree(node, sub);
    }
    if (sub) {
      const std::string sub_rel = rel + row.name + kPathSeparator;
      NoteFolder(i, sub_rel);
      ReadFolder(i, folder, sub_rel, *sub, merge_only);
      if (StopFlag || scan_failed_) return;
      // The sub-folder's rows are done with: the array holds the rows of
      // the folders on the way down, never those of a whole tree.
      listing_.erase(listing_.begin() + static_cast<std::ptrdiff_t>(last),
                     listing_.end());
    }
  }
}

bool Synchronizer::NoteLeftOut(const std::vector<LeftOutEntry>& left_out,
                               const std::string& rel,
                               const std::string& full_path) {
  for (const LeftOutEntry& entry : left_out) {
    TheLog().PrintL("Left out: ", entry.path, " (", entry.reason, ")");
    if (entry.error) {
      // What the entry holds is unknown: its copies elsewhere would look
      // deleted or new.
      ShowErrToUser("The synchronization cannot proceed because the folder '" +
                        full_path + "' could not be read: " + entry.path +
                        ": " + entry.reason,
                    kMbOkOnly);
      return false;
    }
    // An unfinished copy is Pairwell's own leftover, under a name of its
    // own; one older than this run is removed when the actions begin.
    if (entry.name.compare(0, sizeof kPartialCopyPrefix - 1,
                           kPartialCopyPrefix) != 0) {
      left_out_names_.insert(UpperCase(rel + entry.name));
    } else if (entry.modify_date > 0 && entry.modify_date < scan_started_) {
      leftovers_.push_back(entry.path);
    }
  }
  return true;
}

void Synchronizer::BlockFiles() {
  if (left_out_names_.empty()) return;
  for (long f = 1; f <= WFileCount(); ++f) {
    SyncFile* const file = &WFile(f);
    // The name itself, then every folder above it.
    std::string key = UpperCase(file->RelativeName());
    for (;;) {
      if (left_out_names_.count(key) != 0) {
        file->SetBlocked();
        TheLog().PrintL("Left alone: ", file->RelativeName(),
                        " (a folder holds something under that name that "
                        "is not synchronized)");
        break;
      }
      const std::string::size_type slash = key.find_last_of(kPathSeparator);
      if (slash == std::string::npos) break;
      key.resize(slash);
    }
  }
}

bool Synchronizer::CheckEmptySources() {
  if (EfLastSyncDate() <= 0) return true;
  const std::vector<FolderCount> counts = CountFiles();
  bool deletes = false;
  for (const FolderCount& count : counts) deletes |= count.deletions > 0;
  if (!deletes) return true;
  for (int i = 1; i <= WPathCount(); ++i) {
    // Only files that take part count: a folder holding nothing but links,
    // leftovers, excluded names or empty folders looks like a drive that is
    // not mounted.
    if (FolderTypeOf(WPathFlags(i)) != kFolderSource ||
        At(work_folders_, i).missing ||
        counts[static_cast<std::size_t>(i - 1)].files > 0) {
      continue;
    }
    ShowErrToUser(
        "The synchronization cannot proceed because the folder '" + WPath(i) +
            "' is empty, so the files of the other folders would be "
            "deleted.  If it is a drive or share that is not mounted, "
            "mount it and try again; to delete the files, delete them in "
            "the other folders too.",
        kMbExclamation);
    return false;
  }
  return true;
}

std::vector<Synchronizer::FolderCount> Synchronizer::CountFiles() const {
  std::vector<FolderCount> counts(static_cast<std::size_t>(WPathCount()));
  for (long f = 1; f <= WFileCount(); ++f) {
    const SyncFile* const file = &WFile(f);
    // A blocked file takes no part in the run.
    if (file->Blocked()) continue;
    const bool deleting = file->Action == kDeleteAll;
    for (int i = 1; i <= WPathCount(); ++i) {
      if (!file->CopyExists(i)) continue;
      FolderCount& count = counts[static_cast<std::size_t>(i - 1)];
      ++count.files;
      if (deleting && file->Deletable(i)) ++count.deletions;
    }
  }
  return counts;
}

std::vector<std::string> Synchronizer::MassDeletionWarnings() const {
  std::vector<std::string> warnings;
  const std::vector<FolderCount> counts = CountFiles();
  for (int i = 1; i <= WPathCount(); ++i) {
    const FolderCount& count = counts[static_cast<std::size_t>(i - 1)];
    if (count.deletions < kMassDeletionMinimum ||
        count.deletions * 2 <= count.files) {
      continue;
    }
    warnings.push_back("This run would delete " +
                       std::to_string(count.deletions) + " of the " +
                       std::to_string(count.files) + " files in the folder '" +
                       WPath(i) + "'.");
  }
  return warnings;
}

std::string Synchronizer::SpellingIn(int i, const std::string& rel) const {
  if (folder_spellings_.empty()) return rel;
  // The deepest folder of the name that folder i spells otherwise.
  std::string::size_type end = rel.find_last_of(kPathSeparator);
  while (end != std::string::npos) {
    const std::string folder = rel.substr(0, end + 1);
    const auto found =
        folder_spellings_.find(std::to_string(i) + ":" + UpperCase(folder));
    if (found != folder_spellings_.end()) {
      return found->second + rel.substr(end + 1);
    }
    if (end == 0) break;
    end = rel.find_last_of(kPathSeparator, end - 1);
  }
  return rel;
}

void Synchronizer::AddFileCopy(int i, const std::string& rel,
                               std::uint32_t file_folder, StringTree& tree,
                               long node, const FolderEntry& row) {
  // A node made for a folder elsewhere has no file yet.
  if (tree.ListInt(node) < 0) {
    tree.SetListInt(node, static_cast<std::int32_t>(
                              AddSyncFile(file_folder, tree.KeyRef(node))));
  }
  SyncFile& file = WFile(tree.ListInt(node));
  file.SetCopy(i, CopyRecord{row.modify_date, row.create_date, row.size,
                             row.attributes, row.inode});
  // Only a name spelled otherwise than the file's own needs building.
  if (!file.SpelledAs(file_folder, row.name)) {
    file.SetSpelling(i, rel + row.name);
  }
  if (WarnFutureDate && file.GetEffectiveDate(i) > folder_read_at_) {
    ++FutureDateCount;
  }
}

bool Synchronizer::PassesFilters(const std::string& name,
                                 bool is_folder) const {
  // An empty exclude list matches everything, so it is tested first.
  if (is_folder) {
    return Recursive && MatchesSpec(name, FolderSpec) &&
           (FolderExcludeSpec.empty() || !MatchesSpec(name, FolderExcludeSpec));
  }
  return MatchesSpec(name, FileSpec) &&
         (ExcludeSpec.empty() || !MatchesSpec(name, ExcludeSpec));
}

void Synchronizer::NoteFolder(int i, const std::string& rel) {
  // Folders compare ignoring case, as the tree does.
  const std::string key = UpperCase(rel);
  const auto inserted = sub_folder_index_.emplace(key, sub_folders_.size());
  if (inserted.second) sub_folders_.emplace_back(rel, 0);
  auto& folder = sub_folders_[inserted.first->second];
  folder.second |= 1u << (i - 1);
  if (folder.first != rel) {
    folder_spellings_[std::to_string(i) + ":" + key] = rel;
  }
}

long Synchronizer::IncompleteFiles() const {
  long incomplete = 0;
  for (long f = 1; f <= WFileCount(); ++f) {
    const SyncFile* const file = &WFile(f);
    if (file->Blocked()) continue;
    // Only a file that some source still has would look deleted from the
    // others; copies left in other folders drop out of later runs.
    bool in_a_source = false;
    for (int i = 1; i <= WPathCount() && !in_a_source; ++i) {
      in_a_source =
          FolderTypeOf(WPathFlags(i)) == kFolderSource && file->CopyExists(i);
    }
    if (in_a_source &&
        (file->ComputeSituation(false) & kSituMissingFromSource) != 0) {
      ++incomplete;
    }
  }
  return incomplete;
}

long Synchronizer::AddSyncFile(const std::string& rel) {
  files_.Add(this, rel);
  return WFileCount();
}

long Synchronizer::AddSyncFile(std::uint32_t folder, NameRef leaf) {
  files_.Add(this, folder, leaf);
  return WFileCount();
}

}  // namespace pairwell
