// terminal_types_test.cpp - the keys on common types of terminal, in both kinds of locale.
//
// The emulator does not know every sequence of these types, so the tests look at what the program
// does: what its server receives, and what it saves.
#include "e2e/client_session.hpp"

#include <gtest/gtest.h>
#include <string>
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

} // namespace
