#include "util/text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

namespace pairwell {

std::string LTrim(const std::string& text) {
  std::string::size_type start = text.find_first_not_of(' ');
  return start == std::string::npos ? std::string() : text.substr(start);
}

std::string RTrim(const std::string& text) {
  std::string::size_type end = text.find_last_not_of(' ');
  return end == std::string::npos ? std::string() : text.substr(0, end + 1);
}

std::string Trim(const std::string& text) { return LTrim(RTrim(text)); }

char UpperChar(char c) { return (c >= 'a' && c <= 'z') ? c - 'a' + 'A' : c; }

std::string UpperCase(const std::string& text) {
  std::string result = text;
  for (char& c : result) c = UpperChar(c);
  return result;
}

int CompareNoCase(std::string_view a, std::string_view b) {
  const std::size_t n = a.size() < b.size() ? a.size() : b.size();
  for (std::size_t i = 0; i < n; ++i) {
    // Compare as unsigned bytes so that non-ASCII names sort after ASCII.
    const unsigned char ca = static_cast<unsigned char>(UpperChar(a[i]));
    const unsigned char cb = static_cast<unsigned char>(UpperChar(b[i]));
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && CompareNoCase(a, b) == 0;
}

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

namespace {

// Length of the decimal number that starts at text[pos], 0 when none does.
std::string::size_type NumberLength(const std::string& text,
                                    std::string::size_type pos) {
  std::string::size_type i = pos;
  auto digit = [&](std::string::size_type k) {
    return k < text.size() && std::isdigit(static_cast<unsigned char>(text[k]));
  };
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  std::string::size_type digits = 0;
  while (digit(i)) ++i, ++digits;
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (digit(i)) ++i, ++digits;
  }
  if (digits == 0) return 0;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    std::string::size_type e = i + 1;
    if (e < text.size() && (text[e] == '+' || text[e] == '-')) ++e;
    if (digit(e)) {
      while (digit(e)) ++e;
      i = e;
    }
  }
  return i - pos;
}

std::string::size_type SkipBlanks(const std::string& text,
                                  std::string::size_type pos) {
  while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\t')) ++pos;
  return pos;
}

// from_chars, unlike strtod, ignores the locale: the GUI sets one in which
// the decimal mark may be ",", but the file always holds ".".
double ToDouble(const std::string& number) {
  const char* first = number.data();
  if (*first == '+') ++first;  // from_chars takes no plus sign
  double value = 0;
  std::from_chars(first, number.data() + number.size(), value);
  return value;
}

}  // namespace

double LeadingNumber(const std::string& text) {
  const std::string::size_type start = SkipBlanks(text, 0);
  const std::string::size_type length = NumberLength(text, start);
  return length == 0 ? 0.0 : ToDouble(text.substr(start, length));
}

int LeadingInteger(const std::string& text) {
  const double number = std::trunc(LeadingNumber(text));
  if (!(number >= std::numeric_limits<int>::min())) {
    return std::numeric_limits<int>::min();
  }
  if (number > std::numeric_limits<int>::max()) {
    return std::numeric_limits<int>::max();
  }
  return static_cast<int>(number);
}

bool ParseNumber(const std::string& text, double* value) {
  const std::string::size_type start = SkipBlanks(text, 0);
  const std::string::size_type length = NumberLength(text, start);
  if (length == 0 || SkipBlanks(text, start + length) != text.size()) {
    return false;
  }
  *value = ToDouble(text.substr(start, length));
  return true;
}

bool StrToBool(const std::string& text) {
  const std::string upper = UpperCase(Trim(text));
  if (upper == "TRUE") return true;
  double number = 0;
  return ParseNumber(upper, &number) && number != 0;
}

const char* BoolToStr(bool value) { return value ? "True" : "False"; }

std::string CountText(long long count, const char* one, const char* many) {
  return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

}  // namespace pairwell
