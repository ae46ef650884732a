// server_core.cpp - see server_core.hpp.
#include "server/services/server_core.hpp"

#include "server/base/limits.hpp"

#include <algorithm>

namespace tovrik
{

server_core::server_core(const service_options& chosen)
    : options(chosen), memory(services, chosen.name),
      tick(encode_shared({.kind = kind::tick, .payload = "^"}))
{
}

std::size_t core_broadcast(server_core& core, const packet& sent)
{
    const auto bytes = encode_shared(sent);
    std::size_t count = 0;
    for (auto& [fd, session] : core.sessions) {
        if (session_queue(session, bytes))
            ++count;
    }
    return count;
}

void core_close_client(const server_core& core, client_session& session, std::uint32_t close_kind,
                       time_point now)
{
    const packet last{.kind = close_kind, .payload = "Good Bye"};
    session_close(session, encode_shared(last),
                  now + std::chrono::milliseconds{core.options.pace_ms + closing_grace_ms});
}

std::size_t core_close_clients(server_core& core, std::uint32_t close_kind)
{
    const std::size_t count = core_client_count(core);
    for (auto& [fd, session] : core.sessions) {
        core_close_client(core, session, close_kind, steady_clock::now());
    }
    return count;
}

bool core_wants(const client_session& session, const published_message& item)
{
    return (session.wants_uplinks || !item.uplink) &&
           filter_matches(session.home->filter, item.message);
}

client_session* core_find_client(server_core& core, int fd, std::uint64_t number)
{
    const auto found = core.sessions.find(fd);
    return found != core.sessions.end() && found->second.number == number ? &found->second
                                                                          : nullptr;
}

std::size_t core_client_count(const server_core& core)
{
    const auto count =
        std::count_if(core.sessions.begin(), core.sessions.end(), [](const auto& entry) {
            return !entry.second.closing && !entry.second.gone;
        });
    return static_cast<std::size_t>(count);
}

bool core_has_waiting_packets(const server_core& core)
{
    return std::any_of(core.sessions.begin(), core.sessions.end(), [](const auto& entry) {
        const client_session& session = entry.second;
        return session.sending || session.hit || !session.new_hits.empty() ||
               !session.assured.empty() || !session.report.empty() ||
               !session.traffic.messages.empty();
    });
}

} // namespace tovrik
