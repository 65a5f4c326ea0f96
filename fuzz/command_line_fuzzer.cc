// Splits any text as a command line, and joins NUL-separated arguments into
// one.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "util/command_line.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using pairwell::JoinCommandLine;
  using pairwell::SplitCommandLine;
  const std::string input(reinterpret_cast<const char*>(data), size);

  const std::vector<std::string> words = SplitCommandLine(input);
  FUZZ_CHECK(words.size() <= pairwell::kMaxCommandLineWords);
  for (const std::string& word : words) {
    FUZZ_CHECK(word.find('"') == std::string::npos);
  }
  FUZZ_CHECK(SplitCommandLine(JoinCommandLine(words)) == words);

  // Arguments as a program gets them: joined, they split back the same,
  // unless one holds a double quote or there are too many to take.
  std::vector<std::string> args;
  std::string::size_type start = 0;
  for (;;) {
    const std::string::size_type nul = input.find('\0', start);
    args.push_back(input.substr(start, nul - start));
    if (nul == std::string::npos) break;
    start = nul + 1;
  }
  const std::string line = JoinCommandLine(args);
  if (args.size() <= pairwell::kMaxCommandLineWords &&
      input.find('"') == std::string::npos) {
    FUZZ_CHECK(SplitCommandLine(line) == args);
  }
  return 0;
}
