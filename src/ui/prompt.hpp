// prompt.hpp - asks the user for one line of text in a box in the middle of the screen.
#pragma once

/// The hint of prompts that Escape abandons together with what they are for.
constexpr const char* hint_or_cancel = "RET=OK - ESC=CANCEL";

/// Asks for a text; other servers go on being served meanwhile.
/// max: room for the answer, its terminator included, so at most max - 1 characters are taken.
/// question, hint: shown on the box's top and bottom frame. preset: text to begin with, or null; it
/// is cut to fit.
/// The answer, malloc'ed and the caller's to free; null for Escape, for an empty line and after ten
/// seconds without a typed or deleted character.
char* prompt_input(int max, const char* question, const char* hint, const char* preset);
