#include "engine/run_undo.h"

#include <cerrno>

#include "engine/log_file.h"
#include "engine/synchronizer.h"
#include "engine/version_keeper.h"
#include "util/date_time.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/text.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

// The same file as the journal saw: size, date and serial number.
bool SameFile(const FileIdentity& a, const FileIdentity& b) {
  return a.size == b.size && a.modified_ns == b.modified_ns &&
         a.inode == b.inode;
}

std::string ParentOf(const std::string& path) {
  const std::string::size_type slash = path.find_last_of("/\\");
  if (slash == std::string::npos) return ".";
  return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::vector<std::string> SetFolders(const Synchronizer& set) {
  std::vector<std::string> folders;
  for (int i = 1; i <= set.PathCount(); ++i) folders.push_back(set.Path(i));
  return folders;
}

}  // namespace

RunUndo::RunUndo(Synchronizer& set) : set_(set) {}

RunUndo::~RunUndo() = default;

std::vector<RunSummary> RunUndo::Runs() const {
  return ListRuns(SetFolders(set_), set_.Name);
}

std::string RunUndo::Load(const std::string& id) {
  items_.clear();
  journals_.clear();
  const std::vector<RunSummary> runs = Runs();
  const std::string set_words = "the set '" + set_.Name + "'";
  if (id.empty() && runs.empty()) {
    return "There is no run of " + set_words + " to undo.";
  }
  const RunSummary* found = id.empty() ? &runs.front() : nullptr;
  for (const RunSummary& run : runs) {
    if (run.id == id) found = &run;
  }
  if (found == nullptr) {
    std::int64_t pruned_at = 0;
    if (FindPrunedRun(SetFolders(set_), set_.Name, id, &pruned_at)) {
      return "The run " + id + " of " + set_words +
             " can no longer be undone: the copies it kept were removed on " +
             FormatGeneralDate(FileTimeToDate(pruned_at, 0)) +
             ", after the set's " + CountText(set_.VersionDays, "day", "days") +
             ".";
    }
    return "There is no run " + id + " of " + set_words +
           " (the history of the set lists its runs).";
  }
  run_ = *found;
  std::string problem;
  if (!ReadRun(run_, &journals_, &problem)) {
    return "The run " + run_.id + " cannot be undone: " + problem + ".";
  }
  for (std::size_t k = 0; k < journals_.size(); ++k) {
    const std::string& folder = journals_[k].header.folder;
    const std::vector<JournalStep>& steps = journals_[k].steps;
    // Backwards: files before the folders that hold them.
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
      Item item;
      item.journal = k;
      item.step = *step;
      item.path = JoinPath(folder, step->rel);
      switch (step->kind) {
        case JournalStep::Kind::kCreated:
          item.action = Item::Action::kRemoveCreated;
          break;
        case JournalStep::Kind::kReplaced:
        case JournalStep::Kind::kDeleted:
          item.action = Item::Action::kPutBack;
          break;
        case JournalStep::Kind::kFolderCreated:
          item.action = Item::Action::kRemoveFolder;
          break;
        case JournalStep::Kind::kFolderRemoved:
          item.action = Item::Action::kMakeFolder;
          break;
      }
      item.state = Assess(item);
      // A changed file is left anyway; one that would be put back needs
      // its kept copy.
      FileIdentity kept;
      if (item.action == Item::Action::kPutBack &&
          item.state == Item::State::kReady &&
          !GetFileIdentity(item.step.kept, &kept)) {
        items_.clear();
        return "The run " + run_.id + " of " + set_words +
               " cannot be undone: the kept copy of " + item.path +
               " is missing (" + item.step.kept + "). Nothing was changed.";
      }
      items_.push_back(std::move(item));
    }
  }
  return "";
}

RunUndo::Item::State RunUndo::Assess(const Item& item) const {
  FileIdentity now;
  const bool present = GetFileIdentity(item.path, &now);
  switch (item.action) {
    case Item::Action::kRemoveCreated:
      if (!present) return Item::State::kNothing;
      return SameFile(now, item.step.after) ? Item::State::kReady
                                            : Item::State::kChanged;
    case Item::Action::kPutBack:
      if (!present) return Item::State::kReady;
      // Still the old copy: the run never got to it, or it is back.
      if (SameFile(now, item.step.before)) return Item::State::kNothing;
      return item.step.kind == JournalStep::Kind::kReplaced &&
                     SameFile(now, item.step.after)
                 ? Item::State::kReady
                 : Item::State::kChanged;
    case Item::Action::kRemoveFolder:
      return FolderExists(item.path) ? Item::State::kReady
                                     : Item::State::kNothing;
    case Item::Action::kMakeFolder:
      break;
  }
  return FolderExists(item.path) ? Item::State::kNothing : Item::State::kReady;
}

