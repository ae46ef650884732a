// status_pane_test.cpp - the four-line log at the bottom right: its scrolling, colours and gap.
#include "e2e/client_session.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr int newest_row = 21; // of a screen with 24 rows
constexpr int first_column = 27;
constexpr int inner_columns = 52;

/// A client connected to one server that can make it show any line.
class status_pane : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(knowing(server)));
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
    }

    testing::AssertionResult newest_becomes(const std::string& text)
    {
        return client.terminal().wait_until([&] { return client.status_lines()[3] == text; },
                                            "\"" + text + "\" on the newest line");
    }

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(status_pane, keeps_the_last_four_notices_each_in_its_own_colour)
{
    ASSERT_TRUE(connection->send(103, "zeroth"));
    ASSERT_TRUE(connection->send(108, "an error"));
    ASSERT_TRUE(connection->send({.kind = 27, .payload = "x", .param1 = 25}));
    ASSERT_TRUE(connection->send(82, "x"));
    ASSERT_TRUE(connection->send(64, "server text"));
    ASSERT_TRUE(newest_becomes("server text"));
    EXPECT_EQ(
        client.status_lines(),
        (std::vector<std::string>{"an error", "Now receiving the last 25 transmissions",
                                  "Password accepted. MessageAccess granted", "server text"}));
    EXPECT_TRUE(client.wait_for_status("an error", pairs::error));
    EXPECT_TRUE(client.wait_for_status("Now receiving the last 25 transmissions", pairs::notice));
    EXPECT_TRUE(client.wait_for_status("Password accepted. MessageAccess granted", pairs::success));
    EXPECT_TRUE(client.wait_for_status("server text", pairs::server_text, std::nullopt));
    EXPECT_EQ(client.terminal().bells(), 2);
}

TEST_F(status_pane, plain_notices_are_white_and_not_bold)
{
    ASSERT_TRUE(connection->send(103, "plain words"));
    EXPECT_TRUE(client.wait_for_status("plain words", pairs::plain, false));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST_F(status_pane, every_notice_opens_the_frame_on_the_newest_row_only)
{
    for (const char* text : {"one", "two", "three", "four", "five"}) {
        ASSERT_TRUE(connection->send(103, text));
        ASSERT_TRUE(newest_becomes(text));
        EXPECT_EQ(client.terminal().cell(newest_row, 79).text, " ");
        for (int row = newest_row - 3; row < newest_row; ++row)
            EXPECT_EQ(client.terminal().cell(row, 79).text, "│");
    }
}

TEST_F(status_pane, a_text_of_the_inner_width_is_shown_whole)
{
    const std::string text = std::string(inner_columns - 1, 'x') + '|';
    ASSERT_TRUE(connection->send(103, text));
    ASSERT_TRUE(newest_becomes(text));
    EXPECT_EQ(client.terminal().cell(newest_row, 79).text, " ");
}

TEST_F(status_pane, a_wider_text_overwrites_the_frame_and_wraps_into_the_row_below)
{
    const std::string text = std::string(inner_columns, 'x') + "FRAME-AND-BELOW";
    ASSERT_TRUE(connection->send(103, text));
    ASSERT_TRUE(client.terminal().wait_for_text("RAME-AND-BELOW"));
    EXPECT_EQ(client.terminal().screen().text(newest_row, first_column, 53),
              std::string(inner_columns, 'x') + 'F');
    EXPECT_EQ(client.terminal().screen().text(newest_row + 1, first_column - 1, 14),
              "RAME-AND-BELOW");
    ASSERT_TRUE(connection->send(103, "next"));
    ASSERT_TRUE(newest_becomes("next"));
    EXPECT_EQ(client.status_lines()[2], std::string(inner_columns, 'x'));
}

TEST_F(status_pane, survives_the_longest_text_and_recovers_with_a_resize)
{
    ASSERT_TRUE(connection->send(103, std::string(4000, 'w') + "END"));
    ASSERT_TRUE(client.terminal().wait_for_text("wwwEND"));
    ASSERT_TRUE(connection->send(103, "next"));
    ASSERT_TRUE(newest_becomes("next"));
    EXPECT_TRUE(client.terminal().row(23).starts_with("^D Disconnect"));
    EXPECT_EQ(client.server_row(1).substr(1, 5), "alpha");
    client.terminal().resize(24, 90);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.terminal().cell(17, 89).text == "┤" &&
                   client.terminal().cell(22, 89).text == "┘" && !client.terminal().shows("www");
        },
        "the frame is whole again"));
}

TEST_F(status_pane, shows_directives_in_a_servers_text_unchanged)
{
    ASSERT_TRUE(connection->send(103, "100%d %s %n %* %] %"));
    EXPECT_TRUE(newest_becomes("100%d %s %n %* %] %"));
    ASSERT_TRUE(connection->send(108, "%s%s%s%n"));
    EXPECT_TRUE(newest_becomes("%s%s%s%n"));
}

TEST_F(status_pane, a_servers_control_bytes_never_reach_the_terminal)
{
    client.terminal().forget_raw_output();
    ASSERT_TRUE(connection->send(103, "A\033[31mB\a\b\r\x0E\x7F\x9B"
                                      "7mC\x84\x90"
                                      "D END"));
    ASSERT_TRUE(client.terminal().wait_for_text("D END"));
    EXPECT_EQ(client.terminal().bells(), 0);
    const std::string& raw = client.terminal().raw_output();
    EXPECT_EQ(raw.find("\033[31mB"), std::string::npos);
    EXPECT_EQ(raw.find('\x0E'), std::string::npos);
    EXPECT_EQ(raw.find('\x7F'), std::string::npos);
    EXPECT_EQ(raw.find('\x9B'), std::string::npos);
    EXPECT_EQ(raw.find("\xC2\x9B"), std::string::npos);
    EXPECT_EQ(raw.find("\xC2\x84"), std::string::npos);
    const std::string line = client.status_lines()[3];
    for (const char* part : {"A", "[31mB", "7mC", "D END"})
        EXPECT_NE(line.find(part), std::string::npos) << line;
    EXPECT_EQ(client.terminal().cell(newest_row, first_column),
              pair_cell(pairs::plain, false, "A"));
    EXPECT_TRUE(client.terminal().row(23).starts_with("^D Disconnect"));
}

TEST_F(status_pane, letters_above_127_are_shown_as_the_characters_they_name)
{
    ASSERT_TRUE(connection->send(103, "Z\xFCrich \xA7 \xFF"));
    EXPECT_TRUE(newest_becomes("Zürich § ÿ"));
}

TEST_F(status_pane, a_text_of_several_lines_is_printed_line_by_line)
{
    for (const std::uint32_t kind : {64U, 90U}) {
        ASSERT_TRUE(connection->send(103, "before"));
        ASSERT_TRUE(connection->send(kind, "a\n\nb"));
        ASSERT_TRUE(newest_becomes("b"));
        const std::vector<std::string> lines = client.status_lines();
        EXPECT_EQ(lines[1], "before");
        EXPECT_EQ(lines[2], "a");
        ASSERT_TRUE(connection->send(kind, "c\nd\n"));
        ASSERT_TRUE(newest_becomes("d"));
        EXPECT_EQ(client.status_lines(), (std::vector<std::string>{"a", "b", "c", "d"}));
        EXPECT_TRUE(client.wait_for_status("c", pairs::server_text, std::nullopt));
    }
}

} // namespace
