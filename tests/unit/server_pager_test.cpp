// server_pager_test.cpp - what pager lists meet while their owners are not connected, and how they
// are told.
#include "own_clock.hpp"
#include "server_driven_core.hpp"

#include "server/base/limits.hpp"

#include <algorithm>
#include <vector>

namespace
{

using namespace std::chrono_literals;

constexpr const char* all_aircraft = "me@here\tD-*\t\t";

tovrik::service_options offering_pagers(int pace_ms = 0)
{
    return {.pace_ms = pace_ms, .capabilities = {.pager = "1"}};
}

server_packet notice(const std::string& text)
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

TEST_F(waiting_hits, are_told_in_their_order_when_their_owner_is_recognised)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    own_clock::jump(60);
    hear("OE-LBA");
    hear("D-AIQB");
    EXPECT_EQ(server.core.services.hits.size(), 2U);
    auto client = connect();
    EXPECT_TRUE(has_all(client)) << "it could be anybody";
    client.send_bytes(packet_bytes({.kind = 89, .payload = "me@here", .param1 = 12}));
    EXPECT_EQ(next(client).kind, 89U);
    EXPECT_EQ(next(client), notice("Pager of me@here: D-AIQA (22:13 UTC)"));
    EXPECT_EQ(next(client), notice("Pager of me@here: D-AIQB (22:14 UTC)"));
    EXPECT_TRUE(has_all(client));
    EXPECT_EQ(server.core.counts.pager_hits, 2U);
    EXPECT_TRUE(server.core.services.hits.empty());
}

TEST_F(waiting_hits, are_told_to_who_changes_the_list_too)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    auto client = connect();
    client.send_bytes(packet_bytes({.kind = 77, .payload = "me@here\tX\t\t", .param1 = 12}));
    EXPECT_EQ(next(client).kind, 78U);
    EXPECT_EQ(next(client), notice("Pager of me@here: D-AIQA (22:13 UTC)"));
}

TEST_F(waiting_hits, are_told_once)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    auto first = connect_owner();
    EXPECT_EQ(next(first), notice("Pager of me@here: D-AIQA (22:13 UTC)"));
    hear("D-AIQB");
    EXPECT_EQ(next(first).kind, 40U);
    EXPECT_EQ(next(first), notice("Pager of me@here: D-AIQB")) << "it is told at once";
    hang_up(first);
    auto second = connect_owner();
    EXPECT_TRUE(has_all(second));
}

TEST_F(waiting_hits, go_to_one_of_the_clients_of_their_owner)
{
    change_list(all_aircraft);
    for (const char* registration : {"D-AIQA", "D-AIQB", "D-AIQC"})
        hear(registration);
    auto one = connect();
    auto other = connect();
    for (auto* const client : {&one, &other})
        client->send_bytes(packet_bytes({.kind = 89, .payload = "me@here", .param1 = 12}));
    EXPECT_TRUE(server.run_until([&] { return server.core.counts.pager_hits == 3; }));
    std::size_t told = 0;
    for (auto* const client : {&one, &other}) {
        client->send_text(148, "^");
        for (auto received = next(*client); received.kind != 5; received = next(*client))
            told += received.kind == 103 ? 1 : 0;
    }
    EXPECT_EQ(told, 3U);
}

TEST_F(waiting_hits, are_not_told_to_others)
{
    change_list(all_aircraft);
    change_list("you@here\tX*\t\t");
    hear("D-AIQA");
    for (const auto& [code, address] :
         {std::pair{13, "me@here"}, {0, "me@here"}, {12, "you@here"}, {12, "me@her"}}) {
        auto client = connect_owner(static_cast<std::uint16_t>(code), address);
        EXPECT_TRUE(has_all(client)) << code << address;
    }
    EXPECT_EQ(server.core.services.hits.size(), 1U);
}

TEST_F(waiting_hits, are_forgotten_after_a_day)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    own_clock::jump(1);
    hear("D-AIQB");
    own_clock::jump(86400);
    auto client = connect_owner();
    EXPECT_EQ(next(client), notice("Pager of me@here: D-AIQB (22:13 UTC)"));
    EXPECT_TRUE(has_all(client));
    EXPECT_TRUE(server.core.services.hits.empty());
}

