// One sync set: its folders, filters, options and its own copy of the
// conflict types, with their persistence in a "Sec: <name>" section.
#ifndef PAIRWELL_ENGINE_SYNCHRONIZER_H_
#define PAIRWELL_ENGINE_SYNCHRONIZER_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/conflict_descriptor.h"
#include "engine/copy_pipeline.h"
#include "engine/folder_prefetch.h"
#include "engine/log_file.h"
#include "engine/name_arena.h"
#include "engine/run_state.h"
#include "engine/string_tree.h"
#include "engine/sync_file_list.h"
#include "engine/sync_progress.h"
#include "engine/version_keeper.h"
#include "util/file_system.h"
#include "util/user_interface.h"

namespace pairwell {

class INIFileSection;
class SyncFile;

// Path flags of a folder.
constexpr std::int32_t kFolderTypeMask = 3;  // bits 0-1: the folder type
constexpr std::int32_t kFolderSource = 0;
constexpr std::int32_t kFolderMirrorTo = 1;
constexpr std::int32_t kFolderMergeTo = 2;
constexpr std::int32_t kFolderEnabled = 4;
constexpr std::int32_t kFolderAllowBaseCreation = 8;
constexpr std::int32_t kFolderSkipOnError = 16;

// The type (bits 0-1) of a folder's flags. The unused value 3 counts as a
// mirror-to folder, as the main window shows it.
inline std::int32_t FolderTypeOf(std::int32_t flags) {
  const std::int32_t type = flags & kFolderTypeMask;
  return type == kFolderTypeMask ? kFolderMirrorTo : type;
}

// The most folders PathAdd lets a set have.
constexpr int kMaxFolders = 8;

// Lists are indexed from 1; an index outside 1..count throws
// std::out_of_range.
class Synchronizer {
 public:
  // A new set has the defaults below and no folders or conflict types.
  Synchronizer();
  Synchronizer(const Synchronizer&) = delete;
  Synchronizer& operator=(const Synchronizer&) = delete;

  std::string Name = "Untitled";
  bool Recursive = true;
  bool SyncFolders = false;
  int DefActionFlags = 8;
  bool WarnFutureDate = true;
  bool UseCreateDate = true;
  bool ClearArchiveOnCopy = false;
  bool MatchCDateOnCopy = true;
  bool UseLogFile = false;
  std::string LogFileName;
  bool ClearLogDaily = false;
  bool SmartSync = true;
  bool AllowSmartDeletes = true;
  // 0: never synchronized. Stored with its moment, so that a change of time
  // zone or daylight saving between two runs does not move it.
  double LastSyncDate = 0;
  bool ArchiveDeleted = false;
  bool ArchiveOverwritten = false;
  std::string ArchivePath;
  std::string FileSpec;
  std::string ExcludeSpec;
  std::string FolderSpec;
  std::string FolderExcludeSpec;
  // Days the copies a run replaces or deletes are kept in each folder's
  // versions area; 0 keeps none (deletions and replacements are then final,
  // unless the set archives them).
  int VersionDays = kDefaultVersionDays;
  static constexpr int kDefaultVersionDays = 30;
  bool QuietMode = false;
  bool StopFlag = false;
  long FutureDateCount = 0;
  std::string SyncMsg;
  // Not stored. When set, a scan creates no folder: a missing folder that
  // may be created takes part as an empty one, so a plan changes nothing.
  bool DryRun = false;

  // The program-wide log (not owned); null until NewSyncSet gives it.
  LogFile* Log() const { return log_; }
  void SetLog(LogFile* log) { log_ = log; }
  // The log to write to: the program-wide one, or a closed one of the set's
  // own that writes nowhere when the set has none.
  LogFile& TheLog();

  // The program's run state (not owned); null until NewSyncSet gives it.
  // A set without one runs for real, with no error-handling table.
  void SetRunState(const RunState* state) { run_state_ = state; }
  const RunState& Run() const;

  // Folders.
  int PathCount() const { return static_cast<int>(folders_.size()); }
  const std::string& Path(int i) const;
  void SetPath(int i, const std::string& path);
  std::int32_t PathFlags(int i) const;
  void SetPathFlags(int i, std::int32_t flags);
  // Appends an enabled source folder (flags 4); does nothing when the set
  // already has kMaxFolders folders.
  void PathAdd(const std::string& path);
  // Removes folder i; later folders move down by one.
  void PathRemove(int i);
  // Removes every folder (nothing else).
  void Clear();
  // Flags of folder i become flags | bits, or flags & ~bits.
  void SetPathFlag(int i, std::int32_t bits);
  void ClearPathFlag(int i, std::int32_t bits);

