// server_pane_test.cpp - the server list: names, order, marks, bar, and lists longer than the pane.
#include "e2e/client_session.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr int visible_servers = 20; // of a list on a screen with 24 rows

std::string make_list_row(const std::string& name, char mark = ' ')
{
    std::string row = mark + name;
    row.append(25 - row.size(), ' ');
    return row;
}

TEST(server_pane, names_are_shown_whole_up_to_21_letters_and_cut_beyond)
{
    client_session client;
    ASSERT_TRUE(
        client.start(with_aliases({"short", "exactly-21-characters", "22-characters-are-cut!",
                                   "a-name-much-longer-than-the-pane-is-wide"})));
    EXPECT_EQ(client.server_row(1), make_list_row("short"));
    EXPECT_EQ(client.server_row(2), make_list_row("exactly-21-characters"));
    EXPECT_EQ(client.server_row(3), make_list_row("22-characters-are-cut..."));
    EXPECT_EQ(client.server_row(4), make_list_row("a-name-much-longer-th..."));
    EXPECT_EQ(client.server_row(5), make_list_row(""));
    for (int row = 1; row <= 4; ++row)
        EXPECT_EQ(client.terminal().cell(row + 1, 26).text, "│") << "the frame is whole";
}

TEST(server_pane, an_alias_replaces_the_name_however_short)
{
    client_session client;
    client_settings settings;
    settings.servers = {{.name = "b.long.host.name.example", .alias = "b"},
                        {.name = "a.host.example"}};
    ASSERT_TRUE(client.start(settings));
    EXPECT_EQ(client.server_row(1), make_list_row("b"));
    EXPECT_EQ(client.server_row(2), make_list_row("a.host.example"));
}

TEST(server_pane, names_descend_and_ports_ascend)
{
    client_session client;
    client_settings settings;
    settings.servers = {{.name = "b.example", .alias = "third"},
                        {.name = "a.example", .alias = "fourth"},
                        {.name = "c.example", .port = "2203", .alias = "second"},
                        {.name = "c.example", .port = "2202", .alias = "first"},
                        {.name = "c.example", .port = "2202", .alias = "too late"}};
    ASSERT_TRUE(client.start(settings));
    EXPECT_EQ(client.server_row(1), make_list_row("first"));
    EXPECT_EQ(client.server_row(2), make_list_row("second"));
    EXPECT_EQ(client.server_row(3), make_list_row("third"));
    EXPECT_EQ(client.server_row(4), make_list_row("fourth"));
    EXPECT_EQ(client.server_row(5), make_list_row(""));
}

TEST(server_pane, names_are_bold_white_and_the_first_is_under_the_bar)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    for (int column = 2; column <= 25; ++column) {
        const screen_cell selected = client.terminal().cell(2, column);
        EXPECT_EQ(selected, pair_cell(pairs::bar, false, selected.text)) << column;
    }
    EXPECT_NE(client.terminal().cell(2, 1).background, 7) << "the bar leaves the marker alone";
    EXPECT_NE(client.terminal().cell(2, 26).background, 7) << "the bar ends at the frame";
    for (int column = 2; column < 2 + 21; ++column) {
        const screen_cell other = client.terminal().cell(3, column);
        EXPECT_EQ(other, pair_cell(pairs::plain, true, other.text)) << column;
    }
}

TEST(server_pane, letters_above_127_are_one_character_wide)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"M\xFCnchen", "\xC5rhus \xFC\x62\x65r alle Grenzen"})));
    EXPECT_EQ(client.server_row(1), " München" + std::string(17, ' '));
    EXPECT_EQ(client.server_row(2), " Århus über alle Grenz...");
}

TEST(server_pane, control_bytes_in_a_name_do_no_harm)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"one\033[7mtwo\a\x9B", "beta"})));
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.terminal().raw_output().find("\033[7mtwo"), std::string::npos);
    EXPECT_EQ(client.server_row(2), make_list_row("beta"));
    EXPECT_EQ(client.terminal().cell(2, 26).text, "│");
}

TEST(server_pane, marks_a_connection_left_of_its_name_in_bold_green)
{
    scripted_server server;
    client_session client;
    client_settings settings = knowing(server);
    settings.servers.push_back({.name = "9.example", .alias = "before"});
    ASSERT_TRUE(client.start(settings));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "the bar"));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    EXPECT_EQ(client.marker(2), pair_cell(pairs::success, true, "*"));
    EXPECT_EQ(client.marker(1).text, " ");
    ASSERT_TRUE(connection->send(100, "x"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(2).text == " "; },
                                             "the mark is gone"));
}

TEST(server_pane, ticks_turn_the_mark)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    for (const char* turned : {"-", "/", "-", "/"}) {
        ASSERT_TRUE(connection->send(5, "x"));
        ASSERT_TRUE(
            client.terminal().wait_until([&] { return client.marker(1).text == turned; }, turned));
        EXPECT_EQ(client.marker(1), pair_cell(pairs::success, true, turned));
    }
}

