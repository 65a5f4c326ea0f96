// Splitting of a raw command line (or of any text) into words.
#ifndef PAIRWELL_UTIL_COMMAND_LINE_H_
#define PAIRWELL_UTIL_COMMAND_LINE_H_

#include <string>
#include <vector>

namespace pairwell {

// At most this many words are taken; the rest of the line is dropped.
constexpr int kMaxCommandLineWords = 16;

// Splits the text at spaces and tabs outside double quotes. A double quote
// toggles the quoted state; once the words are cut, every double quote is
// removed. Returns the words in order (the first word is element 0).
std::vector<std::string> SplitCommandLine(const std::string& line);

// Builds a command line from already split arguments (such as argv after
// the program name), quoting every argument that holds a blank, so that
// SplitCommandLine gives the same words back.
std::string JoinCommandLine(const std::vector<std::string>& args);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_COMMAND_LINE_H_
