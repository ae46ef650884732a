// terminal_type.hpp - what the terminal's type says about it.
//
// The header that declares these look-ups defines hundreds of common words as macros; it is kept
// out of every other file.
#pragma once

/// A text capability of the terminal's type by its short name ("rmcup"); null when the type has
/// none. Borrowed from curses.
const char* terminal_capability(const char* name);

/// Expands the delays of a capability and hands its bytes to `put` one by one.
void terminal_capability_expand(const char* capability, int (*put)(int byte));
