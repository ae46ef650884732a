// server_pager_pace_test.cpp - hits of pager lists on their way, one packet at a time.
#include "server_pager_fixture.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace
{

using namespace std::chrono_literals;

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
    EXPECT_EQ(next_in_turn(first), notice_packet("Pager of me@here: D-AIQA (22:13 UTC)"));
    EXPECT_TRUE(server.run_until(
        [&] { return server.core.sessions.begin()->second.hit.has_value(); }, ahead));
    hang_up(first);
    auto second = connect_in_turn();
    EXPECT_EQ(next_in_turn(second), notice_packet("Pager of me@here: D-AIQB (22:13 UTC)"));
    EXPECT_EQ(next_in_turn(second), notice_packet("Pager of me@here: D-AIQC (22:13 UTC)"));
}

TEST_F(waiting_hits_at_a_pace, are_those_that_a_client_was_not_sent_before_it_went)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    auto first = connect_in_turn();
    auto other = connect_in_turn();
    for (const char* registration : {"D-AIQA", "D-AIQB", "D-AIQC"})
        hear(registration);
    EXPECT_EQ(next_in_turn(first).kind, 40U);
    EXPECT_EQ(next_in_turn(first), notice_packet("Pager of me@here: D-AIQA"));
    hang_up(first);
    EXPECT_TRUE(server.core.services.hits.empty()) << "the other client is told";
    hang_up(other);
    EXPECT_EQ(server.core.services.hits.size(), 2U);
    auto second = connect_in_turn();
    EXPECT_EQ(next_in_turn(second), notice_packet("Pager of me@here: D-AIQB (22:13 UTC)"));
    EXPECT_EQ(next_in_turn(second), notice_packet("Pager of me@here: D-AIQC (22:13 UTC)"));
}

TEST_F(waiting_hits_at_a_pace, are_kept_once_when_all_clients_of_their_owner_go_together)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    auto first = connect_in_turn();
    auto other = connect_in_turn();
    hear("D-AIQA");
    first.hang_up();
    other.hang_up();
    EXPECT_TRUE(server.run_until([&] { return server.core.sessions.empty(); }));
    EXPECT_EQ(server.core.services.hits.size(), 1U);
}

TEST_F(waiting_hits_at_a_pace, do_not_wait_once_one_client_of_their_owner_was_told)
{
    ASSERT_TRUE(server.core.services.pagers.add({"me@here", 12}, {"D-*", "", ""}));
    auto first = connect_in_turn();
    auto other = connect_in_turn();
    for (int i = 0; i < 5; ++i)
        first.send_text(148, "^"); // the answers come before all else; one is sent at once
    ASSERT_TRUE(server.run_until(
        [&] { return server.core.sessions.begin()->second.assured.size() == 4; }, ahead));
    hear("D-AIQA");
    EXPECT_EQ(next_in_turn(other).kind, 40U);
    EXPECT_EQ(next_in_turn(other), notice_packet("Pager of me@here: D-AIQA"));
    ASSERT_TRUE(server.run_until([&] { return server.core.counts.pager_hits == 1; }, ahead));
    EXPECT_EQ(server.core.sessions.size(), 2U);
    hang_up(other);
    hang_up(first);
    EXPECT_TRUE(server.core.services.hits.empty()) << "the owner knows it already";
}

TEST_F(waiting_hits_at_a_pace, wait_for_each_list_that_a_client_was_not_told_of)
{
    const tovrik::pager_owner mine[] = {{"me@here", 12}, {"me@work", 12}};
    for (const auto& owner : mine)
        ASSERT_TRUE(server.core.services.pagers.add(owner, {"D-*", "", ""}));
    auto client = connect_in_turn();
    client.send_bytes(packet_bytes({.kind = 89, .payload = "me@work", .param1 = 12}));
    EXPECT_EQ(next_in_turn(client).kind, 89U);
    hear("D-AIQA");
    hang_up(client);
    const auto waiting = server.core.services.hits.after(0);
    ASSERT_EQ(waiting.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(waiting[i].owner, mine[i]);
        EXPECT_EQ(waiting[i].hit.text, "Pager of " + mine[i].address + ": D-AIQA");
    }
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
