// soak_servers.hpp - all servers of a soak, run by a thread of their own.
#pragma once

#include "soak/soak_options.hpp"
#include "soak/soak_server.hpp"
#include "support/test_clock.hpp"

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

/// Servers up to this index misbehave, in the kinds of soak that have such servers.
constexpr int last_wild_server = 4;

class soak_servers
{
public:
    /// `clock`: the client's; must outlive this object.
    soak_servers(const soak_options& options, const test_clock& clock);
    ~soak_servers();
    soak_servers(const soak_servers&) = delete;
    soak_servers& operator=(const soak_servers&) = delete;

    int count() const
    {
        return static_cast<int>(servers.size());
    }
    /// Ascending with the index, since the client sorts servers of the same name by port.
    int port(int index) const;
    bool is_wild(int index) const
    {
        return index <= last_wild;
    }

    /// How often all servers have received what was waiting.
    std::int64_t rounds() const
    {
        return rounds_made;
    }

    /// Runs `use(server)` while nothing else happens to the server, and returns its result.
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
