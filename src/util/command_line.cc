#include "util/command_line.h"

#include <algorithm>

namespace pairwell {

std::vector<std::string> SplitCommandLine(const std::string& line) {
  std::vector<std::string> words;
  bool in_quotes = false;
  bool in_word = false;
  for (char c : line) {
    const bool blank = c == ' ' || c == '\t';
    if (blank && !in_quotes) {
      in_word = false;
      continue;
    }
    if (!in_word) {
      if (static_cast<int>(words.size()) == kMaxCommandLineWords) break;
      words.emplace_back();
      in_word = true;
    }
    if (c == '"') in_quotes = !in_quotes;
    words.back().push_back(c);
  }
  for (std::string& word : words) {
    word.erase(std::remove(word.begin(), word.end(), '"'), word.end());
  }
  return words;
}

std::string JoinCommandLine(const std::vector<std::string>& args) {
  std::string line;
  for (const std::string& arg : args) {
    if (!line.empty()) line.push_back(' ');
    const bool quote =
        arg.empty() || arg.find_first_of(" \t") != std::string::npos;
    if (quote) line.push_back('"');
    line += arg;
    if (quote) line.push_back('"');
  }
  return line;
}

}  // namespace pairwell
