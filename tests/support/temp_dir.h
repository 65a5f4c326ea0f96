// A real folder under the system's temporary directory, removed with
// everything in it when the object goes.
#ifndef PAIRWELL_TESTS_SUPPORT_TEMP_DIR_H_
#define PAIRWELL_TESTS_SUPPORT_TEMP_DIR_H_

#include <string>

namespace pairwell {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // path() + "/" + name.
  std::string Join(const std::string& name) const;

  // Writes a file's bytes (creating it or replacing its content).
  void WriteFile(const std::string& name, const std::string& content) const;
  // A file's bytes; "" when it cannot be read.
  std::string ReadFile(const std::string& name) const;
  bool Exists(const std::string& name) const;

 private:
  std::string path_;
};

}  // namespace pairwell

#endif  // PAIRWELL_TESTS_SUPPORT_TEMP_DIR_H_
