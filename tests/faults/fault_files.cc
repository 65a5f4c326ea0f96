#include "faults/fault_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "support/disk_files.h"
#include "util/file_system.h"

namespace pairwell {

namespace {

constexpr std::size_t kDigestPiece = std::size_t{1} << 20;

void AddPiece(const char* data, std::size_t size, Digest* digest) {
  digest->size += size;
  digest->hash = digest->hash * 0x100000001b3u ^
                 std::hash<std::string_view>()(std::string_view(data, size));
}

std::string BaseName(const std::string& path) {
  const std::string::size_type slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Every entry under root, relative, leftover temporary copies included.
std::vector<std::string> RelativeNamesUnder(const std::string& root) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator it(root, error), end;
       !error && it != end; it.increment(error)) {
    names.push_back(it->path().string().substr(root.size() + 1));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

bool IsPartialCopy(const std::string& path) {
  return BaseName(path).rfind(kPartialCopyPrefix, 0) == 0;
}

bool WriteFileAt(const std::string& path, const std::string& bytes,
                 time_t modified, mode_t mode) {
  std::FILE* out = std::fopen(path.c_str(), "wb");
  if (out == nullptr) return false;
  const bool written =
      std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
  if (std::fclose(out) != 0 || !written) return false;
  const struct timespec times[2] = {{modified, 0}, {modified, 0}};
  return chmod(path.c_str(), mode) == 0 &&
         utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

Digest DigestOf(const std::string& bytes) {
  Digest digest;
  for (std::size_t at = 0; at < bytes.size(); at += kDigestPiece) {
    AddPiece(&bytes[at], std::min(kDigestPiece, bytes.size() - at), &digest);
  }
  return digest;
}

Digest DigestOfFile(const std::string& path) {
  Digest digest;
  std::FILE* in = std::fopen(path.c_str(), "rb");
  if (in == nullptr) return digest;
  // No bigger than the file: most are small, and a sanitizer build pays
  // for every byte of a buffer.
  struct stat st;
  const std::size_t size =
      fstat(fileno(in), &st) == 0 ? static_cast<std::size_t>(st.st_size) : 0;
  std::vector<char> piece(
      std::max<std::size_t>(1, std::min(size, kDigestPiece)));
  for (std::size_t n; (n = std::fread(piece.data(), 1, piece.size(), in));) {
    AddPiece(piece.data(), n, &digest);
  }
  std::fclose(in);
  return digest;
}

bool ReadEntry(const std::string& path, TreeEntry* entry) {
  struct stat st;
  if (lstat(path.c_str(), &st) != 0) return false;
  entry->is_folder = S_ISDIR(st.st_mode);
  entry->mtime_ns = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 +
                    st.st_mtim.tv_nsec;
  entry->mode = st.st_mode & 07777;
  entry->digest = entry->is_folder ? Digest() : DigestOfFile(path);
  return true;
}

std::string DescribeEntry(const TreeEntry& entry) {
  std::ostringstream text;
  text << entry.digest.size << " bytes dated " << entry.mtime_ns / 1000000000
       << "." << std::setw(9) << std::setfill('0')
       << entry.mtime_ns % 1000000000 << " mode 0" << std::oct << entry.mode;
  return text.str();
}

bool InVersionsArea(const std::string& name) {
  return name == ".pairwell" || name.compare(0, 10, ".pairwell/") == 0;
}

std::map<std::string, TreeEntry> SnapshotTree(const std::string& root) {
  std::map<std::string, TreeEntry> tree;
  for (const std::string& name : RelativeNamesUnder(root)) {
    TreeEntry entry;
    if (!IsPartialCopy(name) && !InVersionsArea(name) &&
        ReadEntry(root + "/" + name, &entry)) {
      tree[name] = entry;
    }
  }
  return tree;
}

std::vector<std::string> TreeDifferences(const std::string& left,
                                         const std::string& right) {
  return SnapshotDifferences(SnapshotTree(left), SnapshotTree(right), left,
                             right);
}

std::vector<std::string> SnapshotDifferences(
    const std::map<std::string, TreeEntry>& a,
    const std::map<std::string, TreeEntry>& b, const std::string& left,
    const std::string& right) {
  std::vector<std::string> differences;
  for (const auto& [name, entry] : a) {
    const auto other = b.find(name);
    if (other == b.end()) {
      differences.push_back(name + ": only in " + left);
    } else if (entry.is_folder != other->second.is_folder) {
      differences.push_back(name + ": a folder on one side only");
    } else if (!entry.is_folder && (!(entry.digest == other->second.digest) ||
                                    entry.mtime_ns != other->second.mtime_ns ||
                                    entry.mode != other->second.mode)) {
      differences.push_back(name + ": " + DescribeEntry(entry) + " vs " +
                            DescribeEntry(other->second));
    }
  }
  for (const auto& [name, entry] : b) {
    if (a.count(name) == 0) differences.push_back(name + ": only in " + right);
  }
  return differences;
}

std::vector<std::string> PartialCopiesUnder(const std::string& root) {
  std::vector<std::string> found;
  for (const std::string& name : RelativeNamesUnder(root)) {
    if (IsPartialCopy(name)) found.push_back(name);
  }
  return found;
}

std::string LocalDateText(time_t when) {
  struct tm local;
  localtime_r(&when, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

std::string IniWithSets(const std::string& sets) {
  return Read(PAIRWELL_SOURCE_DIR "/data/Pairwell.ini") + sets;
}

}  // namespace pairwell
