// soak_servers.hpp - all servers of a soak, kept going by a thread of their own.
#pragma once

#include "soak/soak_options.hpp"
#include "soak/soak_server.hpp"
#include "support/test_clock.hpp"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

/// Servers with this index and below misbehave, when the kind of soak has such.
constexpr int last_wild_server = 4;

class soak_servers
{
public:
    /// `clock`: the client's; must outlive this.
    soak_servers(const soak_options& options, const test_clock& clock);
    ~soak_servers();
    soak_servers(const soak_servers&) = delete;
    soak_servers& operator=(const soak_servers&) = delete;

    int count() const
    {
        return static_cast<int>(servers.size());
    }
    /// Ascending with the index, since that is how the client lists servers of one name.
    int port(int index) const;
    bool is_wild(int index) const
    {
        return index <= last_wild;
    }

    /// How often all servers have taken in what had come.
    std::int64_t rounds() const
    {
        return rounds_made;
    }

    /// Does `use(server)` while nothing else happens to the server, and gives what that gives.
    template <typename function> auto with(int index, function use)
    {
        const std::lock_guard lock{guard};
        return use(servers[static_cast<std::size_t>(index)]);
    }

private:
    void run();
    void wait_and_take_in();

    const test_clock& clock;
    int last_wild;
    std::deque<soak_server> servers;
    std::mutex guard;
    std::atomic<std::int64_t> rounds_made = 0;
    std::atomic<bool> stops = false;
    std::thread thread;
};
