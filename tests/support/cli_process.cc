// What running a program looks like on both systems; starting, waiting and
// killing are in cli_process_posix.cc and cli_process_win32.cc.
#include "support/cli_process.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace pairwell {

namespace {

// The program's text as the tests compare it: on Windows with each CR LF
// made LF.
std::string LfText(std::string text) {
#ifdef _WIN32
  std::string::size_type kept = 0;
  for (std::string::size_type i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
      continue;
    }
    text[kept++] = text[i];
  }
  text.resize(kept);
#endif
  return text;
}

}  // namespace

std::string ReadOutput(const std::string& path) {
  std::ifstream in(std::filesystem::u8path(path), std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

ProcessResult RunProcess(const std::vector<std::string>& argv,
                         const std::string& out_path,
                         const std::string& err_path) {
  ProcessResult result;
  const ProcessHandle process = StartProcess(argv, out_path, err_path);
  if (process != kNoProcess) result.exit_code = WaitForExit(process);
  result.out = LfText(ReadOutput(out_path));
  result.err = LfText(ReadOutput(err_path));
  return result;
}

KillOutcome RunAndKillAfter(const std::vector<std::string>& argv,
                            const std::string& out_path,
                            const std::string& err_path,
                            std::chrono::steady_clock::duration delay) {
  KillOutcome outcome;
  const auto start = std::chrono::steady_clock::now();
  const ProcessHandle process = StartProcess(argv, out_path, err_path);
  if (process == kNoProcess) return outcome;
  outcome.started = true;
  // Polled rather than slept through, so that a run that ends early is
  // seen (and timed) as soon as it ends.
  while (!HasEnded(process, &outcome.exit_code)) {
    if (std::chrono::steady_clock::now() - start >= delay) {
      // It may end on its own just as it is killed: KillProcess tells
      // which came first.
      outcome.killed = KillProcess(process, &outcome.exit_code);
      break;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  outcome.lived = std::chrono::steady_clock::now() - start;
  return outcome;
}

std::vector<std::string> LinesStartingWith(const std::string& out,
                                           const std::string& prefix) {
  std::vector<std::string> found;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(prefix, 0) == 0) found.push_back(line);
  }
  return found;
}

}  // namespace pairwell
