// packets_test.cpp - what each kind of packet makes the client show, sound, answer and do.
#include "e2e/network_session.hpp"

#include <algorithm>
#include <cstdint>
#include <ostream>

namespace
{

/// A packet whose only effect is one line in the status pane, perhaps with beeps.
struct reporting_kind {
    std::uint32_t kind;
    const char* payload;
    const char* line;
    int pair;
    int beeps;
};

std::ostream& operator<<(std::ostream& out, const reporting_kind& row)
{
    return out << "kind_" << row.kind;
}

constexpr reporting_kind reporting_kinds[] = {
    {35, "x", "Your update request was successfully added", pairs::success, 0},
    {36, "x", "Your update request could not be added", pairs::error, 1},
    {71, "x", "Report creation process started...", pairs::notice, 0},
    {72, "x", "All report processes are busy. Try later", pairs::error, 1},
    {73, "x", "No messages for the selected date found", pairs::error, 1},
    {76, "x", "Pager process is blocked. Please try later", pairs::error, 1},
    {78, "x", "Your Pager Request was successfully added/removed", pairs::success, 0},
    {79, "x", "Your Pager Request could not be added/removed", pairs::error, 1},
    {82, "x", "Password accepted. MessageAccess granted", pairs::success, 1},
    {83, "x", "Your password doesnt match. MessageAccess denied", pairs::error, 1},
    {86, "x", "Client identified. Access granted", pairs::secondary, 0},
    {87, "x", "Identification unknown. Client rejected", pairs::error, 0},
    {103, "the server's notice", "the server's notice", pairs::plain, 0},
    {106, "x", "Updates on this database are not allowed", pairs::error, 1},
    {108, "the server's complaint", "the server's complaint", pairs::error, 1},
    {149, "x", "You are still connected to alpha", pairs::notice, 3},
    {153, "90061\t12\tx", "Uptime: 1 days, 1 hours, 1 minutes 1 seconds. 12 clients connected",
     pairs::secondary, 0},
    {64, "one line", "one line", pairs::server_text, 0},
    {90, "one line", "one line", pairs::server_text, 0},
};

/// A wide client connected to one server.
class packets : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(knowing(server), wide_terminal));
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
        before = client.status_lines();
    }

    /// The status lines since the start of the test, after the server's last packet was handled.
    std::vector<std::string> read_added_lines()
    {
        EXPECT_TRUE(wait_for_notice(client, *connection, "that is all"));
        std::vector<std::string> lines = client.status_lines();
        lines.pop_back();
        for (std::size_t common = lines.size(); common > 0; --common)
            if (std::equal(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(common),
                           before.end() - static_cast<std::ptrdiff_t>(common)))
                return {lines.begin() + static_cast<std::ptrdiff_t>(common), lines.end()};
        return lines;
    }

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;
    std::vector<std::string> before;
};

class packets_that_report : public packets, public testing::WithParamInterface<reporting_kind>
{
};

TEST_P(packets_that_report, show_their_line_in_its_colour_with_their_beeps)
{
    const reporting_kind& row = GetParam();
    ASSERT_TRUE(connection->send(row.kind, row.payload));
    ASSERT_TRUE(client.wait_for_status(row.line, row.pair, row.pair >= 5 && row.pair <= 7));
    EXPECT_EQ(read_added_lines(), std::vector<std::string>{row.line});
    EXPECT_EQ(client.terminal().bells(), row.beeps);
    EXPECT_EQ(client.marker(1).text, "*") << "the connection stays open";
    EXPECT_FALSE(connection->has_unread_bytes()) << "nothing is answered";
}

INSTANTIATE_TEST_SUITE_P(all, packets_that_report, testing::ValuesIn(reporting_kinds));

TEST_F(packets, an_identification_request_is_answered_with_the_clients_name)
{
    ASSERT_TRUE(connection->send(85, "who are you"));
    ASSERT_TRUE(client.wait_for_status("Answering identification request...", pairs::secondary,
                                       std::nullopt));
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 85, .payload = "ncursesclient"}));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(packets, a_replay_is_announced_with_the_number_in_both_parameters)
{
    ASSERT_TRUE(connection->send({.kind = 27, .payload = "x", .param1 = 25}));
    ASSERT_TRUE(client.wait_for_status("Now receiving the last 25 transmissions", pairs::notice));
    ASSERT_TRUE(connection->send({.kind = 27, .payload = "99", .param1 = 1, .param2 = 2}));
    ASSERT_TRUE(
        client.wait_for_status("Now receiving the last 131073 transmissions", pairs::notice));
}

