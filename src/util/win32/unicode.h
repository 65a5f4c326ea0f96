// Names are UTF-8 inside the program and UTF-16 at each Windows call.
#ifndef PAIRWELL_UTIL_WIN32_UNICODE_H_
#define PAIRWELL_UTIL_WIN32_UNICODE_H_

#include <string>

namespace pairwell {

// The UTF-16 of UTF-8 text; false (and *wide empty) when the text is not
// valid UTF-8, which no Windows name can be made of.
bool Widen(const std::string& text, std::wstring* wide);

// The UTF-8 of UTF-16 text; false when it holds a lone surrogate, which
// UTF-8 cannot carry: such a name would come back as another name.
bool Narrow(const std::wstring& wide, std::string* text);
bool Narrow(const wchar_t* wide, std::string* text);

// Narrow that puts U+FFFD for what cannot be carried: for text that is only
// shown (messages, environment values).
std::string NarrowForDisplay(const std::wstring& wide);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_WIN32_UNICODE_H_
