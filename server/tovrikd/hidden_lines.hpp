// hidden_lines.hpp - asks for lines on the terminal without showing what is typed.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tovrik
{

/// What was typed, or why not everything was.
struct hidden_lines {
    std::vector<std::string> typed = {}; ///< without line ends; the bytes that the terminal sent
    std::string error = {};              ///< empty on success
    int signal = 0; ///< the signal that ended the questions; it has had no other effect. 0: none

    hidden_lines() = default;
    hidden_lines(hidden_lines&&) = default;
    hidden_lines& operator=(hidden_lines&&) = default;
    /// Leaves nothing of what was typed in memory.
    ~hidden_lines();
};

/// What is wrong with a line that was typed; empty: nothing.
using line_check = std::function<std::string(const std::string& typed)>;

/// Asks questions, one after another, on the terminal that controls the program, whatever its input
/// and output are. The terminal shows its letters again when this returns. A line of more than
/// `max_bytes`, one that `check` finds wrong, and an input that ends are errors and end the
/// questions. So do SIGINT, SIGTERM, SIGHUP and SIGQUIT: the caller raises the signal again.
hidden_lines hidden_lines_ask(const std::vector<std::string>& questions, std::size_t max_bytes,
                              const line_check& check);

} // namespace tovrik
