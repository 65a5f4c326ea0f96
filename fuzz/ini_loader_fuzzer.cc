// Loads any text as a configuration file, saves it and loads the saved text
// again; reads every set section into a set and writes the set back.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "config/ini_file.h"
#include "engine/synchronizer.h"
#include "fuzz_check.h"
#include "silent_user_interface.h"
#include "util/text.h"

namespace pairwell {
namespace {

// Every entry of a section is found by its name, and the section by its own
// name; duplicates were merged while loading.
void CheckLookups(const INIFile& ini) {
  for (long i = 0; i <= ini.SecCount(); ++i) {
    const std::shared_ptr<INIFileSection> section = ini.SectionI(i);
    FUZZ_CHECK(ini.IndexOfSection(section->SecName) == i);
    FUZZ_CHECK(ini.Section(section->SecName) == section);
    long comments = 0;
    for (long v = 1; v <= section->VarCount(); ++v) {
      const std::string& name = section->VarName(v);
      if (name == INIFileSection::kComment) {
        ++comments;
        continue;
      }
      FUZZ_CHECK(section->FindVarIndex(name) == v);
      FUZZ_CHECK(section->FindVar(name) == section->VarValue(v));
    }
    FUZZ_CHECK(section->CommentCount() == comments);
  }
  // The keys the program itself looks up first.
  ini.SectionI(0)->FindVar("CurSyncSet");
  ini.SectionI(0)->FindVar2("SimulationMode", "False");
  if (const auto types = ini.Section("Conflict Types")) types->FindVar(";");
}

// A set read from its section and written back keeps its folders and its
// last-sync date: written again after a second read, they are the same.
void CheckSets(const INIFile& ini) {
  static SilentUserInterface ui;
  const ScopedUserInterface installed(&ui);
  const INIFileSection no_types("Conflict Types");
  const std::shared_ptr<INIFileSection> found = ini.Section("Conflict Types");
  const INIFileSection& types = found ? *found : no_types;
  for (long i = 1; i <= ini.SecCount(); ++i) {
    const std::shared_ptr<INIFileSection> section = ini.SectionI(i);
    if (UpperCase(section->SecName.substr(0, 4)) != "SEC:") continue;
    Synchronizer set;
    set.ReadConflictInfo(types);
    set.ReadFromINI(*section);
    INIFileSection written("written");
    set.WriteToINI(written);
    Synchronizer again;
    again.ReadConflictInfo(types);
    again.ReadFromINI(written);
    INIFileSection rewritten("rewritten");
    again.WriteToINI(rewritten);
    FUZZ_CHECK(again.PathCount() == set.PathCount());
    for (const char* key : {"Dir1", "Dir1Flags", "LastSyncDate",
                            "LastSyncMoment", "FileSpec", "ExcludeSpec"}) {
      FUZZ_CHECK(rewritten.FindVar2(key, "<absent>") ==
                 written.FindVar2(key, "<absent>"));
    }
  }
}

}  // namespace
}  // namespace pairwell

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using pairwell::INIFile;
  INIFile ini;
  ini.LoadText(std::string(reinterpret_cast<const char*>(data), size));
  pairwell::CheckLookups(ini);
  pairwell::CheckSets(ini);

  // Saving drops what loading ignores (blank lines, lines without "=",
  // headers that name nothing) and merges repeated names, so the saved text
  // loads back into a store that saves exactly the same text.
  const std::string saved = ini.ToText();
  INIFile reloaded;
  reloaded.LoadText(saved);
  FUZZ_CHECK(reloaded.SecCount() == ini.SecCount());
  FUZZ_CHECK(reloaded.ToText() == saved);
  return 0;
}
