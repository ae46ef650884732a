// json_lines.cpp - see json_lines.hpp.
#include "server/inputs/json_lines.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/json_message.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tovrik
{

json_lines::json_lines(complaint_taker taker, long_texts kept)
    : complain(std::move(taker)), long_ones(kept)
{
}

std::vector<transmission> json_lines::take(std::string_view bytes)
{
    std::vector<transmission> taken;
    while (!bytes.empty()) {
        const auto line_end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, line_end);
        is_too_long = is_too_long || waiting.size() + part.size() > max_json_line_bytes;
        if (is_too_long) {
            waiting.clear();
        } else {
            waiting += part;
        }
        if (line_end == std::string_view::npos)
            break;
        append_messages(taken, take_rest());
        bytes.remove_prefix(line_end + 1);
    }
    return taken;
}

std::vector<transmission> json_lines::take_rest()
{
    const std::string line = std::exchange(waiting, {});
    if (!std::exchange(is_too_long, false))
        return read_line(line);
    complain_of("it is longer than " + std::to_string(max_json_line_bytes) + " bytes");
    return {};
}

std::size_t json_lines::broken() const
{
    return broken_lines;
}

std::size_t json_lines::messages() const
{
    return message_lines;
}

std::vector<transmission> json_lines::read_line(std::string_view line)
{
    if (line.find_first_not_of(" \t\r") == std::string_view::npos)
        return {};
    json_whole read = read_json_whole(line);
    if (!read.error.empty())
        complain_of(read.error);
    if (!read.message)
        return {};
    ++message_lines;
    if (long_ones == long_texts::in_parts)
        return message_parts(std::move(*read.message));
    std::vector<transmission> whole;
    whole.push_back(std::move(*read.message));
    return whole;
}

void json_lines::complain_of(const std::string& error)
{
    ++broken_lines;
    const time_point now = steady_clock::now();
    if (now - second_began >= std::chrono::seconds{1}) {
        second_began = now;
        complaints = 0;
    }
    if (!complain || complaints >= max_complaints_per_second)
        return;
    ++complaints;
    complain("dropped a line of JSON (number " + std::to_string(broken_lines) +
             " so far): " + error);
}

void append_messages(std::vector<transmission>& messages, std::vector<transmission> more)
{
    std::move(more.begin(), more.end(), std::back_inserter(messages));
}

} // namespace tovrik
