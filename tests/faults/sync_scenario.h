// Two folders as a sync half an hour ago left them, with the source edited
// since: files kept, replaced, created and deleted, small, medium and
// large. It writes both folders and tells whether a destination is in a
// state that some moment of the next sync could leave behind.
#ifndef PAIRWELL_TESTS_FAULTS_SYNC_SCENARIO_H_
#define PAIRWELL_TESTS_FAULTS_SYNC_SCENARIO_H_

#include <time.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "faults/fault_files.h"

namespace pairwell {

// What the source did to a file since the last sync, and so what the next
// sync does to the destination's copy.
enum class Fate {
  kKept,      // the same in both folders: left as it is
  kReplaced,  // changed in the source: the old copy is replaced
  kCreated,   // new in the source: copied
  kDeleted,   // deleted from the source: the copy is deleted
};

struct ScenarioFile {
  std::string name;  // relative, '/' between folders
  Fate fate = Fate::kKept;
  std::size_t old_size = 0;  // before the edits; unused when created
  std::size_t new_size = 0;  // after them; unused when deleted
};

// What one look at a destination found.
struct DestinationCheck {
  std::vector<std::string> problems;  // empty when the state is possible
  int files_checked = 0;
  int replaced_done = 0;  // replaced files that hold the new version
  int created_done = 0;
  int deleted_done = 0;
  int left_to_do = 0;  // replaced, created or deleted files not done yet
  std::vector<std::string> partial_copies;  // leftovers, relative
};

class SyncScenario {
 public:
  // Dates are set relative to now: old versions two hours ago, the last
  // sync half an hour ago, the edits ten minutes ago.
  SyncScenario();

  const std::vector<ScenarioFile>& files() const { return files_; }
  // The LastSyncDate value for the set's section.
  std::string LastSyncText() const { return LocalDateText(last_sync_); }

  // Creates the folder root with the edited source's files; false when a
  // write fails.
  bool WriteSource(const std::string& root) const;
  // Creates the folder root with the destination as the last sync left it.
  bool WriteDestination(const std::string& root) const;

  // Every file of the destination must hold the old or the new version,
  // whole and with that version's date; only a created file may be
  // missing, only a deleted one may remain; nothing else may be there
  // except leftover temporary copies.
  DestinationCheck CheckDestination(const std::string& root) const;
  // The source must be exactly as written: a sync never changes it here.
  std::vector<std::string> CheckSource(const std::string& root) const;

 private:
  struct Version {
    Digest digest;
    time_t modified = 0;
  };

  static bool Matches(const TreeEntry& entry, const Version& version);

  std::string Content(const ScenarioFile& file, bool edited) const;
  time_t DateOf(const ScenarioFile& file, bool edited) const;
  // What the destination may hold of a file, in words.
  std::string Expected(std::size_t index) const;
  bool WriteVersion(const std::string& root, const ScenarioFile& file,
                    bool edited) const;
  void CheckFile(std::size_t index, const TreeEntry& entry,
                 DestinationCheck* check) const;
  std::vector<std::string> UnexpectedEntries(
      const std::map<std::string, TreeEntry>& tree) const;

  time_t old_time_;
  time_t last_sync_;
  time_t edit_time_;
  std::vector<ScenarioFile> files_;
  std::vector<Version> old_versions_;  // by index in files_
  std::vector<Version> new_versions_;
  std::set<std::string> file_names_;
  std::set<std::string> folders_;  // every folder a file lies in
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_FAULTS_SYNC_SCENARIO_H_
