#include "faults/sync_scenario.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>

namespace pairwell {

namespace {

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * kKiB;
constexpr mode_t kMode = 0644;

bool HasOld(const ScenarioFile& file) { return file.fate != Fate::kCreated; }
bool HasNew(const ScenarioFile& file) { return file.fate != Fate::kDeleted; }

// Many small files over three folders, every fate in turn, and a folder
// that only the source has.
void AddSmallFiles(std::vector<ScenarioFile>* files) {
  // A fixed seed: the tree is the same on every run; only the moments of
  // the kills are random.
  std::mt19937 random(2024);
  std::uniform_int_distribution<std::size_t> size(16, 8 * kKiB);
  const char* const folders[] = {"docs", "docs/notes", "archive"};
  const Fate fates[] = {Fate::kKept, Fate::kReplaced, Fate::kCreated,
                        Fate::kDeleted};
  char name[32];
  for (int i = 0; i < 200; ++i) {
    std::snprintf(name, sizeof name, "/f%03d.txt", i);
    const std::size_t old_size = size(random);
    files->push_back({folders[i % 3] + std::string(name), fates[i % 4],
                      old_size, size(random)});
  }
  for (int i = 0; i < 20; ++i) {
    std::snprintf(name, sizeof name, "fresh/n%02d.txt", i);
    files->push_back({name, Fate::kCreated, 0, size(random)});
  }
}

void AddBigFiles(std::vector<ScenarioFile>* files) {
  files->push_back({"media/m0.bin", Fate::kReplaced, 1 * kMiB, 1 * kMiB});
  files->push_back({"media/m1.bin", Fate::kReplaced, 768 * kKiB, 2 * kMiB});
  files->push_back({"media/m2.bin", Fate::kReplaced, 3 * kMiB, 512 * kKiB});
  files->push_back({"media/m3.bin", Fate::kCreated, 0, 2 * kMiB});
  files->push_back({"media/m4.bin", Fate::kDeleted, 1536 * kKiB, 0});
  files->push_back({"media/m5.bin", Fate::kKept, 1 * kMiB, 1 * kMiB});
  // Both versions of the same size: a copy written in place would show in
  // the bytes only.
  files->push_back(
      {"media/large-replaced.bin", Fate::kReplaced, 40 * kMiB, 40 * kMiB});
  files->push_back({"media/large-new.bin", Fate::kCreated, 0, 32 * kMiB});
}

std::uint64_t SplitMix(std::uint64_t* state) {
  std::uint64_t z = (*state += 0x9e3779b97f4a7c15u);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

}  // namespace

SyncScenario::SyncScenario()
    : old_time_(time(nullptr) - 7200),
      last_sync_(old_time_ + 5400),
      edit_time_(last_sync_ + 1200) {
  AddSmallFiles(&files_);
  AddBigFiles(&files_);
  for (ScenarioFile& file : files_) {
    if (file.fate == Fate::kKept) file.new_size = file.old_size;
    file_names_.insert(file.name);
    for (std::string::size_type slash = file.name.find('/');
         slash != std::string::npos; slash = file.name.find('/', slash + 1)) {
      folders_.insert(file.name.substr(0, slash));
    }
    Version old_version;
    Version new_version;
    if (HasOld(file)) {
      old_version = {DigestOf(Content(file, false)), DateOf(file, false)};
    }
    if (HasNew(file)) {
      new_version = {DigestOf(Content(file, true)), DateOf(file, true)};
    }
    old_versions_.push_back(old_version);
    new_versions_.push_back(new_version);
  }
}

std::string SyncScenario::Content(const ScenarioFile& file, bool edited) const {
  const bool changed = edited && file.fate != Fate::kKept;
  // One pseudo-random block per file and version, repeated with each
  // repetition's number in its last bytes: every block of a file differs
  // from the others and from the other version's, and generating 40 MiB
  // costs little more than copying it.
  std::uint64_t state =
      std::hash<std::string>()(file.name) ^ (changed ? 0x5bd1e995u : 0u);
  std::string block(64 * kKiB, '\0');
  for (std::size_t at = 0; at < block.size(); at += 8) {
    const std::uint64_t word = SplitMix(&state);
    std::memcpy(&block[at], &word, sizeof word);
  }
  std::string bytes(changed ? file.new_size : file.old_size, '\0');
  for (std::uint64_t number = 0, at = 0; at < bytes.size();
       ++number, at += block.size()) {
    std::memcpy(&block[block.size() - sizeof number], &number, sizeof number);
    std::memcpy(&bytes[at], block.data(),
                std::min<std::size_t>(block.size(), bytes.size() - at));
  }
  return bytes;
}

time_t SyncScenario::DateOf(const ScenarioFile& file, bool edited) const {
  return edited && file.fate != Fate::kKept ? edit_time_ : old_time_;
}

bool SyncScenario::WriteVersion(const std::string& root,
                                const ScenarioFile& file, bool edited) const {
  const std::string path = root + "/" + file.name;
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(),
                                      error);
  return !error &&
         WriteFileAt(path, Content(file, edited), DateOf(file, edited), kMode);
}

bool SyncScenario::WriteSource(const std::string& root) const {
  std::error_code error;
  std::filesystem::create_directories(root, error);
  for (const ScenarioFile& file : files_) {
    if (HasNew(file) && !WriteVersion(root, file, true)) return false;
  }
  return !error;
}

bool SyncScenario::WriteDestination(const std::string& root) const {
  std::error_code error;
  std::filesystem::create_directories(root, error);
  for (const ScenarioFile& file : files_) {
    if (HasOld(file) && !WriteVersion(root, file, false)) return false;
  }
  return !error;
}

bool SyncScenario::Matches(const TreeEntry& entry, const Version& version) {
  return !entry.is_folder && entry.mode == kMode &&
         entry.digest == version.digest &&
         entry.mtime_ns ==
             static_cast<std::int64_t>(version.modified) * 1000000000;
}

std::string SyncScenario::Expected(std::size_t index) const {
  const auto describe = [](const char* which, const Version& version) {
    return std::string(which) + " (" + std::to_string(version.digest.size) +
           " bytes dated " + std::to_string(version.modified) + ")";
  };
  const ScenarioFile& file = files_[index];
  if (!HasOld(file)) {
    return describe("the new version", new_versions_[index]) + " or no file";
  }
  if (!HasNew(file)) {
    return describe("the old version", old_versions_[index]) + " or no file";
  }
  return describe("the old version", old_versions_[index]) + " or " +
         describe("the new one", new_versions_[index]);
}

void SyncScenario::CheckFile(std::size_t index, const TreeEntry& entry,
                             DestinationCheck* check) const {
  const ScenarioFile& file = files_[index];
  ++check->files_checked;
  const bool is_old = HasOld(file) && Matches(entry, old_versions_[index]);
  const bool is_new = HasNew(file) && Matches(entry, new_versions_[index]);
  if (!is_old && !is_new) {
    check->problems.push_back(file.name + ": " + DescribeEntry(entry) +
                              ", expected " + Expected(index));
  } else if (is_new && !is_old) {
    ++(file.fate == Fate::kCreated ? check->created_done
                                   : check->replaced_done);
  }
}

std::vector<std::string> SyncScenario::UnexpectedEntries(
    const std::map<std::string, TreeEntry>& tree) const {
  std::vector<std::string> found;
  for (const auto& [name, entry] : tree) {
    if (entry.is_folder ? folders_.count(name) == 0
                        : file_names_.count(name) == 0) {
      found.push_back(name + ": unexpected " +
                      (entry.is_folder ? "folder" : "file"));
    }
  }
  return found;
}

DestinationCheck SyncScenario::CheckDestination(const std::string& root) const {
  DestinationCheck check;
  check.partial_copies = PartialCopiesUnder(root);
  const std::map<std::string, TreeEntry> tree = SnapshotTree(root);
  for (std::size_t i = 0; i < files_.size(); ++i) {
    const auto found = tree.find(files_[i].name);
    if (found != tree.end()) {
      CheckFile(i, found->second, &check);
    } else if (files_[i].fate == Fate::kDeleted) {
      ++check.deleted_done;
    } else if (files_[i].fate != Fate::kCreated) {
      check.problems.push_back(files_[i].name + ": gone");
    }
    if (files_[i].fate != Fate::kKept) ++check.left_to_do;
  }
  check.left_to_do -=
      check.replaced_done + check.created_done + check.deleted_done;
  for (std::string& problem : UnexpectedEntries(tree)) {
    check.problems.push_back(std::move(problem));
  }
  return check;
}

std::vector<std::string> SyncScenario::CheckSource(
    const std::string& root) const {
  std::vector<std::string> problems;
  for (const std::string& name : PartialCopiesUnder(root)) {
    problems.push_back(name + ": a temporary copy in the source");
  }
  const std::map<std::string, TreeEntry> tree = SnapshotTree(root);
  for (std::size_t i = 0; i < files_.size(); ++i) {
    const auto found = tree.find(files_[i].name);
    if (!HasNew(files_[i])) {
      if (found != tree.end()) {
        problems.push_back(files_[i].name + ": back in the source");
      }
    } else if (found == tree.end()) {
      problems.push_back(files_[i].name + ": gone from the source");
    } else if (!Matches(found->second, new_versions_[i])) {
      problems.push_back(files_[i].name + ": changed in the source, now " +
                         DescribeEntry(found->second));
    }
  }
  for (std::string& problem : UnexpectedEntries(tree)) {
    problems.push_back(std::move(problem));
  }
  return problems;
}

}  // namespace pairwell
