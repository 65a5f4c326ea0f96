#include "engine/version_keeper.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include "engine/log_file.h"
#include "util/date_time.h"
#include "util/path.h"
#include "util/system.h"
#include "util/text.h"
#include "util/text_file.h"

namespace pairwell {

namespace {

constexpr char kVersionsSubfolder[] = "versions";
constexpr char kJournalName[] = "journal";
constexpr char kFilesSubfolder[] = "files";
// Each pruned run leaves a line here, so that an undo of it can say why it
// cannot be done.
constexpr char kPrunedName[] = "pruned";

// "20261125-043012", local time: sorts as the runs followed each other.
std::string RunIdAt(double date) {
  const DateParts p = PartsFromDate(date);
  char text[32];
  std::snprintf(text, sizeof text, "%04d%02d%02d-%02d%02d%02d", p.year,
                p.month, p.day, p.hour, p.minute, p.second);
  return text;
}

// A set's name as one folder level: no separator, no leading dot.
std::string FolderLevelName(const std::string& name) {
  std::string level = name;
  for (char& c : level) {
    if (IsSlash(c) || c == ':' || c == '\0') c = '_';
  }
  if (level.empty() || level[0] == '.') level.insert(0, "_");
  return level;
}

std::string LastLevel(const std::string& path) {
  std::string trimmed = path;
  while (trimmed.size() > 1 && IsSlash(trimmed.back())) trimmed.pop_back();
  const std::string::size_type slash = trimmed.find_last_of("/\\");
  return slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
}

bool IsAbsolutePath(const std::string& path) {
  return (!path.empty() && IsSlash(path[0])) ||
         (path.size() > 2 && path[1] == ':' && IsSlash(path[2]));
}

}  // namespace

std::string VersionsFolder(const std::string& folder) {
  return JoinPath(JoinPath(folder, kKeepFolderName), kVersionsSubfolder);
}

bool InVersionsArea(const std::string& path) {
  const std::string marker = std::string("/") + kKeepFolderName + "/" +
                             kVersionsSubfolder + "/";
  return path.find(marker) != std::string::npos;
}

VersionKeeper::VersionKeeper(Settings settings,
                             std::vector<std::string> folders)
    : settings_(std::move(settings)), folders_(std::move(folders)) {
  journals_.resize(folders_.size());
  const Moment now = NowMoment();
  started_ = now.seconds;
  // Another run of the same second (an undo right after its run) takes the
  // next free name.
  const std::string base = RunIdAt(FileTimeToDate(now.seconds, 0));
  run_id_ = base;
  for (int n = 2;; ++n) {
    bool free = true;
    for (const std::string& folder : folders_) {
      if (FolderExists(JoinPath(VersionsFolder(folder), run_id_))) free = false;
    }
    if (free) break;
    run_id_ = base + "-" + std::to_string(n);
  }
}

VersionKeeper::~VersionKeeper() = default;

bool VersionKeeper::Keeping() const {
  return settings_.always_keep || settings_.keep_days > 0 ||
         settings_.archive_deleted || settings_.archive_overwritten;
}

std::string VersionKeeper::RunArea(int j) const {
  return JoinPath(VersionsFolder(folders_.at(static_cast<std::size_t>(j - 1))),
                  run_id_);
}

std::string VersionKeeper::RelativeName(int j, const std::string& path) const {
  const std::string& root = folders_.at(static_cast<std::size_t>(j - 1));
  const std::size_t skip =
      root.size() + (!root.empty() && IsSlash(root.back()) ? 0 : 1);
  return path.size() > skip ? path.substr(skip) : std::string();
}

std::string VersionKeeper::KeptPath(int j, const std::string& path,
                                    bool deleted) const {
  const std::string rel = RelativeName(j, path);
  const bool archived =
      deleted ? settings_.archive_deleted : settings_.archive_overwritten;
  if (!archived) return JoinPath(JoinPath(RunArea(j), kFilesSubfolder), rel);
  const std::string folder_level =
      std::to_string(j) + "-" +
      FolderLevelName(LastLevel(folders_[static_cast<std::size_t>(j - 1)]));
  return JoinPath(
      JoinPath(JoinPath(JoinPath(Trim(settings_.archive_path),
                                 FolderLevelName(settings_.set_name)),
                        run_id_),
               folder_level),
      rel);
}

std::string VersionKeeper::CheckArchive() const {
  if (!settings_.archive_deleted && !settings_.archive_overwritten) return "";
  const std::string path = Trim(settings_.archive_path);
  const std::string advice =
      "\n\nChoose an archive folder in the set's Options, or untick \"Save "
      "deleted files\" and \"Save overwritten files\". Nothing was changed.";
  if (path.empty()) {
    return "The set '" + settings_.set_name +
           "' saves deleted or overwritten files, but names no archive "
           "folder." +
           advice;
  }
  if (!IsAbsolutePath(path)) {
    return "The archive folder '" + path + "' of the set '" +
           settings_.set_name + "' is not a full path (it must start at " +
           "the root of a drive)." + advice;
  }
  // The run's own folder in the archive is made now: a folder that cannot
  // be written says so before anything changes.
  const std::string run_folder = JoinPath(
      JoinPath(path, FolderLevelName(settings_.set_name)), run_id_);
  int error_number = MakeDirectoryError(run_folder);
  if (error_number == 0) {
    const std::string probe = JoinPath(run_folder, ".pairwell-write-test");
    AppendFile file;
    error_number = file.Open(probe, false);
    file.Close();
    DeleteFile(probe);
  }
  if (error_number != 0) {
    return "The archive folder '" + path + "' of the set '" +
           settings_.set_name + "' cannot be written: " +
           ErrorText(error_number) + advice;
  }
  return "";
}

std::string VersionKeeper::Begin(const std::vector<bool>& changes) {
  if (!Keeping()) return "";
  const std::string archive_problem = CheckArchive();
  if (!archive_problem.empty()) return archive_problem;
  for (std::size_t k = 0; k < changes.size() && k < folders_.size(); ++k) {
    if (!changes[k]) continue;
    const int j = static_cast<int>(k) + 1;
    const int error_number = MakeArea(j);
    if (error_number != 0) {
      return "Pairwell cannot keep the copies this run would replace or "
             "delete in '" +
             VersionsFolder(folders_[k]) + "': " + ErrorText(error_number) +
             ".\n\nThe drive may be read-only or full. Make room on it or "
             "make it writable, or set VersionDays=0 in the set's section "
             "of the configuration file to replace and delete files without "
             "keeping them. Nothing was changed.";
    }
  }
  return "";
}

int VersionKeeper::MakeArea(int j) {
  std::unique_ptr<RunJournal>& journal =
      journals_.at(static_cast<std::size_t>(j - 1));
  if (journal) return 0;
  const std::string area = RunArea(j);
  int error_number = MakeDirectoryError(JoinPath(area, kFilesSubfolder));
  if (error_number != 0) return error_number;
  JournalHeader header;
  header.set_name = settings_.set_name;
  header.run_id = run_id_;
  header.folder = folders_[static_cast<std::size_t>(j - 1)];
  header.started = started_;
  header.last_sync_date = settings_.last_sync_date;
  header.has_last_sync_moment = settings_.has_last_sync_moment;
  header.last_sync_moment = settings_.last_sync_moment;
  header.undoes = settings_.undoes;
  auto made = std::make_unique<RunJournal>();
  error_number = made->Create(JoinPath(area, kJournalName), header);
  // The area's own names reach the disk with the journal.
  if (error_number == 0) error_number = FlushFolder(area);
  if (error_number == 0) {
    error_number = FlushFolder(VersionsFolder(header.folder));
  }
  if (error_number != 0) {
    RemoveTree(area);
    return error_number;
  }
  made_folders_.insert(JoinPath(area, kFilesSubfolder));
  journal = std::move(made);
  return 0;
}

RunJournal* VersionKeeper::JournalOf(int j, int* error_number) {
  *error_number = MakeArea(j);
  return *error_number == 0
             ? journals_[static_cast<std::size_t>(j - 1)].get()
             : nullptr;
}

JournalStep VersionKeeper::StepAbout(int j, JournalStep::Kind kind,
                                     const std::string& path) const {
  JournalStep step;
  step.kind = kind;
  step.rel = RelativeName(j, path);
  return step;
}

int VersionKeeper::Add(int j, const JournalStep& step, bool now) {
  int error_number = 0;
  RunJournal* journal = JournalOf(j, &error_number);
  if (journal == nullptr) return error_number;
  if (now) return journal->Record(step);
  journal->Add(step);
  return 0;
}

int VersionKeeper::NoteFolderCreated(int j, const std::string& folder_path) {
  if (!Keeping()) return 0;
  const std::string& root = folders_.at(static_cast<std::size_t>(j - 1));
  // The levels from the deepest existing one down, recorded top first.
  std::vector<std::string> missing;
  std::string level = folder_path;
  while (level.size() > root.size() && !FolderExists(level)) {
    missing.push_back(level);
    const std::string::size_type slash = level.find_last_of("/\\");
    if (slash == std::string::npos) break;
    level.erase(slash);
  }
  for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
    const int error_number =
        Add(j, StepAbout(j, JournalStep::Kind::kFolderCreated, *it), true);
    if (error_number != 0) return error_number;
  }
  return 0;
}

