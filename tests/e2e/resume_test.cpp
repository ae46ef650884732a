// resume_test.cpp - a client that was stopped, with warning or without, takes its terminal again.
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"
#include "support/line_settings.hpp"

#include <csignal>
#include <memory>
#include <unistd.h>

namespace
{

constexpr const char* digest_of_abc = "900150983cd24fb0d6963f7d28e17f72";

/// What a shell does to the terminal while its job is stopped: lines with echo, and words all over
/// the screen.
void act_as_shell(client_session& client)
{
    terminal_session& terminal = client.terminal();
    const unique_fd fd = client.open_terminal();
    EXPECT_EQ(tcsetattr(fd.get(), TCSANOW, &terminal.initial_line_settings()), 0);
    const std::string words(static_cast<std::size_t>(terminal.screen().columns()), '$');
    std::string output = "\033[0m\033[H";
    for (int row = 0; row < terminal.screen().rows() - 1; ++row)
        output += words + "\r\n";
    EXPECT_EQ(write(fd.get(), output.data(), output.size()), static_cast<ssize_t>(output.size()));
    ASSERT_TRUE(terminal.wait_for_text(words));
    ASSERT_NE(terminal.line_settings().c_lflag & ICANON, 0U);
    ASSERT_NE(terminal.line_settings().c_lflag & ECHO, 0U);
}

/// A client that shows a transmission and is stopped in a way that it cannot foresee.
class resume : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(client.start(servers.settings(), wide_terminal));
        connection = client.connect_selected(servers[0]);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(connection->send(plain_packet(document_of({}))));
        ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
        modes = client.terminal().line_settings();
    }

    void stop()
    {
        client.terminal().send_signal(SIGSTOP);
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return facts_of(client.terminal().process_id()).state == 'T'; }, "it stops"));
        act_as_shell(client);
    }

    testing::AssertionResult has_its_modes()
    {
        return client.terminal().wait_until(
            [&] { return line_difference(client.terminal().line_settings(), modes).empty(); },
            "the client's own line settings");
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
    termios modes{};
};

TEST_F(resume, restores_modes_screen_and_keys)
{
    const std::vector<screen_cell> before = all_cells(client.terminal().screen());
    for (int round = 0; round < 2; ++round) {
        ASSERT_NO_FATAL_FAILURE(stop());
        client.terminal().send_signal(SIGCONT);
        ASSERT_TRUE(has_its_modes());
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return all_cells(client.terminal().screen()) == before; },
            "every cell as it was"));
    }
    ASSERT_TRUE(client.wait_for_keys());
    client.terminal().send_control('l');
    ASSERT_TRUE(client.wait_for_status("You are already connected to alpha", pairs::error));
    ASSERT_TRUE(wait_for_notice(client, *connection, "and on"));
    EXPECT_FALSE(client.terminal().screen().cursor_visible());
}

TEST_F(resume, adapts_to_a_terminal_that_has_changed_its_size)
{
    ASSERT_NO_FATAL_FAILURE(stop());
    client.terminal().resize(30, 100);
    client.terminal().send_signal(SIGCONT);
    ASSERT_TRUE(has_its_modes());
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    EXPECT_FALSE(client.terminal().shows("$$"));
    ASSERT_TRUE(client.wait_for_keys());
    ASSERT_TRUE(wait_for_notice(client, *connection, "and on"));
}

TEST_F(resume, shows_the_help_in_front_again)
{
    client.terminal().send_control('h');
    ASSERT_TRUE(client.terminal().wait_for_text("[ To exit press ^H ]"));
    const std::vector<screen_cell> before = all_cells(client.terminal().screen());
    ASSERT_NO_FATAL_FAILURE(stop());
    client.terminal().send_signal(SIGCONT);
    ASSERT_TRUE(has_its_modes());
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return all_cells(client.terminal().screen()) == before; }, "the help as it was"));
    client.terminal().send_control('h');
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
}

TEST_F(resume, restores_a_password_box_with_its_text)
{
    ASSERT_TRUE(connection->send(capabilities_packet("<NeedAuth>1</NeedAuth>")));
    ASSERT_TRUE(client.terminal().wait_for_text("[ Password required ]"));
    client.terminal().send("ab");
    ASSERT_TRUE(client.terminal().wait_for_text("│ ab_ "));
    const std::vector<screen_cell> before = all_cells(client.terminal().screen());
    ASSERT_NO_FATAL_FAILURE(stop());
    client.terminal().send_signal(SIGCONT);
    ASSERT_TRUE(has_its_modes());
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return all_cells(client.terminal().screen()) == before; }, "the box as it was"));
    client.terminal().send("c\r");
    EXPECT_EQ(connection->read_packet(), (server_packet{.kind = 81, .payload = digest_of_abc}));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({}), 1));
}

TEST_F(resume, is_not_needed_where_nobody_could_continue_the_client)
{
    // The system ignores requests to stop if no shell above the client controls jobs.
    client.terminal().forget_raw_output();
    client.terminal().send_signal(SIGTSTP);
    ASSERT_TRUE(client.terminal().wait_until(
        [&] { return client.terminal().raw_output().find("\033[?1049h") != std::string::npos; },
        "the screen is taken over again"));
    ASSERT_TRUE(has_its_modes());
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({})));
    ASSERT_TRUE(client.wait_for_keys());
    EXPECT_FALSE(client.terminal().screen().cursor_visible());
}

