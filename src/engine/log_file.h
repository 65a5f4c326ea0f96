// The text log of synchronization runs. One object serves the whole
// program; every set refers to it. What is printed goes to the file (when
// open) and is echoed to the person's log view (when one is attached).
#ifndef PAIRWELL_ENGINE_LOG_FILE_H_
#define PAIRWELL_ENGINE_LOG_FILE_H_

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>

namespace pairwell {

class LogEchoTarget;

// LogFlags bits.
constexpr std::uint16_t kLogOverwrite = 1;      // truncate when opened
constexpr std::uint16_t kLogDeleteAtStart = 2;  // ProgramStart deletes it
constexpr std::uint16_t kLogNoHeader = 4;       // no "Log Opened" line
constexpr std::uint16_t kLogOpenOnPrint = 8;    // printing opens it

// The echo target stops growing before it reaches this many characters.
constexpr std::size_t kEchoLimit = 65535;

class LogFile {
 public:
  LogFile() = default;
  ~LogFile();
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  // Where printed text is echoed (not owned); null for nowhere.
  LogEchoTarget* EchoTextBox = nullptr;
  std::uint16_t LogFlags = 0;

  // The log file's name; a relative name is taken relative to BaseFolder().
  const std::string& Path() const { return path_; }
  // Throws std::logic_error("Cannot change log file path while file is
  // open") while the log is open; the path then stays.
  void SetPath(const std::string& path);

  // The folder relative names are taken in (the configuration's folder).
  const std::string& BaseFolder() const { return base_folder_; }
  void SetBaseFolder(const std::string& folder) { base_folder_ = folder; }

  // The path joined onto the base folder.
  std::string FullPath() const;
  bool IsOpen() const { return file_ != nullptr; }

  // With kLogDeleteAtStart and a path, deletes the log file; a failure is
  // shown ("Unable to delete log file: <path>") and the program goes on.
  void ProgramStart();

  // Opens the log (appending, or anew with kLogOverwrite, which also empties
  // the echo target) and writes the header line unless kLogNoHeader. Does
  // nothing when open or when the path is empty. A failure is shown
  // ("Couldn't open log file: ...") and the log stays closed.
  void OpenLog();
  // Closes the log when open.
  void CloseLog();

  // Prints the items and a line break, to the file and the echo target.
  template <typename... Items>
  void PrintL(const Items&... items) {
    Print(Join(items...), true, true);
  }
  // Prints the items without a line break; the line goes on later.
  template <typename... Items>
  void PrintNL(const Items&... items) {
    Print(Join(items...), false, true);
  }
  // Prints "* ", the items and a line break to the file only.
  template <typename... Items>
  void PrintErrL(const Items&... items) {
    Print("* " + Join(items...), true, false);
  }

 private:
  template <typename... Items>
  static std::string Join(const Items&... items) {
    std::ostringstream text;
    ((text << items), ...);
    return text.str();
  }

  void Print(const std::string& text, bool line_break, bool echo);
  void Echo(const std::string& text);
  void Write(const std::string& text);

  std::string path_;
  std::string base_folder_;
  std::FILE* file_ = nullptr;
  // After a failed write the person has been told once; the log goes on
  // without repeating the message for every line.
  bool write_failed_ = false;
};

}  // namespace pairwell

#endif  // PAIRWELL_ENGINE_LOG_FILE_H_
