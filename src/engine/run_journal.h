// The record a run keeps in each folder it changes: who ran, what the set's
// last-sync date was before, and every step, each written before it is
// made, so that a run cut short by a crash or a power cut can still be put
// back. One text file per folder and run; a line a step.
#ifndef PAIRWELL_ENGINE_RUN_JOURNAL_H_
#define PAIRWELL_ENGINE_RUN_JOURNAL_H_

#include <cstdint>
#include <string>
#include <vector>

#include "util/append_file.h"
#include "util/file_system.h"

namespace pairwell {

struct JournalHeader {
  std::string set_name;
  std::string run_id;
  std::string folder;         // the synced folder, as the set names it
  std::int64_t started = 0;   // POSIX seconds
  // The set's last-sync date before the run (0: never) and its moment.
  double last_sync_date = 0;
  bool has_last_sync_moment = false;
  std::int64_t last_sync_moment = 0;
  std::string undoes;  // the run an undo put back; "" for a sync
};

struct JournalStep {
  enum class Kind {
    kCreated,        // a copy put where there was none
    kReplaced,       // a copy put over another, which was kept
    kDeleted,        // a copy removed, and kept
    kFolderCreated,  // a folder made
    kFolderRemoved,  // a folder removed (by an undo)
  };
  Kind kind = Kind::kCreated;
  std::string rel;   // the name in the synced folder, "/" between levels
  std::string kept;  // full path of the old copy (replaced, deleted)
  FileIdentity before;  // the old copy (replaced, deleted)
  FileIdentity after;   // the copy put in place (created, replaced)
};

// A journal read back.
struct JournalContent {
  JournalHeader header;
  std::vector<JournalStep> steps;
  // The run wrote its last line: it was not cut short. `stopped` when it
  // ended through a stop or an abort.
  bool ended = false;
  bool stopped = false;
};

class RunJournal {
 public:
  // Creates the journal (which must not exist yet) with its header, on the
  // disk before this returns. 0, or the system error number.
  int Create(const std::string& path, const JournalHeader& header);

  // Appends the step; it reaches the system at once, so that a crash of the
  // program right after it leaves it recorded. 0, or the error number.
  int Record(const JournalStep& step);
  // Holds the step back, to be appended with the others by WriteAdded:
  // a batch's steps in one write.
  void Add(const JournalStep& step);
  int WriteAdded();

  // Appends the closing line and puts everything on the disk.
  int End(bool stopped);

  // Puts what was recorded on the disk. 0, or the error number.
  int Flush() { return file_.Flush(); }

  const std::string& path() const { return file_.path(); }

  // Reads the header only (fast on a large journal); false with the reason
  // when the file is no journal.
  static bool ReadHeader(const std::string& path, JournalHeader* header,
                         std::string* problem);
  // Reads it all. A last line cut short (the run died while writing it) is
  // dropped. False with the reason when the file is no journal.
  static bool Read(const std::string& path, JournalContent* content,
                   std::string* problem);

 private:
  AppendFile file_;
  std::string added_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_RUN_JOURNAL_H_
