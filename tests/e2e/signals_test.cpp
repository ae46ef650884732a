// signals_test.cpp - signals that end the client: it restores the terminal, saves nothing and
// leaves no process behind.
#include "e2e/network_session.hpp"
#include "support/line_settings.hpp"

#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

std::string name_of(const testing::TestParamInfo<int>& info)
{
    return std::string{"SIG"} + sigabbrev_np(info.param);
}

void expect_given_back(terminal_session& terminal)
{
    EXPECT_EQ(line_difference(terminal.line_settings(), terminal.initial_line_settings()), "");
    EXPECT_TRUE(terminal.screen().cursor_visible());
    EXPECT_FALSE(terminal.screen().alternate_screen());
    EXPECT_EQ(terminal.error_text(), "");
}

class ending_signal : public testing::TestWithParam<int>
{
protected:
    /// Checks that the client dies of the signal that the test sent, with everything in order.
    void expect_end()
    {
        const std::optional<int> status = client.wait_for_exit();
        ASSERT_TRUE(status);
        ASSERT_TRUE(WIFSIGNALED(*status)) << client.terminal().description();
        EXPECT_EQ(WTERMSIG(*status), GetParam());
        expect_given_back(client.terminal());
    }

    client_session client;
};

TEST_P(ending_signal, restores_the_terminal_and_saves_nothing)
{
    scripted_server server;
    client_settings settings = knowing(server);
    settings.save_on_exit = true;
    ASSERT_TRUE(client.start(settings));
    ASSERT_TRUE(client.connect_selected(server));
    ASSERT_TRUE(client.terminal().screen().alternate_screen());
    unlink(client.home().path_of("ncursesclient.conf").c_str());
    client.terminal().send_signal(GetParam());
    ASSERT_NO_FATAL_FAILURE(expect_end());
    EXPECT_EQ(client.home().files(), std::vector<std::string>{});
}

TEST_P(ending_signal, ends_attempts_to_connect_too)
{
    // Under a shell that outlives it: the end of a session leader ends the whole session.
    silent_port nowhere;
    temp_home home;
    test_clock clock(50);
    client_settings settings;
    settings.servers = {{.port = std::to_string(nowhere.port()), .alias = "alpha"}};
    home.write_config(config_text(settings));
    terminal_session terminal(
        {.command = {"sh", "-mc", "trap : INT; " CLIENT_BINARY "; echo Status $?; read line"},
         .home = ".",
         .folder = home.path(),
         .environment = clock.environment()});
    ASSERT_TRUE(terminal.wait_until([&] { return clock.alarms_set() > 0; }, "a start"));
    const std::vector<pid_t> programs = children_of(terminal.process_id());
    ASSERT_EQ(programs.size(), 1U);
    terminal.send_control('l');
    std::vector<pid_t> attempts;
    ASSERT_TRUE(terminal.wait_until(
        [&] {
            attempts = children_of(programs[0]);
            return terminal.shows("Try connecting to alpha") && attempts.size() == 1;
        },
        "an attempt is under way"));
    kill(programs[0], GetParam());
    ASSERT_TRUE(terminal.wait_for_text("Status " + std::to_string(128 + GetParam())));
    EXPECT_TRUE(wait_until_gone(terminal, attempts[0]));
    terminal.send("\n");
    EXPECT_EQ(terminal.wait_for_exit(), 0);
}

TEST_P(ending_signal, takes_effect_while_a_password_is_asked_for)
{
    scripted_server server;
    client_settings settings = knowing(server);
    settings.save_on_exit = true;
    ASSERT_TRUE(client.start(settings));
    std::optional<server_connection> connection = client.connect_selected(server);
    ASSERT_TRUE(connection);
    ASSERT_TRUE(connection->send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(client.terminal().wait_for_text("Password required"));
    unlink(client.home().path_of("ncursesclient.conf").c_str());
    client.terminal().send_signal(GetParam());
    ASSERT_NO_FATAL_FAILURE(expect_end());
    EXPECT_EQ(client.home().files(), std::vector<std::string>{});
    EXPECT_TRUE(connection->wait_for_close());
}

INSTANTIATE_TEST_SUITE_P(signals, ending_signal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT),
                         name_of);

TEST(signals, are_sent_by_the_terminals_own_keys)
{
    for (const auto& [key, number] : {std::pair{'\x03', SIGINT}, {'\x1C', SIGQUIT}}) {
        client_session client;
        ASSERT_TRUE(client.start(with_aliases({"alpha"})));
        client.terminal().send({&key, 1});
        const std::optional<int> status = client.wait_for_exit();
        ASSERT_TRUE(status);
        ASSERT_TRUE(WIFSIGNALED(*status)) << client.terminal().description();
        EXPECT_EQ(WTERMSIG(*status), number);
        expect_given_back(client.terminal());
    }
}

} // namespace
