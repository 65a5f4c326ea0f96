// Wildcard matching of file and folder names against the ";"-separated
// pattern lists a sync set filters with. The matcher is deliberately simple:
// at most one "*" per name part, or a part of the form "*inner*"; patterns
// outside those forms match less than a shell would, and that is intended.
#ifndef PAIRWELL_UTIL_WILDCARD_H_
#define PAIRWELL_UTIL_WILDCARD_H_

#include <string>

namespace pairwell {

// True when the name matches the ";"-separated pattern list `spec`.
// - Any folder part of the name, up to its last "/" or "\", is ignored.
// - ASCII letters compare without regard to case; other bytes as they are.
// - An empty list matches every name. Empty pieces of a list are skipped,
//   but an empty last piece (a trailing ";") matches nothing by itself.
// - Each pattern is split at its last "." into base and extension: an empty
//   base means "*", a pattern without "." has extension "*". The name is
//   split likewise; a name without "." has an empty extension. Both halves
//   must match under WildMatch, so a pattern ending in "." matches nothing.
bool MatchesSpec(const std::string& name, const std::string& spec);

// True when the text matches one pattern, comparing bytes exactly ("?"
// matches any one character). The accepted forms:
// - "" matches nothing; a pattern without "*" must satisfy MatchFixed.
// - "*" matches everything, the empty text included.
// - "*s": the text ends with s. "s*": the text starts with s.
// - "a*b" with the "*" at 1-based position p: matches only when b is exactly
//   p + 1 characters long (pattern length 2p + 1), the text is at least
//   Len(pattern) - 1 long, its last p + 1 characters match b and its first
//   p - 1 characters match a. Any other length of b matches no text at all.
// - Two or more "*": only "*inner*" (first and last character "*") matches,
//   when inner is empty or FindWild finds it; a "*" inside inner is literal.
//   Every other pattern with several "*" matches nothing.
bool WildMatch(const std::string& text, const std::string& pattern);

// True when text and pattern have the same length and, position by
// position, the pattern's character is "?" or equals the text's character
// (case-sensitive; "*" here is an ordinary character).
bool MatchFixed(const std::string& text, const std::string& pattern);

// The first 1-based position k at which the Len(part) characters of the text
// starting at k satisfy MatchFixed against the part; 0 when there is none or
// the text is shorter than the part. An empty part is found at 1.
int FindWild(const std::string& text, const std::string& part);

// The 1-based position of the last occurrence of the part in the text,
// compared byte for byte ("?" has no special meaning here); 0 when there is
// none or the part is longer than the text. An empty part is found just past
// the end of the text, at Len(text) + 1.
int InStrLast(const std::string& text, const std::string& part);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_WILDCARD_H_
