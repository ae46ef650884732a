// idle_rule_test.cpp - a heartbeat after ten silent minutes, the end of a connection after fifteen.
//
// The tests move the program's clock. Jumps stay well clear of the limits, since it also runs.
#include "e2e/network_session.hpp"

namespace
{

constexpr const char* heartbeat_line = "alpha - no data since 10 minutes. Sending heartbeat";
const server_packet heartbeat{.kind = 148, .payload = "^"};

/// A client with one server that sent something when the clock started.
class idle_rule : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(servers.settings(), wide_terminal));
        connection = client.connect_selected(servers[0]);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(wait_for_notice(client, *connection, "first words"));
    }

    testing::AssertionResult silence_of(int seconds)
    {
        client.clock().jump(seconds);
        return client.wait_for_polls(3);
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(idle_rule, one_heartbeat_comes_after_ten_minutes_and_the_end_after_fifteen)
{
    ASSERT_TRUE(silence_of(500));
    EXPECT_FALSE(connection->has_unread_bytes());
    EXPECT_EQ(client.status_lines().back(), "first words");
    ASSERT_TRUE(silence_of(150));
    ASSERT_TRUE(client.wait_for_status(heartbeat_line, pairs::success));
    EXPECT_EQ(connection->read_packet(), heartbeat);
    ASSERT_TRUE(silence_of(150));
    EXPECT_FALSE(connection->has_unread_bytes()) << "one is enough";
    EXPECT_EQ(client.status_lines().back(), heartbeat_line);
    EXPECT_EQ(client.marker(1).text, "*");
    ASSERT_TRUE(silence_of(150));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    EXPECT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes()) << "no farewell";
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; },
                                             "the marker goes"));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(idle_rule, the_heartbeat_is_sent_byte_for_byte)
{
    client.clock().jump(650);
    using namespace std::string_literals;
    EXPECT_EQ(connection->read_bytes(13), "\x94\0\0\0\x01\0\0\0\0\0\0\0^"s);
}

TEST_F(idle_rule, any_whole_packet_ends_the_silence)
{
    ASSERT_TRUE(silence_of(500));
    ASSERT_TRUE(connection->send(1234, "of an unknown kind"));
    ASSERT_TRUE(client.wait_for_polls(3));
    ASSERT_TRUE(silence_of(500));
    EXPECT_FALSE(connection->has_unread_bytes());
    EXPECT_EQ(client.status_lines().back(), "first words");
}

TEST_F(idle_rule, half_packets_and_empty_ones_do_not_end_the_silence)
{
    ASSERT_TRUE(silence_of(500));
    ASSERT_TRUE(connection->send({.kind = 103}));
    ASSERT_TRUE(connection->send_bytes(header_bytes({.kind = 103}, 9) + "half"));
    ASSERT_TRUE(client.wait_for_polls(3));
    ASSERT_TRUE(silence_of(150));
    EXPECT_EQ(connection->read_packet(), heartbeat);
}

TEST_F(idle_rule, a_second_silence_gets_no_heartbeat_and_is_closed_all_the_same)
{
    ASSERT_TRUE(silence_of(650));
    EXPECT_EQ(connection->read_packet(), heartbeat);
    ASSERT_TRUE(wait_for_notice(client, *connection, "I am alive"));
    ASSERT_TRUE(silence_of(650));
    EXPECT_EQ(client.status_lines().back(), "I am alive");
    EXPECT_FALSE(connection->has_unread_bytes()) << "answering does not earn another heartbeat";
    ASSERT_TRUE(silence_of(300));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    EXPECT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(idle_rule, after_the_end_a_new_connection_gets_heartbeats_again)
{
    ASSERT_TRUE(silence_of(650));
    EXPECT_EQ(connection->read_packet(), heartbeat);
    ASSERT_TRUE(silence_of(300));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    client.clock().set(20); // a fresh connection must not look idle
    connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(wait_for_notice(client, *connection, "here again"));
    ASSERT_TRUE(silence_of(650));
    EXPECT_EQ(connection->read_packet(), heartbeat);
}

TEST_F(idle_rule, the_end_of_file_is_noticed_only_through_silence)
{
    connection->half_close();
    ASSERT_TRUE(client.wait_for_polls(3));
    EXPECT_EQ(client.marker(1).text, "*");
    ASSERT_TRUE(silence_of(650));
    ASSERT_TRUE(client.wait_for_status(heartbeat_line, pairs::success));
    ASSERT_TRUE(silence_of(300));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
}

TEST_F(idle_rule, a_clock_that_is_set_back_does_not_count_as_silence)
{
    ASSERT_TRUE(silence_of(400));
    ASSERT_TRUE(wait_for_notice(client, *connection, "later words"));
    ASSERT_TRUE(silence_of(-400));
    ASSERT_TRUE(silence_of(500));
    EXPECT_EQ(client.status_lines().back(), "later words");
    EXPECT_FALSE(connection->has_unread_bytes());
}

/// A client with today's date on its clock, whose polls the test triggers.
class idle_rule_of_today : public testing::Test
{
protected:
    void SetUp() override
    {
        client_start how = wide_terminal;
        how.start_time = 1'700'000'000;
        how.alarm_ms_per_second = 0;
        ASSERT_TRUE(client.start(servers.settings(), how));
    }

    listed_servers servers{1};
    client_session client;
};

TEST_F(idle_rule_of_today, a_new_connection_without_data_counts_as_idle_at_once)
{
    std::optional<server_connection> connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(client.wait_for_status(heartbeat_line, pairs::success));
    EXPECT_EQ(connection->read_packet(), heartbeat);
    EXPECT_EQ(client.marker(1).text, "*");
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    EXPECT_TRUE(connection->wait_for_close());
}

TEST_F(idle_rule_of_today, a_server_that_speaks_first_is_not_idle)
{
    std::optional<server_connection> connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(connection->send(103, "first words"));
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(wait_for_last_status(client, "first words"));
    for (int polls = 0; polls < 3; ++polls)
        ASSERT_TRUE(poll_once(client));
    EXPECT_EQ(client.status_lines().back(), "first words");
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(idle_rule_of_today, the_time_of_the_last_data_survives_a_reconnect)
{
    std::optional<server_connection> connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(connection->send(103, "first words"));
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(wait_for_last_status(client, "first words"));
    ASSERT_TRUE(connection->send(3, "x"));
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(wait_for_last_status(client, "Connection closed by server"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; }, " "));
    connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(connection->has_unread_bytes()) << "the earlier data are fresh enough";
    client.clock().jump(650);
    ASSERT_TRUE(poll_once(client));
    EXPECT_EQ(connection->read_packet(), heartbeat);
}

TEST_F(idle_rule_of_today, servers_that_are_not_connected_are_left_alone)
{
    for (int polls = 0; polls < 3; ++polls)
        ASSERT_TRUE(poll_once(client));
    EXPECT_FALSE(client.terminal().shows("heartbeat"));
    EXPECT_FALSE(client.terminal().shows("closed"));
}

} // namespace
