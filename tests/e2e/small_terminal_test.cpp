// small_terminal_test.cpp - terminals too small for the panes, and lists too long for them, while
// transmissions arrive.
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"

namespace
{

constexpr const char* digest_of_ab = "187ef4436122d1cc2f40dc2b92f0eba0";
constexpr int beside_the_list = 27;

/// A client with flight statistics and contacts on, connected to a server.
class small_terminal : public testing::Test
{
protected:
    void SetUp() override
    {
        client_settings settings = servers.settings();
        settings.flight_stats = true;
        settings.contact_info = true;
        ASSERT_TRUE(client.start(settings, wide_terminal));
        connection = client.connect_selected(servers[0]);
        ASSERT_TRUE(connection);
    }

    /// Sends one of everything that draws, and asks for an answer that needs no screen. Twice,
    /// since the first round may still meet the previous size.
    void expect_traffic_survived()
    {
        const acars_message message{
            .content = "NOT MUCH ROOM", .contacts = "9", .daily_flights = "1000000"};
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(connection->send(plain_packet(document_of(message))));
            ASSERT_TRUE(connection->send(5, "x"));
            ASSERT_TRUE(connection->send(103, "a notice\nof two lines, wider than the terminal"));
            ASSERT_TRUE(connection->send(85, "x"));
            ASSERT_EQ(connection->read_packet(),
                      (server_packet{.kind = 85, .payload = "ncursesclient"}))
                << client.terminal().description();
        }
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(small_terminal, takes_transmissions_at_any_size)
{
    client.clock().set_alarm_pace(10);
    for (const auto& [rows, columns] :
         {std::pair{24, 29}, {24, 28}, {24, 27}, {24, 26}, {24, 3}, {24, 2}, {24, 1},
          {8, 80},           {7, 80},  {6, 80},  {5, 80},  {2, 80}, {1, 80}, {7, 28},
          {6, 27},           {3, 3},   {2, 2},   {1, 1},   {50, 2}, {2, 200}}) {
        SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(columns));
        client.terminal().resize(rows, columns);
        ASSERT_NO_FATAL_FAILURE(expect_traffic_survived());
    }
    client.terminal().resize(24, 132);
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.daily_flights = "7"}))));
    std::vector<std::string> lines = lines_of({});
    lines.emplace_back(""); // no contacts
    ASSERT_TRUE(wait_for_message_rows(client, lines, 0));
    EXPECT_TRUE(client.terminal().wait_for_text("Unique Flights: 7 "));
}

TEST_F(small_terminal, is_whole_before_any_key_after_growing_again)
{
    ASSERT_TRUE(stop_polls(client));
    for (const auto& [rows, columns] :
         {std::pair{1, 1}, {30, 100}, {24, 20}, {24, 80}, {5, 40}, {60, 200}, {10, 80}, {25, 81}}) {
        SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(columns));
        client.terminal().resize(rows, columns);
        if (rows < 10 || columns < 80)
            continue;
        ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
        // What curses shows when it reads the next key must not undo it.
        client.terminal().send_key(named_key::left);
        client.clock().set_alarm_pace(50);
        ASSERT_TRUE(poll_once(client));
        ASSERT_TRUE(client.wait_for_polls());
        client.clock().set_alarm_pace(0);
        EXPECT_EQ(screen_fault(client.terminal().screen()), "");
    }
    client.clock().set_alarm_pace(50);
}

TEST_F(small_terminal, frames_the_visible_part_of_a_wider_server_list)
{
    client.terminal().resize(24, 20);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            const terminal_screen& screen = client.terminal().screen();
            return screen.text(0, 19) == "┐" && screen.text(5, 19) == "│" &&
                   screen.text(22, 0, 1) == "└" && screen.text(22, 19) == "┘";
        },
        "a frame round the list"));
}

