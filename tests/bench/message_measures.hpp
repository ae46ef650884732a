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

/// Shows `count` different messages one after the other in all programs that can show messages. The
/// client gets each from a server and fills its template; the others get the resulting lines. None,
/// with a line on standard error, if a program fails.
std::optional<message_figures> measure_messages(const std::vector<compared_program>& programs,
                                                int count);