  // Conflict types.
  int ConflictTypeCount() const {
    return static_cast<int>(conflict_types_.size());
  }
  ConflictDescriptor& ConflictTypes(int i);
  const ConflictDescriptor& ConflictTypes(int i) const;
  void SetConflictTypes(int i, const ConflictDescriptor& type);

  // Working folders of the current run, its files (in the order their
  // names were first met) and its folder tree.
  int WPathCount() const { return static_cast<int>(work_folders_.size()); }
  const std::string& WPath(int i) const;
  std::int32_t WPathFlags(int i) const;
  long WFileCount() const { return static_cast<long>(files_.Count()); }
  SyncFile& WFile(long i) const;
  StringTree& WRootTree() { return *root_tree_; }
  // The folder part of the files' names, by the number a file keeps: 0 is
  // the top level (""), the others end in a separator.
  const std::string& FileFolder(std::uint32_t folder) const;

  // The moment the last BuildActionList began (local day count).
  double ScanStarted() const { return scan_started_; }

  // Sets LastSyncDate (0: never) as a person gives it, dropping an unusable
  // text read from the file.
  void SetLastSyncDate(double date);
  // The scan's start becomes the last-sync date and moment.
  void MarkSynchronized();
  // The set section's "LastSyncDate" text when it named no date the program
  // can use (LastSyncDate is then 0 and every run refuses); else "".
  const std::string& UnusableLastSyncDate() const {
    return unusable_last_sync_date_;
  }
  // The moment kept with LastSyncDate; false when there is none.
  bool LastSyncMoment(std::int64_t* moment) const;
  // Puts back a last-sync date and moment, as a run's journal kept them.
  void RestoreLastSync(double date, bool has_moment, std::int64_t moment);
  // Writes (or replaces) the LastSyncDate and LastSyncMoment keys, when
  // there is a date to keep; empties them where the set has none any more.
  void WriteLastSync(INIFileSection& section) const;

  // The relative name with its folder part as working folder i spells it,
  // where the scan met that folder there in another case.
  std::string SpellingIn(int i, const std::string& rel) const;

  // Operations of the last PerformActions that failed and were skipped, or
  // were skipped because their file changed since the scan.
  long IgnoredErrors() const { return ignored_errors_; }
  void NoteSkipped() { ++ignored_errors_; }
  // Whether the last run was stopped by an abort answer to an error (rather
  // than by a stop request through StopFlag).
  bool Aborted() const { return aborted_; }

  // Files of the run (not blocked) that a source folder still lacks while
  // another source folder has them. Such a file would look deleted next time,
  // so the last-sync date must not move while there are any.
  long IncompleteFiles() const;

  // Deleting at least this many files, and more than half of a folder's
  // files, needs a yes of its own.
  static constexpr long kMassDeletionMinimum = 10;
  // One line per working folder in which the present actions would delete
  // more than half of the files (and at least kMassDeletionMinimum): "This
  // run would delete 40 of the 50 files in the folder '/x'."
  std::vector<std::string> MassDeletionWarnings() const;

  // Builds the run's working data: checks and prepares the folders, reads
  // them (sources, then merge-to, then mirror-to folders) and gives every
  // file its default action. False when a folder check refused (the person
  // has been told) or the run was cancelled through StopFlag.
  bool BuildActionList();

  // Empties the working files, folders and tree.
  void FreeSyncData();

  // The threads a scan may use, its own included: with more than one, the
  // working folders after the first are listed ahead on the others (merge-to
  // folders excepted: they are read only where the tree leads). 0, the
  // default, means one per core. The result is the same whatever the count.
  void SetScanThreads(int threads) { scan_threads_ = threads; }

  // The threads that write copies, ahead of the file at hand, while
  // PerformActions runs; 0, the default, means kDefaultCopyThreads. The log,
  // the questions and the result are the same whatever the count.
  void SetCopyThreads(int threads) { copy_threads_ = threads; }
  static constexpr int kDefaultCopyThreads = 4;

  // The 1-based index of the file whose action PerformActions carries out
  // now (the count of files done so far plus one); 0 before the actions.
  long CurrentAction() const { return current_action_; }