TEST_F(waiting_hits, are_bounded_for_each_list)
{
    change_list(all_aircraft);
    change_list("you@here\tD-0\t\t");
    for (std::size_t i = 0; i < tovrik::max_pager_hits + 5; ++i)
        hear("D-" + std::to_string(i));
    EXPECT_EQ(server.core.services.hits.size(), tovrik::max_pager_hits + 1);
    auto client = connect_owner();
    EXPECT_EQ(next(client), notice("Pager of me@here: D-5 (22:13 UTC)")) << "the oldest have gone";
}

TEST_F(waiting_hits, go_with_their_list)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    change_list("me@here\t*\t*\t*", 88);
    change_list(all_aircraft, 77, 13);
    EXPECT_TRUE(server.core.services.hits.empty());
    auto client = connect_owner();
    EXPECT_TRUE(has_all(client));
}

TEST_F(waiting_hits, of_several_lists_of_a_client_come_in_one_order)
{
    change_list(all_aircraft, 77, 12);
    change_list("you@here\tOE-*\t\t", 77, 12);
    for (const char* registration : {"OE-A", "D-B", "OE-C"})
        hear(registration);
    auto client = connect();
    for (const char* address : {"me@here", "you@here"})
        client.send_bytes(packet_bytes({.kind = 89, .payload = address, .param1 = 12}));
    // The first hit that is told may be that of the list that was asked for first.
    std::vector<std::string> told;
    while (told.size() < 3) {
        const auto received = next(client);
        ASSERT_NE(received.kind, 0U);
        if (received.kind == 103)
            told.push_back(received.payload);
    }
    EXPECT_EQ(told.back(), "Pager of you@here: OE-C (22:13 UTC)");
}

TEST_F(waiting_hits, that_are_told_at_once_go_to_all_clients_of_their_owner)
{
    change_list(all_aircraft);
    change_list("me@here\tD-*\t\t", 77, 13);
    auto one = connect_owner();
    auto other = connect_owner();
    one.send_bytes(packet_bytes({.kind = 89, .payload = "me@here", .param1 = 13}));
    EXPECT_EQ(next(one).kind, 89U);
    hear("D-AIQA");
    for (auto* const client : {&one, &other}) {
        EXPECT_EQ(next(*client).kind, 40U);
        EXPECT_EQ(next(*client), notice("Pager of me@here: D-AIQA"));
        EXPECT_TRUE(has_all(*client)) << "once, although two lists ask for it";
    }
    EXPECT_TRUE(server.core.services.hits.empty());
}

TEST_F(waiting_hits, that_are_told_at_once_follow_their_message)
{
    change_list(all_aircraft);
    auto client = connect_owner();
    hear("OE-LBA");
    EXPECT_EQ(next(client).kind, 40U);
    hear("D-AIQA");
    EXPECT_EQ(next(client).kind, 40U);
    EXPECT_EQ(next(client), notice("Pager of me@here: D-AIQA"));
}

class waiting_hits_as_errors : public waiting_hits
{
protected:
    waiting_hits_as_errors() : waiting_hits(chosen()) {}

    static tovrik::service_options chosen()
    {
        auto options = offering_pagers();
        options.pager_hits_as_errors = true;
        return options;
    }
};

TEST_F(waiting_hits_as_errors, are_told_with_a_beep)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    auto client = connect_owner();
    EXPECT_EQ(next(client),
              (server_packet{.kind = 108, .payload = "Pager of me@here: D-AIQA (22:13 UTC)"}));
}

/// Turns are taken by the pace only.
class waiting_hits_at_a_pace : public waiting_hits
{
protected:
    waiting_hits_at_a_pace() : waiting_hits(offering_pagers(1000000)) {}

