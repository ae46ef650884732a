// message_measures.hpp - how much programs write to their terminals to show a message.
#pragma once

#include "bench/compared_programs.hpp"

#include <optional>
#include <vector>

struct message_figures {
    std::vector<std::vector<double>> written_bytes{}; // by program and message; empty: shows none
    std::vector<double> text_bytes{};                 // of each message
    std::vector<double> text_lines{};
};

/// Shows `count` different messages, one after the other, in all programs that can be made to: the
/// client gets each from a server and fills its template, and the others are given the lines that
/// came out of that. None, after a line on standard error, if one does not work.
std::optional<message_figures> measure_messages(const std::vector<compared_program>& programs,
                                                int count);
