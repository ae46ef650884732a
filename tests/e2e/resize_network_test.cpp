// resize_network_test.cpp - terminals that change size while the network is busy.
#include "e2e/network_session.hpp"

namespace
{

constexpr const char* digest_of_abc = "900150983cd24fb0d6963f7d28e17f72";

/// A wide client connected to two servers.
class resize_network : public testing::Test
{
protected:
    void begin(client_settings settings = {})
    {
        settings.servers = servers.settings().servers;
        ASSERT_TRUE(client.start(settings, wide_terminal));
        connections = connect_all(client, servers);
        ASSERT_EQ(connections.size(), 2U);
    }

    testing::AssertionResult resized(int rows, int columns)
    {
        client.terminal().resize(rows, columns);
        return client.terminal().wait_until(
            [&] {
                return client.terminal().cell(rows - 2, columns - 1).text == "┘" &&
                       client.terminal().row(rows - 1).starts_with("^D") && client.bar_row() == 1;
            },
            "the panes at their new size");
    }

    listed_servers servers{2};
    client_session client;
    std::vector<server_connection> connections;
};

/// Waits for the password box with `text` in it, whole and centred for the terminal's size.
testing::AssertionResult box_is_whole(client_session& client, const std::string& text)
{
    const std::string middle = "│ " + text + "_" + std::string(38 - text.size(), ' ') + "│";
    return client.terminal().wait_until(
        [&] {
            const terminal_screen& screen = client.terminal().screen();
            const int row = screen.rows() / 2 - 4;
            const int column = screen.columns() / 2 - 20;
            return screen.text(row, column, 42) == "┌─[ Password required ]──────────────────┐" &&
                   screen.text(row + 1, column, 42) == middle &&
                   screen.text(row + 2, column, 42) == "└─[ alpha ]──────[ RET=OK - ESC=CANCEL ]─┘";
        },
        "the whole box with \"" + text + "\" in the middle");
}

TEST_F(resize_network, the_password_box_is_moved_to_the_middle_and_stays_usable)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(connections[0].send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(box_is_whole(client, ""));
    client.terminal().send("a");
    ASSERT_TRUE(box_is_whole(client, "a"));
    ASSERT_TRUE(resized(40, 140));
    ASSERT_TRUE(box_is_whole(client, "a"));
    EXPECT_EQ(client.terminal().cell(40 / 2 - 3, 140 / 2 - 18),
              pair_cell(pairs::success, true, "a"));
    client.terminal().send("x\x7F"
                           "b");
    ASSERT_TRUE(box_is_whole(client, "ab"));
    ASSERT_TRUE(resized(24, 80));
    ASSERT_TRUE(box_is_whole(client, "ab"));
    EXPECT_EQ(client.terminal().screen().whole_text().find("Password required"),
              client.terminal().screen().whole_text().rfind("Password required"))
        << "no torn copy is left";
    client.terminal().send("c\r");
    EXPECT_EQ(connections[0].read_packet(), (server_packet{.kind = 81, .payload = digest_of_abc}));
    ASSERT_TRUE(client.terminal().wait_for_no_text("Password required"));
    ASSERT_TRUE(wait_for_notice(client, connections[1], "and on"));
}

TEST_F(resize_network, the_password_box_survives_a_terminal_too_small_for_it)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(connections[0].send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(box_is_whole(client, ""));
    for (const auto& [rows, columns] : {std::pair{3, 9}, {1, 1}, {8, 30}, {2, 200}})
        client.terminal().resize(rows, columns);
    client.terminal().send("ab");
    ASSERT_TRUE(resized(30, 100));
    ASSERT_TRUE(box_is_whole(client, "ab"));
    client.terminal().send("c\r");
    EXPECT_EQ(connections[0].read_packet(), (server_packet{.kind = 81, .payload = digest_of_abc}));
}

TEST_F(resize_network, the_password_box_still_times_out)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(connections[0].send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(box_is_whole(client, ""));
    ASSERT_TRUE(resized(30, 100));
    ASSERT_TRUE(box_is_whole(client, ""));
    client.clock().jump(12);
    ASSERT_TRUE(client.terminal().wait_for_no_text("Password required"));
    EXPECT_FALSE(connections[0].has_unread_bytes());
}

TEST_F(resize_network, transmissions_find_the_new_bottom_row)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.flight = "OLD"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "OLD"})));
    ASSERT_TRUE(resized(40, 120));
    EXPECT_FALSE(client.terminal().shows("OLD")) << "the panes begin empty";
    ASSERT_TRUE(connections[1].send(plain_packet(document_of({.flight = "NEW"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "NEW"})));
    EXPECT_EQ(message_bottom_row(client), 31);
    ASSERT_TRUE(resized(20, 132));
    ASSERT_TRUE(connections[1].send(plain_packet(document_of({.flight = "LOW"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "LOW"})));
}

TEST_F(resize_network, the_line_of_flight_statistics_disappears)
{
    ASSERT_NO_FATAL_FAILURE(begin({.flight_stats = true}));
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.daily_flights = "42"}))));
    ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: 42"));
    ASSERT_TRUE(resized(30, 100));
    EXPECT_FALSE(client.terminal().shows("Unique Flights"));
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.daily_flights = "43"}))));
    ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: 43"));
}

TEST_F(resize_network, connections_survive_and_marks_are_counted_from_the_new_list)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(resized(30, 100));
    EXPECT_EQ(client.marker(1).text, " ") << "a list drawn anew has no marks";
    ASSERT_TRUE(wait_for_notice(client, connections[0], "the first lives"));
    ASSERT_TRUE(wait_for_notice(client, connections[1], "the second lives"));
    ASSERT_TRUE(connections[0].send(5, "x"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(2).text == "-"; },
                                             "the tick is one row lower"));
    EXPECT_EQ(client.marker(1).text, " ");
    // The blank of the user's disconnect now hits the server's own row.
    ASSERT_TRUE(select_row(client, 2));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(2).text == " "; },
                                             "the blank in the server's own row"));
    client.terminal().send_control('l');
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(2).text == "*"; },
                                             "a new connection is marked where it stands"));
}

TEST_F(resize_network, an_attempt_in_progress_is_finished)
{
    listed_servers own(1);
    client_session session;
    ASSERT_TRUE(session.start(own.settings()));
    session.terminal().send_control('l');
    session.terminal().resize(30, 100);
    std::optional<server_connection> connection = own[0].accept();
    ASSERT_TRUE(connection);
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
    ASSERT_TRUE(wait_for_notice(session, *connection, "connected"));
}

TEST_F(resize_network, a_storm_of_sizes_and_transmissions_is_survived)
{
    ASSERT_NO_FATAL_FAILURE(begin({.contact_info = true, .flight_stats = true}));
    client.clock().set_alarm_pace(5);
    const acars_message message{
        .content = "BETWEEN TWO SIZES", .contacts = "9", .daily_flights = "1000000"};
    for (int round = 0; round < 40; ++round) {
        ASSERT_TRUE(connections[0].send(plain_packet(document_of(message))));
        ASSERT_TRUE(connections[1].send(compressed_packet(document_of(message))));
        ASSERT_TRUE(connections[0].send(5, "x"));
        client.terminal().resize(1 + round * 7 % 50, 1 + round * 31 % 150);
        ASSERT_TRUE(round % 4 != 0 || client.wait_for_polls(1));
    }
    ASSERT_TRUE(resized(24, 132));
    ASSERT_TRUE(wait_for_notice(client, connections[0], "calm again"));
    ASSERT_TRUE(wait_for_notice(client, connections[1], "calm here too"));
}

} // namespace
