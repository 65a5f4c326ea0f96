// One section of the configuration file: an ordered list of name/value
// entries and comment lines.
#ifndef PAIRWELL_CONFIG_INI_FILE_SECTION_H_
#define PAIRWELL_CONFIG_INI_FILE_SECTION_H_

#include <istream>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

namespace pairwell {

// Entries are indexed from 1 to VarCount(); an index outside that range
// throws std::out_of_range. A comment is an entry named ";" whose value is
// the comment text without its ";". Entry names compare exactly (case
// matters); names other than ";" are unique, comments may repeat.
class INIFileSection {
 public:
  // The name of a comment entry.
  static constexpr char kComment[] = ";";

  INIFileSection();
  explicit INIFileSection(std::string name);

  INIFileSection(const INIFileSection&) = delete;
  INIFileSection& operator=(const INIFileSection&) = delete;

  // The name written between the brackets; empty for the head section.
  std::string SecName;

  // Reads lines into this section until end of input (returns "") or until a
  // line that starts with "[" after its leading spaces, which is consumed and
  // returned with those spaces removed. Lines without "=" are dropped.
  std::string ReadVars(std::istream& in);

  // Writes the "[SecName]" line when write_heading is true, then the entries,
  // each line ending in CR LF. The empty line after a section is the file's
  // business.
  void WriteVars(std::ostream& out, bool write_heading) const;

  // Removes every entry.
  void ClearVars();

  long VarCount() const { return static_cast<long>(entries_.size()); }
  long CommentCount() const { return comment_count_; }

  const std::string& VarName(long index) const;
  void SetVarName(long index, const std::string& name);
  const std::string& VarValue(long index) const;
  void SetVarValue(long index, const std::string& value);

  // Index of the first entry named exactly `name` (";" finds the first
  // comment), or -1.
  long FindVarIndex(const std::string& name) const;

  // Replaces the value of the entry of that name in place, or appends a new
  // entry at the end. Comments (";") are always appended.
  void AddVar(const std::string& name, const std::string& value);

  // The entry's value, or "" when there is no such entry.
  std::string FindVar(const std::string& name) const;
  // The entry's value, or `default_value` when there is no such entry. An
  // entry present with an empty value gives "".
  std::string FindVar2(const std::string& name,
                       const std::string& default_value) const;

  // Sets SecName to sec_name and reads every part of the file that stands
  // under a line equal (after trimming, case-sensitive) to "[sec_name]".
  // Returns true when at least one such line was found; errors end the scan
  // quietly.
  bool LoadFromFile(const std::string& file_name, const std::string& sec_name);

 private:
  struct Entry {
    std::string name;
    std::string value;
  };

  Entry& At(long index);
  const Entry& At(long index) const;

  std::vector<Entry> entries_;
  long comment_count_ = 0;
  // Name to the index of the first entry of that name, so that a section of
  // many entries loads in linear time; rebuilt after a rename. Sections of
  // up to kLinearLookupLimit entries, nearly all of them, need none.
  static constexpr std::size_t kLinearLookupLimit = 16;
  mutable std::unordered_map<std::string, long> index_;
  mutable bool index_stale_ = true;
};

// Reads one line ending in CR LF, CR or LF (the end is not stored). Returns
// false at end of input when no character was read. A NUL byte ends the
// line's text: what follows it up to the line end is dropped, since no
// value may hold one (a path would end there for the system).
bool ReadLine(std::istream& in, std::string* line);

}  // namespace pairwell

#endif  // PAIRWELL_CONFIG_INI_FILE_SECTION_H_