  // Carries out every file's action in list order (creating the folders of
  // the sources first when SyncFolders is on). Stops before the next file
  // once StopFlag is set (an abort answer sets it). Copies are written ahead
  // on other threads and put in place in batches, each once its bytes are
  // on the disk; it returns once everything it wrote, put in place and
  // deleted is on the disk, so "completed" holds even after a power cut.
  void PerformActions();

  // What keeps the old copies of the run being performed (null outside
  // PerformActions); an undo gives its own.
  VersionKeeper* Keeper() const { return keeper_.get(); }
  // Settings for a keeper of this set's, with the last-sync date as it is.
  VersionKeeper::Settings KeeperSettings() const;
  // The working folders' paths, folder 1 first.
  std::vector<std::string> WorkingFolderPaths() const;
  // Per working folder (index - 1): whether the present actions change it.
  std::vector<bool> FoldersTheRunChanges() const;

  // How far the actions of the last PerformActions have come.
  const SyncProgress& Progress() const { return progress_; }

  // Lets window events run and shows SyncMsg, at most every 50 ms.
  void ManageUI();

  // What to do about a failed step: kIdAbort, kIdRetry or kIdIgnore (kIdNo
  // from quiet mode counts as abort), from the "ErrorHandling" table (logged)
  // or from the person.
  int ErrorPolicy(const std::string& message, int error_number);

  // Runs the step (returning 0 or an error number) until it succeeds or the
  // error policy ignores or aborts it. An abort sets StopFlag. A step that
  // fails once a stop was requested (it ended early because of it) is not
  // asked about. True on success.
  template <typename Step>
  bool WithErrorPolicy(const std::string& message, Step step) {
    for (;;) {
      const int error_number = step();
      if (error_number == 0) return true;
      if (StopFlag) return false;
      const int answer = ErrorPolicy(message, error_number);
      if (answer == kIdRetry) continue;
      if (answer == kIdIgnore) {
        ++ignored_errors_;
      } else {
        aborted_ = true;
        StopFlag = true;
      }
      return false;
    }
  }

  // Shows a message for this set: in quiet mode it goes to the log instead
  // and the answer is kIdNo. A style without buttons or icon of its own gets
  // the exclamation icon.
  int ShowErrToUser(const std::string& message, int style);

  // LastSyncDate when SmartSync is on, else 0 (never).
  double EfLastSyncDate() const { return SmartSync ? LastSyncDate : 0; }

  // The 1-based index of the first conflict type that accepts the situation
  // code, or -1.
  int GetConflictForSitu(int situation) const;

  // Replaces the conflict types with the valid entries (those with at least
  // one pattern) of the "Conflict Types" section, comments skipped.
  void ReadConflictInfo(const INIFileSection& section);

  // Reads folders, options and custom conflict handling from a set section.
  // Missing keys take their defaults; bad values never fail. The Name is not
  // read here. ReadConflictInfo must have run first.
  void ReadFromINI(const INIFileSection& section);

  // Writes the set into its (new, empty) section in the fixed key order.
  void WriteToINI(INIFileSection& section) const;

 private:
  struct Folder {
    std::string path;
    std::int32_t flags = kFolderEnabled;
    // A dry run's folder that a real run would create: read as empty.
    bool missing = false;
  };

  bool PrepareFolders();
  bool CheckFolderCounts();
  void ReadFolderOfPath(int i);
  // The working folders in the order the scan reads them.
  std::vector<int> ReadOrder() const;
  // Starts listing the working folders that the scan reads after the
  // first, when more than one thread may be used.
  void StartPrefetch();
  // Appends folder rel's rows (full_path on disk) to the entry array, from
  // the listing made ahead or read now; 0 or the error number.
  int ListRows(int i, const std::string& rel, const std::string& full_path,
               std::vector<LeftOutEntry>* left_out);
  void ReadFolder(int i, const std::string& folder, const std::string& rel,
                  StringTree& tree, bool merge_only);
  // Sorts the rows [first, last) of the entry array by name and marks the
  // rows to use: those that pass the filters and are not a second name
  // equal ignoring case (logged and left out).
  std::vector<std::size_t> UsableRows(std::size_t first, std::size_t last,
                                      const std::string& rel,
                                      const std::string& full_path);
  // Stores folder i's copy of the file row in the folder rel (numbered
  // file_folder) on the tree's node, making the file when it is new.
  void AddFileCopy(int i, const std::string& rel, std::uint32_t file_folder,
                   StringTree& tree, long node, const FolderEntry& row);
  // Logs what a listing left out and remembers the names; false when an
  // entry could not be examined (the scan then fails).
  bool NoteLeftOut(const std::vector<LeftOutEntry>& left_out,
                   const std::string& rel, const std::string& full_path);
  // Marks the files under a left-out name as not to be touched.
  void BlockFiles();
  // Refuses a run in which a source folder without files that take part (a
  // drive not mounted?) would make the other folders' files be deleted.
  bool CheckEmptySources();
  // Per working folder: the run's files it holds, and how many of them the
  // present actions delete.
  struct FolderCount {
    long files = 0;
    long deletions = 0;
  };
  std::vector<FolderCount> CountFiles() const;
  // Removes (logging each) the leftovers of copies interrupted before this
  // run; a simulation only logs.
  void RemoveLeftovers();
  bool PassesFilters(const std::string& name, bool is_folder) const;
  // Notes that working folder i holds the folder rel (ending in a
  // separator).
  void NoteFolder(int i, const std::string& rel);
  // Creates, in every working folder, the folders a source folder holds.
  void CreateMissingFolders();
  // Starts progress_ over with the totals of the present actions.
  void StartProgress();
  // Prunes the set's old versions and prepares the run's own; false (the
  // person told, the run aborted) when they cannot be kept.
  bool StartKeeping();
  // The actions themselves, file after file, until a stop.
  void PerformFileActions();
  // Logs where the old copy at path (in folder j) goes, when it is kept.
  void LogKept(int j, const std::string& path, bool deleted);

