// terminal_types_test.cpp - the keys on common types of terminal, in both kinds of locale.
//
// The emulator does not know every sequence of these types, so the tests look at what the program
// does: what its server receives, and what it saves.
#include "e2e/client_session.hpp"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <tuple>

namespace
{

using terminal_case = std::tuple<std::string, std::string>; // TERM, LC_ALL

class terminal_types : public testing::TestWithParam<terminal_case>
{
};

TEST_P(terminal_types, take_commands_and_hot_keys_and_end_in_order)
{
    const auto& [type, locale] = GetParam();
    scripted_server server;
    client_session client;
    client.home().write_config(config_text(knowing(server)));
    client.launch({.environment = {{"TERM", type}, {"LC_ALL", locale}}, .utf8 = locale != "C"});
    terminal_session& terminal = client.terminal();
    ASSERT_TRUE(terminal.wait_until(
        [&] { return terminal.raw_output().find("Disconnect") != std::string::npos; },
        "the key line"));
    terminal.send_control('l');
    std::optional<server_connection> connection = server.accept();
    ASSERT_TRUE(connection);
    const std::optional<server_packet> version = connection->read_packet();
    ASSERT_TRUE(version);
    EXPECT_EQ(version->kind, 101U);
    ASSERT_TRUE(connection->read_packet());
    terminal.send_meta('s', meta_form::escape_first);                               // saves on exit
    terminal.send_meta('d', locale == "C" ? meta_form::high_bit : meta_form::utf8); // no uplinks
    terminal.send_control('e');
    terminal.send_control('e');
    const std::optional<server_packet> uplinks = connection->read_packet();
    ASSERT_TRUE(uplinks);
    EXPECT_EQ(uplinks->kind, 95U);
    EXPECT_EQ(uplinks->payload, "1");
    terminal.send_control('x');
    const std::optional<server_packet> farewell = connection->read_packet();
    ASSERT_TRUE(farewell);
    EXPECT_EQ(farewell->payload, "Good Bye");
    EXPECT_EQ(client.wait_for_exit(), 0);
    const std::string saved = client.home().read_config().value_or("");
    EXPECT_NE(saved.find("<SaveOnExit>1<"), std::string::npos);
    EXPECT_NE(saved.find("<NoUplinks>1<"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(all, terminal_types,
                         testing::Combine(testing::Values("linux", "xterm-256color", "screen",
                                                          "tmux", "vt100"),
                                          testing::Values("C", "C.UTF-8")));

TEST(terminal_without_colours, shows_the_bar_in_reverse_video)
{
    constexpr int first_row = 2;
    constexpr int name_column = 2;
    constexpr int name_columns = 24;
    client_session client;
    ASSERT_TRUE(
        client.start(with_aliases({"alpha", "beta"}), {.environment = {{"TERM", "vt100"}}}));
    const auto is_bar_on = [&](int number) {
        for (int column = 0; column < name_columns; ++column)
            for (const int row : {first_row, first_row + 1})
                if (client.terminal().cell(row, name_column + column).reverse !=
                    (row == first_row + number - 1))
                    return false;
        return true;
    };
    EXPECT_TRUE(client.terminal().wait_until([&] { return is_bar_on(1); }, "the bar"));
    client.terminal().send_key(named_key::down);
    EXPECT_TRUE(client.terminal().wait_until([&] { return is_bar_on(2); }, "the bar below"));
    EXPECT_TRUE(client.terminal().cell(23, 0).reverse) << "the key line, in the bar's colours";
    EXPECT_FALSE(client.terminal().cell(first_row, 1).reverse) << "the marker beside it";
}

/// A client on a terminal whose ALT key has a mode to be switched on and off.
class meta_mode : public testing::Test
{
protected:
    void SetUp() override
    {
        client.home().write_config(config_text(with_aliases({"alpha"})));
        how.environment = {{"TERM", "xterm-256color"}, {"CLIENT", CLIENT_BINARY}};
    }
    /// What the mode was set to so far: "h" for on, "l" for off.
    std::string switches()
    {
        constexpr std::string_view mode = "\033[?1034";
        const std::string& raw = client.terminal().raw_output();
        std::string all;
        for (std::size_t at = raw.find(mode); at != std::string::npos; at = raw.find(mode, at + 1))
            all += raw.substr(at + mode.size(), 1);
        return all;
    }

    client_session client;
    client_start how;
};

TEST_F(meta_mode, is_on_while_the_client_has_the_terminal)
{
    ASSERT_TRUE(client.start_as_it_is(how));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(switches(), "h");
    client.terminal().resize(30, 100);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_TRUE(switches().ends_with('h'));
    client.terminal().send_control('x');
    EXPECT_EQ(client.wait_for_exit(), 0);
    EXPECT_TRUE(switches().ends_with("hl"));
}

TEST_F(meta_mode, is_off_after_an_end_by_a_signal)
{
    for (const int number : {SIGTERM, SIGHUP, SIGSEGV, SIGABRT}) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        if (number == SIGSEGV || number == SIGABRT)
            continue; // crashes are the sanitizer's
#endif
        client_session other;
        ASSERT_TRUE(other.start({}, how));
        other.terminal().send_signal(number);
        ASSERT_TRUE(other.wait_for_exit());
        EXPECT_EQ(other.terminal().raw_output().find("\033[?1034h"),
                  other.terminal().raw_output().rfind("\033[?1034h"));
        EXPECT_NE(other.terminal().raw_output().rfind("\033[?1034l"), std::string::npos) << number;
    }
}

TEST_F(meta_mode, is_off_while_the_client_is_stopped_and_on_again_afterwards)
{
    how.command = {"sh", "-mc", R"sh(
"$CLIENT"
echo stopped >stopped
while [ ! -e wanted ]; do sleep 0.02; done
fg
)sh"};
    ASSERT_TRUE(client.start_as_it_is(how));
    ASSERT_TRUE(client.wait_for_keys());
    client.terminal().send_control('z');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.home().read_file("stopped").has_value(); }, "the shell goes on"));
    client.terminal().take_in_everything();
    EXPECT_EQ(switches(), "hl");
    client.home().write_file("wanted", "");
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().alternate_screen(); }, "the client comes back"));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_TRUE(switches().ends_with('h'));
    client.terminal().send_control('x');
    ASSERT_TRUE(client.wait_for_exit());
    EXPECT_TRUE(switches().ends_with("hl"));
}

} // namespace
