// prompt_test.cpp - the box that asks for text, as a password demand opens it.
#include "e2e/client_session.hpp"

#include <gtest/gtest.h>

namespace
{

constexpr int box_row = 8; // of a screen with 24 rows and 80 columns
constexpr int box_column = 20;
constexpr int box_width = 42;
constexpr const char* need_password =
    "<?xml version=\"1.0\"?><tovrik><NeedAuth>1</NeedAuth></tovrik>";
constexpr const char* vt100_keypad_enter = "\033OM";
constexpr const char* md5_of_abc = "900150983cd24fb0d6963f7d28e17f72";

/// A client whose server has just asked for a password.
class prompt : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(knowing(server)));
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
        client.clock().stop(); // a box closes when a test wants it, however slow the machine is
        ASSERT_TRUE(ask());
    }

    testing::AssertionResult ask()
    {
        if (!connection->send(41, need_password))
            return testing::AssertionFailure() << "nobody takes the demand";
        return client.terminal().wait_for_text("_");
    }

    testing::AssertionResult line_is(const std::string& text)
    {
        return client.terminal().wait_until([&] { return edit_line().starts_with(text); },
                                            "\"" + text + "\" in the box");
    }

    std::string edit_line()
    {
        return client.terminal().screen().text(box_row + 1, box_column + 2, box_width - 3);
    }

    testing::AssertionResult box_closes()
    {
        return client.terminal().wait_for_no_text("Password required");
    }

    scripted_server server;
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(prompt, is_drawn_in_the_middle_to_the_letter)
{
    const terminal_screen& screen = client.terminal().screen();
    // The lower frame may arrive after the upper one.
    ASSERT_TRUE(client.terminal().wait_for_text("[ RET=OK - ESC=CANCEL ]"));
    std::string top = "┌─[ Password required ]";
    for (int column = 23; column < box_width - 1; ++column)
        top += "─";
    EXPECT_EQ(screen.text(box_row, box_column, box_width), top + "┐");
    EXPECT_EQ(screen.text(box_row + 1, box_column, box_width),
              "│ _" + std::string(box_width - 4, ' ') + "│");
    EXPECT_EQ(screen.text(box_row + 2, box_column, box_width),
              "└─[ alpha ]──────[ RET=OK - ESC=CANCEL ]─┘");
    EXPECT_EQ(screen.cell(box_row, box_column), pair_cell(pairs::frame, false, "┌"));
    EXPECT_EQ(screen.cell(box_row, box_column + 2), pair_cell(pairs::frame, true, "["));
    EXPECT_EQ(screen.cell(box_row + 2, box_column + 4), pair_cell(pairs::frame, true, "a"));
    EXPECT_EQ(screen.cell(box_row + 2, box_column + 11), pair_cell(pairs::frame, false, "─"));
    EXPECT_EQ(screen.cell(box_row + 2, box_column + 17), pair_cell(pairs::frame, true, "["));
    EXPECT_EQ(screen.cell(box_row + 1, box_column + 2), pair_cell(pairs::success, true, "_"));
    EXPECT_TRUE(
        client.wait_for_status("Password needed for this Server", pairs::secondary, std::nullopt));
}

TEST_F(prompt, enter_gives_the_text_and_the_panes_come_back)
{
    client.terminal().send("abc");
    ASSERT_TRUE(line_is("abc_"));
    EXPECT_EQ(client.terminal().cell(box_row + 1, box_column + 2),
              pair_cell(pairs::success, true, "a"));
    client.terminal().send_key(named_key::enter);
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = md5_of_abc}));
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(client.wait_for_keys());
    for (const std::string& line : client.message_lines())
        EXPECT_EQ(line, "");
}

TEST_F(prompt, escape_or_an_empty_line_gives_no_text)
{
    client.terminal().send("abc");
    ASSERT_TRUE(line_is("abc_"));
    client.terminal().send_key(named_key::escape);
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(ask());
    client.terminal().send_key(named_key::enter);
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(prompt, ten_seconds_without_a_key_close_it)
{
    client.terminal().send("abc");
    ASSERT_TRUE(line_is("abc_"));
    client.clock().jump(11);
    ASSERT_TRUE(box_closes());
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST_F(prompt, every_key_renews_the_time)
{
    for (const char* typed : {"a", "b", "c"}) {
        client.clock().jump(8);
        client.terminal().send(typed);
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return edit_line().find(typed) != std::string::npos; }, typed));
    }
    client.clock().jump(8);
    client.terminal().send_key(named_key::backspace);
    ASSERT_TRUE(line_is("ab_"));
    client.clock().jump(8);
    client.terminal().send("c\r");
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = md5_of_abc}));
}

TEST_F(prompt, holds_39_characters_and_no_more)
{
    client.terminal().send(std::string(39, 'x'));
    ASSERT_TRUE(line_is(std::string(39, 'x')));
    client.terminal().send("yz");
    client.terminal().send_key(named_key::backspace);
    client.terminal().send_key(named_key::backspace);
    ASSERT_TRUE(line_is(std::string(37, 'x') + "_"));
    client.terminal().send("yzw");
    ASSERT_TRUE(line_is(std::string(37, 'x') + "yz"));
    EXPECT_FALSE(client.terminal().shows("xyzw"));
}