TEST(server_pane, a_list_drawn_anew_forgets_the_marks_and_puts_later_ones_a_row_lower)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    client.terminal().resize(25, 90);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.bar_row() == 1 && client.marker(1).text == " "; }, "a new list"));
    ASSERT_TRUE(connection->send(5, "x"));
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return client.marker(2).text == "-"; }, "a tick"));
    EXPECT_EQ(client.marker(1).text, " ");
}

std::vector<std::string> make_numbered_aliases(int count)
{
    std::vector<std::string> aliases;
    for (int number = 1; number <= count; ++number)
        aliases.push_back("server " + std::to_string(number));
    return aliases;
}

TEST(server_pane, a_list_that_just_fits_does_not_scroll)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases(make_numbered_aliases(visible_servers))));
    for (int at = 1; at < visible_servers; ++at)
        client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == visible_servers; },
                                             "the bar on the last row"));
    EXPECT_EQ(client.bar_text(), "server 20");
    EXPECT_EQ(client.server_row(1), make_list_row("server 1"));
}

TEST(server_pane, a_longer_list_scrolls_with_the_bar)
{
    constexpr int count = visible_servers + 11;
    client_session client;
    ASSERT_TRUE(client.start(with_aliases(make_numbered_aliases(count))));
    EXPECT_EQ(client.server_row(visible_servers), make_list_row("server 20"));
    EXPECT_EQ(client.terminal().cell(22, 0).text, "└");
    EXPECT_EQ(client.terminal().screen().text(22, 1, 3), "───");
    for (int number = 2; number <= count; ++number) {
        client.terminal().send_key(named_key::down);
        const std::string name = "server " + std::to_string(number);
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == name; }, name));
    }
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.bar_text(), "server 31");
    EXPECT_EQ(client.terminal().screen().text(1, 1, 25), "  » available Servers «  ");
    EXPECT_EQ(client.terminal().screen().text(22, 1, 3), "───");
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to server 31", pairs::error));
    for (int number = count - 1; number >= 1; --number) {
        client.terminal().send_key(named_key::up);
        const std::string name = "server " + std::to_string(number);
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == name; }, name));
    }
    EXPECT_EQ(client.bar_row(), 1);
    EXPECT_EQ(client.server_row(1), make_list_row("server 1"));
    for (int row = 2; row <= 22; ++row)
        EXPECT_EQ(client.terminal().cell(row, 0).text, row == 22 ? "└" : "│");
}

TEST(server_pane, a_resize_of_a_scrolled_list_starts_at_its_top_again)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases(make_numbered_aliases(30))));
    for (int at = 1; at < 30; ++at)
        client.terminal().send_key(named_key::down);
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return client.bar_text() == "server 30"; }, "the end"));
    client.terminal().resize(12, 80);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.bar_row() == 1 && client.bar_text() == "server 1"; }, "the top"));
    for (int at = 1; at < 10; ++at)
        client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_text() == "server 10"; },
                                             "ten rows down in a list of eight"));
}

TEST(server_pane, marks_scroll_with_their_servers_and_stay_inside_the_list)
{
    scripted_server server;
    client_session client;
    client_settings settings = knowing(server, "connected");
    for (int port = 1; port <= 2; ++port)
        settings.servers.push_back({.name = "9.example", .port = std::to_string(port)});
    for (int port = 1; port <= 30; ++port)
        settings.servers.push_back({.name = "0.example", .port = std::to_string(port)});
    ASSERT_TRUE(client.start(settings));
    client.terminal().send_key(named_key::down);
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return client.bar_text() == "connected"; }, "the bar"));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    EXPECT_EQ(client.server_row(3), make_list_row("connected", '*'));

    const auto press = [&](named_key key, int times) {
        for (int at = 0; at < times; ++at)
            client.terminal().send_key(key);
        return client.wait_for_keys();
    };
    ASSERT_TRUE(press(named_key::down, 18)); // server 21: one row scrolled
    EXPECT_EQ(client.server_row(2), make_list_row("connected", '*'));
    ASSERT_TRUE(press(named_key::down, 12)); // the last server: the connected one is above the list
    EXPECT_FALSE(client.terminal().shows("connected  "));
    const std::string top = client.terminal().screen().text(0, 0, 27);
    const std::string heading = client.terminal().screen().text(1, 0, 27);
    ASSERT_TRUE(connection->send(5, "x"));
    ASSERT_TRUE(connection->send(103, "after the tick"));
    ASSERT_TRUE(client.wait_for_status("after the tick", pairs::plain, false));
    EXPECT_EQ(client.terminal().screen().text(0, 0, 27), top);
    EXPECT_EQ(client.terminal().screen().text(1, 0, 27), heading);
    for (int number = 1; number <= visible_servers; ++number)
        EXPECT_EQ(client.marker(number).text, " ") << number;
    ASSERT_TRUE(press(named_key::up, 32));
    EXPECT_EQ(client.bar_row(), 1);
    EXPECT_EQ(client.server_row(3).substr(1, 9), "connected");
    EXPECT_NE(client.marker(3).text, " ") << "scrolling keeps the marks";
    for (const int number : {1, 2, 4, 5})
        EXPECT_EQ(client.marker(number).text, " ") << number;
}

} // namespace
