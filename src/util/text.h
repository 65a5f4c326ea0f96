// Text helpers shared by every layer: trimming, case folding, the number
// and Boolean conversions the configuration file relies on, and counts in
// words.
#ifndef PAIRWELL_UTIL_TEXT_H_
#define PAIRWELL_UTIL_TEXT_H_

#include <string>
#include <string_view>

namespace pairwell {

// Removes spaces (only the space character, not tabs) from the left, the
// right or both ends.
std::string LTrim(const std::string& text);
std::string RTrim(const std::string& text);
std::string Trim(const std::string& text);

// Upper-cases ASCII letters; every other byte is kept as it is, so names in
// other scripts compare by their bytes.
std::string UpperCase(const std::string& text);
char UpperChar(char c);

// Ordinal comparison of the upper-cased texts: <0, 0 or >0. Allocates
// nothing.
int CompareNoCase(std::string_view a, std::string_view b);
bool EqualsNoCase(std::string_view a, std::string_view b);
bool StartsWith(const std::string& text, const std::string& prefix);

// The number at the start of the text (after leading blanks): an optional
// sign, digits, an optional fraction and exponent. 0 when the text does not
// start with a number ("8abc" gives 8, "abc" gives 0).
double LeadingNumber(const std::string& text);

// LeadingNumber truncated toward zero and held within the range of int.
int LeadingInteger(const std::string& text);

// Strict conversion: true and *value set only when the whole text, blanks
// around it aside, is one decimal number.
bool ParseNumber(const std::string& text, double* value);

// True when the trimmed, upper-cased text is "TRUE" or a non-zero number.
// "yes", "on", "" and "FALSE" are false.
bool StrToBool(const std::string& text);

// "True" or "False", the form in which Booleans are written.
const char* BoolToStr(bool value);

// The count and the noun that fits it: CountText(1, "file", "files") gives
// "1 file", CountText(0, ...) "0 files".
std::string CountText(long long count, const char* one, const char* many);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_TEXT_H_
