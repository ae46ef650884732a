// sim_server_test.cpp - the practice server's life: its clients, its record, its end.
#include "sim_raw_client.hpp"

#include "server/base/limits.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

constexpr const char* document = "<?xml version=\"1.0\"?><tovrik><ACARS></ACARS></tovrik>";

TEST(sim_server, serves_many_clients_at_once)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    std::vector<sim_raw_client> clients;
    clients.reserve(50);
    for (int i = 0; i < 50; ++i)
        clients.emplace_back(server.port());
    ASSERT_TRUE(server.wait_for_clients(50, default_patience));
    EXPECT_EQ(server.push_packet({.kind = 90, .payload = "to all"}), 50U);
    EXPECT_TRUE(server.push_transmission(document));
    for (auto& client : clients)
        EXPECT_EQ(next_kinds(client, 3), (std::vector<std::uint32_t>{41, 90, 40}));
    clients.clear();
    EXPECT_TRUE(server.wait_for_clients(0, default_patience));
}

TEST(sim_server, tells_more_clients_than_it_takes_that_it_is_full)
{
    auto options = quick_server();
    options.max_clients = 1;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client first{server.port()};
    ASSERT_TRUE(first.receive());
    sim_raw_client second{server.port()};
    EXPECT_EQ(second.receive(), (server_packet{.kind = 102, .payload = "Good Bye"}));
    // It is not taken for a client, whatever it says, until it hangs up itself.
    EXPECT_TRUE(second.send_text(148, "^"));
    EXPECT_TRUE(second.ends());
    EXPECT_EQ(server.client_count(), 1U);
    EXPECT_TRUE(server.packets().empty());
    first.hang_up();
    ASSERT_TRUE(server.wait_for_clients(0, default_patience));
    sim_raw_client third{server.port()};
    EXPECT_TRUE(third.receive());
}

TEST(sim_server, tells_a_bounded_number_of_clients_that_it_is_full)
{
    auto options = quick_server();
    options.max_clients = 1;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client first{server.port()};
    ASSERT_TRUE(first.receive());
    std::vector<sim_raw_client> told;
    for (std::size_t i = 0; i < tovrik::max_clients_turned_away; ++i) {
        EXPECT_EQ(told.emplace_back(server.port()).receive()->kind, 102U);
    }
    // Those that are told keep their connections, so this one is closed, and the first still
    // served.
    sim_raw_client beyond{server.port()};
    EXPECT_FALSE(beyond.receive());
    EXPECT_EQ(server.push_packet({.kind = 103, .payload = "still here"}), 1U);
    EXPECT_TRUE(first.receive_kind(103));
    // With one of them gone, the next is told again.
    told.pop_back();
    std::optional<server_packet> answer;
    for (int tries = 0; tries < 200 && !answer; ++tries)
        answer = sim_raw_client{server.port()}.receive();
    EXPECT_TRUE(answer && answer->kind == 102);
}

TEST(sim_server, remembers_what_clients_say)
{
    auto options = quick_server();
    options.record_limit = 3;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    client.send_text(101, "0 02 001");
    client.send_bytes(packet_bytes({.kind = 66, .payload = "me@here", .param1 = 2, .param2 = 9}));
    const auto request = server.wait_for_packet(66, default_patience);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->text, "me@here");
    EXPECT_EQ(request->param1, 2);
    EXPECT_EQ(request->param2, 9);
    EXPECT_EQ(request->client, 1U);
    EXPECT_EQ(server.packets().front().text, "0 02 001");

    sim_raw_client second{server.port()};
    second.send_text(151, "CXML");
    client.hang_up();
    ASSERT_TRUE(server.wait_for_packet(151, default_patience));
    second.send_text(151, "again");
    const auto again = server.wait_for_packet(151, default_patience, 2);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->text, "again");
    EXPECT_EQ(again->client, 2U);
    ASSERT_EQ(server.packets().size(), 3U) << "the oldest is forgotten";
    EXPECT_EQ(server.packets().front().kind, 66U);
    server.forget_packets();
    EXPECT_TRUE(server.packets().empty());
    EXPECT_FALSE(server.wait_for_packet(151, std::chrono::milliseconds{1}));
}

TEST(sim_server, lets_a_client_go_that_says_good_bye)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    ASSERT_TRUE(server.wait_for_clients(1, default_patience));
    client.send_text(2, "Good Bye");
    EXPECT_TRUE(server.wait_for_clients(0, default_patience));
    EXPECT_TRUE(client.ends());
    EXPECT_EQ(server.packets().back().text, "Good Bye");
}

