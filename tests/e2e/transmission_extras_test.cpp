// transmission_extras_test.cpp - what settings add to a transmission: contacts, flight statistics.
#include "e2e/network_session.hpp"

namespace
{

constexpr int beside_the_list = 27;

std::string read_beside(client_session& client, int screen_row)
{
    const terminal_screen& screen = client.terminal().screen();
    std::string text =
        screen.text(screen_row, beside_the_list, screen.columns() - beside_the_list - 1);
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

testing::AssertionResult wait_for_text_beside(client_session& client, int screen_row,
                                              const std::string& text)
{
    return client.terminal().wait_until([&] { return read_beside(client, screen_row) == text; },
                                        "\"" + text + "\" beside the list");
}

/// A wide client with contacts on, connected to a server.
class contacts : public testing::Test
{
protected:
    void SetUp() override
    {
        client_settings settings = servers.settings();
        settings.contact_info = true;
        ASSERT_TRUE(client.start(settings, wide_terminal));
        connection = client.connect_selected(servers[0]);
        ASSERT_TRUE(connection);
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(contacts, are_shown_in_cyan_below_the_transmission)
{
    ASSERT_TRUE(
        connection->send(plain_packet(document_of({.contacts = "3 contacts with this aircraft"}))));
    std::vector<std::string> lines = lines_of({});
    lines.emplace_back("3 contacts");
    ASSERT_TRUE(wait_for_message_rows(client, lines, 0));
    const int row = message_bottom_row(client);
    EXPECT_EQ(client.terminal().cell(row, 28), pair_cell(pairs::secondary, false, "3"));

    ASSERT_TRUE(connection->send(plain_packet(document_of(
        {.contacts = "1 with this aircraft, 2 with this aircraft. with this aircraft"}))));
    lines.insert(lines.end(), {""});
    lines.pop_back();
    for (const std::string& line : lines_of({}))
        lines.push_back(line);
    lines.emplace_back("1, 2.");
    ASSERT_TRUE(wait_for_message_rows(client, lines, 0));
}

TEST_F(contacts, leave_an_empty_line_if_they_are_missing)
{
    ASSERT_TRUE(connection->send(plain_packet(document_of({}))));
    std::vector<std::string> lines = lines_of({});
    lines.emplace_back("");
    ASSERT_TRUE(wait_for_message_rows(client, lines, 0));
    EXPECT_FALSE(client.terminal().shows("null"));
}

TEST(no_contacts, are_shown_unless_configured)
{
    listed_servers servers(1);
    client_session client;
    ASSERT_TRUE(client.start(servers.settings(), wide_terminal));
    std::optional<server_connection> connection = client.connect_selected(servers[0]);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(connection->send(
        plain_packet(document_of({.contacts = "many contacts", .daily_flights = "9"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
    ASSERT_TRUE(wait_for_notice(client, *connection, "done"));
    EXPECT_FALSE(client.terminal().shows("many contacts"));
    EXPECT_FALSE(client.terminal().shows("Unique Flights"));
}

/// A wide client with flight statistics on, connected to two servers.
class flight_statistics : public testing::Test
{
protected:
    void SetUp() override
    {
        client_settings settings = servers.settings();
        settings.flight_stats = true;
        ASSERT_TRUE(client.start(settings, wide_terminal));
        connections = connect_all(client, servers);
        ASSERT_EQ(connections.size(), 2U);
    }

    listed_servers servers{2};
    client_session client;
    std::vector<server_connection> connections;
};

TEST_F(flight_statistics, stand_beside_the_servers_own_row)
{
    ASSERT_TRUE(connections[1].send(plain_packet(document_of({.daily_flights = "1234"}))));
    ASSERT_TRUE(wait_for_text_beside(client, 3, "Unique Flights: 1234"));
    for (int column = 0; column < 20; ++column) {
        const screen_cell cell = client.terminal().cell(3, beside_the_list + column);
        EXPECT_EQ(cell, pair_cell(pairs::statistics, true, cell.text)) << column;
    }
    EXPECT_NE(client.terminal().cell(3, beside_the_list + 20).background,
              pair_cell(pairs::statistics, true, "").background);
    EXPECT_EQ(client.terminal().cell(3, beside_the_list - 1).text, "│");
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
}

TEST_F(flight_statistics, stay_until_the_next_transmission_of_any_server)
{
    ASSERT_TRUE(connections[1].send(plain_packet(document_of({.daily_flights = "7"}))));
    ASSERT_TRUE(wait_for_text_beside(client, 3, "Unique Flights: 7"));
    ASSERT_TRUE(wait_for_notice(client, connections[0], "something else"));
    EXPECT_EQ(read_beside(client, 3), "Unique Flights: 7");
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.daily_flights = "8"}))));
    ASSERT_TRUE(wait_for_text_beside(client, 2, "Unique Flights: 8"));
    EXPECT_EQ(read_beside(client, 3), "");
    ASSERT_TRUE(connections[1].send(plain_packet(document_of({.flight = "NOSTAT"}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "NOSTAT"})));
    ASSERT_TRUE(client.terminal().wait_for_no_text("Unique Flights"));
}

TEST_F(flight_statistics, disappear_when_the_bar_moves)
{
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.daily_flights = "55"}))));
    ASSERT_TRUE(wait_for_text_beside(client, 2, "Unique Flights: 55"));
    ASSERT_TRUE(select_row(client, 1));
    ASSERT_TRUE(client.terminal().wait_for_no_text("Unique Flights"));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
}

TEST_F(flight_statistics, uncover_what_was_under_them)
{
    // Enough transmissions to have text where the line is shown.
    for (int number = 1; number <= 3; ++number)
        ASSERT_TRUE(connections[0].send(plain_packet(document_of({}))));
    ASSERT_TRUE(wait_for_notice(client, connections[0], "three are shown"));
    const std::vector<std::string> rows = client.message_lines();
    ASSERT_NE(rows[2], "");
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.daily_flights = "5"}))));
    ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: 5"));
    ASSERT_TRUE(select_row(client, 1));
    ASSERT_TRUE(client.terminal().wait_for_no_text("Unique Flights"));
    ASSERT_TRUE(client.wait_for_keys()); // everything is painted
    // One transmission of six rows has moved all lines up.
    const std::vector<std::string> moved = client.message_lines();
    for (std::size_t row = 1; row <= 8; ++row)
        EXPECT_EQ(moved[row], rows[row + 6]) << row;
}

TEST_F(flight_statistics, do_no_harm_when_wider_than_the_terminal)
{
    ASSERT_TRUE(
        connections[0].send(plain_packet(document_of({.daily_flights = std::string(500, '9')}))));
    ASSERT_TRUE(client.terminal().wait_for_text("Unique Flights: 9999"));
    EXPECT_TRUE(client.terminal().row(23).starts_with("^D Disconnect"));
    EXPECT_EQ(read_beside(client, 3), "");
    ASSERT_TRUE(connections[0].send(plain_packet(document_of({.daily_flights = "1"}))));
    ASSERT_TRUE(wait_for_text_beside(client, 2, "Unique Flights: 1"));
}

} // namespace
