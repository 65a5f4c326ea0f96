// A file written at its end only, a line at a time, for records that must
// outlive a crash of the program (each write reaches the system at once)
// and, once flushed, a power cut.
#ifndef PAIRWELL_UTIL_APPEND_FILE_H_
#define PAIRWELL_UTIL_APPEND_FILE_H_

#include <string>

namespace pairwell {

class AppendFile {
 public:
  AppendFile() = default;
  ~AppendFile();
  AppendFile(const AppendFile&) = delete;
  AppendFile& operator=(const AppendFile&) = delete;

  // Opens the file for appending; with `create_new` it must not exist yet.
  // Returns 0, or the system error number.
  int Open(const std::string& path, bool create_new);
  bool IsOpen() const { return fd_ >= 0; }
  const std::string& path() const { return path_; }

  // Appends the bytes (all of them, or an error). Returns 0, or the system
  // error number.
  int Append(const std::string& bytes);

  // Waits until what was appended is on the disk. Returns 0, or the system
  // error number.
  int Flush();

  // Returns 0, or the system error number of the close.
  int Close();

 private:
  int fd_ = -1;
  std::string path_;
};

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_APPEND_FILE_H_