TEST_F(prompt, backspace_erases_the_last_character_down_to_the_first)
{
    client.terminal().send("zz");
    ASSERT_TRUE(line_is("zz_"));
    for (int times = 0; times < 4; ++times)
        client.terminal().send_key(named_key::backspace);
    ASSERT_TRUE(line_is("_  "));
    client.terminal().send("abc");
    ASSERT_TRUE(line_is("abc_"));
    client.terminal().send_key(named_key::enter);
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = md5_of_abc}));
}

TEST_F(prompt, command_keys_are_text_here)
{
    client.terminal().send_control('h');
    client.terminal().send_control('d');
    client.terminal().send_control('x');
    client.terminal().send_key(named_key::down);
    client.terminal().send("end");
    ASSERT_TRUE(client.terminal().wait_until([&] { return edit_line().find("end_") == 4; },
                                             "four characters before the end"));
    EXPECT_FALSE(client.terminal().shows("To exit press"));
    client.terminal().send_key(named_key::escape);
    ASSERT_TRUE(box_closes());
    EXPECT_EQ(client.marker(1).text, "*");
}

TEST_F(prompt, survives_resizes_and_still_answers)
{
    client.terminal().send("ab");
    ASSERT_TRUE(line_is("ab_"));
    for (const auto& [rows, columns] : {std::pair{30, 100}, {5, 10}, {1, 1}, {24, 80}, {40, 120}})
        client.terminal().resize(rows, columns);
    client.terminal().send("c\r");
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = md5_of_abc}));
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().cell(38, 119).text == "┘" && client.bar_row() == 1; },
        "the panes at their new size"));
}

TEST_F(prompt, moves_to_the_middle_of_a_terminal_that_has_grown_wider_only)
{
    client.terminal().send("ab");
    ASSERT_TRUE(line_is("ab_"));
    client.terminal().resize(24, 120);
    EXPECT_TRUE(client.terminal().wait_until(
        [&] {
            return client.terminal().screen().text(box_row, 40, 23) == "┌─[ Password required ]" &&
                   client.terminal().screen().text(box_row + 1, 40, 6) == "│ ab_ ";
        },
        "the box in the middle"));
    client.terminal().send("c\r");
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = md5_of_abc}));
}

TEST_F(prompt, leaves_with_exit_afterwards)
{
    client.terminal().send_key(named_key::escape);
    ASSERT_TRUE(box_closes());
    client.quit();
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
}

/// A prompt that a key has opened: servers are polled while it waits.
class prompt_of_a_key : public testing::Test
{
protected:
    void SetUp() override
    {
        client_settings settings;
        settings.log_folder = "";
        ASSERT_TRUE(client.start(settings));
        client.clock().stop(); // the box closes when a test wants it, however slow the machine is
        client.terminal().send_meta('l');
        ASSERT_TRUE(client.terminal().wait_for_text("[ Folder for ~Logfiles ]"));
    }

    bool is_open()
    {
        return client.terminal().shows("Folder for ~Logfiles");
    }

    client_session client;
};

TEST_F(prompt_of_a_key, keys_that_change_nothing_renew_the_time_too)
{
    client.clock().jump(8);
    client.terminal().send_key(named_key::backspace); // there is nothing to erase
    ASSERT_TRUE(client.terminal().wait_for_keys_read());
    ASSERT_TRUE(client.wait_for_polls());
    client.clock().jump(8);
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_TRUE(is_open());
    client.terminal().send(std::string(59, 'x'));
    ASSERT_TRUE(client.terminal().wait_for_text("│ " + std::string(59, 'x')));
    client.clock().jump(8);
    client.terminal().send("y"); // it does not fit
    ASSERT_TRUE(client.terminal().wait_for_keys_read());
    ASSERT_TRUE(client.wait_for_polls());
    client.clock().jump(8);
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_TRUE(is_open());
    client.clock().jump(3);
    EXPECT_TRUE(client.terminal().wait_for_no_text("Folder for ~Logfiles"));
}

TEST_F(prompt_of_a_key, stays_open_through_the_tenth_second)
{
    client.clock().jump(5);
    client.terminal().send("abc");
    ASSERT_TRUE(client.terminal().wait_for_text("│ abc_"));
    client.clock().jump(10);
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_TRUE(is_open());
    client.clock().jump(1);
    EXPECT_TRUE(client.terminal().wait_for_no_text("Folder for ~Logfiles"));
}

TEST(prompt_keys, erase_with_control_h_where_that_is_the_terminals_backspace)
{
    scripted_server server;
    client_session client;
    client.home().write_config(config_text(knowing(server)));
    client.launch({.environment = {{"TERM", "vt100"}}});
    ASSERT_TRUE(client.terminal().wait_for_text("Disconnect"));
    client.terminal().send_control('l');
    std::optional<server_connection> connection = server.accept();
    ASSERT_TRUE(connection);
    EXPECT_TRUE(connection->read_packet());
    EXPECT_TRUE(connection->read_packet());
    ASSERT_TRUE(connection->send(41, need_password));
    ASSERT_TRUE(client.terminal().wait_for_text("Password required"));
    client.terminal().send("abz");
    client.terminal().send_control('h');
    client.terminal().send("c");
    client.terminal().send(vt100_keypad_enter);
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = md5_of_abc}));
    ASSERT_TRUE(client.terminal().wait_for_no_text("Password required"));
    client.terminal().send_control('h');
    EXPECT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]")) << "no longer erasing";
    client.terminal().send_control('h');
}

} // namespace
