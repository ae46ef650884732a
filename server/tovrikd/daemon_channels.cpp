// daemon_channels.cpp - see daemon_channels.hpp.
#include "server/tovrikd/daemon_channels.hpp"

#include "server/services/server_loop.hpp"

#include <algorithm>
#include <list>
#include <utility>

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

std::list<channel>::iterator find_open(server_core& server, const channel_configuration& wanted)
{
    return std::ranges::find_if(server.channels, [&wanted](const channel& each) {
        return each.listener.socket && is_same(each, wanted);
    });
}

std::vector<std::string> open_missing(daemon& running, const std::string& bind,
                                      const std::vector<channel_configuration>& wanted)
{
    std::vector<std::string> errors;
    for (const channel_configuration& each : wanted) {
        if (find_open(running.server, each) != running.server.channels.end())
            continue;
        std::string error = loop_open_channel(running.server, {.name = each.name,
                                                               .address = bind,
                                                               .port = each.port,
                                                               .seed = running.kept.uuid,
                                                               .filter = each.filter});
        if (!error.empty())
            errors.push_back(std::move(error));
    }
    return errors;
}

void change_open(server_core& server, const std::vector<channel_configuration>& wanted)
{
    for (const channel_configuration& each : wanted) {
        const auto open = find_open(server, each);
        open->name = each.name;
        open->filter = each.filter;
    }
}

} // namespace

std::vector<std::string> daemon_change_channels(daemon& running, const configuration& chosen)
{
    const auto wanted = collect_channels(chosen);
    auto& channels = running.server.channels;
    const std::size_t before = channels.size();
    std::vector<std::string> errors = open_missing(running, chosen.bind, wanted);
    if (errors.empty()) {
        close_unwanted(running, wanted);
        change_open(running.server, wanted);
    } else {
        channels.resize(before); // nobody has been let in through the new ones
    }
    return errors;
}

} // namespace tovrik
