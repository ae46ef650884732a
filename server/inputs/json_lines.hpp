// json_lines.hpp - makes lines of JSON out of bytes as they come, and reports broken ones.
#pragma once

#include "server/base/clock.hpp"
#include "server/messages/transmission.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tovrik
{

/// What becomes of texts that are longer than clients can carry.
enum class long_texts { in_parts, whole };

class json_lines
{
public:
    using complaint_taker = std::function<void(const std::string&)>;

    /// `complain` may be empty; it gets at most max_complaints_per_second texts of one line each.
    explicit json_lines(complaint_taker complain, long_texts kept = long_texts::in_parts);

    /// The messages of the lines that end in `bytes`; an unfinished line waits for its end. A line
    /// longer than max_json_line_bytes is broken.
    std::vector<transmission> take(std::string_view bytes);

    /// The messages of the line that waits, which counts as finished now.
    std::vector<transmission> take_rest();

    /// The number of broken lines so far.
    std::size_t broken() const;

    /// The number of lines so far that held a message.
    std::size_t messages() const;

private:
    std::vector<transmission> read_line(std::string_view line);
    void complain_of(const std::string& error);

    complaint_taker complain;
    long_texts long_ones;
    std::string waiting;      ///< an unfinished line, at most max_json_line_bytes
    bool is_too_long = false; ///< the rest of the line is skipped
    std::size_t broken_lines = 0;
    std::size_t message_lines = 0;
    time_point second_began{}; ///< the second in which `complaints` are counted
    int complaints = 0;
};

/// Moves `more` to the end of `messages`.
void append_messages(std::vector<transmission>& messages, std::vector<transmission> more);

} // namespace tovrik
