// in_front_test.cpp - what lies over what: pages over panes, open windows over both, whatever is
// drawn or closed meanwhile.
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

constexpr const char* help_hint = "[ To exit press ^H ]";
constexpr const char* settings_hint = "To exit press ^E ]";
constexpr const char* window_hint = "[ Close Window ^I ]";
constexpr const char* folder_question = "Folder for ~Logfiles";
constexpr const char* statistics = "Unique Flights: 7";

/// What a poll may write that changes nothing a person sees, such as a move of the cursor.
constexpr std::size_t max_unseen_bytes = 16;

/// A client that is connected to its last server.
class in_front : public testing::Test
{
protected:
    /// place: of that server in the list, from 1. The others refuse connections.
    [[nodiscard]] testing::AssertionResult begin(int place = 1, const client_start& how = {})
    {
        client_settings settings =
            with_aliases(std::vector<std::string>(static_cast<std::size_t>(place - 1), "other"));
        settings.flight_stats = true;
        settings.servers.push_back(knowing(server).servers[0]);
        if (testing::AssertionResult started = client.start(settings, how); !started)
            return started;
        if (testing::AssertionResult selected = select_row(client, place); !selected)
            return selected;
        connection = client.connect_selected(server);
        return connection ? testing::AssertionSuccess() : testing::AssertionFailure();
    }

    terminal_session& terminal()
    {
        return client.terminal();
    }
    std::vector<screen_cell> cells()
    {
        terminal().take_in_everything();
        return all_cells(terminal().screen());
    }
    [[nodiscard]] testing::AssertionResult becomes(const std::vector<screen_cell>& wanted,
                                                   std::string_view what)
    {
        return terminal().wait_until([&] { return all_cells(terminal().screen()) == wanted; },
                                     what);
    }
    [[nodiscard]] testing::AssertionResult open(char key, const char* hint)
    {
        terminal().send_control(key);
        return terminal().wait_for_text(hint);
    }
    /// Everything that the server has sent has taken effect.
    [[nodiscard]] testing::AssertionResult is_done()
    {
        if (!connection->send(85, "who") || !connection->read_packet())
            return testing::AssertionFailure() << "no answer\n" << client.terminal().description();
        return client.wait_for_polls();
    }
    /// Disconnects, and waits until that and all keys before have taken effect.
    [[nodiscard]] testing::AssertionResult disconnect()
    {
        const int wanted = terminal().bells() + 1;
        terminal().send_control('d');
        terminal().send_control('d'); // refused with a beep
        return terminal().wait_until([&] { return terminal().bells() == wanted; }, "a beep");
    }
    /// Opens a prompt over whatever is there, and leaves it.
    [[nodiscard]] testing::AssertionResult ask_and_cancel()
    {
        terminal().send_meta('l');
        if (testing::AssertionResult asked = terminal().wait_for_text(folder_question); !asked)
            return asked;
        terminal().send("\033");
        return terminal().wait_for_no_text(folder_question);
    }

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(in_front, the_information_window_is_whole_after_a_prompt_over_it)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open('i', window_hint));
    const std::vector<screen_cell> before = cells();
    ASSERT_TRUE(ask_and_cancel());
    EXPECT_TRUE(becomes(before, "the window as it was"));
    terminal().send_control('i');
    EXPECT_TRUE(terminal().wait_for_no_text(window_hint)) << "one key closes what is seen";
}

TEST_F(in_front, flight_statistics_are_whole_after_a_prompt_over_them)
{
    ASSERT_TRUE(begin(8)); // beside the prompt
    ASSERT_TRUE(connection->send(plain_packet(document_of({.daily_flights = "7"}))));
    ASSERT_TRUE(terminal().wait_for_text(statistics));
    const std::vector<screen_cell> before = cells();
    ASSERT_TRUE(ask_and_cancel());
    EXPECT_TRUE(becomes(before, "the statistics as they were"));
}

