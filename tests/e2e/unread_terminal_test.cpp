// unread_terminal_test.cpp - a terminal that takes no output, as behind a line that stalls: the
// network goes on, what ends the client ends it, and a terminal that reads again shows the present.
//
// A minute is a minute of the client's clock. UNREAD_TERMINAL_REAL_TIME=1 makes it a real one.
#include "e2e/network_session.hpp"
#include "e2e/shell_session.hpp"
#include "e2e/whole_screen.hpp"
#include "support/faults.hpp"
#include "support/line_settings.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace
{

constexpr int minute_s = 60;
constexpr int max_keys_to_fill = 200;
constexpr std::chrono::seconds end_limit{2 * patience_factor()};
const server_packet heartbeat{.kind = 148, .payload = "^"};

/// Leaves the terminal unread and has the client show and hide its help until it takes no more.
testing::AssertionResult fill(terminal_session& terminal)
{
    terminal.hold_output();
    for (int number = 0; number < max_keys_to_fill; ++number) {
        if (number % 2 == 0 && !terminal.has_room_for_output())
            return testing::AssertionSuccess();
        terminal.send_control('h');
        if (testing::AssertionResult taken = terminal.wait_for_keys_read(); !taken)
            return taken;
    }
    return testing::AssertionFailure() << "the terminal always has room";
}

/// What is on the screen is what the client draws when it draws everything.
testing::AssertionResult is_current(client_session& client)
{
    terminal_session& terminal = client.terminal();
    terminal.take_in_everything();
    // An update that was put off is made before the next pause, and polls come in pauses.
    if (testing::AssertionResult polled = client.wait_for_polls(); !polled)
        return polled;
    terminal.take_in_everything();
    const std::vector<screen_cell> cells = all_cells(terminal.screen());
    terminal.forget_raw_output();
    terminal.send_signal(SIGSTOP);
    testing::AssertionResult stopped = terminal.wait_until(
        [&] { return facts_of(terminal.process_id()).state == 'T'; }, "the client stops");
    if (!stopped)
        return stopped;
    terminal.send_signal(SIGCONT);
    testing::AssertionResult drawn = terminal.wait_until(
        [&] {
            return has_heard(terminal.process_id(), SIGCONT) &&
                   terminal.raw_output().find("\033[?1049h") != std::string::npos;
        },
        "the client draws its screen anew");
    if (!drawn || all_cells(terminal.screen()) == cells)
        return drawn;
    return testing::AssertionFailure() << "the screen should have been\n" << terminal.description();
}

/// The flags with which a process has a file open.
int open_flags(pid_t process, int fd)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/fdinfo/" + std::to_string(fd));
    for (std::string word; file >> word;)
        if (word == "flags:" && file >> word)
            return std::stoi(word, nullptr, 8);
    ADD_FAILURE() << "no flags";
    return 0;
}

/// How much memory the file takes in which a process keeps its output.
off_t bytes_kept(pid_t process)
{
    constexpr off_t block_bytes = 512;
    off_t bytes = 0;
    std::error_code ignored;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd", ignored)) {
        struct stat status = {};
        if (read_symlink(entry.path(), ignored).string().starts_with("/memfd:screen") &&
            stat(entry.path().c_str(), &status) == 0)
            bytes = std::max<off_t>(bytes, status.st_blocks * block_bytes);
    }
    return bytes;
}

/// A client with two servers and one log.
class unread_terminal : public testing::Test
{
protected:
    void begin(const client_start& how = wide_terminal)
    {
        client_settings settings = servers.settings();
        settings.save_to_one = true;
        settings.log_folder = "logs";
        client.home().make_folder("logs");
        ASSERT_TRUE(client.start(settings, how));
        connections = connect_all(client, servers);
        ASSERT_EQ(connections.size(), 2U);
    }

    /// Has a server send a transmission, and waits until the log holds it.
    testing::AssertionResult log_message(std::size_t from, const std::string& flight)
    {
        if (!connections[from].send(plain_packet(document_of({.flight = flight}))))
            return testing::AssertionFailure() << "the client takes no bytes";
        return terminal().wait_until(
            [&] {
                const std::optional<std::string> log = client.home().read_file("logs/ACARS.log");
                return log && log->ends_with(text_of({.flight = flight}));
            },
            flight + " is in the log");
    }

    /// A resize takes the messages away, so what comes after it waits for it.
    testing::AssertionResult takes_size()
    {
        return terminal().wait_until([&] { return has_heard(terminal().process_id(), SIGWINCH); },
                                     "a size is taken");
    }

    /// Waits for the end of a client whose output nobody reads.
    testing::AssertionResult ends_unread(std::chrono::milliseconds limit = default_patience)
    {
        testing::AssertionResult ended = terminal().wait_until(
            [&] { return terminal().exit_status().has_value(); }, "the client ends", limit);
        terminal().release_output();
        return client.wait_for_exit() ? ended : testing::AssertionFailure() << "no end";
    }

    terminal_session& terminal()
    {
        return client.terminal();
    }

