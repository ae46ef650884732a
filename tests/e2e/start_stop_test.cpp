// start_stop_test.cpp - what the user sees of the client's start, its refusals to start, its end.
#include "e2e/client_session.hpp"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr const char* title = "NCurses tovrikclient V0.02.001 - Written by the team";

/// What a client leaves that refused to start.
struct refusal {
    int status = -1;
    std::string errors{};
};

refusal run_refused_start(client_session& client, const client_start& how)
{
    client.launch(how);
    const std::optional<int> status = client.wait_for_exit();
    if (!status || !WIFEXITED(*status))
        return {};
    return {.status = WEXITSTATUS(*status), .errors = client.terminal().error_text()};
}

TEST(start_stop, shows_the_whole_screen_with_a_configuration)
{
    client_session client;
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"})));
    EXPECT_TRUE(client.wait_for_status(title, pairs::notice));
    EXPECT_TRUE(client.wait_for_status("Loading private serverlist './ncursesclient.conf'",
                                       pairs::success));
    const std::vector<std::string> lines = client.status_lines();
    EXPECT_EQ(lines[2], title) << "the title was there before the configuration was loaded";
    EXPECT_EQ(client.bar_text(), "alpha");
    EXPECT_EQ(client.terminal().error_text(), "");
}

TEST(start_stop, names_the_folder_that_has_no_configuration)
{
    client_session client;
    ASSERT_TRUE(client.start_as_it_is({.home_variable = client.home().path()}));
    EXPECT_TRUE(client.wait_for_status("No configuration found in '" + client.home().path() + "'",
                                       pairs::error));
    EXPECT_EQ(client.bar_row(), 0);
}

TEST(start_stop, leaves_in_order_without_servers)
{
    client_session client;
    ASSERT_TRUE(client.start({}));
    EXPECT_EQ(client.server_row(1), std::string(25, ' '));
    EXPECT_EQ(client.bar_row(), 0);
    client.quit();
}

TEST(start_stop, blanks_the_screen_at_the_end)
{
    client_session client;
    client_start how;
    how.environment["TERM"] = "linux"; // a terminal without an alternate screen
    ASSERT_TRUE(client.start(with_aliases({"alpha"}), how));
    client.quit();
    EXPECT_FALSE(client.terminal().shows("alpha"));
    EXPECT_FALSE(client.terminal().shows("Disconnect"));
}

TEST(start_stop, a_terminal_that_curses_does_not_know_is_refused)
{
    for (const char* type : {"no-such-terminal", ""}) {
        client_session client;
        client_start how;
        how.environment["TERM"] = type;
        const refusal found = run_refused_start(client, how);
        EXPECT_EQ(found.status, 255);
        EXPECT_EQ(found.errors, "Unable to init ncurses library\n");
    }
}

TEST(start_stop, a_missing_terminal_type_is_refused)
{
    client_session client;
    client_start how;
    how.unset.insert("TERM");
    const refusal found = run_refused_start(client, how);
    EXPECT_EQ(found.status, 255);
    EXPECT_EQ(found.errors, "Unable to init ncurses library\n");
}

TEST(start_stop, a_terminal_too_small_for_the_panes_is_refused)
{
    for (const auto& [rows, columns] : {std::pair{5, 80}, {24, 20}, {2, 2}}) {
        client_session client;
        const refusal found = run_refused_start(client, {.rows = rows, .columns = columns});
        EXPECT_EQ(found.status, 255) << rows << " x " << columns;
        EXPECT_EQ(found.errors, "Unable to init ncurses windows\n");
    }
}

TEST(start_stop, a_refusal_because_of_size_leaves_the_terminal_as_curses_set_it)
{
    client_session client;
    client.launch({.rows = 5});
    ASSERT_TRUE(client.wait_for_exit());
    EXPECT_TRUE(client.terminal().screen().alternate_screen());
    EXPECT_EQ(client.terminal().line_settings().c_lflag & ECHO, 0U);
}

TEST(start_stop, hides_the_cursor_and_takes_keys_unechoed)
{
    client_session client;
    ASSERT_TRUE(client.start({}));
    EXPECT_FALSE(client.terminal().screen().cursor_visible());
    EXPECT_EQ(client.terminal().line_settings().c_lflag & (ECHO | ICANON), 0U);
    EXPECT_NE(client.terminal().line_settings().c_lflag & ISIG, 0U);
}

TEST(start_stop, polls_three_seconds_after_the_start_and_then_every_second)
{
    client_session client;
    ASSERT_TRUE(client.start({}, {.alarm_ms_per_second = 0}));
    EXPECT_EQ(client.clock().alarms_set(), 1);
    EXPECT_EQ(client.clock().last_alarm_s(), 3);
    client.terminal().send_signal(SIGALRM);
    ASSERT_TRUE(client.terminal().wait_until([&] { return client.clock().alarms_set() == 2; },
                                             "the first poll has set the next alarm"));
    EXPECT_EQ(client.clock().last_alarm_s(), 1);
}