TEST(sim_server, hears_the_good_bye_of_a_client_that_hangs_up_with_it)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    {
        sim_raw_client client{server.port()};
        ASSERT_TRUE(client.receive());
        client.send_text(2, "Good Bye");
    }
    EXPECT_TRUE(server.wait_for_packet(2, default_patience));
    EXPECT_TRUE(server.wait_for_clients(0, default_patience));
}

class sim_server_closing : public testing::TestWithParam<std::uint32_t>
{
};

TEST_P(sim_server_closing, tells_clients_first_and_loses_nothing_that_was_sent)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(server.wait_for_clients(1, default_patience));
    client.send_text(101, "unread by nobody");
    EXPECT_EQ(server.close_clients(GetParam()), 1U);
    EXPECT_EQ(server.client_count(), 0U);
    EXPECT_EQ(server.close_clients(GetParam()), 0U) << "told already";
    const auto told = client.receive_kind(GetParam());
    ASSERT_TRUE(told);
    EXPECT_FALSE(told->payload.empty());
    EXPECT_TRUE(client.ends());
}

TEST_P(sim_server_closing, happens_by_itself_after_a_time)
{
    auto options = quick_server();
    options.close_after_ms = 30;
    options.close_kind = GetParam();
    options.rate_per_minute = 6000;
    tovrik::practice_server server{options};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    EXPECT_TRUE(client.receive_kind(GetParam()));
    EXPECT_TRUE(client.ends());
}

INSTANTIATE_TEST_SUITE_P(, sim_server_closing, testing::Values(3U, 100U, 102U));

TEST(sim_server, hangs_up_without_a_word_where_told_so)
{
    tovrik::practice_server server{quick_server()};
    ASSERT_TRUE(server.start());
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    EXPECT_EQ(server.drop_clients(), 1U);
    EXPECT_FALSE(client.receive());
    EXPECT_TRUE(server.wait_for_clients(0, default_patience));
}

TEST(sim_server, refuses_commands_that_it_cannot_carry_out)
{
    tovrik::practice_server server{quick_server()};
    EXPECT_EQ(server.port(), 0);
    EXPECT_FALSE(server.push_transmission(document));
    EXPECT_EQ(server.push_packet({.kind = 5, .payload = "^"}), 0U);
    EXPECT_EQ(server.close_clients(), 0U);
    EXPECT_EQ(server.drop_clients(), 0U);
    ASSERT_TRUE(server.start());
    EXPECT_FALSE(server.push_transmission(std::string(4096, 'x')));
    EXPECT_FALSE(server.push_transmission(""));
    EXPECT_EQ(server.push_packet({.kind = 5, .payload = "^"}), 0U) << "nobody is there";
}

TEST(sim_server, says_why_it_cannot_listen)
{
    tovrik::practice_server first{quick_server()};
    ASSERT_TRUE(first.start());
    auto options = quick_server();
    options.port = first.port();
    tovrik::practice_server second{options};
    EXPECT_FALSE(second.start());
    EXPECT_EQ(second.error(), "cannot listen on 127.0.0.1:" + std::to_string(first.port()) +
                                  ": Address already in use");
    EXPECT_EQ(second.port(), 0);
    first.stop();
    EXPECT_TRUE(second.start()) << second.error();
    EXPECT_EQ(second.error(), "");

    options.bind_address = "nowhere";
    tovrik::practice_server third{options};
    EXPECT_FALSE(third.start());
    EXPECT_EQ(third.error(), "nowhere: not an IPv4 address");
}

TEST(sim_server, can_be_stopped_and_started_again)
{
    tovrik::practice_server server{quick_server()};
    server.stop();
    ASSERT_TRUE(server.start());
    EXPECT_TRUE(server.start()) << "it runs already";
    sim_raw_client client{server.port()};
    ASSERT_TRUE(client.receive());
    client.send_text(101, "first");
    ASSERT_TRUE(server.wait_for_packet(101, default_patience));
    server.stop();
    EXPECT_TRUE(client.ends());
    EXPECT_EQ(server.client_count(), 0U);
    EXPECT_EQ(server.packets().size(), 1U);
    ASSERT_TRUE(server.start());
    sim_raw_client second{server.port()};
    EXPECT_TRUE(second.receive());
}

} // namespace
