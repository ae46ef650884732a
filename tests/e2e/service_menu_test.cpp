// service_menu_test.cpp - the menus of the services: their looks, their keys, how they end, and
// what may happen under them.
#include "e2e/service_session.hpp"

namespace
{

struct menu_case {
    const char* name;
    char command;
    const menu_look& look;
    const char* first_question; // asked after each of its keys, except in the update menu
};

constexpr const char* information_hint = "[ Close Window ^I ]";

const menu_case menu_cases[] = {
    {"updates", 'a', update_menu, "Enter IATA or ICAO Code"},
    {"mailings", 'j', mailing_menu, "Enter your email address"},
    {"pager", 'p', pager_menu, "Enter your email address"},
};

class service_menu : public service_test, public testing::WithParamInterface<menu_case>
{
protected:
    testing::AssertionResult open()
    {
        terminal().send_control(GetParam().command);
        testing::AssertionResult shown = menu_is(GetParam().look);
        client.clock().stop(); // it stays open, however long the test takes
        return shown;
    }

    testing::AssertionResult close()
    {
        terminal().send_key(named_key::escape);
        return dialog_ends(GetParam().look.hint);
    }
};

INSTANTIATE_TEST_SUITE_P(all, service_menu, testing::ValuesIn(menu_cases),
                         [](const auto& about) { return about.param.name; });

TEST_P(service_menu, stands_in_its_place_on_any_terminal)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open());
    for (const auto& [rows, columns] : {std::pair{43, 132}, {25, 81}, {24, 80}, {60, 200}}) {
        terminal().resize(rows, columns);
        EXPECT_TRUE(menu_is(GetParam().look)) << rows << " x " << columns;
    }
}

TEST_P(service_menu, takes_its_own_keys_and_no_others)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open());
    const char beyond = static_cast<char>('1' + GetParam().look.labels.size());
    terminal().send(std::string{"0:ax \t~", 7} + beyond + "9\r");
    terminal().send_key(named_key::down);
    terminal().send_key(named_key::function_1);
    terminal().send_control('h');
    terminal().send_control('x');
    terminal().send_control('d');
    ASSERT_TRUE(terminal().wait_for_keys_read()); // the previous menu must not count
    ASSERT_TRUE(client.wait_for_polls());
    ASSERT_TRUE(menu_is(GetParam().look));
    terminal().send("1"); // the first key that has an effect
    ASSERT_TRUE(terminal().wait_for_text(GetParam().first_question));
    EXPECT_FALSE(terminal().shows(GetParam().look.hint));
    EXPECT_EQ(client.marker(1).text, "*");
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(dialog_ends(GetParam().first_question));
    expect_nothing_sent();
}

TEST_P(service_menu, escape_restores_what_was_under_it)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(traffic());
    const std::string before = terminal().screen().whole_text();
    ASSERT_TRUE(open());
    ASSERT_NE(terminal().screen().whole_text(), before);
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(terminal().wait_until([&] { return terminal().screen().whole_text() == before; },
                                      "the panes as before"));
    expect_nothing_sent();
}

TEST_P(service_menu, is_erased_after_ten_seconds_and_leaves_a_blank_area)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(traffic());
    terminal().send_control(GetParam().command);
    ASSERT_TRUE(menu_is(GetParam().look));
    terminal().send("x"); // an ignored key gives it no more time
    client.clock().jump(11);
    ASSERT_TRUE(terminal().wait_for_no_text(GetParam().look.hint));
    const int height = static_cast<int>(GetParam().look.labels.size()) + 2;
    const std::string blanks(static_cast<std::size_t>(GetParam().look.width), ' ');
    EXPECT_TRUE(shows_at(8, 20, std::vector(static_cast<std::size_t>(height), blanks)));
    expect_nothing_sent();
    ASSERT_TRUE(client.wait_for_keys());
    terminal().send_control(GetParam().command);
    EXPECT_TRUE(menu_is(GetParam().look));
}

TEST_P(service_menu, closes_the_information_window_first)
{
    ASSERT_TRUE(begin());
    terminal().send_control('i');
    ASSERT_TRUE(terminal().wait_for_text(information_hint));
    ASSERT_TRUE(open());
    ASSERT_TRUE(terminal().wait_for_no_text(information_hint));
    ASSERT_TRUE(close());
    EXPECT_FALSE(terminal().shows(information_hint));
    terminal().send_control('i'); // opens it, since it was closed
    EXPECT_TRUE(terminal().wait_for_text(information_hint));
}