int VersionKeeper::NoteFolderRemoved(int j, const std::string& folder_path) {
  return Add(j, StepAbout(j, JournalStep::Kind::kFolderRemoved, folder_path),
             true);
}

int VersionKeeper::NoteCreated(int j, const std::string& path,
                               const FileIdentity& after) {
  const int error_number = RecordCreated(j, path, after);
  return error_number != 0 ? error_number : WriteRecords();
}

int VersionKeeper::RecordCreated(int j, const std::string& path,
                                 const FileIdentity& after) {
  if (!Keeping()) return 0;
  JournalStep step = StepAbout(j, JournalStep::Kind::kCreated, path);
  step.after = after;
  return Add(j, step, false);
}

int VersionKeeper::RecordReplaced(int j, const std::string& path,
                                  int old_mode, const FileIdentity& after) {
  if (!Keeping()) return 0;
  JournalStep step = StepAbout(j, JournalStep::Kind::kReplaced, path);
  step.kept = KeptPath(j, path, false);
  step.after = after;
  if (!GetFileIdentity(path, &step.before)) return ENOENT;
  if (old_mode >= 0) step.before.mode = old_mode;
  const int error_number = MakeParentOf(step.kept);
  return error_number != 0 ? error_number : Add(j, step, false);
}

int VersionKeeper::WriteRecords() {
  for (std::unique_ptr<RunJournal>& journal : journals_) {
    if (!journal) continue;
    const int error_number = journal->WriteAdded();
    if (error_number != 0) return error_number;
  }
  return 0;
}