  // The copies of PerformActions (synchronizer_copies.cc). A copy is
  // written beside its destination ahead of its file's turn, taken at the
  // turn, and put in place with the rest of its batch once their file
  // systems have been flushed.
  struct StagedCopy {
    SyncFile* file = nullptr;
    int source = 0;
    int dest = 0;
    std::string temp;
    std::int64_t bytes = 0;
    int old_mode = -1;  // the destination's mode before the run changed it
    int record_error = 0;  // why the journal could not record it, or 0
  };
  void StartCopies();
  // Submits the copies of the files after `current` while the bounds on
  // copies and bytes ahead allow.
  void SubmitCopiesAhead(long current);
  // Makes sure the folder exists for a copy written ahead; false leaves the
  // copy to its turn, where a failure is asked about.
  bool FolderReadyAhead(int d, const std::string& folder);
  // Makes folder (in working folder d), recording it first; 0 or the error
  // number.
  int MakeFolderIn(int d, const std::string& folder);
  // The copy of the file at hand to folder d: waits for it while the
  // windows breathe (submitting it first when it was not written ahead);
  // 0 and the staged copy in *temp, or the error number (ECANCELED after a
  // stop).
  int AwaitCopy(const SyncFile& file, int s, int d, std::string* temp);
  // Queues the copy of file's copy s over folder d, to be checked against
  // the scan just before it starts.
  long SubmitCopy(const SyncFile& file, int s, int d);
  // Forgets the copy written ahead for folder d of the file at hand.
  void CancelCopyAhead(int d);
  // Keeps the staged copy for the batch (or puts it in place at once,
  // outside PerformActions).
  void PlaceWhenFlushed(SyncFile& file, int s, int d, const std::string& temp,
                        int old_mode);
  // Records the batch's steps in the journals, in one write per folder.
  void RecordStagedCopies(std::vector<StagedCopy>& batch);
  // Renames the staged copy over its destination, keeping the old copy
  // first; 0 or the error number.
  int PutInPlace(StagedCopy& copy, const std::string& dest);
  // Holds the copy's step back in its folder's journal; 0 or the error
  // number.
  int RecordCopy(const StagedCopy& copy);
  void CopyTurnEnded(std::int64_t bytes);
  // Flushes the batch's file systems, then puts each copy in place, checking
  // once more that its destination did not change since the scan.
  void PlaceStagedCopies();
  // Flushes every file system that holds a copy of the batch; false when
  // one was given up.
  bool FlushStagedCopies(const std::vector<StagedCopy>& batch);
  // Cancels the copies written ahead, and puts the batch in place: before a
  // question about an error, so that the disk holds no more than needed and
  // an abort keeps every copy whose turn came.
  void SettleCopies();
  // Ends the copies: those ahead cancelled, the batch put in place, and
  // every file system the run changed flushed.
  void FinishCopies();
  // Flushes the file system holding path on another thread while the
  // windows breathe, through the error policy; false when given up.
  bool FlushFileSystemOf(const std::string& path);
  // Flushes every file system the run changed since the last time.
  void FlushWritten();
  // Notes that the run changes working folder `folder`.
  void NoteWritten(int folder);
  void RefreshCopyProgress(long ticket);
  long AddSyncFile(const std::string& rel);
  // The same for the file named leaf (one of the names) in the folder rel,
  // which FileFolderNumber(rel) numbered.
  long AddSyncFile(std::uint32_t folder, NameRef leaf);
  std::uint32_t FileFolderNumber(const std::string& rel);
  bool ComputeDefaultActions();

