// server_pager_test.cpp - what pager lists meet while their owners are not connected, and how they
// are told.
#include "server_pager_fixture.hpp"

#include "server/base/limits.hpp"

#include <vector>

namespace
{

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
    EXPECT_EQ(next(client), notice_packet("Pager of me@here: D-AIQA (22:13 UTC)"));
    EXPECT_EQ(next(client), notice_packet("Pager of me@here: D-AIQB (22:14 UTC)"));
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
    EXPECT_EQ(next(client), notice_packet("Pager of me@here: D-AIQA (22:13 UTC)"));
}

TEST_F(waiting_hits, are_told_once)
{
    change_list(all_aircraft);
    hear("D-AIQA");
    auto first = connect_owner();
    EXPECT_EQ(next(first), notice_packet("Pager of me@here: D-AIQA (22:13 UTC)"));
    hear("D-AIQB");
    EXPECT_EQ(next(first).kind, 40U);
    EXPECT_EQ(next(first), notice_packet("Pager of me@here: D-AIQB")) << "it is told at once";
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
    EXPECT_EQ(next(client), notice_packet("Pager of me@here: D-AIQB (22:13 UTC)"));
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
    EXPECT_EQ(next(client), notice_packet("Pager of me@here: D-5 (22:13 UTC)"))
        << "the oldest have gone";
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
        EXPECT_EQ(next(*client), notice_packet("Pager of me@here: D-AIQA"));
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
    EXPECT_EQ(next(client), notice_packet("Pager of me@here: D-AIQA"));
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

} // namespace
