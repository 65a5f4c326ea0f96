// The whole configuration file in memory: an ordered list of sections.
#ifndef PAIRWELL_CONFIG_INI_FILE_H_
#define PAIRWELL_CONFIG_INI_FILE_H_

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "config/ini_file_section.h"

namespace pairwell {

// Section 0 is the head section: the lines before the first header, written
// without a header. Sections 1..SecCount() are the named sections in file
// order, then in order of addition. Section names compare ignoring case and
// are found through an index, so loading is linear in the sections; a
// section's name must not change while the store holds it. Sections are
// shared: the lookups hand out the stored object itself.
class INIFile {
 public:
  // A new store has no head section yet: Clear() or LoadFile() must run
  // before any lookup.
  INIFile();

  INIFile(const INIFile&) = delete;
  INIFile& operator=(const INIFile&) = delete;

  // The index (0..SecCount()) of the first section whose name equals `name`
  // ignoring case, or -1. The empty name finds the head section.
  long IndexOfSection(const std::string& name) const;

  // The section of that name, or null.
  std::shared_ptr<INIFileSection> Section(const std::string& name) const;

  // The section at index 0..SecCount(); other indexes throw
  // std::out_of_range.
  std::shared_ptr<INIFileSection> SectionI(long index) const;

  // Number of named sections (the head section is not counted).
  long SecCount() const { return static_cast<long>(sections_.size()) - 1; }

  // The section of that name, or a new empty one appended at the end.
  std::shared_ptr<INIFileSection> AddSection(const std::string& name);

  // Removes section 1..SecCount() and returns it (later sections move down).
  // Index 0 removes nothing and returns the head section; any other index
  // removes nothing and returns null.
  std::shared_ptr<INIFileSection> RemoveSection(const std::string& name);
  std::shared_ptr<INIFileSection> RemoveSectionI(long index);
  // Removes, in one pass, every named section for which `which` holds and
  // returns them in file order; the others keep their order.
  std::vector<std::shared_ptr<INIFileSection>> RemoveSectionsIf(
      const std::function<bool(const INIFileSection&)>& which);

  // Drops every section and installs a new, empty head section.
  void Clear();

  // Replaces the store with the file's content. On failure (missing or
  // unreadable file) shows "An error occurred while loading <path>: <reason>"
  // and returns false; what was read before the error stays in the store.
  bool LoadFile(const std::string& path);

  // Writes the store to the file: every section in order, each followed by
  // one empty line, lines ending in CR LF. The old file stays whole until the
  // new one is complete. Returns true; a failure throws std::system_error.
  bool SaveFile(const std::string& path) const;

  // The exact bytes SaveFile writes.
  std::string ToText() const;

  // Reads sections from text by the same rules as LoadFile, after Clear().
  void LoadText(const std::string& text);

 private:
  // Builds the index from the list when it is stale.
  void IndexSections() const;

  std::vector<std::shared_ptr<INIFileSection>> sections_;
  // Upper-cased name to the index of the first section of that name.
  mutable std::unordered_map<std::string, long> index_;
  mutable bool index_stale_ = true;
};

}  // namespace pairwell

#endif  // PAIRWELL_CONFIG_INI_FILE_H_
