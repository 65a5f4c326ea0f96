#include "config/ini_file.h"

#include <sstream>
#include <stdexcept>

#include "util/system.h"
#include "util/text.h"
#include "util/text_file.h"
#include "util/user_interface.h"

namespace pairwell {

INIFile::INIFile() : sections_(1) {}

void INIFile::IndexSections() const {
  if (!index_stale_) return;
  index_.clear();
  for (std::size_t i = 0; i < sections_.size(); ++i) {
    if (sections_[i]) {
      index_.emplace(UpperCase(sections_[i]->SecName), static_cast<long>(i));
    }
  }
  index_stale_ = false;
}

long INIFile::IndexOfSection(const std::string& name) const {
  IndexSections();
  const auto found = index_.find(UpperCase(name));
  return found == index_.end() ? -1 : found->second;
}

std::shared_ptr<INIFileSection> INIFile::Section(
    const std::string& name) const {
  const long index = IndexOfSection(name);
  return index < 0 ? nullptr : sections_[static_cast<std::size_t>(index)];
}

std::shared_ptr<INIFileSection> INIFile::SectionI(long index) const {
  if (index < 0 || index > SecCount()) {
    throw std::out_of_range("INI section index " + std::to_string(index) +
                            " is outside 0.." + std::to_string(SecCount()));
  }
  return sections_[static_cast<std::size_t>(index)];
}

std::shared_ptr<INIFileSection> INIFile::AddSection(const std::string& name) {
  std::shared_ptr<INIFileSection> section = Section(name);
  if (section) return section;
  section = std::make_shared<INIFileSection>(name);
  sections_.push_back(section);
  index_.emplace(UpperCase(name), SecCount());
  return section;
}

std::shared_ptr<INIFileSection> INIFile::RemoveSection(
    const std::string& name) {
  return RemoveSectionI(IndexOfSection(name));
}

std::shared_ptr<INIFileSection> INIFile::RemoveSectionI(long index) {
  if (index == 0) return sections_[0];
  if (index < 1 || index > SecCount()) return nullptr;
  const auto position = sections_.begin() + index;
  std::shared_ptr<INIFileSection> removed = *position;
  sections_.erase(position);
  index_stale_ = true;
  return removed;
}

std::vector<std::shared_ptr<INIFileSection>> INIFile::RemoveSectionsIf(
    const std::function<bool(const INIFileSection&)>& which) {
  std::vector<std::shared_ptr<INIFileSection>> removed;
  std::vector<std::shared_ptr<INIFileSection>> kept;
  kept.reserve(sections_.size());
  for (std::size_t i = 0; i < sections_.size(); ++i) {
    const bool remove = i > 0 && sections_[i] && which(*sections_[i]);
    (remove ? removed : kept).push_back(sections_[i]);
  }
  sections_.swap(kept);
  index_stale_ = true;
  return removed;
}

void INIFile::Clear() {
  sections_.clear();
  sections_.push_back(std::make_shared<INIFileSection>());
  index_stale_ = true;
}

void INIFile::LoadText(const std::string& text) {
  Clear();
  std::istringstream in(text);
  std::shared_ptr<INIFileSection> current = sections_[0];
  for (;;) {
    const std::string header = current->ReadVars(in);
    if (header.empty() || header[0] != '[') return;
    // "[]" and a header without "]" name nothing: the lines after them stay
    // in the current section.
    const std::string::size_type close = header.find(']');
    if (close != std::string::npos && close >= 2) {
      current = AddSection(header.substr(1, close - 1));
    }
  }
}

bool INIFile::LoadFile(const std::string& path) {
  std::string content;
  int error_number = 0;
  const bool read = ReadTextFile(path, &content, &error_number);
  LoadText(content);
  if (!read) {
    MsgBox("An error occurred while loading " + path + ": " +
               ErrorText(error_number),
           kMbExclamation);
  }
  return read;
}

std::string INIFile::ToText() const {
  std::ostringstream out;
  for (long i = 0; i <= SecCount(); ++i) {
    const std::shared_ptr<INIFileSection>& section =
        sections_[static_cast<std::size_t>(i)];
    if (section) section->WriteVars(out, i != 0);
    out << "\r\n";
  }
  return out.str();
}

bool INIFile::SaveFile(const std::string& path) const {
  ReplaceFileContent(path, ToText());
  return true;
}

}  // namespace pairwell
