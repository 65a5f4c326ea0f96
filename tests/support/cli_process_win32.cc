// Programs started with CreateProcessW, waited for with
// WaitForSingleObject and killed with TerminateProcess.
#include <windows.h>

#include "support/cli_process.h"
#include "util/win32/unicode.h"

namespace pairwell {

namespace {

// What a killed program exits with: no code pairwell-cli gives, so that a
// kill is told apart from a run that ended on its own.
constexpr UINT kKilledExitCode = 0x4B494C4C;

bool HasSlash(const std::string& path) {
  return path.find_first_of("/\\") != std::string::npos;
}

// One argument as the C runtime's parser (and CommandLineToArgvW) reads it
// back: quoted when it holds a blank or a quote or is empty; a quote
// escaped by a backslash, and the backslashes just before a quote (or the
// closing quote) doubled.
std::wstring QuotedArgument(const std::wstring& word) {
  if (!word.empty() && word.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
    return word;
  }
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'\\') {
      ++backslashes;
      continue;
    }
    quoted.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
    backslashes = 0;
    quoted += c;
  }
  quoted.append(backslashes * 2, L'\\');
  return quoted + L"\"";
}

// The program's own name is read up to the next blank, or the closing
// quote: no escapes. No Windows path holds a quote.
std::wstring QuotedProgram(const std::wstring& program) {
  return L"\"" + program + L"\"";
}

// An absolute path of the program named by a path ("/" or "\" separated,
// or relative to the current folder); false when there is none.
bool FullPath(const std::wstring& path, std::wstring* full) {
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (size == 0) return false;
  std::wstring buffer(size, L'\0');
  const DWORD length =
      GetFullPathNameW(path.c_str(), size, &buffer[0], nullptr);
  if (length == 0 || length >= size) return false;
  buffer.resize(length);
  *full = buffer;
  return true;
}

// For handles the started program inherits as its standard streams.
SECURITY_ATTRIBUTES Inheritable() {
  SECURITY_ATTRIBUTES inherit = {};
  inherit.nLength = sizeof inherit;
  inherit.bInheritHandle = TRUE;
  return inherit;
}

HANDLE OpenInherited(const std::wstring& path, DWORD access,
                     DWORD disposition) {
  SECURITY_ATTRIBUTES inherit = Inheritable();
  return CreateFileW(path.c_str(), access,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     &inherit, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE OpenOutput(const std::string& path) {
  if (path == kRefusingOutput) {
    SECURITY_ATTRIBUTES inherit = Inheritable();
    HANDLE reading = INVALID_HANDLE_VALUE;
    HANDLE writing = INVALID_HANDLE_VALUE;
    if (!CreatePipe(&reading, &writing, &inherit, 0)) {
      return INVALID_HANDLE_VALUE;
    }
    CloseHandle(reading);
    return writing;
  }
  std::wstring wide;
  if (!Widen(path, &wide)) return INVALID_HANDLE_VALUE;
  return OpenInherited(wide, GENERIC_WRITE, CREATE_ALWAYS);
}

void CloseIfOpen(HANDLE handle) {
  if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
}

// The process's exit code once it has ended, as the interface gives it;
// the handle is closed.
int ReapedExitCode(HANDLE process) {
  DWORD code = 0;
  const bool known = GetExitCodeProcess(process, &code) != 0;
  CloseHandle(process);
  if (!known || code == kKilledExitCode) return -1;
  return static_cast<int>(code);
}

}  // namespace

ProcessHandle StartProcess(const std::vector<std::string>& argv,
                           const std::string& out_path,
                           const std::string& err_path) {
  if (argv.empty()) return kNoProcess;
  std::wstring program;
  if (!Widen(argv[0], &program)) return kNoProcess;
  // A path is started as it is, made absolute ("/work/x.exe" then lies on
  // the current drive); a bare name is looked up as Windows does, PATH
  // among the places.
  std::wstring application;
  if (HasSlash(argv[0])) {
    if (!FullPath(program, &application)) return kNoProcess;
    program = application;
  }
  std::wstring command_line = QuotedProgram(program);
  for (std::size_t i = 1; i < argv.size(); ++i) {
    std::wstring word;
    if (!Widen(argv[i], &word)) return kNoProcess;
    command_line += L" " + QuotedArgument(word);
  }

  const HANDLE in = OpenInherited(L"NUL", GENERIC_READ, OPEN_EXISTING);
  const HANDLE out = OpenOutput(out_path);
  const HANDLE err = OpenOutput(err_path);
  PROCESS_INFORMATION started = {};
  bool ok = in != INVALID_HANDLE_VALUE && out != INVALID_HANDLE_VALUE &&
            err != INVALID_HANDLE_VALUE;
  if (ok) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in;
    startup.hStdOutput = out;
    startup.hStdError = err;
    ok = CreateProcessW(application.empty() ? nullptr : application.c_str(),
                        &command_line[0], nullptr, nullptr, TRUE, 0, nullptr,
                        nullptr, &startup, &started) != 0;
  }
  // The program holds its own copies now.
  CloseIfOpen(in);
  CloseIfOpen(out);
  CloseIfOpen(err);
  if (!ok) return kNoProcess;
  CloseHandle(started.hThread);
  return started.hProcess;
}

int WaitForExit(ProcessHandle process) {
  if (WaitForSingleObject(process, INFINITE) != WAIT_OBJECT_0) {
    CloseHandle(process);
    return -1;
  }
  return ReapedExitCode(process);
}

bool HasEnded(ProcessHandle process, int* exit_code) {
  const DWORD waited = WaitForSingleObject(process, 0);
  if (waited == WAIT_TIMEOUT) return false;
  if (waited != WAIT_OBJECT_0) {
    // A handle that cannot be waited for leads to no end: taken as ended.
    CloseHandle(process);
    *exit_code = -1;
    return true;
  }
  *exit_code = ReapedExitCode(process);
  return true;
}

bool KillProcess(ProcessHandle process, int* exit_code) {
  // Fails when the program has ended already; it may also be ending on its
  // own just now, when its exit code is its own.
  const bool terminated = TerminateProcess(process, kKilledExitCode) != 0;
  WaitForSingleObject(process, INFINITE);
  DWORD code = 0;
  const bool killed = terminated && GetExitCodeProcess(process, &code) != 0 &&
                      code == kKilledExitCode;
  *exit_code = ReapedExitCode(process);
  return killed;
}

}  // namespace pairwell
