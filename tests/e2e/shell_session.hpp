// shell_session.hpp - a client under a shell that outlives it, so that a test sees what the client
// leaves of the terminal, its processes and its files.
#pragma once

#include "e2e/client_places.hpp"

#include <memory>
#include <string>
#include <vector>

/// What a user has at the terminal before a program and wants back after it.
struct terminal_state {
    std::vector<screen_cell> cells{};
    termios line{};
};

class shell_session : public testing::Test
{
protected:
    /// Starts a shell with job control, a screen full of words and a line with unusual settings;
    /// then, under it, the client. While the client is stopped, the shell waits for bring_back.
    void begin(bool with_silent_server = false);
    /// Goes to the place and notes which processes the client has there.
    void go_to(const client_place& place);

    terminal_session& terminal()
    {
        return at->terminal();
    }
    /// Waits until the shell reports that the client has ended, or was stopped, with this status.
    [[nodiscard]] testing::AssertionResult wait_for_status(int status, int round = 1);
    /// Checks that the screen, the cursor and every field of the line are as before the client.
    void expect_terminal_given_back();
    /// Checks that neither the client nor a process of its own is left.
    void expect_nobody_left();
    /// Checks that no file was written since begin, least of all the configuration.
    void expect_nothing_saved();
    /// Makes the shell continue a stopped client in front.
    void bring_back(int round = 1);
    /// Checks that the shell ends in order.
    void expect_shell_ends();

    std::unique_ptr<placed_client> at;

private:
    terminal_state state();

    terminal_state before;
    std::vector<pid_t> processes;
    std::vector<std::string> files;
};