    listed_servers servers{2};
    client_session client;
    std::vector<server_connection> connections;
};

TEST_F(unread_terminal, holds_neither_messages_nor_answers_up_for_a_minute)
{
    client_start how = wide_terminal;
    if (std::getenv("UNREAD_TERMINAL_REAL_TIME") != nullptr)
        how.alarm_ms_per_second = 1000;
    ASSERT_NO_FATAL_FAILURE(begin(how));
    ASSERT_TRUE(fill(terminal()));
    const std::int64_t polls = client.clock().alarms_set();
    for (int number = 0; client.clock().alarms_set() < polls + minute_s; ++number) {
        ASSERT_TRUE(log_message(0, "ALPHA" + std::to_string(number)));
        ASSERT_TRUE(log_message(1, "BRAVO" + std::to_string(number)));
    }
    EXPECT_FALSE(terminal().has_room_for_output());
    client.clock().jump(650);
    for (server_connection& connection : connections)
        EXPECT_EQ(connection.read_packet(), heartbeat);
    ASSERT_TRUE(log_message(1, "NEWEST"));
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO})
        EXPECT_EQ(open_flags(terminal().process_id(), fd) & O_NONBLOCK, 0) << "others share it";
    terminal().release_output();
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "NEWEST"})));
    EXPECT_TRUE(
        wait_for_last_status(client, "bravo - no data since 10 minutes. Sending heartbeat"));
    EXPECT_TRUE(is_current(client));
}

TEST_F(unread_terminal, takes_keys_and_leaves_in_order)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(fill(terminal()));
    terminal().send_control('h');
    terminal().send_control('x');
    ASSERT_TRUE(ends_unread());
    EXPECT_EQ(terminal().exit_status(), 0);
    EXPECT_EQ(line_difference(terminal().line_settings(), terminal().initial_line_settings()), "");
    for (server_connection& connection : connections)
        EXPECT_EQ(connection.read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
}

TEST_F(unread_terminal, holds_nothing_up_where_it_cannot_be_opened_again)
{
    program_faults faults;
    faults.set(
        {.call = faulty_call::open, .error = EACCES, .name = "/dev/tty", .failing = every_call});
    client_start how = wide_terminal;
    how.environment = faults.environment(CLOCK_PRELOAD);
    ASSERT_NO_FATAL_FAILURE(begin(how));
    EXPECT_EQ(faults.hits(), 1);
    ASSERT_TRUE(fill(terminal()));
    ASSERT_TRUE(log_message(0, "UNSEEN"));
    terminal().release_output();
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "UNSEEN"})));
    EXPECT_TRUE(is_current(client));
    ASSERT_TRUE(fill(terminal()));
    terminal().send_signal(SIGTERM);
    ASSERT_TRUE(ends_unread(end_limit));
    EXPECT_EQ(line_difference(terminal().line_settings(), terminal().initial_line_settings()), "");
}

TEST_F(unread_terminal, shows_a_larger_screen_when_it_is_read_again)
{
    ASSERT_NO_FATAL_FAILURE(begin({.rows = 24, .columns = 80}));
    ASSERT_TRUE(fill(terminal()));
    terminal().resize(40, 132);
    ASSERT_TRUE(takes_size());
    ASSERT_TRUE(log_message(0, "LARGER"));
    terminal().release_output();
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "LARGER"})));
    EXPECT_EQ(frame_fault(terminal().screen()), "");
    EXPECT_TRUE(is_current(client));
}

TEST_F(unread_terminal, collects_no_endless_output)
{
    constexpr off_t enough_bytes = 300LL * 1024;
    ASSERT_NO_FATAL_FAILURE(begin({.rows = 60, .columns = 200}));
    ASSERT_TRUE(fill(terminal()));
    for (int number = 0; number < 120; ++number) {
        terminal().resize_unseen(50 + number % 10, 200);
        ASSERT_TRUE(takes_size());
    }
    EXPECT_LT(bytes_kept(terminal().process_id()), enough_bytes);
    terminal().resize(60, 200);
    ASSERT_TRUE(takes_size());
    ASSERT_TRUE(log_message(0, "AFTER"));
    terminal().release_output();
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = "AFTER"})));
    EXPECT_EQ(frame_fault(terminal().screen()), "");
    EXPECT_TRUE(is_current(client));
}

TEST_F(unread_terminal, gets_a_whole_screen_when_it_reads_slowly)
{
    constexpr std::size_t piece_bytes = 200;
    ASSERT_NO_FATAL_FAILURE(begin({.rows = 24, .columns = 80}));
    terminal().hold_output();
    terminal().resize(50, 160);
    EXPECT_TRUE(terminal().wait_until(
        [&] {
            terminal().read_held_output(piece_bytes);
            return frame_fault(terminal().screen()).empty();
        },
        "all panes are whole", patience(60)));
    ASSERT_TRUE(log_message(0, "SLOWLY"));
    EXPECT_TRUE(terminal().wait_until(
        [&] {
            terminal().read_held_output(piece_bytes);
            return terminal().shows("SLOWLY") && frame_fault(terminal().screen()).empty();
        },
        "a message, and all panes are whole", patience(60)));
    terminal().release_output();
    EXPECT_TRUE(is_current(client));
}

