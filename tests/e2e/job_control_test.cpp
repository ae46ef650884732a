// job_control_test.cpp - the client as a job of an interactive shell that edits its own line, and
// so has its own terminal settings whenever it is in front.
#include "e2e/client_session.hpp"
#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"
#include "support/line_settings.hpp"

#include <algorithm>
#include <csignal>

namespace
{

class interactive_shell : public testing::Test
{
protected:
    void SetUp() override
    {
        client.home().write_config(config_text(with_aliases({"alpha"})));
        client_start how;
        // The shell's prompts belong on the terminal; the client's error messages do not.
        how.command = {"sh", "-c", "exec bash --norc --noprofile -i 9>&2 2>&0"};
        how.environment["CLIENT"] = CLIENT_BINARY;
        how.environment["PS1"] = "prompt: ";
        client.launch(how);
        ASSERT_TRUE(terminal().wait_for_text("prompt: "));
        before = line_settings();
        ASSERT_NE(before, "");
    }

    terminal_session& terminal()
    {
        return client.terminal();
    }

    void type(const std::string& line)
    {
        terminal().send(line + "\r");
    }

    /// The line settings that the shell's commands see.
    std::string line_settings()
    {
        const std::string name = "line-" + std::to_string(++lines_asked);
        type("stty -g >new && mv new " + name);
        EXPECT_TRUE(terminal().wait_until([&] { return client.home().read_file(name).has_value(); },
                                          "the shell takes commands"));
        return client.home().read_file(name).value_or("");
    }

    testing::AssertionResult client_has_terminal()
    {
        testing::AssertionResult shown = terminal().wait_until(
            [&] {
                return client.clock().alarms_set() > 0 && terminal().screen().alternate_screen() &&
                       (terminal().line_settings().c_lflag & (ICANON | ECHO)) == 0;
            },
            "the client has the terminal");
        return shown ? wait_for_whole_screen(terminal()) : shown;
    }

    testing::AssertionResult job_is(char state)
    {
        return terminal().wait_until(
            [&] {
                const std::vector<pid_t> jobs = children_of(terminal().process_id());
                return std::any_of(jobs.begin(), jobs.end(),
                                   [&](pid_t process) { return facts_of(process).state == state; });
            },
            std::string{"a job in state "} + state);
    }

    testing::AssertionResult no_job_is_left()
    {
        // The shell may reap it at any time.
        for (const pid_t process : children_of(terminal().process_id())) {
            if (testing::AssertionResult gone = wait_until_gone(terminal(), process); !gone)
                return gone;
        }
        return testing::AssertionSuccess();
    }

    void expect_shell_is_well()
    {
        EXPECT_EQ(line_settings(), before);
        EXPECT_FALSE(terminal().screen().alternate_screen());
        EXPECT_TRUE(terminal().screen().cursor_visible());
        type("exit; exit");
        EXPECT_TRUE(client.wait_for_exit());
        EXPECT_EQ(terminal().error_text(), "");
    }

    /// Leaves the client in front by its own key.
    void expect_client_leaves()
    {
        terminal().send_control('x');
        ASSERT_TRUE(no_job_is_left());
        expect_shell_is_well();
    }

    client_session client;
    std::string before;
    int lines_asked = 0;
};

TEST_F(interactive_shell, has_its_line_back_while_the_client_is_stopped_and_afterwards)
{
    type("echo words that stood here; \"$CLIENT\" 2>&9");
    ASSERT_TRUE(client_has_terminal());
    for (int round = 0; round < 2; ++round) {
        terminal().send_control('z');
        ASSERT_TRUE(terminal().wait_for_text("Stopped"));
        EXPECT_EQ(line_settings(), before);
        EXPECT_TRUE(terminal().shows("words that stood here"));
        type("fg");
        ASSERT_TRUE(client_has_terminal());
    }
    expect_client_leaves();
}

TEST_F(interactive_shell, brings_back_a_client_that_a_script_started)
{
    // The script stops at once, so its shell may take the terminal while the client still leaves
    // it.
    type("bash -c '\"$CLIENT\" 2>&9; exit'");
    ASSERT_TRUE(client_has_terminal());
    for (int round = 0; round < 5; ++round) {
        terminal().send_control('z');
        ASSERT_TRUE(job_is('T')); // what the shell says of it may be on either screen
        EXPECT_EQ(line_settings(), before);
        type("fg");
        ASSERT_TRUE(client_has_terminal());
    }
    expect_client_leaves();
}

TEST_F(interactive_shell, keeps_its_line_from_a_client_started_in_the_background)
{
    type("(while [ ! -e wanted ]; do sleep 0.02; done; exec \"$CLIENT\" 2>&9) &");
    ASSERT_TRUE(terminal().wait_until(
        [&] {
            return terminal().shows("[1] ") && (terminal().line_settings().c_lflag & ICANON) == 0;
        },
        "the shell edits its next line"));
    client.home().write_file("wanted", "");
    ASSERT_TRUE(job_is('T'));
    EXPECT_EQ(client.clock().alarms_set(), 0) << "it waits for its turn";
    EXPECT_EQ(line_settings(), before);
    EXPECT_FALSE(terminal().screen().alternate_screen());
    type("fg");
    ASSERT_TRUE(client_has_terminal());
    expect_client_leaves();
}

TEST_F(interactive_shell, cannot_run_a_stopped_client_in_the_background)
{
    type("\"$CLIENT\" 2>&9");
    ASSERT_TRUE(client_has_terminal());
    terminal().send_control('z');
    ASSERT_TRUE(terminal().wait_for_text("Stopped"));
    terminal().forget_raw_output();
    type("bg; wait %1; jobs; echo as it  was"); // the wait ends with the next stop
    ASSERT_TRUE(terminal().wait_for_text("as it was"));
    ASSERT_TRUE(job_is('T'));
    EXPECT_EQ(terminal().raw_output().find("\033[?1049"), std::string::npos)
        << "not a byte of the client's";
    EXPECT_EQ(line_settings(), before);
    type("fg");
    ASSERT_TRUE(client_has_terminal());
    expect_client_leaves();
}

TEST_F(interactive_shell, ends_a_stopped_client)
{
    for (const char* command : {"kill %1", "bg; wait %1; kill %1", "kill -HUP %1"}) {
        SCOPED_TRACE(command);
        type("\"$CLIENT\" 2>&9");
        ASSERT_TRUE(client_has_terminal());
        terminal().send_control('z');
        ASSERT_TRUE(job_is('T'));
        ASSERT_TRUE(terminal().wait_until([&] { return !terminal().screen().alternate_screen(); },
                                          "the shell's screen"));
        type(command);
        ASSERT_TRUE(no_job_is_left());
        EXPECT_EQ(line_settings(), before);
    }
    expect_shell_is_well();
}

TEST_F(interactive_shell, keeps_its_line_when_a_stopped_client_crashes)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    expect_shell_is_well();
    GTEST_SKIP() << "crashes are the sanitizer's";
#endif
    type("\"$CLIENT\" 2>&9");
    ASSERT_TRUE(client_has_terminal());
    const std::vector<pid_t> programs = children_of(terminal().process_id());
    ASSERT_EQ(programs.size(), 1U);
    terminal().send_control('z');
    ASSERT_TRUE(job_is('T'));
    ASSERT_TRUE(terminal().wait_until(
        [&] {
            return !terminal().screen().alternate_screen() && terminal().shows("Stopped") &&
                   (terminal().line_settings().c_lflag & ICANON) == 0;
        },
        "the shell edits its next line"));
    const termios editing = terminal().line_settings();
    for (const int number : {SIGSEGV, SIGCONT})
        kill(programs.front(), number);
    ASSERT_TRUE(no_job_is_left());
    EXPECT_EQ(line_difference(terminal().line_settings(), editing), "");
    expect_shell_is_well();
}