TEST_F(in_front, flight_statistics_are_whole_after_a_menu_over_them_was_forgotten)
{
    ASSERT_TRUE(begin(8)); // beside the menu's second row
    ASSERT_TRUE(connection->send(capabilities_packet("<Pager>1</Pager>")));
    ASSERT_TRUE(is_done());
    ASSERT_TRUE(open('p', "[ Press 1-3 or ESC to quit ]"));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.daily_flights = "7"}))));
    ASSERT_TRUE(is_done());
    client.clock().jump(11);
    EXPECT_TRUE(terminal().wait_for_no_text("ESC to quit"));
    EXPECT_TRUE(terminal().wait_for_text(statistics));
}

TEST_F(in_front, a_notice_moves_no_window_over_another)
{
    ASSERT_TRUE(begin(8));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.daily_flights = "7"}))));
    ASSERT_TRUE(terminal().wait_for_text(statistics));
    ASSERT_TRUE(open('i', window_hint));
    EXPECT_TRUE(terminal().shows(statistics)) << "what is open is seen";
    const std::vector<screen_cell> before = cells();
    ASSERT_TRUE(wait_for_notice(client, *connection, "a notice"));
    const std::vector<screen_cell> after = cells();
    const std::ptrdiff_t above_notices = std::ptrdiff_t{17} * 80;
    EXPECT_TRUE(std::equal(before.begin(), before.begin() + above_notices, after.begin()))
        << terminal().description();
}

TEST_F(in_front, a_window_over_the_help_stays_there_when_a_marker_turns)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(stop_polls(client));
    ASSERT_TRUE(open('h', help_hint));
    ASSERT_TRUE(open('i', window_hint));
    const std::vector<screen_cell> before = cells();
    ASSERT_TRUE(connection->send(5, "x"));
    ASSERT_TRUE(poll_once(client));
    EXPECT_EQ(cells(), before) << terminal().description();
    terminal().send_control('h');
    EXPECT_TRUE(terminal().wait_until(
        [&] { return client.bar_row() == 1 && client.marker(1).text == "-"; }, "a turned marker"));
}

TEST_F(in_front, a_window_over_the_settings_stays_there_when_a_connection_ends)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open('e', settings_hint));
    ASSERT_TRUE(open('i', window_hint));
    const std::vector<screen_cell> before = cells();
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(cells(), before) << terminal().description();
}

TEST_F(in_front, nothing_of_notices_and_transmissions_is_seen_while_the_help_is_there)
{
    ASSERT_TRUE(begin(1, wide_terminal));
    ASSERT_TRUE(open('h', help_hint));
    const std::vector<screen_cell> before = cells();
    terminal().forget_raw_output();
    ASSERT_TRUE(connection->send(103, "for your eyes"));
    ASSERT_TRUE(connection->send(plain_packet(document_of({.flight = "LH0007"}))));
    ASSERT_TRUE(is_done());
    EXPECT_EQ(cells(), before) << terminal().description();
    for (const char* text : {"for your eyes", "LH0007"})
        EXPECT_EQ(terminal().raw_output().find(text), std::string::npos) << text;
    terminal().send_control('h');
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "LH0007"})));
    EXPECT_TRUE(client.wait_for_status("for your eyes", pairs::plain, false));
}

TEST_F(in_front, nothing_is_drawn_through_the_help_over_the_settings)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open('e', settings_hint));
    ASSERT_TRUE(open('h', help_hint));
    const std::vector<screen_cell> before = cells();
    terminal().send_meta('a');
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(cells(), before) << terminal().description();
    ASSERT_TRUE(ask_and_cancel());
    EXPECT_TRUE(becomes(before, "the help again"));
    terminal().send_control('h');
    ASSERT_TRUE(terminal().wait_for_text(settings_hint));
    EXPECT_EQ(terminal().cell(2, 3), pair_cell(pairs::success, true, "X"));
}

TEST_F(in_front, a_prompt_over_the_help_does_not_vanish_for_a_moment)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(stop_polls(client));
    ASSERT_TRUE(open('h', help_hint));
    terminal().send_meta('l');
    ASSERT_TRUE(terminal().wait_for_text(folder_question));
    terminal().take_in_everything();
    terminal().forget_raw_output();
    ASSERT_TRUE(connection->send(5, "x"));
    ASSERT_TRUE(poll_once(client));
    terminal().take_in_everything();
    EXPECT_LE(terminal().raw_output().size(), max_unseen_bytes) << "nothing is painted twice";
    EXPECT_TRUE(terminal().shows(folder_question));
}

