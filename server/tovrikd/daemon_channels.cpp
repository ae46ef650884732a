// daemon_channels.cpp - see daemon_channels.hpp.
#include "server/tovrikd/daemon_channels.hpp"

#include "server/services/server_loop.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

std::vector<channel_configuration> collect_channels(const configuration& chosen)
{
    std::vector<channel_configuration> wanted{
        {.name = chosen.name, .port = chosen.port, .filter = {}}};
    wanted.insert(wanted.end(), chosen.channels.begin(), chosen.channels.end());
    return wanted;
}

/// Whether an open channel is a configured one. Those that have any free port are told apart by
/// their names.
bool is_same(const channel& open, const channel_configuration& wanted)
{
    return open.asked_port == wanted.port && (wanted.port != 0 || open.name == wanted.name);
}

bool is_wanted(const channel& open, const std::vector<channel_configuration>& wanted)
{
    return std::ranges::any_of(
        wanted, [&open](const channel_configuration& each) { return is_same(open, each); });
}

void close_unwanted(daemon& running, const std::vector<channel_configuration>& wanted)
{
    for (channel& open : running.server.channels) {
        if (open.listener.socket && !is_wanted(open, wanted))
            loop_close_channel(running.server, open);
    }
}

std::string open_or_change(daemon& running, const channel_configuration& wanted)
{
    auto& channels = running.server.channels;
    const auto open = std::ranges::find_if(channels, [&wanted](const channel& each) {
        return each.listener.socket && is_same(each, wanted);
    });
    if (open == channels.end())
        return loop_open_channel(running.server, {.name = wanted.name,
                                                  .address = running.chosen.bind,
                                                  .port = wanted.port,
                                                  .seed = running.kept.uuid,
                                                  .filter = wanted.filter});
    open->name = wanted.name;
    open->filter = wanted.filter;
    return {};
}

} // namespace

std::vector<std::string> daemon_change_channels(daemon& running)
{
    const auto wanted = collect_channels(running.chosen);
    close_unwanted(running, wanted);
    std::vector<std::string> errors;
    for (const channel_configuration& each : wanted) {
        if (std::string error = open_or_change(running, each); !error.empty())
            errors.push_back(std::move(error));
    }
    return errors;
}

} // namespace tovrik
