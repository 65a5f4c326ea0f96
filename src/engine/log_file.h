// The text log of synchronization runs. One object serves the whole
// program; every set refers to it.
#ifndef PAIRWELL_ENGINE_LOG_FILE_H_
#define PAIRWELL_ENGINE_LOG_FILE_H_

#include <cstdint>
#include <string>

namespace pairwell {

// LogFlags bits.
constexpr std::uint16_t kLogOverwrite = 1;      // truncate when opened
constexpr std::uint16_t kLogDeleteAtStart = 2;  // ProgramStart deletes it
constexpr std::uint16_t kLogNoHeader = 4;       // no "Log Opened" line
constexpr std::uint16_t kLogOpenOnPrint = 8;    // printing opens it

class LogFile {
 public:
  LogFile() = default;
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  std::uint16_t LogFlags = 0;

  // The log file's name; relative names are taken relative to the
  // configuration file's folder.
  const std::string& Path() const { return path_; }
  void SetPath(const std::string& path) { path_ = path; }

 private:
  std::string path_;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_LOG_FILE_H_
