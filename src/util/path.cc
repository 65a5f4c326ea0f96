#include "util/path.h"

#include "util/text.h"

namespace pairwell {

bool IsSlash(char c) { return c == '/' || c == '\\'; }

namespace {

// Drops the last component of the path; the root "/" itself stays.
void DropLastComponent(std::string* base) {
  std::string::size_type slash = base->find_last_of("/\\");
  if (slash == std::string::npos) {
    base->clear();
  } else if (slash == 0) {
    base->resize(1);
  } else {
    base->resize(slash);
  }
}

void AppendComponent(std::string* base, const std::string& part) {
  if (!base->empty() && !IsSlash(base->back())) base->push_back(kPathSeparator);
  base->append(part);
}

}  // namespace

std::string CombinePath(const std::string& base, const std::string& rel) {
  std::string result = RTrim(base);
  const std::string part_text = RTrim(rel);
  // A lone "/" is the root, not a trailing slash.
  if (result.size() > 1 && IsSlash(result.back())) result.pop_back();
  if ((!part_text.empty() && IsSlash(part_text[0])) ||
      (part_text.size() > 1 && part_text[1] == ':')) {
    return part_text;
  }
  std::string::size_type start = 0;
  while (start <= part_text.size()) {
    std::string::size_type end = start;
    while (end < part_text.size() && !IsSlash(part_text[end])) ++end;
    const std::string part = part_text.substr(start, end - start);
    if (part == "..") {
      DropLastComponent(&result);
    } else if (part != "." && !part.empty()) {
      AppendComponent(&result, part);
    }
    start = end + 1;
  }
  return result;
}

std::string JoinPath(const std::string& folder, const std::string& rel) {
  if (folder.empty()) return rel;
  if (rel.empty()) return folder;
  return IsSlash(folder.back()) ? folder + rel : folder + kPathSeparator + rel;
}

}  // namespace pairwell
