#include "util/system.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include "util/win32/error_number.h"
#include "util/win32/long_path.h"
#include "util/win32/unicode.h"
#include "util/win32/win32_api.h"
// After windows.h, which it needs.
#include <shellapi.h>
#include <shlobj.h>

namespace pairwell {

namespace {

constexpr char kUnknown[] = "The reason for the failure is unknown.";

// The last component's start in a wide path; npos without a slash.
std::wstring::size_type LastSlash(const std::wstring& path) {
  return path.find_last_of(L"\\/");
}

bool IsAbsolute(const std::string& path) {
  return (path.size() >= 3 && path[1] == ':' &&
          (path[2] == '\\' || path[2] == '/')) ||
         (path.size() >= 2 && (path[0] == '\\' || path[0] == '/') &&
          (path[1] == '\\' || path[1] == '/'));
}

// A folder of the shell's (CSIDL_*); empty when it has none.
std::string ShellFolder(int csidl) {
  wchar_t path[MAX_PATH];
  if (SHGetFolderPathW(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, path) !=
      S_OK) {
    return std::string();
  }
  std::string text;
  return Narrow(path, &text) ? text : std::string();
}

// %variable% when it holds an absolute path, else the shell's folder.
std::string KnownFolder(const char* variable, int csidl) {
  const std::string value = EnvironmentValue(variable);
  return IsAbsolute(value) ? value : ShellFolder(csidl);
}

}  // namespace

std::string ErrorText(int error_number) {
  if (error_number == 0) return kUnknown;
  // Windows' own text for the error behind the number.
  const DWORD code = Win32CodeOf(error_number);
  if (code != 0) {
    wchar_t* buffer = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
            FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    if (length > 0 && buffer != nullptr) {
      std::wstring text(buffer, length);
      LocalFree(buffer);
      // The text ends with a line break.
      while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' ||
                               text.back() == L' ')) {
        text.pop_back();
      }
      if (!text.empty()) return NarrowForDisplay(text);
    } else if (buffer != nullptr) {
      LocalFree(buffer);
    }
  }
  // An errno value with no Windows counterpart (ECANCELED has one).
  const char* text = strerror(error_number);
  if (text == nullptr || *text == '\0' ||
      strncmp(text, "Unknown error", 13) == 0) {
    return kUnknown;
  }
  return text;
}

int SystemErrorCode(int error_number) {
  const unsigned long code = Win32CodeOf(error_number);
  return code != 0 ? static_cast<int>(code) : error_number;
}

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  if (words == nullptr) return std::vector<std::string>(argv + 1, argv + argc);
  std::vector<std::string> args;
  for (int i = 1; i < count; ++i) args.push_back(NarrowForDisplay(words[i]));
  LocalFree(words);
  return args;
}

std::string ExecutableFolder() {
  std::vector<wchar_t> buffer(MAX_PATH);
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(),
                                            static_cast<DWORD>(buffer.size()));
    if (length == 0) return std::string();
    if (length < buffer.size()) {
      const std::wstring path =
          WithoutLongPrefix(std::wstring(buffer.data(), length));
      const std::wstring::size_type slash = LastSlash(path);
      if (slash == std::wstring::npos) return std::string();
      // A program at the top of a drive: "C:\", as "C:" would name the
      // drive's current folder.
      const std::wstring folder = slash == 2 && path[1] == L':'
                                      ? path.substr(0, 3)
                                      : path.substr(0, slash);
      std::string text;
      return Narrow(folder, &text) ? text : std::string();
    }
    buffer.resize(buffer.size() * 2);
  }
}

std::string EnvironmentValue(const char* name) {
  std::wstring wide_name;
  if (!Widen(name, &wide_name)) return std::string();
  std::vector<wchar_t> buffer(256);
  for (;;) {
    const DWORD length = GetEnvironmentVariableW(
        wide_name.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0) return std::string();
    if (length < buffer.size()) {
      return NarrowForDisplay(std::wstring(buffer.data(), length));
    }
    buffer.resize(length);
  }
}

int SetEnvironmentValue(const char* name, const std::string& value) {
  std::wstring wide_name;
  std::wstring wide_value;
  if (!Widen(name, &wide_name) || !Widen(value, &wide_value) ||
      wide_name.empty() || wide_name.find(L'=') != std::wstring::npos) {
    return EINVAL;
  }
  // Windows keeps the variables twice: the C runtime's copy, which getenv
  // reads, and the system's, which GetEnvironmentVariableW and the programs
  // started read. _wputenv_s sets both.
  return _wputenv_s(wide_name.c_str(), wide_value.c_str());
}

std::string HomeFolder() {
  const std::string profile = EnvironmentValue("USERPROFILE");
  if (!profile.empty()) return profile;
  const std::string drive = EnvironmentValue("HOMEDRIVE");
  const std::string path = EnvironmentValue("HOMEPATH");
  if (!drive.empty() && !path.empty()) return drive + path;
  return ShellFolder(CSIDL_PROFILE);
}

// Windows keeps roaming settings and local state apart: the configuration
// in %APPDATA%, logs in %LOCALAPPDATA%.
std::string UserConfigFolder() { return KnownFolder("APPDATA", CSIDL_APPDATA); }

std::string UserStateFolder() {
  return KnownFolder("LOCALAPPDATA", CSIDL_LOCAL_APPDATA);
}

std::string UserFolderName(const std::string& program) { return program; }

std::uint64_t TickCount() { return GetTickCount64(); }

}  // namespace pairwell