    server_packet next_in_turn(sim_raw_client& client)
    {
        ahead += 1001s;
        return next(client);
    }
    sim_raw_client connect_in_turn()
    {
        auto client = server.connect(home);
        EXPECT_EQ(next_in_turn(client).kind, 41U);
        client.send_bytes(packet_bytes({.kind = 89, .payload = "me@here", .param1 = 12}));
        EXPECT_EQ(next_in_turn(client).kind, 89U);
        return client;
    }
};

TEST_F(waiting_hits_at_a_pace, come_one_packet_at_a_time_in_turn_with_messages)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    for (const char* registration : {"D-AIQA", "D-AIQB"})
        hear(registration);
    auto client = connect_in_turn();
    for (const char* registration : {"OE-A", "OE-B", "OE-C"})
        hear(registration);
    std::vector<std::uint32_t> kinds;
    while (kinds.size() < 5)
        kinds.push_back(next_in_turn(client).kind);
    EXPECT_EQ(std::ranges::count(kinds, 103U), 2);
    EXPECT_EQ(kinds[0] + kinds[1], 40U + 103U);
    EXPECT_EQ(kinds[2] + kinds[3], 40U + 103U);
}

TEST_F(waiting_hits_at_a_pace, wait_on_if_they_were_not_handed_over)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    for (const char* registration : {"D-AIQA", "D-AIQB", "D-AIQC"})
        hear(registration);
    auto first = connect_in_turn();
    EXPECT_EQ(next_in_turn(first), notice("Pager of me@here: D-AIQA (22:13 UTC)"));
    EXPECT_TRUE(server.run_until(
        [&] { return server.core.sessions.begin()->second.hit.has_value(); }, ahead));
    hang_up(first);
    auto second = connect_in_turn();
    EXPECT_EQ(next_in_turn(second), notice("Pager of me@here: D-AIQB (22:13 UTC)"));
    EXPECT_EQ(next_in_turn(second), notice("Pager of me@here: D-AIQC (22:13 UTC)"));
}

TEST_F(waiting_hits_at_a_pace, are_those_that_a_client_was_not_sent_before_it_went)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    auto first = connect_in_turn();
    auto other = connect_in_turn();
    for (const char* registration : {"D-AIQA", "D-AIQB", "D-AIQC"})
        hear(registration);
    EXPECT_EQ(next_in_turn(first).kind, 40U);
    EXPECT_EQ(next_in_turn(first), notice("Pager of me@here: D-AIQA"));
    hang_up(first);
    EXPECT_TRUE(server.core.services.hits.empty()) << "the other client is told";
    hang_up(other);
    EXPECT_EQ(server.core.services.hits.size(), 2U);
    auto second = connect_in_turn();
    EXPECT_EQ(next_in_turn(second), notice("Pager of me@here: D-AIQB (22:13 UTC)"));
    EXPECT_EQ(next_in_turn(second), notice("Pager of me@here: D-AIQC (22:13 UTC)"));
}

TEST_F(waiting_hits_at_a_pace, are_told_beside_more_messages_than_a_client_can_be_sent)
{
    server.options.queue_limit = 2;
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    auto client = connect_in_turn();
    hear("D-AIQA");
    for (int i = 0; i < 9; ++i)
        hear("OE-LBA");
    const std::vector<std::uint32_t> kinds = {next_in_turn(client).kind, next_in_turn(client).kind};
    EXPECT_EQ(kinds, (std::vector<std::uint32_t>{40, 103}));
}

TEST_F(waiting_hits_at_a_pace, are_not_sent_after_the_good_bye)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    for (const char* registration : {"D-AIQA", "D-AIQB"})
        hear(registration);
    auto client = connect_in_turn();
    EXPECT_EQ(next_in_turn(client).kind, 103U);
    core_close_client(server.core, server.core.sessions.begin()->second, 100,
                      tovrik::steady_clock::now() + ahead);
    hear("D-AIQC");
    EXPECT_EQ(next_in_turn(client).kind, 100U);
    EXPECT_TRUE(server.run_until([&] { return server.core.sessions.empty(); }, ahead + 10000s));
    EXPECT_TRUE(client.ends());
    EXPECT_EQ(server.core.services.hits.size(), 2U) << "it has been told of the first alone";
}

} // namespace
