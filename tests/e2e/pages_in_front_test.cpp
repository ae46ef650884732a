// pages_in_front_test.cpp - changes to the server list stay behind the settings and the help.
#include "e2e/client_session.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

/// The rows of the screen while a page is in front.
std::vector<std::string> read_rows(terminal_session& terminal)
{
    std::vector<std::string> rows;
    for (int row = 0; row < 24; ++row)
        rows.push_back(terminal.row(row));
    return rows;
}

TEST(pages_in_front, a_connection_made_behind_the_settings_does_not_draw_into_them)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    client.terminal().send_control('e');
    ASSERT_TRUE(client.terminal().wait_for_text("To exit press ^E ]"));
    const std::vector<std::string> before = read_rows(client.terminal());
    client.terminal().send_control('l');
    std::optional<server_connection> connection = server.accept();
    ASSERT_TRUE(connection);
    ASSERT_TRUE(connection->read_packet());
    ASSERT_TRUE(connection->read_packet());
    // Answered by a poll that comes after the connection's marker was drawn.
    ASSERT_TRUE(connection->send(85, "who"));
    ASSERT_TRUE(connection->read_packet());
    EXPECT_TRUE(client.terminal().wait_until([&] { return read_rows(client.terminal()) == before; },
                                             "the page as it was"));
    client.terminal().send_control('e');
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == "*"; },
                                             "the marker behind the page"));
}

TEST(pages_in_front, moving_the_bar_behind_the_help_does_not_draw_into_it)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    const std::vector<std::string> before = read_rows(client.terminal());
    client.terminal().send_key(named_key::down);
    // Refused with a bell, which shows that the previous key has taken effect.
    client.terminal().send_control('d');
    ASSERT_TRUE(
        client.terminal().wait_until([&] { return client.terminal().bells() == 1; }, "the bell"));
    EXPECT_TRUE(client.terminal().wait_until([&] { return read_rows(client.terminal()) == before; },
                                             "the page as it was"));
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; },
                                             "the bar on the second server"));
}

} // namespace
