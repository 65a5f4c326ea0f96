#include "engine/log_file.h"

#include <cerrno>
#include <stdexcept>

#include "util/date_time.h"
#include "util/file_system.h"
#include "util/path.h"
#include "util/system.h"
#include "util/user_interface.h"

namespace pairwell {

LogFile::~LogFile() { CloseLog(); }

void LogFile::SetPath(const std::string& path) {
  if (IsOpen()) {
    throw std::logic_error("Cannot change log file path while file is open");
  }
  path_ = path;
}

std::string LogFile::FullPath() const {
  return CombinePath(base_folder_, path_);
}

void LogFile::ProgramStart() {
  if ((LogFlags & kLogDeleteAtStart) == 0 || path_.empty()) return;
  const int error_number = DeleteFile(FullPath());
  if (error_number != 0 && error_number != ENOENT) {
    MsgBox("Unable to delete log file: " + FullPath(), kMbExclamation);
  }
}

void LogFile::OpenLog() {
  if (IsOpen() || path_.empty()) return;
  const bool overwrite = (LogFlags & kLogOverwrite) != 0;
  if (overwrite && EchoTextBox != nullptr) EchoTextBox->ClearText();
  file_ = OpenFile(FullPath(), overwrite ? "wb" : "ab");
  if (file_ == nullptr) {
    MsgBox("Couldn't open log file: " + FullPath() +
               "\nDescription: " + ErrorText(errno),
           kMbExclamation, "Pairwell");
    return;
  }
  write_failed_ = false;
  if ((LogFlags & kLogNoHeader) == 0) {
    PrintL();
    PrintL(kAppTitle, " Log Opened: ", FormatGeneralDate(Now()));
  }
}

void LogFile::CloseLog() {
  if (file_ == nullptr) return;
  std::fclose(file_);
  file_ = nullptr;
}

void LogFile::Print(const std::string& text, bool line_break, bool echo) {
  if ((LogFlags & kLogOpenOnPrint) != 0 && !IsOpen()) OpenLog();
  if (echo) Echo(text);
  Write(text);
  if (line_break) {
    if (echo) Echo("\n");
    Write("\n");
  }
}

void LogFile::Echo(const std::string& text) {
  if (EchoTextBox == nullptr) return;
  // The view keeps its older lines once full; the file still gets all.
  if (EchoTextBox->TextLength() + text.size() >= kEchoLimit) return;
  EchoTextBox->AppendText(text);
}

void LogFile::Write(const std::string& text) {
  if (file_ == nullptr || text.empty()) return;
  // Each piece is flushed so that the log is complete up to a crash.
  if (std::fwrite(text.data(), 1, text.size(), file_) == text.size() &&
      std::fflush(file_) == 0) {
    return;
  }
  const int error_number = errno;
  std::clearerr(file_);
  if (write_failed_) return;
  write_failed_ = true;
  MsgBox("There was an error writing to the log file.\nDescription: " +
             ErrorText(error_number),
         kMbExclamation);
}

}  // namespace pairwell
