#include "engine/run_journal.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "util/text_file.h"

namespace pairwell {

namespace {

constexpr char kFirstLine[] = "Pairwell run journal 1";

// A text field holds no tab or line break: they and "%" are written as
// "%" and two hex digits.
std::string Escape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '%':
        out += "%25";
        break;
      case '\t':
        out += "%09";
        break;
      case '\n':
        out += "%0A";
        break;
      case '\r':
        out += "%0D";
        break;
      default:
        out += c;
    }
  }
  return out;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::string Unescape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      const int high = HexDigit(text[i + 1]);
      const int low = HexDigit(text[i + 2]);
      if (high >= 0 && low >= 0) {
        out += static_cast<char>(high * 16 + low);
        i += 2;
        continue;
      }
    }
    out += text[i];
  }
  return out;
}

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab - start));
    if (tab == std::string::npos) return fields;
    start = tab + 1;
  }
}

std::string DateText(double date) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", date);
  return text;
}

std::string IdentityText(const FileIdentity& id) {
  return std::to_string(id.size) + '\t' + std::to_string(id.modified_ns) +
         '\t' + std::to_string(id.inode) + '\t' + std::to_string(id.mode);
}

bool ReadInteger(const std::string& text, std::int64_t* value) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  *value = std::strtoll(text.c_str(), &end, 10);
  return errno == 0 && *end == '\0';
}

bool ReadIdentity(const std::vector<std::string>& fields, std::size_t at,
                  FileIdentity* id) {
  std::int64_t inode = 0;
  std::int64_t mode = 0;
  if (!ReadInteger(fields[at], &id->size) ||
      !ReadInteger(fields[at + 1], &id->modified_ns) ||
      !ReadInteger(fields[at + 2], &inode) ||
      !ReadInteger(fields[at + 3], &mode)) {
    return false;
  }
  id->inode = static_cast<std::uint64_t>(inode);
  id->mode = static_cast<int>(mode);
  return true;
}

const char* KindName(JournalStep::Kind kind) {
  switch (kind) {
    case JournalStep::Kind::kCreated:
      return "created";
    case JournalStep::Kind::kReplaced:
      return "replaced";
    case JournalStep::Kind::kDeleted:
      return "deleted";
    case JournalStep::Kind::kFolderCreated:
      return "folder-created";
    case JournalStep::Kind::kFolderRemoved:
      break;
  }
  return "folder-removed";
}

bool KindFromName(const std::string& name, JournalStep::Kind* kind) {
  for (const JournalStep::Kind k :
       {JournalStep::Kind::kCreated, JournalStep::Kind::kReplaced,
        JournalStep::Kind::kDeleted, JournalStep::Kind::kFolderCreated,
        JournalStep::Kind::kFolderRemoved}) {
    if (name == KindName(k)) {
      *kind = k;
      return true;
    }
  }
  return false;
}

// A step line: "step", kind, name, kept, then the identities before and
// after (four numbers each).
constexpr std::size_t kStepFields = 12;

bool ParseStep(const std::vector<std::string>& fields, JournalStep* step) {
  if (fields.size() != kStepFields || !KindFromName(fields[1], &step->kind)) {
    return false;
  }
  step->rel = Unescape(fields[2]);
  step->kept = Unescape(fields[3]);
  return ReadIdentity(fields, 4, &step->before) &&
         ReadIdentity(fields, 8, &step->after);
}

// Takes a header line into *header; false for any other line.
bool ParseHeaderLine(const std::vector<std::string>& fields,
                     JournalHeader* header) {
  const std::string& key = fields[0];
  const std::string value = fields.size() > 1 ? Unescape(fields[1]) : "";
  if (key == "set") {
    header->set_name = value;
  } else if (key == "run") {
    header->run_id = value;
  } else if (key == "folder") {
    header->folder = value;
  } else if (key == "started") {
    ReadInteger(value, &header->started);
  } else if (key == "undoes") {
    header->undoes = value;
  } else if (key == "last-sync") {
    header->last_sync_date = std::strtod(value.c_str(), nullptr);
    header->has_last_sync_moment =
        fields.size() > 2 &&
        ReadInteger(fields[2], &header->last_sync_moment);
  } else {
    return false;
  }
  return true;
}

// Reads the file line by line: the header, then (with content) the steps.
bool ReadJournal(const std::string& path, JournalHeader* header,
                 JournalContent* content, std::string* problem) {
  std::string text;
  int error_number = 0;
  if (!ReadTextFile(path, &text, &error_number)) {
    *problem = "cannot be read";
    return false;
  }
  std::istringstream in(text);
  std::string line;
  if (!std::getline(in, line) || line != kFirstLine) {
    *problem = "is not a run journal";
    return false;
  }
  bool in_header = true;
  while (std::getline(in, line)) {
    // A line without its line break was cut short by the end of the run.
    if (in.eof()) break;
    const std::vector<std::string> fields = SplitTabs(line);
    if (in_header && ParseHeaderLine(fields, header)) continue;
    in_header = false;
    if (content == nullptr) break;
    if (fields[0] == "end") {
      content->ended = true;
      content->stopped = fields.size() > 1 && fields[1] == "stopped";
      continue;
    }
    JournalStep step;
    if (fields[0] == "step" && ParseStep(fields, &step)) {
      content->steps.push_back(std::move(step));
    }
  }
  if (header->run_id.empty() || header->set_name.empty()) {
    *problem = "has no run or set named";
    return false;
  }
  return true;
}

}  // namespace

int RunJournal::Create(const std::string& path, const JournalHeader& header) {
  int error_number = file_.Open(path, true);
  if (error_number != 0) return error_number;
  std::string text = std::string(kFirstLine) + '\n';
  text += "set\t" + Escape(header.set_name) + '\n';
  text += "run\t" + Escape(header.run_id) + '\n';
  text += "folder\t" + Escape(header.folder) + '\n';
  text += "started\t" + std::to_string(header.started) + '\n';
  text += "last-sync\t" + DateText(header.last_sync_date);
  if (header.has_last_sync_moment) {
    text += '\t' + std::to_string(header.last_sync_moment);
  }
  text += '\n';
  if (!header.undoes.empty()) text += "undoes\t" + Escape(header.undoes) + '\n';
  error_number = file_.Append(text);
  if (error_number == 0) error_number = file_.Flush();
  return error_number;
}

void RunJournal::Add(const JournalStep& step) {
  added_ += std::string("step\t") + KindName(step.kind) + '\t' +
            Escape(step.rel) + '\t' + Escape(step.kept) + '\t' +
            IdentityText(step.before) + '\t' + IdentityText(step.after) +
            '\n';
}

int RunJournal::WriteAdded() {
  if (added_.empty()) return 0;
  const int error_number = file_.Append(added_);
  added_.clear();
  return error_number;
}

int RunJournal::Record(const JournalStep& step) {
  Add(step);
  return WriteAdded();
}

int RunJournal::End(bool stopped) {
  WriteAdded();
  int error_number =
      file_.Append(std::string("end\t") + (stopped ? "stopped" : "completed") +
                   '\n');
  const int flushed = file_.Flush();
  if (error_number == 0) error_number = flushed;
  const int closed = file_.Close();
  return error_number != 0 ? error_number : closed;
}

bool RunJournal::ReadHeader(const std::string& path, JournalHeader* header,
                            std::string* problem) {
  return ReadJournal(path, header, nullptr, problem);
}

bool RunJournal::Read(const std::string& path, JournalContent* content,
                      std::string* problem) {
  return ReadJournal(path, &content->header, content, problem);
}

}  // namespace pairwell
