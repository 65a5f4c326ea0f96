// A section's entries as (name, value) pairs, for comparing whole sections.
#ifndef PAIRWELL_TESTS_SUPPORT_SECTION_ENTRIES_H_
#define PAIRWELL_TESTS_SUPPORT_SECTION_ENTRIES_H_

#include <string>
#include <utility>
#include <vector>

#include "config/ini_file_section.h"

namespace pairwell {

using Entries = std::vector<std::pair<std::string, std::string>>;

inline Entries EntriesOf(const INIFileSection& section) {
  Entries entries;
  for (long i = 1; i <= section.VarCount(); ++i) {
    entries.emplace_back(section.VarName(i), section.VarValue(i));
  }
  return entries;
}

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_SECTION_ENTRIES_H_
