#include "support/temp_dir.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace pairwell {

TempDir::TempDir() {
  std::string pattern =
      (std::filesystem::temp_directory_path() / "pairwell-test-XXXXXX")
          .string();
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) {
    throw std::runtime_error("cannot create a temporary folder");
  }
  path_ = buffer.data();
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Join(const std::string& name) const {
  return path_ + "/" + name;
}

void TempDir::WriteFile(const std::string& name,
                        const std::string& content) const {
  std::ofstream out(Join(name), std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) throw std::runtime_error("cannot write " + Join(name));
}

std::string TempDir::ReadFile(const std::string& name) const {
  std::ifstream in(Join(name), std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool TempDir::Exists(const std::string& name) const {
  return std::filesystem::exists(Join(name));
}

}  // namespace pairwell
