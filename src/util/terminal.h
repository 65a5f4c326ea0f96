// Questions about where an output stream goes: a terminal, how wide it is,
// and whether two streams end up in the same place; and writing to it.
#ifndef PAIRWELL_UTIL_TERMINAL_H_
#define PAIRWELL_UTIL_TERMINAL_H_

#include <cstddef>
#include <cstdio>

namespace pairwell {

// True when the stream writes to a terminal.
bool IsTerminal(std::FILE* stream);

// The width in columns of the terminal the stream writes to; 0 when it is
// no terminal or the terminal does not tell.
int TerminalWidth(std::FILE* stream);

// True when both streams write to the same file, pipe or terminal, so that
// what one writes lands among what the other writes.
bool SameOutput(std::FILE* a, std::FILE* b);

// Makes a console show the UTF-8 text the program writes as it is (the
// Windows console reads bytes in its own code page otherwise). Nothing to
// do on POSIX terminals.
void UseUtf8Console();

// Writes n bytes through the stream's buffer, or flushes it: 0, or the
// error number of what failed, as the system said it (a closed pipe, a
// full disk) rather than as the C library retold it.
int WriteStream(std::FILE* stream, const char* bytes, std::size_t n);
int FlushStream(std::FILE* stream);

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_TERMINAL_H_