long RunUndo::ChangedCount() const {
  long changed = 0;
  for (const Item& item : items_) {
    if (item.state == Item::State::kChanged) ++changed;
  }
  return changed;
}

std::string RunUndo::Summary(bool force) const {
  long files = 0;
  long folders = 0;
  for (const Item& item : items_) {
    if (item.state == Item::State::kNothing ||
        (item.state == Item::State::kChanged && !force)) {
      continue;
    }
    const bool folder = item.action == Item::Action::kRemoveFolder ||
                        item.action == Item::Action::kMakeFolder;
    ++(folder ? folders : files);
  }
  const long changed = ChangedCount();
  if (files + folders == 0 && changed == 0) {
    return "Nothing is left to undo: the files of this run are as they were "
           "before it.";
  }
  std::string text =
      "Undoing this run puts back " + CountText(files, "file", "files");
  if (folders > 0) text += " and " + CountText(folders, "folder", "folders");
  if (changed == 0) return text + ".";
  if (force) {
    return text + "; " + std::to_string(changed) +
           " of them changed since the run: their present content is kept.";
  }
  return text + "; " + std::to_string(changed) + " changed since the run and " +
         (changed == 1 ? "is" : "are") + " left unless you tick the box below.";
}

std::string RunUndo::Describe(const Item& item, bool force) const {
  if (item.state == Item::State::kChanged && !force) {
    return "Leave " + item.path + ": it changed since the run";
  }
  const std::string kept =
      item.state == Item::State::kChanged ? " (its present content kept)" : "";
  switch (item.action) {
    case Item::Action::kRemoveCreated:
      return "Remove " + item.path + ", which the run created" + kept;
    case Item::Action::kPutBack:
      return "Put back " + item.path + " from " + item.step.kept + kept;
    case Item::Action::kRemoveFolder:
      return "Remove the folder " + item.path + " when empty";
    case Item::Action::kMakeFolder:
      break;
  }
  return "Create the folder " + item.path;
}

bool RunUndo::PutBack(const Item& item, bool present) {
  const int j = KeeperIndex(item);
  const std::string& kept = item.step.kept;
  return set_.WithErrorPolicy(
      "Unable to put back the following file:\n\n" + kept + " -> " +
          item.path,
      [&] {
        const std::string parent = ParentOf(item.path);
        int error_number = 0;
        if (!FolderExists(parent)) {
          error_number = keeper_->NoteFolderCreated(j, parent);
          if (error_number == 0) error_number = MakeDirectoryError(parent);
          if (error_number != 0) return error_number;
        }
        // An archived copy, or one kept on another drive, comes back as a
        // copy of its own, on the disk before it takes the name: the
        // archive stays whole.
        std::string staged;
        if (!InVersionsArea(kept) ||
            FileSystemId(kept) != FileSystemId(parent)) {
          error_number = StageCopy(kept, item.path, &staged, CopyProgress(),
                                   Durability::kFlushData);
          if (error_number != 0) return error_number;
        }
        const std::string& source = staged.empty() ? kept : staged;
        FileIdentity version;
        if (!GetFileIdentity(source, &version)) error_number = ENOENT;
        if (error_number == 0) {
          error_number =
              present ? keeper_->KeepReplaced(j, item.path, -1, version)
                      : keeper_->NoteCreated(j, item.path, version);
        }
        if (error_number == 0) error_number = RenameFile(source, item.path);
        if (error_number != 0) {
          if (!staged.empty()) DeleteFile(staged);
          return error_number;
        }
        return item.step.before.mode == version.mode
                   ? 0
                   : SetFileMode(item.path, item.step.before.mode);
      });
}

bool RunUndo::RemoveCreated(const Item& item) {
  return set_.WithErrorPolicy(
      "Unable to delete the following file:\n\n" + item.path,
      [&] { return keeper_->MoveDeleted(KeeperIndex(item), item.path); });
}

bool RunUndo::RemoveFolder(const Item& item) {
  const int error_number =
      keeper_->NoteFolderRemoved(KeeperIndex(item), item.path);
  const int removed =
      error_number != 0 ? error_number : pairwell::RemoveFolder(item.path);
  if (removed == ENOTEMPTY) {
    set_.TheLog().PrintL("Left the folder ", item.path, ": it is not empty");
    return true;
  }
  if (removed == 0) return true;
  set_.TheLog().PrintErrL("Could not remove the folder ", item.path, ": ",
                          ErrorText(removed));
  return false;
}

