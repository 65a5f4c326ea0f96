#include "support/temp_dir.h"

#ifndef _WIN32
#include <stdlib.h>
#endif

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace pairwell {

#ifdef _WIN32
// No mkdtemp: a random name is tried until one is free. The path is kept
// with "/" throughout, as Join adds them.
TempDir::TempDir() {
  const std::filesystem::path base = std::filesystem::temp_directory_path();
  std::random_device seed;
  std::mt19937 random(seed());
  const char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::uniform_int_distribution<int> letter(0, sizeof kLetters - 2);
  for (int attempt = 0; attempt < 100; ++attempt) {
    std::string name = "pairwell-test-";
    for (int i = 0; i < 6; ++i) name += kLetters[letter(random)];
    std::error_code error;
    if (std::filesystem::create_directory(base / name, error)) {
      path_ = (base / name).u8string();
      std::replace(path_.begin(), path_.end(), '\\', '/');
      return;
    }
  }
  throw std::runtime_error("cannot create a temporary folder");
}
#else
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
#endif

TempDir::~TempDir() {
  std::error_code ignored;
#ifdef _WIN32
  // Windows deletes no read-only file.
  namespace fs = std::filesystem;
  for (fs::recursive_directory_iterator entry(fs::u8path(path_), ignored), end;
       !ignored && entry != end; entry.increment(ignored)) {
    std::error_code unchanged;
    fs::permissions(entry->path(), fs::perms::owner_write,
                    fs::perm_options::add, unchanged);
  }
  ignored.clear();
#endif
  std::filesystem::remove_all(std::filesystem::u8path(path_), ignored);
}

std::string TempDir::Join(const std::string& name) const {
  return path_ + "/" + name;
}

void TempDir::WriteFile(const std::string& name,
                        const std::string& content) const {
  std::ofstream out(std::filesystem::u8path(Join(name)),
                    std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) throw std::runtime_error("cannot write " + Join(name));
}

std::string TempDir::ReadFile(const std::string& name) const {
  std::ifstream in(std::filesystem::u8path(Join(name)), std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool TempDir::Exists(const std::string& name) const {
  return std::filesystem::exists(std::filesystem::u8path(Join(name)));
}

}  // namespace pairwell
