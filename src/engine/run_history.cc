#include "engine/run_history.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>

#include "engine/version_keeper.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/text_file.h"

namespace pairwell {

namespace {

void Count(const JournalContent& journal, RunSummary* run) {
  for (const JournalStep& step : journal.steps) {
    switch (step.kind) {
      case JournalStep::Kind::kCreated:
        ++run->created;
        break;
      case JournalStep::Kind::kReplaced:
        ++run->replaced;
        break;
      case JournalStep::Kind::kDeleted:
        ++run->deleted;
        break;
      case JournalStep::Kind::kFolderCreated:
        ++run->folders_created;
        break;
      case JournalStep::Kind::kFolderRemoved:
        break;
    }
  }
}

}  // namespace

std::string JournalPath(const std::string& folder, const std::string& run_id) {
  return JoinPath(JoinPath(VersionsFolder(folder), run_id), "journal");
}

std::vector<RunSummary> ListRuns(const std::vector<std::string>& folders,
                                 const std::string& set_name) {
  std::map<std::string, RunSummary> runs;
  for (const std::string& folder : folders) {
    std::vector<FolderEntry> areas;
    if (ListFolder(VersionsFolder(folder), &areas) != 0) continue;
    for (const FolderEntry& area : areas) {
      if ((area.attributes & kAttrDirectory) == 0) continue;
      JournalContent journal;
      std::string problem;
      const std::string path = JournalPath(folder, area.name);
      if (!RunJournal::Read(path, &journal, &problem) ||
          journal.header.set_name != set_name ||
          journal.header.run_id != area.name) {
        continue;
      }
      RunSummary& run = runs[area.name];
      run.id = area.name;
      run.started = journal.header.started;
      run.undoes = journal.header.undoes;
      run.ended = run.ended && journal.ended;
      run.stopped = run.stopped || journal.stopped;
      run.journals.push_back(path);
      Count(journal, &run);
    }
  }
  std::vector<RunSummary> list;
  for (auto& entry : runs) list.push_back(std::move(entry.second));
  std::sort(list.begin(), list.end(),
            [](const RunSummary& a, const RunSummary& b) {
              if (a.started != b.started) return a.started > b.started;
              return a.id > b.id;
            });
  return list;
}

bool ReadRun(const RunSummary& run, std::vector<JournalContent>* journals,
             std::string* problem) {
  journals->clear();
  for (const std::string& path : run.journals) {
    JournalContent journal;
    std::string why;
    if (!RunJournal::Read(path, &journal, &why)) {
      *problem = "the journal " + path + " " + why;
      return false;
    }
    journals->push_back(std::move(journal));
  }
  return true;
}

bool FindPrunedRun(const std::vector<std::string>& folders,
                   const std::string& set_name, const std::string& run_id,
                   std::int64_t* pruned_at) {
  for (const std::string& folder : folders) {
    std::string text;
    int error_number = 0;
    ReadTextFile(JoinPath(VersionsFolder(folder), "pruned"), &text,
                 &error_number);
    std::istringstream in(text);
    std::string line;
    // "run <tab> set <tab> when", a line per pruned run.
    while (std::getline(in, line)) {
      const std::string::size_type tab1 = line.find('\t');
      const std::string::size_type tab2 = line.rfind('\t');
      if (tab1 == std::string::npos || tab2 == tab1) continue;
      if (line.compare(0, tab1, run_id) != 0 ||
          line.compare(tab1 + 1, tab2 - tab1 - 1, set_name) != 0 ||
          tab1 != run_id.size()) {
        continue;
      }
      *pruned_at = std::strtoll(line.c_str() + tab2 + 1, nullptr, 10);
      return true;
    }
  }
  return false;
}

}  // namespace pairwell
