// client_places.cpp - see client_places.hpp.
#include "e2e/client_places.hpp"

#include "e2e/network_session.hpp"

#include <ostream>

namespace
{

constexpr const char* capabilities = "<NeedAuth>0</NeedAuth><Mailing>1</Mailing>"
                                     "<DBModify>1</DBModify><Reports>1</Reports><Pager>1</Pager>";

testing::AssertionResult stay(placed_client& at, std::string_view sign)
{
    testing::AssertionResult shown = at.terminal().wait_for_text(sign);
    at.client.clock().stop(); // boxes measure the user's time by the wall clock
    return shown;
}

testing::AssertionResult go_to_panes(placed_client& at)
{
    return at.client.wait_for_keys();
}

testing::AssertionResult go_to_help(placed_client& at)
{
    at.terminal().send_control('h');
    return stay(at, "[ To exit press ^H ]");
}

testing::AssertionResult go_to_settings(placed_client& at)
{
    at.terminal().send_control('e');
    return stay(at, "press ^E ]");
}

testing::AssertionResult go_to_folder_prompt(placed_client& at)
{
    if (testing::AssertionResult shown = go_to_settings(at); !shown)
        return shown;
    at.terminal().send_meta('l');
    return stay(at, "RET=OK - ESC=CANCEL");
}

testing::AssertionResult go_to_password(placed_client& at)
{
    if (!at.connection->send(capabilities_packet("<NeedAuth>1</NeedAuth>")))
        return testing::AssertionFailure() << "nobody takes the demand";
    if (testing::AssertionResult shown = stay(at, "[ Password required ]"); !shown)
        return shown;
    at.terminal().send("ab");
    return at.terminal().wait_for_text("│ ab_ ");
}

testing::AssertionResult go_to_menu(placed_client& at)
{
    at.terminal().send_control('a');
    return stay(at, "Press 1-5 or ESC to quit");
}

testing::AssertionResult go_to_pager_list(placed_client& at)
{
    if (!at.connection->send(89, "D-AIQA\tFRA\tLH400"))
        return testing::AssertionFailure() << "nobody takes the list";
    return stay(at, "Press ESC to close");
}

testing::AssertionResult go_to_information(placed_client& at)
{
    at.terminal().send_key(named_key::tab);
    return stay(at, "[ Close Window ^I ]");
}

/// Moves the bar, and repairs what it overwrites of the frames beside it.
testing::AssertionResult select_entry(placed_client& at, int number)
{
    testing::AssertionResult selected = select_row(at.client, number);
    return selected ? at.client.wait_for_keys() : selected;
}

testing::AssertionResult go_to_attempt(placed_client& at)
{
    if (testing::AssertionResult selected = select_entry(at, 2); !selected)
        return selected;
    at.terminal().send_control('l');
    return at.terminal().wait_until([&] { return children_of(at.program).size() == 1; },
                                    "an attempt to connect");
}

testing::AssertionResult go_to_slow_name(placed_client& at)
{
    if (testing::AssertionResult selected = select_entry(at, 3); !selected)
        return selected;
    at.terminal().send_control('l');
    return at.terminal().wait_until([&] { return at.answers.read_file("asked").has_value(); },
                                    "a name is asked for");
}

} // namespace

const client_place an_attempt_to_connect = {"an_attempt_to_connect", go_to_attempt, true, false,
                                            true};

const std::vector<client_place> client_places = {
    {"the_panes", go_to_panes, true},
    {"the_help", go_to_help, true},
    {"the_settings", go_to_settings, true},
    {"a_folder_prompt", go_to_folder_prompt},
    {"a_password_prompt", go_to_password},
    {"a_service_menu", go_to_menu},
    {"a_pager_list", go_to_pager_list},
    {"an_information_window", go_to_information, true, true},
    an_attempt_to_connect,
    {"a_name_looked_up", go_to_slow_name, true},
};

std::string place_name(const testing::TestParamInfo<client_place>& about)
{
    return about.param.name;
}

void PrintTo(const client_place& place, std::ostream* out)
{
    *out << place.name;
}

placed_client::placed_client(bool with_silent_server)
{
    if (with_silent_server)
        nowhere.emplace("127.0.0.8");
}

void placed_client::launch(client_settings settings, client_start how)
{
    settings.servers = {
        {.name = "127.0.0.9", .port = std::to_string(server.port()), .alias = "alpha"},
        {.name = "127.0.0.8",
         .port = std::to_string(nowhere ? nowhere->port() : 1),
         .alias = "bravo"},
        {.name = "100.example", .port = "2202", .alias = "charlie"}};
    how.environment["LD_PRELOAD"] = CLOCK_PRELOAD ":" RESOLVER_PRELOAD;
    how.environment["SLOW_RESOLVER_FOLDER"] = answers.path();
    client.home().write_config(config_text(settings));
    client.launch(how);
}

testing::AssertionResult placed_client::connect()
{
    if (testing::AssertionResult started = terminal().wait_until(
            [&] { return client.clock().alarms_set() > 0; }, "the client has started");
        !started)
        return started;
    connection = client.connect_selected(server);
    if (!connection || !connection->send(capabilities_packet(capabilities)) ||
        !connection->send(85, "x") || !connection->read_packet())
        return testing::AssertionFailure() << "no connection";
    const std::vector<pid_t> below = children_of(terminal().process_id());
    program = below.empty() ? terminal().process_id() : below.front();
    return testing::AssertionSuccess();
}

testing::AssertionResult placed_client::start(client_settings settings, client_start how)
{
    launch(std::move(settings), std::move(how));
    return connect();
}
