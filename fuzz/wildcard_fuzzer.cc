// Matches a name against a filter. The input's first line is the filter (a
// ";"-separated list, or one pattern), the rest the name.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_check.h"
#include "util/text.h"
#include "util/wildcard.h"

namespace pairwell {
namespace {

void CheckSpec(const std::string& name, const std::string& spec) {
  // Case and folder parts do not count; an empty list takes every name.
  const bool matches = MatchesSpec(name, spec);
  FUZZ_CHECK(MatchesSpec(UpperCase(name), spec) == matches);
  FUZZ_CHECK(MatchesSpec(name, UpperCase(spec)) == matches);
  FUZZ_CHECK(MatchesSpec("folder/" + name, spec) == matches);
  FUZZ_CHECK(MatchesSpec("c:\\folder\\" + name, spec) == matches);
  FUZZ_CHECK(MatchesSpec(name, ""));
}

void CheckPattern(const std::string& text, const std::string& pattern) {
  // Without "*" a pattern matches as MatchFixed would, but "" matches
  // nothing.
  const bool wild = WildMatch(text, pattern);
  if (pattern.empty()) {
    FUZZ_CHECK(!wild);
  } else if (pattern.find('*') == std::string::npos) {
    FUZZ_CHECK(wild == MatchFixed(text, pattern));
  }
  FUZZ_CHECK(WildMatch(text, "*"));
  FUZZ_CHECK(MatchFixed(text, text));

  const int found = FindWild(text, pattern);
  FUZZ_CHECK(found >= 0);
  FUZZ_CHECK(found <= static_cast<int>(text.size()) + 1);
  if (found > 0) {
    FUZZ_CHECK(MatchFixed(text.substr(found - 1, pattern.size()), pattern));
  }
  if (pattern.find('?') == std::string::npos) {
    const std::string::size_type first = text.find(pattern);
    FUZZ_CHECK(found ==
               (first == std::string::npos ? 0 : static_cast<int>(first) + 1));
  }
  // "*part*" looks for the part, its "*" and "?" as FindWild reads them.
  FUZZ_CHECK(WildMatch(text, "*" + pattern + "*") ==
             (pattern.empty() || found > 0));

  const std::string::size_type last = text.rfind(pattern);
  FUZZ_CHECK(InStrLast(text, pattern) ==
             (last == std::string::npos ? 0 : static_cast<int>(last) + 1));
}

}  // namespace
}  // namespace pairwell

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::string::size_type line_end = input.find('\n');
  const std::string spec = input.substr(0, line_end);
  const std::string name =
      line_end == std::string::npos ? "" : input.substr(line_end + 1);
  pairwell::CheckSpec(name, spec);
  // The same halves as one pattern and as a part to look for.
  pairwell::CheckPattern(name, spec);
  return 0;
}
