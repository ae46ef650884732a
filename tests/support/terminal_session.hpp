// terminal_session.hpp - a program at a terminal as a person uses it: keys go in, a screen comes
// out.
//
// Owns the program (pty_process) and its terminal (terminal_screen). Every wait reads the program's
// output until a condition holds; nothing is checked after a fixed time. A sanitizer's report on
// the program's standard error fails the running test when the session ends.
#pragma once

#include "support/patience.hpp"
#include "support/pty_process.hpp"
#include "support/terminal_screen.hpp"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// How a terminal reports that ALT was held down with a letter.
enum class meta_form { escape_first, high_bit, utf8 };

struct terminal_options {
    std::vector<std::string> command{};
    int rows = 24;
    int columns = 80;
    std::string home{};   // HOME; empty: not set
    std::string folder{}; // working folder; empty: the test's own
    bool utf8 = true;     // false: an 8-bit terminal

    /// Adds to, or replaces: TERM=screen-256color, LC_ALL=C.UTF-8, TZ=UTC, PATH and the sanitizers'
    /// options. Nothing else of the test's environment reaches the program.
    std::map<std::string, std::string> environment{};
    std::set<std::string> unset{}; // names of the above to leave out
};

class terminal_session
{
public:
    explicit terminal_session(const terminal_options& options);
    /// Kills the program if it still runs; fails the test if a sanitizer reported something.
    ~terminal_session();
    terminal_session(const terminal_session&) = delete;
    terminal_session& operator=(const terminal_session&) = delete;

    /// Types bytes as they are.
    void send(std::string_view bytes);
    void send_key(named_key key);
    /// CTRL and a letter, 'a' to 'z' or 'A' to 'Z'.
    void send_control(char letter);
    /// ALT and a letter.
    void send_meta(char letter, meta_form form = meta_form::escape_first);

    /// Changes the terminal's size; the program is told by SIGWINCH.
    void resize(int rows, int columns);

    /// The same, but until the next resize what the program writes is thrown away.
    void resize_unseen(int rows, int columns);

    /// Stops reading what the program writes, as a terminal after ^S or behind a line that is down.
    /// Until the output is released, waits see the screen as it was.
    void hold_output();
    /// Reads again.
    void release_output();
    /// Reads up to `count` bytes while the output is held.
    void read_held_output(std::size_t count);
    /// Whether the terminal takes another byte from the program: always soon, unless it is held.
    bool has_room_for_output() const
    {
        return program.has_room_for_output();
    }

    /// Takes the terminal away for good; the screen keeps what it shows.
    void hang_up();

    /// The screen after all output so far has been displayed.
    const terminal_screen& screen();
    /// The full width of row `number`, 0-based.
    std::string row(int number);
    screen_cell cell(int row, int column);
    /// Bells rung so far.
    int bells();

    /// Displays everything that the program has written so far, including writes in progress.
    void take_in_everything();
    /// Displays output until `holds` is true, and still is when everything has been displayed: what
    /// a program writes at once is never judged by its beginning. On failure the result holds
    /// `what` and the screen.
    [[nodiscard]] testing::AssertionResult
    wait_until(const std::function<bool()>& holds, std::string_view what,
               std::chrono::milliseconds limit = default_patience);
    /// Whether typed bytes are waiting for the program to read them.
    bool has_unread_keys() const
    {
        return program.has_unread_input();
    }
    /// Waits until the program has read every key that was sent. The effect of the last one may
    /// still be on its way.
    [[nodiscard]] testing::AssertionResult
    wait_for_keys_read(std::chrono::milliseconds limit = default_patience);
    /// Waits until a row contains `text`.
    [[nodiscard]] testing::AssertionResult
    wait_for_text(std::string_view text, std::chrono::milliseconds limit = default_patience);
    /// Waits until no row contains `text`.
    [[nodiscard]] testing::AssertionResult
    wait_for_no_text(std::string_view text, std::chrono::milliseconds limit = default_patience);
    /// Waits until the program has ended, and takes all its output. The wait status, as for
    /// WIFEXITED, or none.
    [[nodiscard]] std::optional<int>
    wait_for_exit(std::chrono::milliseconds limit = default_patience);

    /// The wait status if the program has ended, whether or not its output was taken.
    std::optional<int> exit_status()
    {
        return program.wait_status();
    }

    /// Whether a row contains `text` now.
    bool shows(std::string_view text);
    /// Every byte that the program wrote to the terminal since the start or forget_raw_output.
    const std::string& raw_output();
    void forget_raw_output();
    /// The program's standard error so far.
    std::string error_text() const;
    termios line_settings() const;
    /// The line settings that the program found.
    const termios& initial_line_settings() const;
    void send_signal(int number);
    pid_t process_id() const;
    /// The screen with row numbers, and the standard error, for a person to read.
    std::string description();

private:
    void take_in(std::chrono::milliseconds limit);
    void show(const std::string& output);

    terminal_screen display;
    pty_process program;
    std::string raw;
    bool is_seen = true;
    bool is_held = false;
};