TEST(start_stop, uses_the_working_folder_without_home)
{
    client_session client;
    client_settings settings = with_aliases({"alpha"});
    settings.save_on_exit = true;
    client_start how;
    how.unset.insert("HOME");
    ASSERT_TRUE(client.start(settings, how));
    EXPECT_TRUE(
        client.wait_for_status("Loading private serverlist '/ncursesclient.conf'", pairs::success));
    EXPECT_EQ(client.bar_text(), "alpha");
    unlink(client.home().path_of("ncursesclient.conf").c_str());
    client.quit();
    EXPECT_EQ(client.home().read_config(), config_text(settings));
}

TEST(start_stop, says_so_without_home_and_configuration)
{
    client_session client;
    client_start how;
    how.unset.insert("HOME");
    ASSERT_TRUE(client.start_as_it_is(how));
    EXPECT_TRUE(client.wait_for_status("No configuration found in ''", pairs::error));
}

TEST(start_stop, a_home_that_cannot_be_entered_means_no_configuration_and_no_save)
{
    client_session client;
    client.home().write_file("plain", "a file");
    for (const char* place : {"./absent", "./plain"}) {
        client_start how;
        how.home_variable = place;
        client_settings settings = with_aliases({"alpha"});
        settings.save_on_exit = true;
        ASSERT_TRUE(client.start(settings, how));
        EXPECT_TRUE(client.wait_for_status("No configuration found in '" + std::string{place} + "'",
                                           pairs::error));
        EXPECT_EQ(client.bar_row(), 0) << "the working folder's configuration is not ours";
        client.terminal().send_meta('s'); // save on exit
        client.quit();
        EXPECT_EQ(client.home().read_config(), config_text(settings));
    }
    EXPECT_EQ(client.home().files(), (std::vector<std::string>{"ncursesclient.conf", "plain"}));
}

TEST(start_stop, leaves_the_file_unchanged_without_save_on_exit)
{
    client_session client;
    const std::string text = "<?xml version=\"1.0\"?>\n<clientconf><Server9><ServerName>h"
                             "</ServerName></Server9></clientconf>\nleft alone\n";
    client.home().write_config(text);
    struct stat before {
    };
    stat(client.home().path_of("ncursesclient.conf").c_str(), &before);
    ASSERT_TRUE(client.start_as_it_is());
    client.terminal().send_meta('c');
    client.terminal().send_meta('a');
    ASSERT_TRUE(client.wait_for_keys());
    client.quit();
    EXPECT_EQ(client.home().read_config(), text);
    struct stat after {
    };
    stat(client.home().path_of("ncursesclient.conf").c_str(), &after);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(client.home().files(), std::vector<std::string>{"ncursesclient.conf"});
}

TEST(start_stop, saves_on_exit_in_list_order_with_defaults_filled_in)
{
    client_session client;
    client_settings settings;
    settings.save_on_exit = true;
    settings.flight_stats = true;
    settings.servers = {{.name = "a.example", .port = "x"},
                        {.name = "c.example", .port = "2203", .alias = "third"},
                        {.name = "c.example", .port = "", .info = "facts"},
                        {.name = "b.example", .port = "7", .password = "secret"},
                        {.name = "b.example", .port = "7", .alias = "twice"},
                        {.name = ""}};
    ASSERT_TRUE(client.start(settings));
    client.quit();
    client_settings saved = settings;
    saved.servers = {{.name = "c.example", .port = "2202", .info = "facts"},
                     {.name = "c.example", .port = "2203", .alias = "third"},
                     {.name = "b.example", .port = "7"},
                     {.name = "a.example", .port = "2202"}};
    EXPECT_EQ(client.home().read_config(), config_text(saved));
}

TEST(start_stop, says_good_bye_to_every_server_before_it_saves)
{
    scripted_server first;
    scripted_server second;
    client_session client;
    client_settings settings = knowing(first, "one");
    settings.servers.push_back({.port = std::to_string(second.port()), .alias = "two"});
    settings.save_on_exit = true;
    ASSERT_TRUE(client.start(settings));
    const bool in_order = first.port() < second.port(); // equal names are sorted by port
    scripted_server& upper = in_order ? first : second;
    scripted_server& lower = in_order ? second : first;
    std::optional<server_connection> one = client.connect_selected(upper);
    ASSERT_TRUE(one);
    client.terminal().send_key(named_key::down);
    std::optional<server_connection> two = client.connect_selected(lower);
    ASSERT_TRUE(two);
    unlink(client.home().path_of("ncursesclient.conf").c_str());
    client.quit();
    for (server_connection* connection : {&*one, &*two}) {
        EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
        EXPECT_TRUE(connection->wait_for_close());
        EXPECT_FALSE(connection->has_unread_bytes());
    }
    EXPECT_TRUE(client.home().read_config());
}

} // namespace
