// shell_session.cpp - see shell_session.hpp.
#include "e2e/shell_session.hpp"

#include "e2e/network_session.hpp"
#include "e2e/whole_screen.hpp"
#include "support/line_settings.hpp"

#include <algorithm>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// Every exit of the client makes a status file; every stop makes one too.
constexpr const char* script = R"sh(
trap : INT
wait_for() { while [ ! -e "$1" ]; do sleep 0.02; done; }
stty -ixon -ixoff erase '^H' kill '^K' eof '^Y' -echoke
for line in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16; do
    printf 'What the shell had on line %s\r\n\n\033[3%sm' "$line" "$((line % 8))"
done
printf '\033[7;30Hand here'
: >shell-ready
wait_for client-wanted
"$CLIENT"
echo $? >status-1
for round in 1 2; do
    [ "$(cat "status-$round")" = 148 ] || break
    wait_for "bring-back-$round"
    fg >/dev/null
    echo $? >"status-$((round + 1))"
done
)sh";

/// Returning to the first screen restores its cursor; curses then goes to the start of that line.
/// The emulator cannot tell: it saves only one cursor, while terminals save one for each screen.
bool cursor_stays_after_return(const std::string& output)
{
    static const std::regex nothing_but_modes("\\r?(\033\\[\\??[0-9]+[hl]|\033>)*");
    constexpr std::string_view leave = "\033[?1049l";
    const std::size_t place = output.rfind(leave);
    return place != std::string::npos &&
           std::regex_match(output.substr(place + leave.size()), nothing_but_modes);
}

} // namespace

terminal_state shell_session::state()
{
    return {all_cells(terminal().screen()), terminal().line_settings()};
}

void shell_session::begin(bool with_silent_server)
{
    at = std::make_unique<placed_client>(with_silent_server);
    client_start how;
    how.command = {"sh", "-mc", script};
    how.environment["CLIENT"] = CLIENT_BINARY;
    at->launch({.save_on_exit = true}, how);
    ASSERT_TRUE(terminal().wait_until(
        [&] { return at->client.home().read_file("shell-ready").has_value(); }, "a shell"));
    before = state();
    ASSERT_TRUE(terminal().shows("What the shell had on line 16"));
    ASSERT_NE(line_difference(before.line, terminal().initial_line_settings()), "");
    at->client.home().write_file("client-wanted", "");
    ASSERT_TRUE(at->connect());
    ASSERT_TRUE(terminal().screen().alternate_screen());
    ASSERT_NE(at->program, terminal().process_id());
    unlink(at->client.home().path_of("ncursesclient.conf").c_str());
    files = at->client.home().files();
}

void shell_session::go_to(const client_place& place)
{
    ASSERT_TRUE(place.go(*at));
    processes = children_of(at->program);
    processes.push_back(at->program);
}

testing::AssertionResult shell_session::wait_for_status(int status, int round)
{
    const std::string name = "status-" + std::to_string(round);
    files.push_back(name);
    return terminal().wait_until(
        [&] { return at->client.home().read_file(name) == std::to_string(status) + "\n"; },
        name + " is " + std::to_string(status));
}

void shell_session::expect_terminal_given_back()
{
    const terminal_state now = state();
    EXPECT_TRUE(now.cells == before.cells) << terminal().description();
    EXPECT_EQ(line_difference(now.line, before.line), "");
    EXPECT_TRUE(terminal().screen().cursor_visible());
    EXPECT_FALSE(terminal().screen().alternate_screen());
    EXPECT_TRUE(cursor_stays_after_return(terminal().raw_output())) << terminal().description();
}

void shell_session::expect_nobody_left()
{
    for (const pid_t process : processes)
        EXPECT_TRUE(wait_until_gone(terminal(), process));
}

void shell_session::expect_nothing_saved()
{
    std::vector<std::string> expected = files;
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(at->client.home().files(), expected);
}

void shell_session::bring_back(int round)
{
    const std::string name = "bring-back-" + std::to_string(round);
    files.push_back(name);
    at->client.home().write_file(name, "");
}

void shell_session::expect_shell_ends()
{
    const std::optional<int> status = at->client.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFEXITED(*status)) << terminal().description();
}