TEST_F(interactive_shell, gets_its_screen_back_from_a_client_stopped_without_warning)
{
    type("\"$CLIENT\" 2>&9");
    ASSERT_TRUE(client_has_terminal());
    const std::vector<pid_t> jobs = children_of(terminal().process_id());
    ASSERT_EQ(jobs.size(), 1U);
    kill(jobs[0], SIGSTOP);
    ASSERT_TRUE(job_is('T'));
    type("bg; wait %1; kill %1");
    ASSERT_TRUE(no_job_is_left());
    expect_shell_is_well();
}

TEST_F(interactive_shell, ends_a_stopped_client_when_it_exits)
{
    type("\"$CLIENT\" 2>&9");
    ASSERT_TRUE(client_has_terminal());
    const std::vector<pid_t> jobs = children_of(terminal().process_id());
    ASSERT_EQ(jobs.size(), 1U);
    const std::string config = client.home().read_config().value_or("");
    terminal().send_control('z');
    ASSERT_TRUE(terminal().wait_for_text("Stopped"));
    type("disown %1; exit");
    EXPECT_TRUE(client.wait_for_exit());
    EXPECT_TRUE(wait_until_gone(terminal(), jobs[0]));
    EXPECT_EQ(client.home().read_config(), config);
}

TEST_F(interactive_shell, takes_the_client_with_it_when_it_is_killed)
{
    type("\"$CLIENT\" 2>&9");
    ASSERT_TRUE(client_has_terminal());
    const std::vector<pid_t> jobs = children_of(terminal().process_id());
    ASSERT_EQ(jobs.size(), 1U);
    terminal().send_signal(SIGKILL);
    EXPECT_TRUE(client.wait_for_exit());
    EXPECT_TRUE(wait_until_gone(terminal(), jobs[0]));
    EXPECT_FALSE(terminal().screen().alternate_screen());
    EXPECT_TRUE(terminal().screen().cursor_visible());
}

TEST(job_control, restores_the_line_as_it_was_changed_while_the_client_was_stopped)
{
    client_session client;
    client.home().write_config(config_text(with_aliases({"alpha"})));
    client_start how;
    how.command = {"sh", "-mc", R"sh(
"$CLIENT"
stty -ixon erase '^H'
stty -g >before
fg
stty -g >after
)sh"};
    how.environment["CLIENT"] = CLIENT_BINARY;
    ASSERT_TRUE(client.start_as_it_is(how));
    client.terminal().send_control('z');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.home().read_file("before").has_value() &&
                   client.terminal().screen().alternate_screen();
        },
        "the client comes back"));
    client.terminal().send_control('x');
    EXPECT_TRUE(client.wait_for_exit());
    EXPECT_EQ(client.home().read_file("after"), client.home().read_file("before"));
}

TEST(job_control, restores_the_line_settings_from_when_the_client_took_the_terminal)
{
    client_session client;
    client.home().write_config(config_text(with_aliases({"alpha"})));
    client_start how;
    how.command = {"sh", "-mc", R"sh(
stty -echo -icanon
"$CLIENT" &
until jobs >list && grep -q Stopped list; do sleep 0.02; done
stty echo icanon
stty -g >before
fg
stty -g >after
)sh"};
    how.environment["CLIENT"] = CLIENT_BINARY;
    ASSERT_TRUE(client.start_as_it_is(how));
    client.terminal().send_control('x');
    EXPECT_TRUE(client.wait_for_exit());
    ASSERT_TRUE(client.home().read_file("before"));
    EXPECT_EQ(client.home().read_file("after"), client.home().read_file("before"));
}

} // namespace