int VersionKeeper::MakeParentOf(const std::string& kept) {
  const std::string::size_type slash = kept.find_last_of("/\\");
  const std::string parent = kept.substr(0, slash);
  if (made_folders_.count(parent) != 0) return 0;
  const int error_number = MakeDirectoryError(parent);
  if (error_number == 0) made_folders_.insert(parent);
  return error_number;
}

int VersionKeeper::KeepOldCopy(int j, const std::string& path) {
  if (!Keeping()) return 0;
  const std::string kept = KeptPath(j, path, false);
  if (settings_.archive_overwritten) archive_written_ = true;
  int error_number = LinkFile(path, kept);
  if (error_number == EEXIST) {
    // Left by an earlier attempt at this step: the name is the one wanted.
    DeleteFile(kept);
    error_number = LinkFile(path, kept);
  }
  // Another file system, or one without second names: a copy of its own.
  if (error_number != 0) error_number = CopyFileReplacing(path, kept);
  return error_number;
}

int VersionKeeper::KeepReplaced(int j, const std::string& path, int old_mode,
                                const FileIdentity& after) {
  int error_number = RecordReplaced(j, path, old_mode, after);
  if (error_number == 0) error_number = WriteRecords();
  return error_number != 0 ? error_number : KeepOldCopy(j, path);
}

int VersionKeeper::MoveDeleted(int j, const std::string& path) {
  JournalStep step = StepAbout(j, JournalStep::Kind::kDeleted, path);
  step.kept = KeptPath(j, path, true);
  if (!GetFileIdentity(path, &step.before)) return ENOENT;
  int error_number = MakeParentOf(step.kept);
  if (error_number == 0) error_number = Add(j, step, true);
  if (error_number != 0) return error_number;
  if (settings_.archive_deleted) archive_written_ = true;
  error_number = RenameFile(path, step.kept);
  if (error_number == 0) return 0;
  error_number = CopyFileReplacing(path, step.kept);
  return error_number == 0 ? DeleteFile(path) : error_number;
}

std::vector<std::string> VersionKeeper::OtherWrittenFolders() const {
  std::vector<std::string> folders;
  if (archive_written_) folders.push_back(Trim(settings_.archive_path));
  return folders;
}

void VersionKeeper::End(bool stopped) {
  for (std::unique_ptr<RunJournal>& journal : journals_) {
    if (journal) journal->End(stopped);
    journal.reset();
  }
}

void VersionKeeper::Prune(LogFile& log, bool simulate) {
  if (settings_.always_keep) return;
  const std::int64_t oldest_kept =
      started_ - std::int64_t{settings_.keep_days} * 86400;
  for (const std::string& folder : folders_) {
    PruneFolder(folder, oldest_kept, log, simulate);
  }
}

void VersionKeeper::PruneFolder(const std::string& folder,
                                std::int64_t oldest_kept, LogFile& log,
                                bool simulate) {
  const std::string versions = VersionsFolder(folder);
  std::vector<FolderEntry> runs;
  if (!FolderExists(versions) || ListFolder(versions, &runs) != 0) return;
  for (const FolderEntry& run : runs) {
    if ((run.attributes & kAttrDirectory) == 0) continue;
    const std::string area = JoinPath(versions, run.name);
    JournalHeader header;
    std::string problem;
    if (!RunJournal::ReadHeader(JoinPath(area, kJournalName), &header,
                                &problem) ||
        header.set_name != settings_.set_name ||
        header.started >= oldest_kept) {
      continue;
    }
    log.PrintL("Removing the copies kept by the run ", header.run_id, " of ",
               FormatGeneralDate(FileTimeToDate(header.started, 0)),
               " (older than ", CountText(settings_.keep_days, "day", "days"),
               "): ", area);
    if (simulate) continue;
    AppendFile pruned;
    const std::string record = header.run_id + '\t' + header.set_name + '\t' +
                               std::to_string(started_) + '\n';
    int error_number = pruned.Open(JoinPath(versions, kPrunedName), false);
    if (error_number == 0) error_number = pruned.Append(record);
    if (error_number == 0) error_number = RemoveTree(area);
    if (error_number != 0) {
      log.PrintErrL("Could not remove ", area, ": ", ErrorText(error_number));
    }
  }
}

}  // namespace pairwell