TEST_F(small_terminal, takes_backspace_in_a_password)
{
    ASSERT_TRUE(connection->send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(client.terminal().wait_for_text("[ Password required ]"));
    client.terminal().send("abc");
    ASSERT_TRUE(client.terminal().wait_for_text("│ abc_ "));
    client.terminal().resize(5, 40);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.terminal().row(0).starts_with("┌─[ Password required ]") &&
                   client.terminal().row(1).starts_with("│ abc_ ");
        },
        "what fits of the box"));
    client.terminal().send("\x7F");
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().row(1).starts_with("│ ab_ "); }, "one character less"));
    client.terminal().resize(24, 132);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.terminal().screen().text(8, 46, 23) == "┌─[ Password required ]" &&
                   client.terminal().screen().text(9, 46, 6) == "│ ab_ ";
        },
        "the box at its old place"));
    client.terminal().send("\r");
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = digest_of_ab}));
}

/// A client with 14 servers in a list of 12 rows, connected to the first and the last.
class long_list : public testing::Test
{
protected:
    static constexpr int rows = 16;
    static constexpr int visible = 12;
    static constexpr int count = 14;

    void SetUp() override
    {
        client_settings settings;
        settings.flight_stats = true;
        settings.servers.push_back({.name = "127.0.0.9", .port = std::to_string(top.port())});
        for (int number = 2; number < count; ++number)
            settings.servers.push_back({.name = "127.0.0.8", .port = std::to_string(number)});
        settings.servers.push_back({.name = "127.0.0.7", .port = std::to_string(low.port())});
        ASSERT_TRUE(client.start(settings, {.rows = rows, .columns = 132}));
        first = client.connect_selected(top);
        ASSERT_TRUE(first);
        ASSERT_NO_FATAL_FAILURE(go_to_the_last());
        last = client.connect_selected(low);
        ASSERT_TRUE(last);
    }

    void go(named_key key, const std::string& name, int row)
    {
        for (int step = 1; step < count; ++step)
            client.terminal().send_key(key);
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return client.bar_text() == name && client.bar_row() == row; },
            "the bar is on " + name));
    }
    void go_to_the_last()
    {
        go(named_key::down, "127.0.0.7", visible);
    }
    void go_to_the_first()
    {
        go(named_key::up, "127.0.0.9", 1);
    }

    /// The text beside the list on a row of the screen, as long as flight statistics may be here.
    std::string read_beside(int row)
    {
        return client.terminal().screen().text(row, beside_the_list, 20);
    }

    /// Sends flight statistics of a server whose row is not visible.
    void expect_none_shown(server_connection& connection)
    {
        client.terminal().forget_raw_output();
        ASSERT_TRUE(connection.send(plain_packet(document_of({.daily_flights = "1234"}))));
        ASSERT_TRUE(wait_for_notice(client, connection, "shown"));
        EXPECT_EQ(client.terminal().raw_output().find("Unique"), std::string::npos)
            << client.terminal().description();
        EXPECT_EQ(find_frame_fault(), "");
    }

    std::string find_frame_fault()
    {
        const std::string fault = screen_fault(client.terminal().screen());
        return fault == "the title is not in the status pane" ? "" : fault;
    }

    scripted_server top{"127.0.0.9"};
    scripted_server low{"127.0.0.7"};
    client_session client;
    std::optional<server_connection> first;
    std::optional<server_connection> last;
};

TEST_F(long_list, shows_statistics_of_a_visible_server_on_its_scrolled_row)
{
    ASSERT_TRUE(last->send(plain_packet(document_of({.daily_flights = "1234"}))));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return read_beside(visible + 1) == "Unique Flights: 1234"; },
        "beside the lowest row"));
    const screen_cell cell = client.terminal().cell(visible + 1, beside_the_list);
    EXPECT_EQ(cell, pair_cell(pairs::statistics, true, "U"));
    ASSERT_NO_FATAL_FAILURE(go_to_the_first());
    ASSERT_TRUE(client.terminal().wait_for_no_text("Unique Flights"));
    ASSERT_TRUE(first->send(plain_packet(document_of({.daily_flights = "5678"}))));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return read_beside(2) == "Unique Flights: 5678"; }, "beside the highest row"));
}

TEST_F(long_list, shows_no_statistics_of_a_server_above_the_visible_rows)
{
    ASSERT_NO_FATAL_FAILURE(expect_none_shown(*first));
}

TEST_F(long_list, shows_no_statistics_of_a_server_below_the_visible_rows)
{
    ASSERT_NO_FATAL_FAILURE(go_to_the_first());
    ASSERT_NO_FATAL_FAILURE(expect_none_shown(*last));
}

} // namespace
