#include "support/immutable_guard.h"

#include <errno.h>

#include <cstdlib>
#include <utility>

#ifdef _WIN32
#include <aclapi.h>

#include <atomic>
#include <vector>

#include "util/win32/unicode.h"
#include "util/win32/win32_api.h"
#endif

namespace pairwell {

#ifdef _WIN32

namespace {

// Under Wine the program's files are the Linux host's, and its functions
// for the host's names are exported by kernel32.
bool UnderWine() {
  const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr &&
         GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

using ToUnixName = char*(CDECL*)(const wchar_t*);
using ToDosName = wchar_t*(CDECL*)(const char*);

std::string UnixName(const std::wstring& dos_name) {
  const auto to_unix =
      reinterpret_cast<ToUnixName>(reinterpret_cast<void*>(GetProcAddress(
          GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  if (to_unix == nullptr) return "";
  char* name = to_unix(dos_name.c_str());
  if (name == nullptr) return "";
  std::string unix_name = name;
  HeapFree(GetProcessHeap(), 0, name);
  return unix_name;
}

std::wstring DosName(const char* unix_name) {
  const auto to_dos =
      reinterpret_cast<ToDosName>(reinterpret_cast<void*>(GetProcAddress(
          GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
  if (to_dos == nullptr) return L"";
  wchar_t* name = to_dos(unix_name);
  if (name == nullptr) return L"";
  std::wstring dos_name = name;
  HeapFree(GetProcessHeap(), 0, name);
  return dos_name;
}

// Runs chattr on the Linux host, as Wine starts a Linux program: the
// process has no handle to wait on, so the shell leaves chattr's exit
// status in a file of its own, which is awaited.
bool HostChattr(const char* flag, const std::wstring& folder) {
  static std::atomic<int> serial{0};
  const std::string unix_folder = UnixName(folder);
  const std::wstring shell = DosName("/bin/sh");
  wchar_t temp[MAX_PATH + 1];
  const DWORD length = GetTempPathW(MAX_PATH + 1, temp);
  if (unix_folder.empty() || shell.empty() || length == 0 ||
      length > MAX_PATH) {
    return false;
  }
  const std::wstring status = std::wstring(temp) + L"pairwell-chattr-" +
                              std::to_wstring(GetCurrentProcessId()) + L"-" +
                              std::to_wstring(serial.fetch_add(1)) + L".txt";
  const std::string unix_status = UnixName(status);
  std::wstring wide_folder;
  std::wstring wide_status;
  std::wstring wide_flag;
  if (unix_status.empty() || !Widen(unix_folder, &wide_folder) ||
      !Widen(unix_status, &wide_status) || !Widen(flag, &wide_flag)) {
    return false;
  }
  // The names reach the shell in its environment: nothing to quote.
  SetEnvironmentVariableW(L"PAIRWELL_CHATTR_FOLDER", wide_folder.c_str());
  SetEnvironmentVariableW(L"PAIRWELL_CHATTR_STATUS", wide_status.c_str());
  std::wstring command =
      L"/bin/sh -c \"PATH=/usr/sbin:/usr/bin:/sbin:/bin; chattr " + wide_flag +
      L" -- \\\"$PAIRWELL_CHATTR_FOLDER\\\" 2>/dev/null;"
      L" echo $? >\\\"$PAIRWELL_CHATTR_STATUS.part\\\" &&"
      L" mv \\\"$PAIRWELL_CHATTR_STATUS.part\\\""
      L" \\\"$PAIRWELL_CHATTR_STATUS\\\"\"";
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  const bool started =
      CreateProcessW(shell.c_str(), &command[0], nullptr, nullptr, FALSE, 0,
                     nullptr, nullptr, &startup, &process) != 0;
  SetEnvironmentVariableW(L"PAIRWELL_CHATTR_FOLDER", nullptr);
  SetEnvironmentVariableW(L"PAIRWELL_CHATTR_STATUS", nullptr);
  if (!started) return false;
  if (process.hProcess != nullptr) CloseHandle(process.hProcess);
  if (process.hThread != nullptr) CloseHandle(process.hThread);
  for (int waited = 0; waited < 10000; waited += 10) {
    if (GetFileAttributesW(status.c_str()) != INVALID_FILE_ATTRIBUTES) {
      char text[16] = {};
      DWORD read = 0;
      const HANDLE file =
          CreateFileW(status.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                      OPEN_EXISTING, 0, nullptr);
      if (file != INVALID_HANDLE_VALUE) {
        ReadFile(file, text, sizeof(text) - 1, &read, nullptr);
        CloseHandle(file);
      }
      DeleteFileW(status.c_str());
      return std::string(text, read) == "0\n";
    }
    Sleep(10);
  }
  return false;
}

// Opens a folder or a file so that it can be neither deleted nor renamed
// while the handle lives. Only a handle that reads takes part in sharing.
HANDLE Hold(const std::wstring& path) {
  return CreateFileW(path.c_str(), GENERIC_READ,
                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                     FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                     nullptr);
}

}  // namespace

struct ImmutableGuard::Held {
  std::wstring folder;
  bool wine = false;
  // Whether chattr +i or the deny entry took.
  bool locked = false;
  // The folder's access list before the guard's deny entry (Windows).
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  PACL access_list = nullptr;
  std::vector<HANDLE> handles;
};

bool ImmutableGuard::Lock() {
  held_ = std::make_unique<Held>();
  Held& held = *held_;
  if (!Widen(path_, &held.folder)) return false;
  for (wchar_t& c : held.folder) {
    if (c == L'/') c = L'\\';
  }
  const DWORD attributes = GetFileAttributesW(held.folder.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES ||
      (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    return false;
  }
  held.wine = UnderWine();
  if (held.wine) {
    held.locked = HostChattr("+i", held.folder);
    if (!held.locked) return false;
  } else {
    // Everyone, administrators included, is denied adding a file or a
    // folder to this folder; its entries are not concerned.
    if (GetNamedSecurityInfoW(held.folder.c_str(), SE_FILE_OBJECT,
                              DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &held.access_list, nullptr,
                              &held.descriptor) != ERROR_SUCCESS) {
      return false;
    }
    BYTE everyone[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(everyone);
    if (!CreateWellKnownSid(WinWorldSid, nullptr, everyone, &size)) {
      return false;
    }
    EXPLICIT_ACCESSW deny = {};
    deny.grfAccessPermissions = FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY;
    deny.grfAccessMode = DENY_ACCESS;
    deny.grfInheritance = NO_INHERITANCE;
    deny.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    deny.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
    deny.Trustee.ptstrName = reinterpret_cast<LPWSTR>(everyone);
    PACL denying = nullptr;
    if (SetEntriesInAclW(1, &deny, held.access_list, &denying) !=
        ERROR_SUCCESS) {
      return false;
    }
    const DWORD set = SetNamedSecurityInfoW(&held.folder[0], SE_FILE_OBJECT,
                                            DACL_SECURITY_INFORMATION, nullptr,
                                            nullptr, denying, nullptr);
    LocalFree(denying);
    held.locked = set == ERROR_SUCCESS;
    if (!held.locked) return false;
  }
  // The folder itself, then each of its entries.
  HANDLE handle = Hold(held.folder);
  if (handle == INVALID_HANDLE_VALUE) return false;
  held.handles.push_back(handle);
  WIN32_FIND_DATAW entry;
  const HANDLE find = FindFirstFileW((held.folder + L"\\*").c_str(), &entry);
  if (find == INVALID_HANDLE_VALUE) return false;
  bool all_held = true;
  do {
    const std::wstring name = entry.cFileName;
    if (name == L"." || name == L"..") continue;
    handle = Hold(held.folder + L"\\" + name);
    if (handle == INVALID_HANDLE_VALUE) {
      all_held = false;
      break;
    }
    held.handles.push_back(handle);
  } while (FindNextFileW(find, &entry));
  FindClose(find);
  return all_held;
}

void ImmutableGuard::Unlock() {
  if (!held_) return;
  Held& held = *held_;
  for (HANDLE handle : held.handles) CloseHandle(handle);
  held.handles.clear();
  if (held.locked && held.wine) {
    HostChattr("-i", held.folder);
  } else if (held.locked) {
    SetNamedSecurityInfoW(&held.folder[0], SE_FILE_OBJECT,
                          DACL_SECURITY_INFORMATION, nullptr, nullptr,
                          held.access_list, nullptr);
  }
  if (held.descriptor != nullptr) LocalFree(held.descriptor);
  held_.reset();
}

int ImmutableGuard::error_number() const { return EACCES; }

int ImmutableGuard::error_code() const { return ERROR_ACCESS_DENIED; }

int ImmutableGuard::removal_error_number() const { return EBUSY; }

#else

namespace {

bool Chattr(const char* flag, const std::string& path) {
  const std::string command =
      std::string("chattr ") + flag + " '" + path + "' 2>/dev/null";
  return std::system(command.c_str()) == 0;
}

}  // namespace

struct ImmutableGuard::Held {};

bool ImmutableGuard::Lock() { return Chattr("+i", path_); }

void ImmutableGuard::Unlock() { Chattr("-i", path_); }

int ImmutableGuard::error_number() const { return EPERM; }

int ImmutableGuard::error_code() const { return EPERM; }

int ImmutableGuard::removal_error_number() const { return EPERM; }

#endif

ImmutableGuard::ImmutableGuard(std::string path)
    : path_(std::move(path)), active_(false) {
  active_ = Lock();
#ifdef _WIN32
  // What was done of a guard that failed half-way is undone.
  if (!active_) Unlock();
#endif
}

ImmutableGuard::~ImmutableGuard() {
  if (active_) Unlock();
}

}  // namespace pairwell
