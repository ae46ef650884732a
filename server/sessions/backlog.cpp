// backlog.cpp - see backlog.hpp.
#include "server/sessions/backlog.hpp"

#include <algorithm>
#include <utility>

namespace tovrik
{

void backlog_add(backlog& waiting, waiting_message message, std::size_t limit)
{
    auto& messages = waiting.messages;
    messages.push_back(std::move(message));
    while (messages.size() > limit) {
        const auto without = std::ranges::find(messages, false, &waiting_message::has_text);
        messages.erase(without == messages.end() ? messages.begin() : without);
        ++waiting.left_out;
    }
}

wire_bytes backlog_take(backlog& waiting, time_point now)
{
    auto& messages = waiting.messages;
    while (!messages.empty()) {
        const waiting_message first = std::move(messages.front());
        messages.pop_front();
        if (now < first.late_at)
            return first.bytes;
        ++waiting.left_out;
    }
    return nullptr;
}

} // namespace tovrik
