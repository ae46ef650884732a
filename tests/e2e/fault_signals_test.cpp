// fault_signals_test.cpp - signals that come before system calls of every kind, not only while the
// client waits for them.
#include "e2e/fault_session.hpp"
#include "e2e/whole_screen.hpp"
#include "support/line_settings.hpp"

#include <csignal>
#include <cstring>
#include <sys/wait.h>

namespace
{

/// The row's error is the signal. It comes so often that the screen is hardly ever still, so the
/// screen is judged afterwards.
class fault_signals : public fault_session
{
protected:
    static constexpr int calls_between = 7;
    static constexpr int enough_signals = 20;

    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(start());
    }
    void begin_signals()
    {
        faults.send_before_calls(GetParam().wanted.error, 1, calls_between);
    }
    void end_signals()
    {
        EXPECT_TRUE(client.terminal().wait_until([&] { return faults.signals() >= enough_signals; },
                                                 "many signals"));
        faults.send_before_calls(0);
    }
};

TEST_P(fault_signals, do_no_harm_between_any_calls)
{
    begin_signals();
    client.terminal().resize(40, 160);
    end_signals();
    ASSERT_TRUE(wait_for_whole_screen(client.terminal()));
    begin_signals();
    client.terminal().send_control('l');
    first = servers[0].accept();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->read_packet(), (server_packet{.kind = 101, .payload = "0 02 001"}));
    EXPECT_EQ(first->read_packet(), (server_packet{.kind = 151, .payload = "CXML"}));
    ASSERT_TRUE(first->send(plain_packet(document_of({.flight = "DURING"}))));
    logged = text_of({.flight = "DURING"});
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", logged));
    end_signals();
    ASSERT_TRUE(client.wait_for_keys());
    expect_nothing_else_harmed();
}

INSTANTIATE_TEST_SUITE_P(all, fault_signals,
                         testing::Values(fault_row{"SIGWINCH", {faulty_call::none, SIGWINCH}},
                                         fault_row{"SIGALRM", {faulty_call::none, SIGALRM}},
                                         fault_row{"SIGCHLD", {faulty_call::none, SIGCHLD}},
                                         fault_row{"SIGCONT", {faulty_call::none, SIGCONT}},
                                         fault_row{"SIGTSTP", {faulty_call::none, SIGTSTP}}),
                         fault_name);

/// A client that is told to end before any one of its calls, from its start to its end by ^X.
class fault_ending : public testing::TestWithParam<int>
{
protected:
    /// Sends the signal before call `step`; `is_sent`: whether there was such a call.
    void end_at(int step, bool& is_sent)
    {
        client_session client;
        program_faults faults;
        client_start how;
        for (const auto& [name, value] : faults.environment(CLOCK_PRELOAD))
            how.environment[name] = value;
        client.home().write_config(before);
        faults.send_before_calls(GetParam(), step);
        client.launch(how);
        // They wait in the line until the client takes them. The first ones open and close a page,
        // with a pause after each.
        client.terminal().send("\005\005\005\005\030");
        const std::optional<int> status = client.wait_for_exit();
        ASSERT_TRUE(status);
        is_sent = faults.signals() > 0;
        const bool is_killed = WIFSIGNALED(*status);
        deaths_after_start += is_killed && client.clock().alarms_set() > 0 ? 1 : 0;
        EXPECT_EQ(is_killed ? WTERMSIG(*status) : WEXITSTATUS(*status), is_killed ? GetParam() : 0);
        EXPECT_TRUE(is_killed || !is_sent || client.home().read_config() == config_text(settings));
        expect_given_back(client);
    }
    void expect_given_back(client_session& client)
    {
        terminal_session& terminal = client.terminal();
        EXPECT_EQ(terminal.error_text(), "");
        EXPECT_EQ(line_difference(terminal.line_settings(), terminal.initial_line_settings()), "");
        EXPECT_TRUE(terminal.screen().cursor_visible());
        EXPECT_FALSE(terminal.screen().alternate_screen());
        const std::string after = client.home().read_config().value_or("");
        EXPECT_TRUE(after == before || after == config_text(settings)) << after;
        EXPECT_EQ(client.home().files(), std::vector<std::string>{"ncursesclient.conf"});
    }

    client_settings settings = [] {
        client_settings wanted = with_aliases({"alpha", "bravo"});
        wanted.save_on_exit = true;
        return wanted;
    }();
    std::string before = config_text(settings) + "the old file\n";
    int deaths_after_start = 0;
};

TEST_P(fault_ending, gives_the_terminal_back_before_any_call)
{
    bool is_sent = true;
    // Each signal comes at steps of its own.
    for (int step = 1 + GetParam() % 9; is_sent; step += 9) {
        SCOPED_TRACE("before call " + std::to_string(step));
        ASSERT_NO_FATAL_FAILURE(end_at(step, is_sent));
    }
    EXPECT_GT(deaths_after_start, 5);
}

INSTANTIATE_TEST_SUITE_P(all, fault_ending, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT),
                         [](const auto& about) {
                             return std::string{"SIG"} + sigabbrev_np(about.param);
                         });

} // namespace
