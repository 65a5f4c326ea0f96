#include "cli/line_text.h"

namespace pairwell {

namespace {

constexpr char kEllipsis[] = "...";
constexpr std::size_t kEllipsisLength = 3;

bool StartsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// The byte offset just past the first `count` characters.
std::size_t OffsetAfter(const std::string& text, std::size_t count) {
  std::size_t offset = 0;
  for (std::size_t seen = 0; offset < text.size(); ++offset) {
    if (StartsCharacter(text[offset]) && seen++ == count) break;
  }
  return offset;
}

bool IsControl(char byte) {
  const unsigned char code = static_cast<unsigned char>(byte);
  return code < 0x20 || code == 0x7F;
}

}  // namespace

std::size_t CharCount(const std::string& text) {
  std::size_t count = 0;
  for (const char byte : text) count += StartsCharacter(byte) ? 1 : 0;
  return count;
}

std::string ShortenMiddle(const std::string& text, std::size_t columns) {
  const std::size_t length = CharCount(text);
  if (length <= columns) return text;
  if (columns <= kEllipsisLength)
    return text.substr(0, OffsetAfter(text, columns));
  const std::size_t kept = columns - kEllipsisLength;
  const std::size_t tail = kept - kept / 2;  // the end matters more
  return text.substr(0, OffsetAfter(text, kept / 2)) + kEllipsis +
         text.substr(OffsetAfter(text, length - tail));
}

std::string FitLine(const std::string& text, std::size_t columns) {
  std::string line = ShortenMiddle(text, columns);
  for (char& byte : line) {
    if (IsControl(byte)) byte = '?';
  }
  return line;
}

}  // namespace pairwell
