// session_options.hpp - the options of the program that runs random sessions.
#pragma once

#include <optional>

struct session_options {
    std::optional<unsigned> seed{}; // of the first session; none: one that nobody has chosen
    int seconds = 0;                // further sessions begin until then; 0: one session only
    int actions = 150;              // of each session
};

/// Reads the arguments after the program's name into `options`. False, with a line on standard
/// error, if an argument is unknown or out of range.
bool session_options_read(session_options& options, int count, char** arguments);
