// client_session.hpp - the client in a terminal, with a home and a clock of its own.
//
// The base of every end-to-end test: starts the program with a configuration, knows where things
// are on the screen, and leaves with ^X at the end, so that every test also checks a clean exit.
#pragma once

#include "base/owners.hpp"
#include "support/config_text.hpp"
#include "support/scripted_server.hpp"
#include "support/temp_home.hpp"
#include "support/terminal_session.hpp"
#include "support/test_clock.hpp"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// The client's colours, by the numbers of their pairs.
namespace pairs
{
constexpr int frame = 1;
constexpr int plain = 2;
constexpr int error = 5;
constexpr int notice = 6;
constexpr int success = 7;
constexpr int bar = 8;
constexpr int statistics = 10;
constexpr int secondary = 11;
constexpr int server_text = 15;
} // namespace pairs

/// A cell with `text` in the colours of `pair`.
screen_cell pair_cell(int pair, bool bold, const std::string& text);

struct client_start {
    int rows = 24;
    int columns = 80;

    /// The program starts with its home as the working folder. HOME is "." by default, so that the
    /// line that names the configuration file fits into the status pane of an 80-column terminal.
    std::string home_variable = ".";

    /// Length of a second of alarm(). The program polls more often than in real use.
    int alarm_ms_per_second = 50;

    /// The wall clock, in seconds since 1970. This early, no fresh connection counts as idle.
    std::optional<std::int64_t> start_time = 10;

    std::map<std::string, std::string> environment{};
    std::set<std::string> unset{};
    bool utf8 = true; // false: an 8-bit terminal

    /// What runs in the terminal: the client, or a shell that starts it.
    std::vector<std::string> command{CLIENT_BINARY};
};

class client_session
{
public:
    /// Prepares home and clock; nothing runs yet.
    client_session() = default;
    /// Leaves with ^X, unless the program has ended or the test has failed.
    ~client_session();
    client_session(const client_session&) = delete;
    client_session& operator=(const client_session&) = delete;

    /// The folder of the program's files; the test may fill it before the start.
    const temp_home& home() const
    {
        return folder;
    }
    test_clock& clock()
    {
        return time;
    }
    /// Only after a start.
    terminal_session& terminal()
    {
        return *session;
    }

    /// A new descriptor of the program's terminal. Only after a start.
    unique_fd open_terminal();

    /// Writes the configuration and starts the program; see start_as_it_is.
    [[nodiscard]] testing::AssertionResult start(const client_settings& settings,
                                                 const client_start& how = {});
    /// Starts the program in its home, unchanged, and waits until it takes keys.
    [[nodiscard]] testing::AssertionResult start_as_it_is(const client_start& how = {});
    /// Starts the program without waiting.
    void launch(const client_start& how = {});

    /// Waits for an end of the program that the test has caused. The wait status, or none.
    [[nodiscard]] std::optional<int> wait_for_exit();
    /// ^X: the program must end with status 0, a restored terminal and an empty standard error.
    void quit();

    /// The four rows of the status pane, oldest first, without trailing blanks.
    std::vector<std::string> status_lines();
    /// The rows of the message pane above the status pane, without trailing blanks.
    std::vector<std::string> message_lines();
    /// The inside of visible row `number` of the server list, from 1: 25 characters.
    std::string server_row(int number);
    /// The marker of that row.
    screen_cell marker(int number);
    /// The visible row under the highlight bar; 0 if there is none.
    int bar_row();
    /// The name of the server under the bar, without trailing blanks; empty if there is none.
    std::string bar_text();

    /// Waits until a row of the status pane is exactly `text` in the colours of `pair`. A text
    /// wider than the pane is compared as far as it fits. Without `bold`, either will do.
    [[nodiscard]] testing::AssertionResult wait_for_status(std::string_view text, int pair,
                                                           std::optional<bool> bold = true);
    /// Waits until all keys sent so far have taken effect. Closes popups; leaves the panes in front
    /// as they were.
    [[nodiscard]] testing::AssertionResult wait_for_keys();
    /// Waits until the program has polled its servers `count` more times.
    [[nodiscard]] testing::AssertionResult wait_for_polls(int count = 2);

    /// ^L on the selected server, which must be `server`: accepts the connection, reads the
    /// introduction and waits for the marker. None, with a failure reported, if that fails.
    std::optional<server_connection> connect_selected(scripted_server& server);

private:
    temp_home folder;
    test_clock time;
    std::unique_ptr<terminal_session> session;
    bool left = false;
};

/// The settings of a client that knows `server`, shown as `alias`.
client_settings knowing(const scripted_server& server, const std::string& alias = "alpha");

/// The settings of a client with servers of these aliases, listed in this order, that refuse
/// connections.
client_settings with_aliases(const std::vector<std::string>& aliases);