bool RunUndo::MakeFolder(const Item& item) {
  return set_.WithErrorPolicy(
      "Unable to create the following folder:\n\n" + item.path, [&] {
        const int error_number =
            keeper_->NoteFolderCreated(KeeperIndex(item), item.path);
        return error_number != 0 ? error_number
                                 : MakeDirectoryError(item.path);
      });
}

RunUndo::Outcome RunUndo::Perform(bool force, bool simulate) {
  Outcome outcome;
  set_.StopFlag = false;
  VersionKeeper::Settings settings = set_.KeeperSettings();
  settings.undoes = run_.id;
  settings.always_keep = true;
  std::vector<std::string> folders;
  for (const JournalContent& journal : journals_) {
    folders.push_back(journal.header.folder);
  }
  keeper_ = std::make_unique<VersionKeeper>(settings, folders);
  LogFile& log = set_.TheLog();
  log.PrintL("Undoing the run ", run_.id, " of ",
             FormatGeneralDate(FileTimeToDate(run_.started, 0)));
  if (!simulate) {
    std::vector<bool> changes(folders.size(), false);
    for (const Item& item : items_) {
      if (item.state == Item::State::kReady ||
          (force && item.state == Item::State::kChanged)) {
        changes[item.journal] = true;
      }
    }
    const std::string problem = keeper_->Begin(changes);
    if (!problem.empty()) {
      log.PrintL("Nothing was changed: ", problem);
      set_.ShowErrToUser(problem, kMbOkOnly);
      keeper_.reset();
      return outcome;
    }
  }
  outcome.started = true;
  const long count = static_cast<long>(items_.size());
  for (long i = 0; i < count; ++i) {
    Item& item = items_[static_cast<std::size_t>(i)];
    set_.SyncMsg = "Undoing run " + run_.id + " " + std::to_string(i + 1) +
                   "/" + std::to_string(count) + "\nFor file: " + item.path;
    set_.ManageUI();
    if (set_.StopFlag) break;
    item.state = Assess(item);
    if (item.state == Item::State::kNothing) continue;
    if (item.state == Item::State::kChanged && !force) {
      log.PrintL("Left as it is: ", item.path, " changed since the run");
      ++outcome.left;
      continue;
    }
    FileIdentity now;
    const bool present = GetFileIdentity(item.path, &now);
    bool done = true;
    switch (item.action) {
      case Item::Action::kRemoveCreated:
        log.PrintL("Removing ", item.path, ", which the run created");
        log.PrintL("Old copy kept as ",
                   keeper_->KeptPath(KeeperIndex(item), item.path, true));
        done = simulate || RemoveCreated(item);
        break;
      case Item::Action::kPutBack:
        log.PrintL("Putting back ", item.path, " from ", item.step.kept);
        if (present) {
          log.PrintL("Old copy kept as ",
                     keeper_->KeptPath(KeeperIndex(item), item.path, false));
        }
        done = simulate || PutBack(item, present);
        break;
      case Item::Action::kRemoveFolder:
        log.PrintL("Removing the folder ", item.path);
        done = simulate || RemoveFolder(item);
        break;
      case Item::Action::kMakeFolder:
        log.PrintL("Creating folder ", item.path);
        done = simulate || MakeFolder(item);
        break;
    }
    if (done) {
      ++outcome.done;
    } else if (item.action == Item::Action::kRemoveCreated ||
               item.action == Item::Action::kPutBack) {
      ++outcome.left;
    }
  }
  outcome.stopped = set_.StopFlag;
  if (!simulate) {
    keeper_->End(outcome.stopped);
    for (const std::string& folder : folders) FlushFileSystem(folder);
    for (const std::string& folder : keeper_->OtherWrittenFolders()) {
      FlushFileSystem(folder);
    }
    if (!outcome.stopped && !journals_.empty()) {
      const JournalHeader& before = journals_.front().header;
      set_.RestoreLastSync(before.last_sync_date, before.has_last_sync_moment,
                           before.last_sync_moment);
    }
  }
  keeper_.reset();
  set_.SyncMsg = (outcome.stopped ? "Undo stopped - " : "Undo completed - ") +
                 FormatGeneralDate(Now());
  log.PrintL(set_.SyncMsg);
  set_.ManageUI();
  return outcome;
}

}  // namespace pairwell
