// prompt.hpp - asks the user for one line of text in a box in the middle of the screen.
#pragma once

#include <string_view>

/// The hint of prompts that Escape abandons together with what they are for.
constexpr const char* hint_or_cancel = "RET=OK - ESC=CANCEL";

/// Who asks, if it is not the user's own command.
struct prompt_asker {
    std::string_view name;       // shown on the box's lower frame; a long one loses its middle
    bool was_left_alone = false; // set if the prompt ends because its time ran out
};

/// Asks for a text. Servers are served meanwhile, unless the prompt answers a packet: then the poll
/// cycle waits.
/// size: of the answer with its terminator, so at most size - 1 characters are taken.
/// question, hint: shown on the box's upper and lower frame.
/// preset: the text to begin with, cut to fit; or null.
/// asker: whose name the box shows, and what is told how it ended; or null.
/// Returns the answer, malloc'ed and the caller's to free. Null for Escape, for an empty line and
/// after ten seconds without a typed or deleted character.
char* prompt_input(int size, const char* question, const char* hint, const char* preset,
                   prompt_asker* asker = nullptr);
