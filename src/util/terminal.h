// Questions about where an output stream goes: a terminal, how wide it is,
// and whether two streams end up in the same place.
#ifndef PAIRWELL_UTIL_TERMINAL_H_
#define PAIRWELL_UTIL_TERMINAL_H_

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

}  // namespace pairwell

#endif  // PAIRWELL_UTIL_TERMINAL_H_
