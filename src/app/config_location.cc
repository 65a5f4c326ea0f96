#include "app/config_location.h"

#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/user_interface.h"

namespace pairwell {

namespace {

constexpr char kProgramName[] = "Pairwell";
// Where an install keeps what it ships: share/pairwell under its prefix.
constexpr char kSharedFolder[] = "share/pairwell";

// The program's folder under the person's configuration and state folders:
// "pairwell" on POSIX, "Pairwell" on Windows.
std::string ProgramFolder() { return UserFolderName(kProgramName); }

std::string PortableConfigPath() {
  return CombinePath(ExecutableFolder(), kIniFileName);
}

std::string UserConfigPath() {
  const std::string base = UserConfigFolder();
  // With no home at all, the file is looked for where a build keeps it.
  if (base.empty()) return PortableConfigPath();
  return CombinePath(CombinePath(base, ProgramFolder()), kIniFileName);
}

std::string ParentFolder(const std::string& path) {
  const std::string::size_type slash = path.find_last_of("/\\");
  if (slash == std::string::npos) return std::string();
  return slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
}

// Whether a file (not a folder) is there.
bool FileIsThere(const std::string& path) {
  FolderEntry entry;
  return GetItemInfo(path, &entry) && (entry.attributes & kAttrDirectory) == 0;
}

}  // namespace

ConfigPlace FindConfigPlace() {
  if (!EnvironmentValue(kIniPathVariable).empty()) {
    return ConfigPlace::kEnvironment;
  }
  if (FileIsThere(PortableConfigPath())) return ConfigPlace::kPortable;
  return ConfigPlace::kUser;
}

std::string GetINIPath() {
  switch (FindConfigPlace()) {
    case ConfigPlace::kEnvironment:
      return EnvironmentValue(kIniPathVariable);
    case ConfigPlace::kPortable:
      return PortableConfigPath();
    case ConfigPlace::kUser:
      break;
  }
  return UserConfigPath();
}

std::string ConfigFolder() { return ParentFolder(GetINIPath()); }

std::string LogFolder() {
  const std::string state = UserStateFolder();
  if (FindConfigPlace() != ConfigPlace::kUser || state.empty()) {
    return ConfigFolder();
  }
  return CombinePath(state, ProgramFolder());
}

std::string SharedDataFolder() {
  const std::string bin = ExecutableFolder();
  const std::string installed = CombinePath(ParentFolder(bin), kSharedFolder);
  return FolderExists(installed) ? installed : bin;
}

bool CreateUserConfig() {
  if (FindConfigPlace() != ConfigPlace::kUser) return true;
  // A log folder that cannot be made shows when a log is first written.
  MakeDirectory(LogFolder());
  const std::string path = GetINIPath();
  if (FileIsThere(path)) return true;
  const std::string shipped = CombinePath(SharedDataFolder(), kIniFileName);
  int error_number = MakeDirectoryError(ConfigFolder());
  if (error_number == 0) error_number = CopyFileReplacing(shipped, path);
  // The shipped file may be read-only; the person's copy is theirs.
  if (error_number == 0) error_number = ClearReadOnly(path);
  if (error_number != 0) {
    MsgBox("Pairwell could not create its configuration file " + path +
               " from the default " + shipped + ": " +
               ErrorText(error_number),
           kMbCritical);
    return false;
  }
  MsgBox("Pairwell created its configuration file " + path +
             " from the default " + shipped + ".",
         kMbInformation);
  return true;
}

}  // namespace pairwell