std::string name_of_signal(const testing::TestParamInfo<int>& about)
{
    return std::string{"SIG"} + sigabbrev_np(about.param);
}

class unread_terminal_ended : public unread_terminal, public testing::WithParamInterface<int>
{
};

TEST_P(unread_terminal_ended, gets_its_modes_back_within_two_seconds)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(fill(terminal()));
    terminal().send_signal(GetParam());
    ASSERT_TRUE(ends_unread(end_limit));
    const int status = terminal().exit_status().value_or(0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == GetParam());
    EXPECT_EQ(line_difference(terminal().line_settings(), terminal().initial_line_settings()), "");
}

INSTANTIATE_TEST_SUITE_P(by, unread_terminal_ended,
                         testing::Values(SIGTERM, SIGHUP, SIGINT, SIGQUIT), name_of_signal);

class unread_terminal_crash : public unread_terminal, public testing::WithParamInterface<int>
{
};

TEST_P(unread_terminal_crash, gets_its_modes_back)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "crashes are the sanitizer's";
#endif
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(fill(terminal()));
    terminal().send_signal(GetParam());
    ASSERT_TRUE(ends_unread());
    EXPECT_TRUE(WIFSIGNALED(terminal().exit_status().value_or(0)));
    EXPECT_EQ(line_difference(terminal().line_settings(), terminal().initial_line_settings()), "");
}

INSTANTIATE_TEST_SUITE_P(by, unread_terminal_crash, testing::Values(SIGSEGV, SIGABRT),
                         name_of_signal);

class unread_terminal_lent : public shell_session
{
};

TEST_F(unread_terminal_lent, has_the_shells_modes_and_later_the_whole_screen)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    const termios modes = terminal().line_settings();
    ASSERT_TRUE(fill(terminal()));
    kill(at->program, SIGTSTP);
    ASSERT_TRUE(wait_for_status(128 + SIGTSTP));
    const termios lent = terminal().line_settings();
    EXPECT_NE(lent.c_lflag & ICANON, 0U);
    terminal().release_output();
    bring_back();
    ASSERT_TRUE(terminal().wait_until(
        [&] { return line_difference(terminal().line_settings(), modes).empty(); },
        "the client has the terminal again"));
    EXPECT_TRUE(terminal().wait_until([&] { return frame_fault(terminal().screen()).empty(); },
                                      "all panes are whole"));
    EXPECT_FALSE(terminal().shows("What the shell had"));
    kill(at->program, SIGTERM);
    ASSERT_TRUE(wait_for_status(128 + SIGTERM, 2));
    EXPECT_EQ(line_difference(terminal().line_settings(), lent), "");
    expect_shell_ends();
}

TEST_F(unread_terminal, is_not_made_by_the_key_that_stops_output_elsewhere)
{
    ASSERT_NO_FATAL_FAILURE(begin());
    EXPECT_NE(terminal().initial_line_settings().c_iflag & IXON, 0U);
    ASSERT_EQ(terminal().line_settings().c_iflag & IXON, 0U);
    const std::vector<screen_cell> cells = all_cells(terminal().screen());
    terminal().send_control('s');
    ASSERT_TRUE(terminal().wait_for_keys_read());
    ASSERT_TRUE(client.wait_for_polls());
    EXPECT_TRUE(all_cells(terminal().screen()) == cells) << terminal().description();
    EXPECT_TRUE(wait_for_notice(client, connections[0], "output goes on"));
    terminal().send_control('q');
    EXPECT_TRUE(wait_for_notice(client, connections[0], "and on"));
}

TEST(flow_control, is_the_shells_while_the_client_is_stopped_and_afterwards)
{
    client_session client;
    client.home().write_config(config_text(with_aliases({"alpha"})));
    client_start how;
    how.command = {"sh", "-mc", R"sh(
stty -a >words
stty -g >before
"$CLIENT"
stty -g >stopped
fg
stty -g >after
)sh"};
    how.environment["CLIENT"] = CLIENT_BINARY;
    ASSERT_TRUE(client.start_as_it_is(how));
    EXPECT_NE(client.home().read_file("words").value_or("").find(" ixon"), std::string::npos);
    EXPECT_EQ(client.terminal().line_settings().c_iflag & IXON, 0U);
    client.terminal().send_control('z');
    ASSERT_TRUE(client.terminal().wait_until(
        [&] {
            return client.home().read_file("stopped").has_value() &&
                   client.terminal().screen().alternate_screen();
        },
        "the client comes back"));
    EXPECT_EQ(client.terminal().line_settings().c_iflag & IXON, 0U);
    client.terminal().send_control('x');
    EXPECT_TRUE(client.wait_for_exit());
    EXPECT_EQ(client.home().read_file("stopped"), client.home().read_file("before"));
    EXPECT_EQ(client.home().read_file("after"), client.home().read_file("before"));
}

} // namespace
