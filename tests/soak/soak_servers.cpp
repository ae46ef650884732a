// soak_servers.cpp - see soak_servers.hpp.
#include "soak/soak_servers.hpp"

#include "support/loopback.hpp"

#include <algorithm>
#include <poll.h>
#include <vector>

namespace
{

constexpr int max_wait_ms = 1;

server_manner choose_manner(soak_kind kind, int index)
{
    if (kind == soak_kind::steady || index > last_wild_server)
        return server_manner::steady;
    return kind == soak_kind::flood ? server_manner::flooding : server_manner::splitting;
}

} // namespace

soak_servers::soak_servers(const soak_options& options, const test_clock& client_clock)
    : clock(client_clock), last_wild(options.kind == soak_kind::steady ? -1 : last_wild_server)
{
    std::vector<unique_fd> listeners;
    listeners.reserve(static_cast<std::size_t>(options.servers));
    for (int index = 0; index < options.servers; ++index)
        listeners.emplace_back(bind_free_port("127.0.0.1"));
    std::ranges::sort(listeners, {}, [](const unique_fd& fd) { return port_of(fd.get()); });
    for (int index = 0; unique_fd & listener : listeners) {
        servers.emplace_back(index, std::move(listener), choose_manner(options.kind, index),
                             options.seed, clock);
        ++index;
    }
    thread = std::thread{[this] { run(); }};
}

soak_servers::~soak_servers()
{
    stops = true;
    thread.join();
}

int soak_servers::port(int index) const
{
    return port_of(servers[static_cast<std::size_t>(index)].listener());
}

void soak_servers::wait_and_take_in()
{
    std::vector<pollfd> watched;
    {
        const std::lock_guard lock{guard};
        for (const soak_server& server : servers) {
            watched.push_back({server.listener(), POLLIN, 0});
            watched.push_back({server.client(), POLLIN, 0});
        }
    }
    poll(watched.data(), watched.size(), max_wait_ms);
    const std::lock_guard lock{guard};
    for (auto at = watched.cbegin(); soak_server & server : servers) {
        // Another thread may have hung up meanwhile; an extra call does no harm.
        const bool has_visitor = (at++)->revents != 0;
        const bool has_news = (at++)->revents != 0;
        if (has_visitor)
            server.accept_client();
        else if (has_news)
            server.take_in();
    }
}

void soak_servers::run()
{
    while (!stops) {
        wait_and_take_in();
        const std::lock_guard lock{guard};
        for (soak_server& server : servers)
            server.step();
        ++rounds_made;
    }
}
