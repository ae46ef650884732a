// directory_exit_test.cpp - leaving during a fetch: the client waits for a list that arrives and
// saves it, and gives up a list that does not.
#include "e2e/directory_session.hpp"
#include "e2e/network_session.hpp"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

namespace
{

class directory_exit : public directory_test
{
protected:
    /// ^X, and waits until the terminal is restored.
    [[nodiscard]] testing::AssertionResult leave()
    {
        client.terminal().send_control('x');
        return client.terminal().wait_until(
            [&] { return !client.terminal().screen().alternate_screen(); }, "the shell's screen");
    }
    void expect_good_end()
    {
        const std::optional<int> status = client.wait_for_exit();
        ASSERT_TRUE(status);
        EXPECT_TRUE(WIFEXITED(*status) && WEXITSTATUS(*status) == 0)
            << client.terminal().description();
        EXPECT_EQ(client.terminal().error_text(), "");
        EXPECT_EQ(client.terminal().line_settings().c_lflag,
                  client.terminal().initial_line_settings().c_lflag);
    }
    void expect_saved_servers(const std::vector<server_settings>& servers)
    {
        client_settings saved = settings;
        saved.servers = servers;
        EXPECT_EQ(client.home().read_config(), config_text(saved));
    }

    const server_settings known = settings.servers.front();
    const server_settings first{.name = "b.example", .port = "2300", .alias = "first"};
    const server_settings second{.name = "a.example", .port = "2301", .info = "facts"};
};

TEST_F(directory_exit, waits_for_a_list_that_arrives_and_saves_it)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    ASSERT_TRUE(leave());
    ASSERT_TRUE(list->send_bytes(directory_line(second)));
    list->close();
    expect_good_end();
    expect_saved_servers({first, second, known});
}

TEST_F(directory_exit, waits_for_a_slow_list_as_long_as_it_makes_progress)
{
    constexpr std::chrono::seconds longer_than_a_silence{7};
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + "a comment of nobody"));
    ASSERT_TRUE(leave());
    const auto until = std::chrono::steady_clock::now() + longer_than_a_silence;
    while (std::chrono::steady_clock::now() < until) {
        ASSERT_TRUE(list->send_bytes("."));
        ASSERT_FALSE(list->read_bytes(1, std::chrono::milliseconds{200}));
    }
    ASSERT_TRUE(list->send_bytes("\n" + directory_line(first)));
    list->close();
    expect_good_end();
    expect_saved_servers({first, known});
}

TEST_F(directory_exit, a_list_that_trickles_is_given_up_after_20_seconds)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    ASSERT_TRUE(leave());
    const auto begin = std::chrono::steady_clock::now();
    const auto elapsed = [&] { return std::chrono::steady_clock::now() - begin; };
    while (elapsed() < std::chrono::seconds{60} && !list->wait_for_close(std::chrono::seconds{1}))
        static_cast<void>(list->send_bytes("."));
    EXPECT_LT(elapsed(), std::chrono::seconds{60});
    EXPECT_GT(elapsed(), std::chrono::seconds{15});
    expect_good_end();
    expect_saved_servers({known});
}

TEST_F(directory_exit, signals_in_the_last_phase_leave_the_terminal_restored)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(leave());
    for (const int signal_number : {SIGCONT, SIGTSTP, SIGCONT, SIGWINCH})
        ASSERT_EQ(kill(client.terminal().process_id(), signal_number), 0);
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    list->close();
    expect_good_end();
    EXPECT_FALSE(client.terminal().screen().alternate_screen());
    expect_saved_servers({first, known});
}

TEST_F(directory_exit, a_long_list_that_is_being_added_is_saved_whole)
{
    constexpr int count = 10'000;
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    client.terminal().send_control('x');
    ASSERT_TRUE(list->send_bytes(answer_header + many_lines(count)));
    list->close();
    expect_good_end();
    const std::optional<std::string> saved = client.home().read_config();
    ASSERT_TRUE(saved);
    EXPECT_NE(saved->find("<Server10001>"), std::string::npos);
    EXPECT_NE(saved->find("n010000.example"), std::string::npos);
    EXPECT_NE(saved->find("n000001.example"), std::string::npos);
    EXPECT_TRUE(saved->ends_with("</clientconf>\n"));
}

