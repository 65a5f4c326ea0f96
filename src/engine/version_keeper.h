// Where a run keeps the copies it replaces or deletes, with its journals:
// a versions area at the top of each synced folder,
// "<folder>/.pairwell/versions/<run>/" (the journal, and the old copies
// under "files/" by their names in the folder), or the set's archive
// folder for what the set archives. A run's areas are pruned after the
// set's number of days; the archive never is.
//
// An old copy is kept by a second name (a hard link) before anything is put
// over it, so the name never goes missing, and moved rather than deleted;
// across file systems, or where there are no links, it is copied, on the
// disk before its original goes. Every step is in the journal before it is
// made.
#ifndef PAIRWELL_ENGINE_VERSION_KEEPER_H_
#define PAIRWELL_ENGINE_VERSION_KEEPER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "engine/run_journal.h"

namespace pairwell {

class LogFile;

// The versions area of a synced folder.
std::string VersionsFolder(const std::string& folder);
// Whether the path lies in a versions area (and not in an archive).
bool InVersionsArea(const std::string& path);

class VersionKeeper {
 public:
  struct Settings {
    std::string set_name;
    // Runs older than this many days are pruned; 0 keeps nothing (unless
    // the set archives, or always_keep).
    int keep_days = 30;
    bool archive_deleted = false;
    bool archive_overwritten = false;
    std::string archive_path;
    // The set's last-sync date before the run.
    double last_sync_date = 0;
    bool has_last_sync_moment = false;
    std::int64_t last_sync_moment = 0;
    std::string undoes;  // for an undo: the run it puts back
    // An undo keeps what it removes whatever keep_days says.
    bool always_keep = false;
  };

  // folders[j - 1] is the set's working folder j.
  VersionKeeper(Settings settings, std::vector<std::string> folders);
  ~VersionKeeper();
  VersionKeeper(const VersionKeeper&) = delete;
  VersionKeeper& operator=(const VersionKeeper&) = delete;

  // Whether the run keeps old copies and a journal; when not, deletions
  // and replacements are final.
  bool Keeping() const;
  const std::string& RunId() const { return run_id_; }
  const Settings& settings() const { return settings_; }

  // Where the old copy at path (in folder j) goes when it is deleted or
  // replaced.
  std::string KeptPath(int j, const std::string& path, bool deleted) const;

  // Removes the areas of this set's runs older than keep_days from every
  // folder, logging each (a simulation only logs).
  void Prune(LogFile& log, bool simulate);

  // Checks the archive folder when the set archives, and makes the run's
  // area and journal in each folder j with changes[j - 1]. "" when the run
  // may go on, else what to tell the person (the run must change nothing).
  std::string Begin(const std::vector<bool>& changes);

  // The steps. Each is recorded before it is made; 0 or the system error
  // number.
  // Records the folder levels below folder j's top that are missing on the
  // way to folder_path, before they are made.
  int NoteFolderCreated(int j, const std::string& folder_path);
  int NoteFolderRemoved(int j, const std::string& folder_path);
  int NoteCreated(int j, const std::string& path, const FileIdentity& after);
  // Keeps the copy at path before another is put over it: RecordReplaced,
  // WriteRecords and KeepOldCopy. old_mode (>= 0) is its mode before the
  // run changed it.
  int KeepReplaced(int j, const std::string& path, int old_mode,
                   const FileIdentity& after);

  // The same in halves, for a batch of copies: every step recorded and
  // written (and flushed with the copies' bytes) before the first is made.
  // The Record calls hold the steps back until WriteRecords.
  int RecordCreated(int j, const std::string& path, const FileIdentity& after);
  int RecordReplaced(int j, const std::string& path, int old_mode,
                     const FileIdentity& after);
  int WriteRecords();
  // Gives the copy at path its kept name (a link, or a copy).
  int KeepOldCopy(int j, const std::string& path);
  // Moves the copy at path to where it is kept, instead of deleting it.
  int MoveDeleted(int j, const std::string& path);

  // The folders outside the synced ones that the run wrote to.
  std::vector<std::string> OtherWrittenFolders() const;

  // Closes the journals; everything recorded is then on the disk.
  void End(bool stopped);

 private:
  std::string RelativeName(int j, const std::string& path) const;
  std::string RunArea(int j) const;
  // The journal of folder j, its area made first when it is not yet.
  RunJournal* JournalOf(int j, int* error_number);
  JournalStep StepAbout(int j, JournalStep::Kind kind,
                        const std::string& path) const;
  // Adds the step to folder j's journal, written at once when `now`, else
  // with the next WriteRecords.
  int Add(int j, const JournalStep& step, bool now);
  int MakeArea(int j);
  std::string CheckArchive() const;
  // Makes the folder where kept will be, when not known to exist.
  int MakeParentOf(const std::string& kept);
  void PruneFolder(const std::string& folder, std::int64_t oldest_kept,
                   LogFile& log, bool simulate);

  Settings settings_;
  std::vector<std::string> folders_;
  std::string run_id_;
  std::int64_t started_ = 0;
  std::vector<std::unique_ptr<RunJournal>> journals_;
  std::unordered_set<std::string> made_folders_;
  bool archive_written_ = false;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_VERSION_KEEPER_H_
