// daemon_traffic.cpp - see daemon_traffic.hpp.
#include "server/tovrikd/daemon_traffic.hpp"

#include "server/inputs/json_message.hpp"
#include "server/messages/reception_text.hpp"
#include "server/services/publishing.hpp"

#include <utility>

namespace tovrik
{
namespace
{

void publish_all(daemon& running, std::vector<transmission> messages)
{
    for (transmission& message : messages) {
        if (running.chosen.show_reception)
            append_reception(message);
        for (transmission& part : message_parts(std::move(message))) {
            publish_message(running.server, std::move(part));
        }
    }
}

/// With a single receiver there is nothing to wait for.
bool has_several_inputs(const daemon& running)
{
    return running.chosen.inputs.size() > 1;
}

void join_blocks(daemon& running, std::vector<transmission> messages, time_point now)
{
    if (!messages.empty())
        publish_all(running, joining_take(running.joined, std::move(messages), now));
}

} // namespace

void daemon_take_messages(daemon& running, std::vector<transmission> messages, time_point now)
{
    if (!messages.empty())
        join_blocks(
            running,
            doubles_take(running.known, std::move(messages), has_several_inputs(running), now),
            now);
}

void daemon_pass_on_waiting(daemon& running, time_point now)
{
    join_blocks(running, doubles_on_time(running.known, now), now);
    publish_all(running, joining_on_time(running.joined, now));
}

void daemon_pass_on_all(daemon& running)
{
    join_blocks(running, doubles_end(running.known), steady_clock::now());
    publish_all(running, joining_end(running.joined));
}

void daemon_tell_silence(daemon& running, time_point now)
{
    for (std::string& notice : input_set_notices(running.inputs, now)) {
        core_broadcast(running.server, {.kind = kind::notice, .payload = std::move(notice)});
    }
}

} // namespace tovrik
