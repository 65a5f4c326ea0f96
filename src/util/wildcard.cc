#include "util/wildcard.h"

#include <string_view>

#include "util/path.h"
#include "util/text.h"

namespace pairwell {

namespace {

// The matcher works on views so that splitting names and patterns into
// parts, which happens for every file of a scan, copies nothing.

bool MatchFixedView(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (std::string_view::size_type i = 0; i < text.size(); ++i) {
    if (pattern[i] != '?' && pattern[i] != text[i]) return false;
  }
  return true;
}

// A text shorter than n is returned whole rather than rejected: the caller's
// MatchFixed then fails on the length, which is the answer wanted.
std::string_view Left(std::string_view text, std::string_view::size_type n) {
  return text.substr(0, n);
}

std::string_view Right(std::string_view text, std::string_view::size_type n) {
  return n >= text.size() ? text : text.substr(text.size() - n);
}

int FindWildView(std::string_view text, std::string_view part) {
  if (text.size() < part.size()) return 0;
  const std::string_view::size_type last = text.size() - part.size();
  for (std::string_view::size_type k = 0; k <= last; ++k) {
    if (MatchFixedView(text.substr(k, part.size()), part)) {
      return static_cast<int>(k + 1);
    }
  }
  return 0;
}

bool WildMatchView(std::string_view text, std::string_view pattern) {
  if (pattern.empty()) return false;
  const std::string_view::size_type star = pattern.find('*');
  if (star == std::string_view::npos) return MatchFixedView(text, pattern);

  if (pattern.find('*', star + 1) != std::string_view::npos) {
    // Beyond "*inner*" the matcher does not backtrack, so other patterns
    // with several "*" are refused outright instead of half-matched.
    if (pattern.front() != '*' || pattern.back() != '*') return false;
    const std::string_view inner = pattern.substr(1, pattern.size() - 2);
    return inner.empty() || FindWildView(text, inner) > 0;
  }

  const std::string_view::size_type p = star + 1;  // 1-based, like FindWild.
  if (p == 1) {
    if (pattern.size() == 1) return true;
    const std::string_view tail = pattern.substr(1);
    return MatchFixedView(Right(text, tail.size()), tail);
  }
  if (p == pattern.size()) {
    const std::string_view head = pattern.substr(0, star);
    return MatchFixedView(Left(text, head.size()), head);
  }
  if (pattern.size() - 1 > text.size()) return false;
  // The tail taken from the text is p + 1 characters long whatever the
  // length of the pattern's tail. Filters users have saved depend on which
  // names this selects, so it must not be "corrected" to the tail's length.
  if (!MatchFixedView(Right(text, p + 1), pattern.substr(p))) return false;
  return MatchFixedView(Left(text, p - 1), pattern.substr(0, star));
}

// One pattern (no ";") against a name already stripped of its folder part and
// upper-cased like the pattern.
bool MatchesPattern(std::string_view name, std::string_view pattern) {
  std::string_view pattern_base = pattern;
  std::string_view pattern_ext = "*";
  std::string_view::size_type dot = pattern.rfind('.');
  if (dot != std::string_view::npos) {
    pattern_base = pattern.substr(0, dot);
    // ".txt" is meant as "*.txt".
    if (pattern_base.empty()) pattern_base = "*";
    pattern_ext = pattern.substr(dot + 1);
  }

  std::string_view name_base = name;
  std::string_view name_ext;
  dot = name.rfind('.');
  if (dot != std::string_view::npos) {
    name_base = name.substr(0, dot);
    name_ext = name.substr(dot + 1);
  }
  return WildMatchView(name_ext, pattern_ext) &&
         WildMatchView(name_base, pattern_base);
}

}  // namespace

bool MatchesSpec(const std::string& name, const std::string& spec) {
  // Keeping what follows the last slash is the same as dropping up to the
  // first slash until none is left. Both slashes count, so names written on
  // either kind of system lose their folders.
  std::string::size_type start = 0;
  for (std::string::size_type i = 0; i < name.size(); ++i) {
    if (IsSlash(name[i])) start = i + 1;
  }
  const std::string upper_name = UpperCase(name.substr(start));
  const std::string upper_spec = UpperCase(spec);
  if (upper_spec.empty()) return true;

  std::string_view rest = upper_spec;
  for (std::string_view::size_type semi = rest.find(';');
       semi != std::string_view::npos; semi = rest.find(';')) {
    const std::string_view piece = rest.substr(0, semi);
    if (!piece.empty() && MatchesPattern(upper_name, piece)) return true;
    rest.remove_prefix(semi + 1);
  }
  // Unlike the pieces before it, an empty last piece is not skipped: it goes
  // on as an empty pattern and matches nothing.
  return MatchesPattern(upper_name, rest);
}

bool WildMatch(const std::string& text, const std::string& pattern) {
  return WildMatchView(text, pattern);
}

bool MatchFixed(const std::string& text, const std::string& pattern) {
  return MatchFixedView(text, pattern);
}

int FindWild(const std::string& text, const std::string& part) {
  return FindWildView(text, part);
}

int InStrLast(const std::string& text, const std::string& part) {
  if (part.size() > text.size()) return 0;
  // Scanning down from the last place the part fits finds the last
  // occurrence first, and an empty part fits just past the end.
  for (std::string::size_type k = text.size() - part.size() + 1; k > 0; --k) {
    if (text.compare(k - 1, part.size(), part) == 0) return static_cast<int>(k);
  }
  return 0;
}

}  // namespace pairwell
