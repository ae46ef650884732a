// server_driven_core.hpp - a server's core whose turns a test takes, at the times that it chooses.
#pragma once

#include "server/services/publishing.hpp"
#include "server/services/server_loop.hpp"
#include "unit/sim_raw_client.hpp"

#include <gtest/gtest.h>

#include <string>
#include <sys/epoll.h>

class driven_core
{
public:
    explicit driven_core(tovrik::service_options chosen) : options(std::move(chosen)), core(options)
    {
        EXPECT_EQ(loop_open(core), "");
    }

    /// Opens a channel and returns it.
    tovrik::channel& open(const tovrik::channel_opening& opening)
    {
        EXPECT_EQ(loop_open_channel(core, opening), "");
        return core.channels.back();
    }

    /// Takes turns until a condition holds; all of them `ahead` of the present time.
    template <typename condition>
    bool run_until(condition is_met, tovrik::steady_clock::duration ahead = {})
    {
        const auto end = tovrik::steady_clock::now() + default_patience;
        while (!is_met() && tovrik::steady_clock::now() < end) {
            epoll_event event{};
            if (epoll_wait(core.epoll.get(), &event, 1, 1) == 1)
                loop_on_event(core, event.data.fd);
            loop_on_time(core, tovrik::steady_clock::now() + ahead);
        }
        return is_met();
    }

    /// A client that is connected to a channel and welcomed.
    sim_raw_client connect(const tovrik::channel& home)
    {
        const std::uint64_t before = core.clients_so_far;
        sim_raw_client client{home.listener.port};
        EXPECT_TRUE(run_until([&] { return core.clients_so_far > before; }));
        return client;
    }

    /// Takes turns until the client can read its next packet, and reads it.
    std::optional<server_packet> next_packet(sim_raw_client& client,
                                             tovrik::steady_clock::duration ahead = {})
    {
        if (!run_until(
                [&] { return wait_for_socket(client.fd, POLLIN, std::chrono::milliseconds{0}); },
                ahead))
            return std::nullopt;
        return client.receive();
    }

    tovrik::service_options options;
    tovrik::server_core core;
};