  static Folder& At(std::vector<Folder>& list, int i);
  static const Folder& At(const std::vector<Folder>& list, int i);
  void ReadFolders(const INIFileSection& section);
  void ReadOptions(const INIFileSection& section);
  void ReadCustomConflictConfig(const INIFileSection& section);
  void ReadLastSync(const INIFileSection& section);
  // Refuses a run whose last-sync date is unusable or lies ahead of the
  // scan: every file would look unchanged, and new ones deleted.
  bool CheckLastSyncDate();

  std::vector<Folder> folders_;
  std::vector<ConflictDescriptor> conflict_types_;
  std::vector<Folder> work_folders_;
  friend class SyncFile;
  // The scan's names: the tree's keys, which the files share.
  std::shared_ptr<NameArena> names_;
  SyncFileList files_;
  // What few files keep beyond their own object (SyncFile::Extra).
  std::vector<SyncFile::Extra> file_extras_;
  // The folder parts of the files' names, each once, as FileFolder numbers
  // them; file_folder_index_ finds a spelling's number.
  std::vector<std::string> file_folders_;
  std::unordered_map<std::string, std::uint32_t> file_folder_index_;
  // The sub-folders met by the scan, parents first, with a bit per working
  // folder that holds them (bit i-1 for folder i).
  std::vector<std::pair<std::string, std::uint32_t>> sub_folders_;
  std::unordered_map<std::string, std::size_t> sub_folder_index_;
  std::shared_ptr<StringTree> root_tree_;
  LogFile* log_ = nullptr;
  LogFile no_log_;
  const RunState* run_state_ = nullptr;
  // The rows of the folder being read; a folder's rows are an index range.
  std::vector<FolderEntry> listing_;
  int scan_threads_ = 0;
  std::unique_ptr<FolderPrefetch> prefetch_;
  // Per working folder: its root in prefetch_, or -1 when it is read here.
  std::vector<int> prefetch_root_;
  double scan_started_ = 0;
  std::int64_t scan_started_moment_ = 0;  // POSIX seconds
  std::int64_t last_sync_moment_ = 0;
  bool has_last_sync_moment_ = false;
  std::string unusable_last_sync_date_;
  // A folder that could not be read ends the scan: its files would
  // otherwise look deleted.
  bool scan_failed_ = false;
  // The present moment while a folder is read, for future-dated files.
  double folder_read_at_ = 0;
  // Unfinished copies of earlier runs that the scan met.
  std::vector<std::string> leftovers_;
  // Upper-cased relative names that a listing left out.
  std::unordered_set<std::string> left_out_names_;
  // "<folder index>:<upper-cased folder>" to that folder's spelling there,
  // where it differs from the first one met.
  std::unordered_map<std::string, std::string> folder_spellings_;
  long ignored_errors_ = 0;
  bool aborted_ = false;
  long current_action_ = 0;
  // SyncFile moves the counts on as its copies go.
  SyncProgress progress_;
  // Bytes of the copies whose turn has ended.
  std::int64_t turn_bytes_ = 0;
  std::uint64_t progress_tick_ = 0;
  int copy_threads_ = 0;
  bool performing_ = false;
  std::unique_ptr<CopyPipeline> copies_;
  std::unique_ptr<VersionKeeper> keeper_;
  // (file index, folder) of each copy written ahead, to its ticket.
  std::map<std::pair<long, int>, long> tickets_;
  // The files whose copies were submitted ahead: 1..submitted_through_.
  long submitted_through_ = 0;
  std::vector<StagedCopy> staged_;
  std::int64_t staged_bytes_ = 0;
  std::uint64_t staged_since_tick_ = 0;
  // Destination folders known to exist in this run.
  std::unordered_set<std::string> ready_folders_;
  // Per working folder (index - 1): whether the run changed it.
  std::vector<bool> folder_written_;
  // The file systems the run changed, each with a path on it.
  std::map<std::uint64_t, std::string> written_file_systems_;
  std::uint64_t last_status_tick_ = 0;
  bool status_shown_ = false;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_SYNCHRONIZER_H_
