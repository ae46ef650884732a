// key_loop_test.cpp - every command key: when it acts, when it is silent, when it beeps.
#include "e2e/client_session.hpp"

#include <chrono>
#include <gtest/gtest.h>

namespace
{

/// Keys that need a selected and connected server, as CTRL letters.
constexpr char keys_for_connected_servers[] = {'a', 'j', 'o', 'p'};

/// A packet that tells which services a server has.
std::string make_capabilities(const std::string& elements)
{
    return "<?xml version=\"1.0\"?><tovrik>" + elements + "</tovrik>";
}

TEST(key_loop, every_server_key_is_silent_without_servers)
{
    client_session client;
    ASSERT_TRUE(client.start({}));
    const std::vector<std::string> before = client.status_lines();
    for (const char letter : {'a', 'd', 'j', 'o', 'p', 'l'})
        client.terminal().send_control(letter);
    client.terminal().send_key(named_key::down);
    client.terminal().send_key(named_key::up);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.status_lines(), before);
    EXPECT_EQ(client.bar_row(), 0);
}

TEST(key_loop, service_keys_are_silent_on_a_server_that_is_not_connected)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha"})));
    const std::vector<std::string> before = client.status_lines();
    for (const char letter : keys_for_connected_servers)
        client.terminal().send_control(letter);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(client.status_lines(), before);
}

TEST(key_loop, disconnect_without_a_connection_beeps_and_says_so)
{
    client_session client;
    client_settings settings = with_aliases({"alpha"});
    settings.servers.push_back({.name = "0.example"});
    ASSERT_TRUE(client.start(settings));
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to alpha", pairs::error));
    EXPECT_EQ(client.terminal().bells(), 1);
    client.terminal().send_key(named_key::down);
    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status("You are not connected to 0.example", pairs::error));
    EXPECT_EQ(client.terminal().bells(), 2);
}

TEST(key_loop, every_service_that_a_server_lacks_is_refused_in_its_own_words)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    const std::pair<char, const char*> refusals[] = {
        {'a', "Database updates are not allowed on alpha"},
        {'j', "Daily mailings are not supported on alpha"},
        {'m', "Daily mailings are not supported on alpha"},
        {'o', "Reports are not supported on alpha"},
        {'p', "Pagerlists are not supported on alpha"},
    };
    int bells = 0;
    for (const auto& refusal : refusals) {
        const char letter = refusal.first;
        const char* words = refusal.second;
        // Another line first, so that a repeated line can be recognised as new.
        ASSERT_TRUE(connection->send(103, "next"));
        ASSERT_TRUE(client.terminal().wait_until([&] { return client.status_lines()[3] == "next"; },
                                                 "the line before"));
        client.terminal().send_control(letter);
        ASSERT_TRUE(
            client.terminal().wait_until([&] { return client.status_lines()[3] == words; }, words));
        ASSERT_TRUE(client.wait_for_status(words, pairs::error));
        EXPECT_EQ(client.terminal().bells(), ++bells) << letter;
    }
    EXPECT_FALSE(connection->has_unread_bytes());
}

TEST(key_loop, mailing_depends_on_the_permission_for_updates_not_for_mailings)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(
        connection->send(41, make_capabilities("<ServerUUID>u1</ServerUUID><Mailing>1</Mailing>")));
    ASSERT_TRUE(client.wait_for_status("ServerID: u1", pairs::plain, false));
    client.terminal().send_control('j');
    ASSERT_TRUE(client.wait_for_status("Daily mailings are not supported on alpha", pairs::error));
    EXPECT_EQ(client.terminal().bells(), 1);

    ASSERT_TRUE(connection->send(
        41, make_capabilities("<ServerUUID>u2</ServerUUID><DBModify>1</DBModify>")));
    ASSERT_TRUE(client.wait_for_status("ServerID: u2", pairs::plain, false));
    client.terminal().send_control('j');
    client.terminal().send("\033"); // leaves the dialog
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.terminal().bells(), 1);
    EXPECT_EQ(client.status_lines()[3], "ServerID: u2");
}