TEST_F(in_front, of_both_pages_the_one_that_came_last_is_in_front)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open('e', settings_hint));
    ASSERT_TRUE(open('h', help_hint));
    terminal().resize(30, 100);
    ASSERT_TRUE(terminal().wait_until(
        [&] { return terminal().row(29) == std::string(78, ' ') + help_hint + "  "; }, "the help"));
    terminal().send_control('e'); // hides the settings behind it
    ASSERT_TRUE(disconnect());
    EXPECT_TRUE(terminal().shows(help_hint));
    ASSERT_TRUE(open('e', settings_hint));
    EXPECT_FALSE(terminal().shows(help_hint));
}

/// Ten connected servers and a client with the help in front.
class many_ticks : public testing::Test
{
protected:
    static constexpr int count = 10;
    static constexpr int last_byte = 30; // of the first server's address

    void SetUp() override
    {
        client_settings settings;
        for (int index = 0; index < count; ++index) {
            // Names are listed in descending order.
            const std::string address = "127.0.0." + std::to_string(last_byte - index);
            servers.emplace_back(address);
            settings.servers.push_back(
                {.name = address, .port = std::to_string(servers.back().port()), .alias = address});
        }
        ASSERT_TRUE(client.start(settings));
        for (int index = 0; index < count; ++index) {
            ASSERT_TRUE(select_row(client, index + 1));
            std::optional<server_connection> connection =
                client.connect_selected(servers[static_cast<std::size_t>(index)]);
            ASSERT_TRUE(connection);
            connections.push_back(std::move(*connection));
        }
        ASSERT_TRUE(stop_polls(client));
        client.terminal().send_control('h');
        ASSERT_TRUE(client.terminal().wait_for_text(help_hint));
        client.terminal().take_in_everything();
    }

    std::deque<scripted_server> servers;
    client_session client;
    std::vector<server_connection> connections;
};

TEST_F(many_ticks, behind_the_help_write_next_to_nothing)
{
    constexpr int rounds = 3;
    client.terminal().forget_raw_output();
    for (int round = 0; round < rounds; ++round) {
        for (server_connection& connection : connections)
            ASSERT_TRUE(connection.send(5, "x"));
        ASSERT_TRUE(poll_once(client));
    }
    client.terminal().take_in_everything();
    const std::size_t bytes = client.terminal().raw_output().size();
    EXPECT_LE(bytes, rounds * count * max_unseen_bytes);
    client.terminal().send_control('h');
    for (int number = 1; number <= count; ++number)
        EXPECT_TRUE(client.terminal().wait_until([&] { return client.marker(number).text == "-"; },
                                                 "a marker that has turned"));
}

/// Terminals of these sizes, in rows and columns.
class pages_of_any_size : public in_front, public testing::WithParamInterface<std::pair<int, int>>
{
};

TEST_P(pages_of_any_size, give_back_the_screen_that_was)
{
    const auto& [rows, columns] = GetParam();
    ASSERT_TRUE(begin(2, {.rows = rows, .columns = columns}));
    ASSERT_TRUE(connection->send(plain_packet(document_of({}))));
    ASSERT_TRUE(is_done());
    terminal().send_key(named_key::up);
    ASSERT_TRUE(terminal().wait_until([&] { return client.bar_row() == 1; }, "the bar"));
    const std::vector<screen_cell> before = cells();
    for (int row = 0; row < rows - 7; ++row)
        EXPECT_EQ(terminal().cell(row, columns - 1).text, " ") << row;
    for (const auto& [key, hint] : {std::pair{'h', help_hint}, {'e', settings_hint}}) {
        ASSERT_TRUE(open(key, hint));
        terminal().send_control(key);
        EXPECT_TRUE(becomes(before, "the panes as they were"));
    }
}

INSTANTIATE_TEST_SUITE_P(in_front, pages_of_any_size,
                         testing::Values(std::pair{24, 80}, std::pair{30, 100},
                                         std::pair{60, 200}));

} // namespace
