#include "cli/reports.h"

#include <algorithm>
#include <string>

#include "cli/json_writer.h"
#include "cli/output_buffer.h"
#include "engine/action_texts.h"
#include "engine/sync_file.h"
#include "engine/sync_set_list.h"
#include "engine/synchronizer.h"
#include "util/date_time.h"
#include "util/text.h"

namespace pairwell {

namespace {

std::string PadRight(const std::string& text, std::size_t width) {
  return text.size() >= width ? text
                              : text + std::string(width - text.size(), ' ');
}

// Writes dates as text. Copies of a file, and files written together,
// mostly share their dates: the last text made is used again for the same
// date.
class DateWriter {
 public:
  void Write(JsonWriter& json, double date) {
    if (date == 0) {
      json.Null();
      return;
    }
    if (date != last_date_) {
      last_text_ = FormatGeneralDate(date);
      last_date_ = date;
    }
    json.String(last_text_);
  }

 private:
  double last_date_ = 0;
  std::string last_text_;
};

void WriteCopies(JsonWriter& json, DateWriter& dates, const SyncFile& file,
                 int folders) {
  json.Key("copies").BeginArray();
  for (int j = 1; j <= folders; ++j) {
    const CopyRecord& copy = file.Copy(j);
    const bool exists = file.CopyExists(j);
    json.BeginObject().Key("exists").Bool(exists);
    json.Key("modify");
    dates.Write(json, copy.modify_date);
    json.Key("create");
    dates.Write(json, exists ? copy.create_date : 0);
    json.Key("size").Number(exists ? copy.size : 0);
    json.Key("attributes").Number(exists ? copy.attributes : 0);
    json.EndObject();
  }
  json.EndArray();
}

void WriteFile(JsonWriter& json, DateWriter& dates, const Synchronizer& set,
               const SyncFile& file) {
  const int conflict = file.ComputeConflictIndex();
  json.BeginObject();
  json.Key("name").String(file.RelativeName());
  json.Key("status").String(StatusText(file));
  json.Key("action").Number(file.Action);
  json.Key("actionText").String(ActionText(file));
  json.Key("source").Number(file.SourceIndex);
  json.Key("flags").Number(file.ActionFlags);
  json.Key("situation").Number(file.ComputeSituation(false));
  json.Key("conflict").Number(conflict);
  json.Key("conflictName");
  if (conflict > 0) {
    json.String(set.ConflictTypes(conflict).Name);
  } else {
    json.Null();
  }
  WriteCopies(json, dates, file, set.WPathCount());
  json.EndObject();
}

}  // namespace

std::string SetListText(const SyncSetList& sets) {
  std::string text;
  for (int i = 1; i <= sets.Count(); ++i) {
    const Synchronizer& set = sets.Item(i);
    text += std::to_string(i) + "  " + set.Name + "  (" +
            CountText(set.PathCount(), "folder", "folders") + ")\n";
    for (int j = 1; j <= set.PathCount(); ++j) {
      text += "    " + std::to_string(j) + "  " +
              PadRight(FolderTypeName(set.PathFlags(j)), 15) +
              PadRight(FolderFlagWords(set.PathFlags(j)), 34) + set.Path(j) +
              "\n";
    }
  }
  return text;
}

void PlanTable(const Synchronizer& set, OutputBuffer& out) {
  std::size_t name_width = 4;
  std::size_t status_width = 6;
  for (long i = 1; i <= set.WFileCount(); ++i) {
    name_width = std::max(name_width, set.WFile(i).RelativeName().size());
  }
  status_width = std::max<std::size_t>(status_width, set.WPathCount() + 2);
  out.Append(PadRight("File", name_width + 2) +
             PadRight("Status", status_width + 2) + "Action\n");
  for (long i = 1; i <= set.WFileCount(); ++i) {
    const SyncFile& file = set.WFile(i);
    out.Append(PadRight(file.RelativeName(), name_width + 2) +
               PadRight(StatusText(file), status_width + 2) + ActionText(file) +
               "\n");
  }
  out.Append(StatsText(set, CountConflicts(set)) + "\n");
  out.Append(KeptCopiesText(set) + "\n");
  for (const std::string& warning : set.MassDeletionWarnings()) {
    out.Append("Warning: " + warning + "\n");
  }
}

void PlanJson(const Synchronizer& set, OutputBuffer& out) {
  JsonWriter json(&out);
  json.BeginObject();
  json.Key("set").String(set.Name);
  json.Key("lastSync");
  DateWriter dates;
  dates.Write(json, set.EfLastSyncDate());
  json.Key("folders").BeginArray();
  for (int j = 1; j <= set.WPathCount(); ++j) {
    json.BeginObject()
        .Key("path")
        .String(set.WPath(j))
        .Key("flags")
        .Number(set.WPathFlags(j))
        .EndObject();
  }
  json.EndArray();
  json.Key("files").BeginArray();
  for (long i = 1; i <= set.WFileCount(); ++i) {
    WriteFile(json, dates, set, set.WFile(i));
  }
  json.EndArray();
  const ConflictCounts counts = CountConflicts(set);
  json.Key("stats").BeginObject();
  json.Key("files").Number(set.WFileCount());
  json.Key("needConfirmation").Number(counts.need_confirmation);
  json.Key("autoHandled").Number(counts.auto_handled);
  json.Key("text").String(StatsText(set, counts));
  json.EndObject();
  json.Key("kept").BeginObject();
  json.Key("versionDays").Number(set.VersionDays);
  json.Key("archiveDeleted").Bool(set.ArchiveDeleted);
  json.Key("archiveOverwritten").Bool(set.ArchiveOverwritten);
  json.Key("archivePath").String(Trim(set.ArchivePath));
  json.Key("text").String(KeptCopiesText(set));
  json.EndObject();
  json.Key("warnings").BeginArray();
  for (const std::string& warning : set.MassDeletionWarnings()) {
    json.String(warning);
  }
  json.EndArray();
  json.EndObject();
  out.Append('\n');
}

namespace {

std::string Counted(long count, const char* what) {
  return std::to_string(count) + " " + what;
}

std::string RunKind(const RunSummary& run) {
  return run.undoes.empty() ? "sync" : "undo of " + run.undoes;
}

}  // namespace

std::string HistoryText(const std::vector<RunSummary>& runs) {
  std::size_t kind_width = 4;
  for (const RunSummary& run : runs) {
    kind_width = std::max(kind_width, RunKind(run).size());
  }
  std::string text;
  for (const RunSummary& run : runs) {
    text += run.id + "  " +
            FormatGeneralDate(FileTimeToDate(run.started, 0)) + "  " +
            PadRight(RunKind(run), kind_width) + "  " +
            Counted(run.created, "created") + ", " +
            Counted(run.replaced, "replaced") + ", " +
            Counted(run.deleted, "deleted");
    if (!run.ended) {
      text += " (cut short)";
    } else if (run.stopped) {
      text += " (stopped)";
    }
    text += "\n";
  }
  return text;
}

void HistoryJson(const std::string& set_name,
                 const std::vector<RunSummary>& runs, OutputBuffer& out) {
  JsonWriter json(&out);
  json.BeginObject();
  json.Key("set").String(set_name);
  json.Key("runs").BeginArray();
  for (const RunSummary& run : runs) {
    json.BeginObject();
    json.Key("id").String(run.id);
    json.Key("started").String(
        FormatGeneralDate(FileTimeToDate(run.started, 0)));
    json.Key("undoes");
    if (run.undoes.empty()) {
      json.Null();
    } else {
      json.String(run.undoes);
    }
    json.Key("created").Number(run.created);
    json.Key("replaced").Number(run.replaced);
    json.Key("deleted").Number(run.deleted);
    json.Key("foldersCreated").Number(run.folders_created);
    json.Key("complete").Bool(run.ended);
    json.Key("stopped").Bool(run.stopped);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  out.Append('\n');
}

}  // namespace pairwell