TEST(key_loop, arrows_move_the_bar_and_stop_at_both_ends)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta", "gamma"})));
    const auto bar_on = [&](const char* name) {
        return client.terminal().wait_until([&] { return client.bar_text() == name; }, name);
    };
    ASSERT_TRUE(bar_on("alpha"));
    client.terminal().send_key(named_key::up);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.bar_text(), "alpha");
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(bar_on("beta"));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(bar_on("gamma"));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.bar_text(), "gamma");
    client.terminal().send_key(named_key::up);
    ASSERT_TRUE(bar_on("beta"));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST(key_loop, the_bar_leaves_names_white_and_bold_behind)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 1; }, "the bar"));
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "the bar"));
    for (int column = 2; column < 26; ++column) {
        const screen_cell left = client.terminal().cell(2, column);
        EXPECT_EQ(left, pair_cell(pairs::plain, true, left.text)) << column;
        const screen_cell entered = client.terminal().cell(3, column);
        EXPECT_EQ(entered, pair_cell(pairs::bar, false, entered.text)) << column;
    }
}

TEST(key_loop, takes_at_most_one_key_in_40_milliseconds)
{
    constexpr int keys = 20;
    constexpr auto shortest = std::chrono::milliseconds{(keys - 1) * 40};
    client_session client;
    // Without polls: a signal would cut a round short.
    ASSERT_TRUE(client.start(with_aliases({"alpha"}), {.alarm_ms_per_second = 0}));
    ASSERT_TRUE(client.wait_for_keys());
    const auto begin = std::chrono::steady_clock::now();
    client.terminal().send(std::string(keys, '\x04'));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.terminal().bells() == keys; },
                                             "every key has been refused"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, shortest);
}

TEST(key_loop, keys_without_a_meaning_do_nothing)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    ASSERT_TRUE(client.wait_for_keys());
    const std::string before = client.terminal().screen().whole_text();
    client.terminal().send("qQ1 ~");
    for (const char letter : {'b', 'f', 'g', 'k', 'n', 't', 'u', 'w', 'y'})
        client.terminal().send_control(letter);
    for (const named_key key : {named_key::left, named_key::right, named_key::home, named_key::end,
                                named_key::function_1, named_key::backspace, named_key::escape})
        client.terminal().send_key(key);
    client.terminal().send_meta('z');
    client.terminal().send("\xC3\xBF\xFF\x80");
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == before; }, "the screen as it was"));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST(key_loop, characters_of_three_and_four_bytes_do_nothing)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha"})));
    client.terminal().send_control('e');
    ASSERT_TRUE(client.terminal().wait_for_text("press ^E"));
    const std::string before = client.terminal().screen().whole_text();
    // Their first bytes are those of ALT with D, I, H, F, E, L, A, S, T and R.
    client.terminal().send("中這語日奇영\xE1\x84\x80\xF3\xA0\x80\x81\xF4\x8F\xBF\xBF"
                           "\xF2\x80\x80\x80");
    client.terminal().send_meta('d', meta_form::utf8);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() != before; }, "the mark of ALT+D"));
    client.terminal().send_meta('d', meta_form::high_bit);
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().screen().whole_text() == before; }, "no mark at all"));
    EXPECT_EQ(client.terminal().bells(), 0);
}

TEST(key_loop, disconnect_says_good_bye_and_blanks_the_row_above)
{
    scripted_server first;
    scripted_server second;
    client_session client;
    client_settings settings = knowing(first, "any");
    settings.servers.push_back({.port = std::to_string(second.port()), .alias = "any"});
    ASSERT_TRUE(client.start(settings));
    const bool in_order = first.port() < second.port();
    scripted_server& upper = in_order ? first : second;
    scripted_server& lower = in_order ? second : first;
    std::optional<server_connection> one = client.connect_selected(upper);
    ASSERT_TRUE(one);
    client.terminal().send_key(named_key::down);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.bar_row() == 2; }, "the bar"));
    std::optional<server_connection> two = client.connect_selected(lower);
    ASSERT_TRUE(two);
    EXPECT_EQ(client.marker(1), pair_cell(pairs::success, true, "*"));
    EXPECT_EQ(client.marker(2), pair_cell(pairs::success, true, "*"));

    client.terminal().send_control('d');
    ASSERT_TRUE(client.wait_for_status(
        "Connection to any:" + std::to_string(lower.port()) + " closed", pairs::success));
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.marker(1).text == " "; },
                                             "the row above the server's own is blanked"));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_EQ(client.marker(2).text, "*") << "the server's own row keeps its marker";
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_EQ(two->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    EXPECT_TRUE(two->wait_for_close());
    EXPECT_FALSE(one->has_unread_bytes()) << "the other connection lives on";
}

TEST(key_loop, connecting_twice_is_refused_without_a_beep)
{
    scripted_server server;
    client_session client;
    ASSERT_TRUE(client.start(knowing(server)));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    client.terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_status("You are already connected to alpha", pairs::error));
    EXPECT_EQ(client.terminal().bells(), 0);
    EXPECT_FALSE(server.has_waiting_client());
}

} // namespace
