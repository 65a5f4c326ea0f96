#include "config/ini_file_section.h"

#include <sstream>
#include <stdexcept>

#include "util/text.h"
#include "util/text_file.h"

namespace pairwell {

bool ReadLine(std::istream& in, std::string* line) {
  line->clear();
  std::istream::int_type c = in.get();
  if (c == std::istream::traits_type::eof()) return false;
  bool cut = false;
  while (c != std::istream::traits_type::eof() && c != '\n' && c != '\r') {
    cut = cut || c == '\0';
    if (!cut) line->push_back(static_cast<char>(c));
    c = in.get();
  }
  if (c == '\r' && in.peek() == '\n') in.get();
  return true;
}

INIFileSection::INIFileSection() { ClearVars(); }

INIFileSection::INIFileSection(std::string name) : SecName(std::move(name)) {
  ClearVars();
}

std::string INIFileSection::ReadVars(std::istream& in) {
  std::string line;
  while (ReadLine(in, &line)) {
    line = LTrim(line);
    if (line.empty()) continue;
    if (line[0] == '[') return line;
    if (line[0] == ';') {
      AddVar(kComment, line.substr(1));
      continue;
    }
    const std::string::size_type equals = line.find('=');
    if (equals != std::string::npos) {
      AddVar(line.substr(0, equals), line.substr(equals + 1));
    }
  }
  return std::string();
}

void INIFileSection::WriteVars(std::ostream& out, bool write_heading) const {
  if (write_heading) out << '[' << SecName << "]\r\n";
  for (const Entry& entry : entries_) {
    if (entry.name == kComment) {
      out << ';' << entry.value << "\r\n";
    } else {
      out << entry.name << '=' << entry.value << "\r\n";
    }
  }
}

void INIFileSection::ClearVars() {
  entries_.clear();
  comment_count_ = 0;
  index_stale_ = true;
}

INIFileSection::Entry& INIFileSection::At(long index) {
  if (index < 1 || index > VarCount()) {
    throw std::out_of_range("INI entry index " + std::to_string(index) +
                            " is outside 1.." + std::to_string(VarCount()));
  }
  return entries_[static_cast<std::size_t>(index - 1)];
}

const INIFileSection::Entry& INIFileSection::At(long index) const {
  return const_cast<INIFileSection*>(this)->At(index);
}

const std::string& INIFileSection::VarName(long index) const {
  return At(index).name;
}

void INIFileSection::SetVarName(long index, const std::string& name) {
  Entry& entry = At(index);
  // Keep the comment count true when an entry turns into a comment or back.
  comment_count_ += (name == kComment) - (entry.name == kComment);
  entry.name = name;
  index_stale_ = true;
}

const std::string& INIFileSection::VarValue(long index) const {
  return At(index).value;
}

void INIFileSection::SetVarValue(long index, const std::string& value) {
  At(index).value = value;
}

long INIFileSection::FindVarIndex(const std::string& name) const {
  // A few entries are quicker to look through than to index.
  if (entries_.size() <= kLinearLookupLimit) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (entries_[i].name == name) return static_cast<long>(i) + 1;
    }
    return -1;
  }
  if (index_stale_) {
    index_.clear();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      index_.emplace(entries_[i].name, static_cast<long>(i) + 1);
    }
    index_stale_ = false;
  }
  const auto found = index_.find(name);
  return found == index_.end() ? -1 : found->second;
}

void INIFileSection::AddVar(const std::string& name, const std::string& value) {
  if (name != kComment) {
    const long index = FindVarIndex(name);
    if (index > 0) {
      At(index).value = value;
      return;
    }
  } else {
    ++comment_count_;
  }
  entries_.push_back(Entry{name, value});
  if (entries_.size() <= kLinearLookupLimit) {
    index_stale_ = true;
  } else if (!index_stale_) {
    index_.emplace(name, VarCount());
  }
}

std::string INIFileSection::FindVar(const std::string& name) const {
  return FindVar2(name, std::string());
}

std::string INIFileSection::FindVar2(const std::string& name,
                                     const std::string& default_value) const {
  const long index = FindVarIndex(name);
  return index > 0 ? At(index).value : default_value;
}

bool INIFileSection::LoadFromFile(const std::string& file_name,
                                  const std::string& sec_name) {
  SecName = sec_name;
  std::string content;
  int error_number = 0;
  // A read error ends the scan where the error came; what came before counts.
  ReadTextFile(file_name, &content, &error_number);
  std::istringstream in(content);
  const std::string header = "[" + sec_name + "]";
  bool found = false;
  std::string line;
  while (ReadLine(in, &line)) {
    if (Trim(line) == header) {
      found = true;
      // The line at which ReadVars stops is consumed without a look: the
      // scan goes on after it.
      ReadVars(in);
    }
  }
  return found;
}

}  // namespace pairwell