TEST_P(service_menu, stays_whole_and_on_top_of_traffic_and_resizes)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open());
    ASSERT_TRUE(traffic());
    EXPECT_TRUE(menu_is(GetParam().look));
    for (const auto& [rows, columns] : {std::pair{30, 100}, {5, 10}, {1, 1}, {24, 80}}) {
        terminal().resize(rows, columns);
        ASSERT_TRUE(client.wait_for_polls());
    }
    ASSERT_TRUE(traffic());
    EXPECT_TRUE(menu_is(GetParam().look));
    terminal().send("1");
    ASSERT_TRUE(terminal().wait_for_text(GetParam().first_question));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(dialog_ends(GetParam().first_question));
    expect_nothing_sent();
}

TEST_P(service_menu, outlives_its_server)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open());
    ASSERT_TRUE(connection->send(3, "bye"));
    ASSERT_TRUE(client.wait_for_status("Connection closed by server", pairs::error));
    EXPECT_TRUE(menu_is(GetParam().look));
    terminal().send("1");
    ASSERT_TRUE(terminal().wait_for_text(GetParam().first_question));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(dialog_ends(GetParam().first_question));
    EXPECT_TRUE(connection->wait_for_close());
    EXPECT_FALSE(connection->has_unread_bytes());
    terminal().send_control(GetParam().command); // silent now that nothing is connected
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(terminal().shows(GetParam().look.hint));
    EXPECT_EQ(terminal().bells(), 0);
}

TEST_P(service_menu, stays_in_front_of_a_list_that_arrives)
{
    ASSERT_TRUE(begin());
    ASSERT_TRUE(open());
    ASSERT_TRUE(connection->send(89, "D-AIQA\tFRA\tLH400"));
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_TRUE(menu_is(GetParam().look));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(list_is({.rows = {"D-AIQA  |FRA |LH400 "}}));
    terminal().send_key(named_key::escape);
    ASSERT_TRUE(terminal().wait_for_no_text("Press ESC to close"));
    expect_nothing_sent();
}

using service_gates = service_test;

TEST_F(service_gates, updates_and_mailings_depend_on_the_permission_for_updates)
{
    ASSERT_TRUE(begin({}, {}, "<DBModify>1</DBModify>"));
    for (const menu_case& menu : {menu_cases[0], menu_cases[1]}) {
        terminal().send_control(menu.command);
        EXPECT_TRUE(menu_is(menu.look));
        terminal().send_key(named_key::escape);
        ASSERT_TRUE(dialog_ends(menu.look.hint));
    }
    terminal().send_control('p');
    EXPECT_TRUE(client.wait_for_status("Pagerlists are not supported on alpha", pairs::error));
    terminal().send_control('o');
    EXPECT_TRUE(client.wait_for_status("Reports are not supported on alpha", pairs::error));
    EXPECT_EQ(terminal().bells(), 2);
    expect_nothing_sent();
}

TEST_F(service_gates, offering_mailings_does_not_enable_mailings)
{
    ASSERT_TRUE(begin({}, {}, "<Mailing>1</Mailing><Pager>1</Pager><Reports>1</Reports>"));
    terminal().send_key(named_key::enter);
    EXPECT_TRUE(client.wait_for_status("Daily mailings are not supported on alpha", pairs::error));
    terminal().send_control('a');
    EXPECT_TRUE(client.wait_for_status("Database updates are not allowed on alpha", pairs::error));
    EXPECT_EQ(terminal().bells(), 2);
    EXPECT_FALSE(terminal().shows(update_menu.hint));
    expect_nothing_sent();
}

TEST_F(service_gates, a_refusal_names_the_host_of_a_server_without_an_alias)
{
    client_settings settings;
    settings.servers.push_back({.name = "127.0.0.1"});
    ASSERT_TRUE(begin(settings, {}, "<Version>1</Version>"));
    terminal().send_control('a');
    EXPECT_TRUE(
        client.wait_for_status("Database updates are not allowed on 127.0.0.1", pairs::error));
    terminal().send_control('o');
    EXPECT_TRUE(client.wait_for_status("Reports are not supported on 127.0.0.1", pairs::error));
}

} // namespace
