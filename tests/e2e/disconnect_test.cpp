// disconnect_test.cpp - connections that the user ends, including those not yet made.
#include "e2e/network_session.hpp"

#include <csignal>

namespace
{

std::string make_closed_line(const scripted_server& server, const std::string& alias = "alpha")
{
    return "Connection to " + alias + ":" + std::to_string(server.port()) + " closed";
}

/// Waits until no attempt to connect is in progress.
testing::AssertionResult attempts_are_over(client_session& client)
{
    return client.terminal().wait_until(
        [&] { return children_of(client.terminal().process_id()).empty(); },
        "no attempt is under way");
}

client_settings make_settings(int port)
{
    client_settings settings;
    settings.servers = {{.port = std::to_string(port), .alias = "alpha"}};
    return settings;
}

TEST(disconnect, says_good_bye_byte_for_byte_and_closes)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status(make_closed_line(server), pairs::success));
    using namespace std::string_literals;
    EXPECT_EQ(connection->read_bytes(20), "\x02\0\0\0\x08\0\0\0\0\0\0\0Good Bye"s);
    EXPECT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST(disconnect, disconnecting_the_first_server_blanks_a_cell_of_the_heading_and_keeps_the_marker)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    ASSERT_TRUE(client.connect_selected(server));
    EXPECT_EQ(client.terminal().cell(1, 1), pair_cell(pairs::bar, false, " "));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().cell(1, 1).background == 0; }, "a black cell"));
    EXPECT_EQ(client.terminal().cell(1, 2), pair_cell(pairs::bar, false, " "));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.marker(1), pair_cell(pairs::success, true, "*"));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
}

TEST(disconnect, takes_the_marker_of_the_server_above)
{
    listed_servers servers(3);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), 3U);
    ASSERT_TRUE(select_row(client, 2));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; },
                                             "the first marker goes"));
    EXPECT_EQ(client.marker(2).text, "*");
    EXPECT_EQ(client.marker(3).text, "*");
    ASSERT_TRUE(wait_for_notice(client, connections[0], "the first lives on"));
    ASSERT_TRUE(wait_for_notice(client, connections[2], "the third lives on"));
    EXPECT_EQ(connections[1].read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    EXPECT_TRUE(connections[1].wait_for_close());
}

TEST(disconnect, nothing_is_shown_of_what_the_server_still_sends)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(stop_polls(client));
    ASSERT_TRUE(connection->send(103, "too late"));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status(make_closed_line(server), pairs::success));
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(client.terminal().shows("too late"));
}

TEST(disconnect, a_new_connection_starts_afresh)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    for (int round = 0; round < 3; ++round) {
        client.terminal().send_control('l');
        std::optional<server_connection> connection = server.accept();
        ASSERT_TRUE(connection);
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 151, .payload = "CXML"}));
        ASSERT_TRUE(wait_for_notice(client, *connection, "round " + std::to_string(round)));
        // A packet that has arrived only in part must not affect the next connection.
        ASSERT_TRUE(connection->send_bytes(header_bytes({.kind = 103}, 50) + "half a packet"));
        ASSERT_TRUE(client.wait_for_polls());
        client.terminal().send_control('d');
        ASSERT_TRUE(wait_for_last_status(client, make_closed_line(server)));
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
        EXPECT_TRUE(connection->wait_for_close());
    }
}

TEST(disconnect, ends_an_attempt_that_gets_no_answer)
{
    silent_port nowhere;
    client_session client;
    ASSERT_TRUE(client.start(make_settings(nowhere.port())));
    for (int round = 0; round < 2; ++round) {
        client.terminal().send_control('l');
        ASSERT_TRUE(wait_for_last_status(client, "Try connecting to alpha:" +
                                                     std::to_string(nowhere.port())));
        client.terminal().send_control('d');
        ASSERT_TRUE(wait_for_last_status(
            client, "Connection to alpha:" + std::to_string(nowhere.port()) + " closed"));
        ASSERT_TRUE(attempts_are_over(client));
        ASSERT_TRUE(client.wait_for_keys());
        EXPECT_FALSE(client.terminal().shows("Unable"));
        EXPECT_FALSE(client.terminal().shows("Successfully"));
        EXPECT_EQ(client.marker(1).text, " ");
    }
}

TEST(disconnect, an_attempt_given_up_leaves_the_next_server_alone)
{
    listed_servers servers(2);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    // Connects and gives up at once; the next socket may get the same number.
    client.terminal().send("\x0C\x04"); // ^L ^D
    ASSERT_TRUE(client.wait_for_status(make_closed_line(servers[0]), pairs::success));
    ASSERT_TRUE(select_row(client, 2));
    std::optional<server_connection> connection = client.connect_selected(servers[1]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(attempts_are_over(client));
    ASSERT_TRUE(wait_for_notice(client, *connection, "untouched"));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(client.terminal().shows("Successfully connected alpha"));
    ASSERT_TRUE(select_row(client, 1));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
}

TEST(disconnect, an_attempt_given_up_can_be_made_again_at_once)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    client.terminal().send("\x0C\x04\x0C\x04\x0C"); // ^L and ^D, twice, and ^L
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == "*"; },
                                             "the last attempt succeeds"));
    ASSERT_TRUE(attempts_are_over(client));
    int live = 0;
    while (server.has_waiting_client()) {
        std::optional<server_connection> connection = server.accept();
        ASSERT_TRUE(connection);
        if (connection->read_packet() != server_packet{.kind = 101, .payload = "0 02 001"})
            continue; // a connection that was given up
        ++live;
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 151, .payload = "CXML"}));
        ASSERT_TRUE(wait_for_notice(client, *connection, "alive"));
    }
    EXPECT_EQ(live, 1);
}

TEST(disconnect, the_end_of_the_program_ends_attempts_too)
{
    silent_port nowhere;
    client_session client;
    ASSERT_TRUE(client.start(make_settings(nowhere.port())));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_for_text("Try connecting"));
    const std::vector<pid_t> attempts = children_of(client.terminal().process_id());
    client.quit();
    for (const pid_t attempt : attempts)
        EXPECT_TRUE(client.terminal().wait_until([&] { return kill(attempt, 0) != 0; },
                                                 "the attempt's process is gone"));
}

TEST(disconnect, the_end_of_the_program_says_good_bye_once_to_every_server)
{
    listed_servers servers(4);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), 4U);
    client.terminal().send_control('d'); // the last server
    ASSERT_TRUE(wait_for_last_status(client, make_closed_line(servers[3], "delta")));
    ASSERT_TRUE(connections[2].send(100, "x"));
    ASSERT_TRUE(wait_for_last_status(client, "Connection closed by server"));
    client.quit();
    for (const std::size_t index : {0U, 1U, 3U}) {
        EXPECT_EQ(connections[index].read_packet(),
                  (server_packet{.kind = 2, .payload = "Good Bye"}));
        EXPECT_TRUE(connections[index].wait_for_close());
        EXPECT_FALSE(connections[index].has_unread_bytes()) << index;
    }
    EXPECT_TRUE(connections[2].wait_for_close());
    EXPECT_FALSE(connections[2].has_unread_bytes()) << "who closes hears no more";
}

} // namespace
