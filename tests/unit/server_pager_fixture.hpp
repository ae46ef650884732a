// server_pager_fixture.hpp - a server with pager lists, and clients that are their owners.
#pragma once

#include "own_clock.hpp"
#include "server_driven_core.hpp"

#include <string>

inline constexpr const char* all_aircraft = "me@here\tD-*\t\t";

inline tovrik::service_options offering_pagers(int pace_ms = 0)
{
    return {.pace_ms = pace_ms, .capabilities = {.pager = "1"}};
}

inline server_packet notice_packet(const std::string& text)
{
    return {.kind = 103, .payload = text};
}

/// The clock stands at 22:13 UTC until a test moves it.
class waiting_hits : public testing::Test
{
protected:
    explicit waiting_hits(const tovrik::service_options& options = offering_pagers())
        : server(options), home(server.open({}))
    {
    }

    /// A client that has been welcomed.
    sim_raw_client connect()
    {
        auto client = server.connect(home);
        EXPECT_EQ(next(client).kind, 41U);
        return client;
    }
    /// A client that has asked for the list of an address and a code.
    sim_raw_client connect_owner(std::uint16_t code = 12, const std::string& address = "me@here")
    {
        auto client = connect();
        client.send_bytes(packet_bytes({.kind = 89, .payload = address, .param1 = code}));
        EXPECT_EQ(next(client).kind, 89U);
        return client;
    }
    /// Adds to a list, or removes from it, by a client that then goes.
    void change_list(const std::string& text, std::uint32_t kind = 77, std::uint16_t code = 12)
    {
        auto client = connect();
        client.send_bytes(packet_bytes({.kind = kind, .payload = text, .param1 = code}));
        EXPECT_EQ(next(client).kind, 78U);
        hang_up(client);
    }
    void hang_up(sim_raw_client& client)
    {
        const std::size_t before = server.core.sessions.size();
        client.hang_up();
        EXPECT_TRUE(server.run_until([&] { return server.core.sessions.size() < before; }));
    }
    void hear(const std::string& registration)
    {
        EXPECT_TRUE(publish_message(server.core, {.registration = registration}));
    }
    server_packet next(sim_raw_client& client)
    {
        return server.next_packet(client, ahead).value_or(server_packet{});
    }
    /// Whether a client has been sent all that there is for it.
    bool has_all(sim_raw_client& client)
    {
        client.send_text(148, "^");
        return next(client).kind == 5;
    }

    own_clock clock;
    driven_core server;
    tovrik::channel& home;
    tovrik::steady_clock::duration ahead{}; ///< of the turns
};