TEST_F(packets, kinds_without_a_meaning_and_switches_of_checks_are_silent)
{
    const std::string screen = client.terminal().screen().whole_text();
    for (const std::uint32_t kind :
         {0U,   1U,   2U,   4U,   25U,  26U,   39U,      42U,         65U,
          81U,  84U,  88U,  95U,  99U,  101U,  148U,     150U,        151U,
          154U, 199U, 200U, 203U, 206U, 1000U, 0x10003U, 0x80000003U, 0xFFFFFFFFU})
        ASSERT_TRUE(connection->send(kind, "some text"));
    EXPECT_EQ(read_added_lines(), std::vector<std::string>{});
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.marker(1).text, "*");
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(packets, an_uptime_below_a_minute_is_all_seconds)
{
    ASSERT_TRUE(connection->send(153, "59\t0\t"));
    ASSERT_TRUE(
        client.wait_for_status("Uptime: 0 days, 0 hours, 0 minutes 59 seconds. 0 clients connected",
                               pairs::secondary, std::nullopt));
}

TEST_F(packets, an_uptime_of_other_than_three_fields_is_not_shown)
{
    for (const char* text : {"90061\t12", "90061", "\t", "1\t2\t3\t4"})
        ASSERT_TRUE(connection->send(153, text));
    EXPECT_EQ(read_added_lines(), std::vector<std::string>{});
}

TEST_F(packets, empty_lines_inside_a_text_are_halved_and_one_at_its_end_is_not_printed)
{
    ASSERT_TRUE(connection->send(64, "first\n\nsecond\n"));
    EXPECT_EQ(read_added_lines(), (std::vector<std::string>{"first", "second"}));
    // Four line feeds become two, with an empty line in between.
    ASSERT_TRUE(connection->send(90, "third\n\n\n\nfourth\n\n"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "end"));
    EXPECT_EQ(client.status_lines(), (std::vector<std::string>{"third", "", "fourth", "end"}));
    EXPECT_TRUE(client.wait_for_status("third", pairs::server_text, std::nullopt));
    EXPECT_TRUE(client.wait_for_status("fourth", pairs::server_text, std::nullopt));
}

TEST_F(packets, come_one_at_a_time_and_in_order)
{
    std::string bytes;
    for (const char* text : {"one", "two", "three", "four"})
        bytes += packet_bytes({.kind = 103, .payload = text});
    ASSERT_TRUE(connection->send_bytes(bytes));
    ASSERT_TRUE(wait_for_last_status(client, "four"));
    EXPECT_EQ(client.status_lines(), (std::vector<std::string>{"one", "two", "three", "four"}));
}

TEST_F(packets, one_is_received_in_each_poll)
{
    ASSERT_TRUE(stop_polls(client));
    ASSERT_TRUE(connection->send_bytes(packet_bytes({.kind = 103, .payload = "first"}) +
                                       packet_bytes({.kind = 103, .payload = "second"})));
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(wait_for_last_status(client, "first"));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(client.terminal().shows("second"));
    ASSERT_TRUE(poll_once(client));
    ASSERT_TRUE(wait_for_last_status(client, "second"));
}

class packets_that_close : public packets, public testing::WithParamInterface<std::uint32_t>
{
};

TEST_P(packets_that_close, end_the_connection_and_free_its_own_row)
{
    ASSERT_TRUE(connection->send(GetParam(), "x"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; },
                                             "the marker goes"));
    EXPECT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes()) << "no farewell";
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.terminal().cell(1, 1), pair_cell(pairs::bar, false, " "));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
    ASSERT_TRUE(client.connect_selected(server));
}

INSTANTIATE_TEST_SUITE_P(all, packets_that_close, testing::Values(3U, 100U, 102U));

TEST(packets_of_several, act_on_their_own_server_alone)
{
    listed_servers servers(3);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings()));
    std::vector<server_connection> connections = connect_all(client, servers);
    ASSERT_EQ(connections.size(), 3U);
    ASSERT_TRUE(connections[1].send(5, "x"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(2).text == "-"; }, "-"));
    EXPECT_EQ(client.marker(1).text, "*");
    EXPECT_EQ(client.marker(3).text, "*");
    ASSERT_TRUE(connections[0].send(102, "x"));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; }, " "));
    ASSERT_TRUE(connections[2].send(149, "x"));
    ASSERT_TRUE(client.wait_for_status("You are still connected to charlie", pairs::notice));
    EXPECT_EQ(client.marker(2).text, "-");
    ASSERT_TRUE(connections[1].send(85, "x"));
    EXPECT_EQ(connections[1].read_packet(),
              (server_packet{.kind = 85, .payload = "ncursesclient"}));
    EXPECT_FALSE(connections[2].has_unread_bytes());
}

} // namespace
