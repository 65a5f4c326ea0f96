// Fitting a text into one line of a terminal. A character is counted as one
// column: a UTF-8 sequence as one, wide characters as one too.
#ifndef PAIRWELL_CLI_LINE_TEXT_H_
#define PAIRWELL_CLI_LINE_TEXT_H_

#include <cstddef>
#include <string>

namespace pairwell {

// The number of characters in the text (bytes that start a UTF-8 sequence).
std::size_t CharCount(const std::string& text);

// The text itself when it has at most `columns` characters; else its start
// and its end (where a path keeps the file's name) around "...", in
// `columns` characters, UTF-8 sequences kept whole.
std::string ShortenMiddle(const std::string& text, std::size_t columns);

// The text as one line of at most `columns` characters: shortened in the
// middle, and every control character (a newline in a file name) shown as
// '?' so that it cannot move the cursor.
std::string FitLine(const std::string& text, std::size_t columns);

}  // namespace pairwell

#endif  // PAIRWELL_CLI_LINE_TEXT_H_