TEST_F(directory_exit, a_directory_that_never_answers_is_given_up)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    client.terminal().send_control('x');
    expect_good_end();
    expect_saved_servers({known});
    EXPECT_TRUE(list->wait_for_close());
}

TEST_F(directory_exit, a_directory_that_falls_silent_adds_nothing)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    client.terminal().send_control('x');
    expect_good_end();
    expect_saved_servers({known});
}

TEST_F(directory_exit, a_directory_that_never_accepts_is_given_up)
{
    const silent_port nowhere;
    ASSERT_TRUE(client.start(settings, with_directory(nowhere.port())));
    client.terminal().send_control('r');
    ASSERT_TRUE(client.wait_for_status("Fetch Serverlist from localhost...", pairs::notice));
    client.terminal().send_control('x');
    expect_good_end();
    expect_saved_servers({known});
}

TEST_F(directory_exit, a_name_that_is_never_found_is_given_up)
{
    client_start how;
    how.environment["TEST_RESOLVE_DELAY_MS"] = "3600000";
    ASSERT_TRUE(start(how));
    client.terminal().send_control('r');
    ASSERT_TRUE(client.wait_for_status("Fetch Serverlist from localhost...", pairs::notice));
    client.terminal().send_control('x');
    expect_good_end();
    expect_saved_servers({known});
    EXPECT_FALSE(directory.has_waiting_client());
}

/// A client that fetches the list while connected to a server.
class connected_directory_exit : public directory_exit
{
protected:
    void SetUp() override
    {
        settings.servers = knowing(server).servers;
        ASSERT_TRUE(start());
        connection = client.connect_selected(server);
        ASSERT_TRUE(connection);
        list = fetch();
        ASSERT_TRUE(list);
    }

    scripted_server server;
    std::optional<server_connection> connection;
    std::optional<server_connection> list;
};

TEST_F(connected_directory_exit, says_good_bye_to_connected_servers_during_a_fetch)
{
    client.terminal().send_control('x');
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    EXPECT_TRUE(connection->wait_for_close());
    expect_good_end();
    expect_saved_servers(settings.servers);
}

TEST_F(connected_directory_exit, says_good_bye_when_the_list_has_come_and_the_terminal_is_restored)
{
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    ASSERT_TRUE(leave());
    EXPECT_FALSE(connection->read_bytes(1, std::chrono::milliseconds{200}));
    list->close();
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
    expect_good_end();
}

TEST_F(directory_exit, ignores_an_attempt_to_connect_that_ends_meanwhile)
{
    const silent_port nowhere;
    settings.servers = {{.port = std::to_string(nowhere.port()), .alias = "alpha"}};
    ASSERT_TRUE(start());
    client.terminal().send_control('l');
    std::vector<pid_t> attempts;
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            attempts = children_of(client.terminal().process_id());
            return client.terminal().shows("Try connecting to alpha") && attempts.size() == 1;
        },
        "an attempt is under way"));
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(leave());
    kill(attempts[0], SIGKILL);
    ASSERT_TRUE(client.terminal().wait_until([&] { return facts_of(attempts[0]).state == 'Z'; },
                                             "its process has ended"));
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    list->close();
    expect_good_end();
    expect_saved_servers({first, settings.servers.front()});
}

TEST_F(directory_exit, leaves_in_order_by_keys_typed_before_the_first_list)
{
    settings.fetch_on_start = true;
    ASSERT_TRUE(start());
    std::optional<server_connection> list = take_request();
    ASSERT_TRUE(list);
    ASSERT_TRUE(leave());
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    list->close();
    expect_good_end();
    expect_saved_servers({first, known});
}

TEST_F(directory_exit, a_signal_ends_the_client_in_the_middle_of_a_fetch)
{
    ASSERT_TRUE(start());
    std::optional<server_connection> list = fetch();
    ASSERT_TRUE(list);
    ASSERT_TRUE(list->send_bytes(answer_header + directory_line(first)));
    client.terminal().send_signal(SIGTERM);
    const std::optional<int> status = client.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFSIGNALED(*status) && WTERMSIG(*status) == SIGTERM);
    EXPECT_FALSE(client.terminal().screen().alternate_screen());
    expect_saved_servers({known});
}

} // namespace
