// client_session.hpp - the client, running in a terminal with a home and a clock of its own.
//
// What every end-to-end test stands on: starts the program with a configuration, knows where on the
// screen things are, and at the end leaves it with ^X, so that every test also checks a clean exit.
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

/// Colours that the client uses, by the numbers of their pairs.
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

/// How `pair` looks in a cell that holds `text`.
screen_cell pair_cell(int pair, bool bold, const std::string& text);

struct client_start {
    int rows = 24;
    int columns = 80;

    /// The program starts with its home as working folder, and HOME is by default "." so that the
    /// line that names the configuration file fits into the status pane of an 80-column terminal.
    std::string home_variable = ".";

    /// Length of a second of alarm(). The program polls more often than in life.
    int alarm_ms_per_second = 50;

    /// The wall clock, in seconds since 1970. Early, it never calls a fresh connection idle.
    std::optional<std::int64_t> start_time = 10;

    std::map<std::string, std::string> environment{};
    std::set<std::string> unset{};
    bool utf8 = true; // false: an 8-bit terminal

    /// What is started in the terminal; a shell, where the client is to have one above it.
    std::vector<std::string> command{CLIENT_BINARY};
};

class client_session
{
public:
    /// Prepares home and clock; nothing runs yet.
    client_session() = default;
    /// Leaves with ^X unless the test has left or failed already.
    ~client_session();
    client_session(const client_session&) = delete;
    client_session& operator=(const client_session&) = delete;

    /// Where the program's files are; may be filled before the start.
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

    /// The program's terminal, opened once more. Only after a start.
    unique_fd open_terminal();

    /// Writes the configuration and starts the program in it; see start_as_it_is.
    [[nodiscard]] testing::AssertionResult start(const client_settings& settings,
                                                 const client_start& how = {});
    /// Starts the program in its home as that is and waits until it takes keys.
    [[nodiscard]] testing::AssertionResult start_as_it_is(const client_start& how = {});
    /// Starts the program and waits for nothing.
    void launch(const client_start& how = {});

    /// Waits for the program's end, which the test has brought about. The wait status, or none.
    [[nodiscard]] std::optional<int> wait_for_exit();
    /// ^X: the program must end with status 0, a restored terminal and an empty standard error.
    void quit();

    /// The four rows of the status pane, oldest first, without trailing blanks.
    std::vector<std::string> status_lines();
    /// The rows of the message pane above the status pane, without trailing blanks.
    std::vector<std::string> message_lines();
    /// The interior of the server list's row for its visible row `number`, from 1: 25 characters.
    std::string server_row(int number);
    /// The marker column of that row.
    screen_cell marker(int number);
    /// The visible row on which the highlight bar lies; 0 if on none.
    int bar_row();
    /// The name of the server under the bar, without trailing blanks; empty if there is none.
    std::string bar_text();

    /// Waits until a row of the status pane is exactly `text` and looks like `pair`. A text wider
    /// than the pane is compared as far as it fits. No `bold`: either will do.
    [[nodiscard]] testing::AssertionResult wait_for_status(std::string_view text, int pair,
                                                           std::optional<bool> bold = true);
    /// Waits until all keys sent so far have had their effect. Closes popups; leaves the panes
    /// in front as they were.
    [[nodiscard]] testing::AssertionResult wait_for_keys();
    /// Waits until the program has polled its servers `count` more times.
    [[nodiscard]] testing::AssertionResult wait_for_polls(int count = 2);

    /// ^L on the selected server, which must be at `server`: accepts it, reads the introduction
    /// and waits for the marker. None, with a failure noted, if that does not come about.
    std::optional<server_connection> connect_selected(scripted_server& server);

private:
    temp_home folder;
    test_clock time;
    std::unique_ptr<terminal_session> session;
    bool left = false;
};

/// The settings of a client that knows `server`, shown as `alias`.
client_settings knowing(const scripted_server& server, const std::string& alias = "alpha");

/// The settings of a client with servers of these aliases, listed in this order, that refuse to
/// be connected to.
client_settings with_aliases(const std::vector<std::string>& aliases);
