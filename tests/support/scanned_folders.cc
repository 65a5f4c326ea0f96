#include "support/scanned_folders.h"

#include <stdexcept>

#include "config/ini_file_section.h"
#include "engine/synchronizer.h"
#include "support/temp_dir.h"
#include "util/file_system.h"

namespace pairwell {

void ScanFolders(Synchronizer& set, const TempDir& dir,
                 const std::vector<std::int32_t>& types,
                 const std::vector<std::string>& names,
                 const Entries& catalogue) {
  for (std::size_t k = 0; k < types.size(); ++k) {
    const std::string folder(1, static_cast<char>('A' + k));
    if (!MakeDirectory(dir.Join(folder))) {
      throw std::runtime_error("cannot create " + dir.Join(folder));
    }
    for (const std::string& name : names) {
      dir.WriteFile(folder + "/" + name, "content");
    }
    set.PathAdd(dir.Join(folder));
    set.SetPathFlags(static_cast<int>(k + 1), types[k] | kFolderEnabled);
  }
  INIFileSection section("Conflict Types");
  for (const auto& entry : catalogue) section.AddVar(entry.first, entry.second);
  set.ReadConflictInfo(section);
  set.FileSpec = "*.*";
  if (!set.BuildActionList() ||
      set.WFileCount() != static_cast<long>(names.size())) {
    throw std::runtime_error("the scan did not give the files written");
  }
}

}  // namespace pairwell
