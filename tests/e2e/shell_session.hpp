// shell_session.hpp - a client under a shell that stays when it is gone, so that what the client
// leaves of the terminal, of its processes and of its files can be seen.
#pragma once

#include "e2e/client_places.hpp"

#include <memory>
#include <string>
#include <vector>

/// What somebody at a terminal has before a program and wants back after it.
struct terminal_state {
    std::vector<screen_cell> cells{};
    termios line{};
};

class shell_session : public testing::Test
{
protected:
    /// Starts a shell that controls jobs, with a screen full of words and a line set to something
    /// of its own; then, under it, the client. While the client is stopped, the shell waits for
    /// bring_back.
    void begin(bool with_silent_server = false);
    /// Goes to the place and notes what processes the client has there.
    void go_to(const client_place& place);

    terminal_session& terminal()
    {
        return at->terminal();
    }
    /// Waits until the shell has said that the client has ended, or been stopped, with this status.
    [[nodiscard]] testing::AssertionResult wait_for_status(int status, int round = 1);
    /// The screen, the cursor and every field of the line are as they were before the client.
    void expect_terminal_given_back();
    /// Neither the client nor a process of its own is left.
    void expect_nobody_left();
    /// No file was written since begin, the configuration least of all.
    void expect_nothing_saved();
    /// Has the shell continue a stopped client in front.
    void bring_back(int round = 1);
    /// The shell ends in order.
    void expect_shell_ends();

    std::unique_ptr<placed_client> at;

private:
    terminal_state state();

    terminal_state before;
    std::vector<pid_t> processes;
    std::vector<std::string> files;
};