/// Rows and columns of the terminal; the environment claims others.
class resume_size : public testing::TestWithParam<std::pair<int, int>>
{
};

TEST_P(resume_size, stays_that_of_the_terminal_whatever_the_environment_says)
{
    client_session client;
    client_start how;
    how.environment = {{"LINES", "17"}, {"COLUMNS", "61"}};
    ASSERT_TRUE(client.start(with_aliases({"alpha", "beta"}), how));
    terminal_session& terminal = client.terminal();
    ASSERT_TRUE(wait_for_whole_screen(terminal));
    terminal.resize(GetParam().first, GetParam().second);
    ASSERT_TRUE(client.wait_for_polls());
    const std::vector<screen_cell> before = all_cells(terminal.screen());
    for (int round = 0; round < 3; ++round) {
        terminal.forget_raw_output();
        terminal.send_signal(round == 1 ? SIGCONT : SIGTSTP);
        ASSERT_TRUE(terminal.wait_until(
            [&] { return terminal.raw_output().find("\033[?1049h") != std::string::npos; },
            "the screen is taken over again"));
        ASSERT_TRUE(client.wait_for_polls());
        EXPECT_TRUE(all_cells(terminal.screen()) == before) << terminal.screen().whole_text();
    }
}

INSTANTIATE_TEST_SUITE_P(terminals, resume_size,
                         testing::Values(std::pair{24, 80}, std::pair{30, 100}, std::pair{17, 200},
                                         std::pair{10, 30}, std::pair{2, 80}, std::pair{24, 2},
                                         std::pair{1, 1}));

/// A client under a shell with job control, which continues it for every empty line.
class job : public testing::Test
{
protected:
    void SetUp() override
    {
        home.write_config(config_text(with_aliases({"alpha", "beta"})));
        terminal_options options{.command = {"sh", "-mc",
                                             CLIENT_BINARY "; stty sane; echo stop 1; read line; "
                                                           "fg; stty sane; echo stop 2; read line; "
                                                           "fg"},
                                 .home = ".",
                                 .folder = home.path(),
                                 .environment = clock.environment()};
        terminal = std::make_unique<terminal_session>(options);
        ASSERT_TRUE(terminal->wait_until([&] { return clock.alarms_set() > 0; }, "a start"));
        ASSERT_TRUE(wait_for_whole_screen(*terminal));
        modes = terminal->line_settings();
    }

    testing::AssertionResult stopped()
    {
        const std::string words = "stop " + std::to_string(++stops);
        return terminal->wait_until(
            [&] {
                return !terminal->screen().alternate_screen() &&
                       terminal->screen().cursor_visible() && terminal->shows(words) &&
                       (terminal->line_settings().c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
            },
            "the shell has its terminal back");
    }

    testing::AssertionResult continued()
    {
        terminal->send("\n");
        if (testing::AssertionResult taken = terminal->wait_until(
                [&] {
                    return terminal->screen().alternate_screen() &&
                           !terminal->screen().cursor_visible() &&
                           line_difference(terminal->line_settings(), modes).empty();
                },
                "the client has its terminal back");
            !taken)
            return taken;
        return wait_for_whole_screen(*terminal);
    }

    testing::AssertionResult takes_keys()
    {
        terminal->send_control('h');
        if (testing::AssertionResult shown = terminal->wait_for_text("[ To exit press ^H ]");
            !shown)
            return shown;
        terminal->send_control('h');
        return wait_for_whole_screen(*terminal);
    }

    temp_home home;
    test_clock clock{50};
    std::unique_ptr<terminal_session> terminal;
    termios modes{};
    int stops = 0;
};

TEST_F(job, comes_back_whole_after_every_stop_from_the_keyboard)
{
    for (int round = 0; round < 2; ++round) {
        terminal->send_control('z');
        ASSERT_TRUE(stopped());
        terminal->forget_raw_output();
        ASSERT_TRUE(continued());
        ASSERT_TRUE(takes_keys());
        EXPECT_FALSE(terminal->shows("stop"));
        EXPECT_EQ(terminal->raw_output().find("\033[?1049l"), std::string::npos)
            << "the shell's screen does not flash up";
    }
    terminal->send_control('x');
    EXPECT_EQ(terminal->wait_for_exit(), 0);
}

TEST_F(job, adapts_to_a_size_of_which_only_the_shell_was_told)
{
    terminal->send_control('z');
    ASSERT_TRUE(stopped());
    terminal->resize(31, 97);
    ASSERT_TRUE(continued());
    ASSERT_TRUE(takes_keys());
    // Stopped once more, this time without warning.
    const std::vector<pid_t> children = children_of(terminal->process_id());
    ASSERT_EQ(children.size(), 1U);
    kill(children[0], SIGSTOP);
    ASSERT_TRUE(terminal->wait_until(
        [&] { return (terminal->line_settings().c_lflag & ICANON) != 0; }, "the shell's modes"));
    terminal->resize(24, 80);
    ASSERT_TRUE(continued());
    ASSERT_TRUE(takes_keys());
    terminal->send_control('x');
    EXPECT_EQ(terminal->wait_for_exit(), 0);
}

} // namespace
