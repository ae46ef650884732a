// fault_session.hpp - a client with two servers, the first connected, whose system calls fail when
// a test says so.
#pragma once

#include "e2e/network_session.hpp"
#include "support/faults.hpp"

#include <optional>
#include <string>
#include <vector>

inline const std::string log_opened = "Logfile 'logs/ACARS.log' successfully opened";

/// What goes wrong, and what the user sees of it.
struct fault_row {
    std::string behaviour; // the test's name
    fault wanted;
    std::string line{};           // of the status pane; "%s" is the second server's alias and port
    int pair = pairs::error;      // of that line
    bool is_by_name = false;      // the second server is known by a host name
    std::vector<fault> besides{}; // what fails at the same time and is not seen
};

inline void PrintTo(const fault_row& row, std::ostream* out)
{
    *out << row.behaviour;
}

/// The name of a test in the table.
inline std::string fault_name(const testing::TestParamInfo<fault_row>& row)
{
    return row.param.behaviour;
}

class fault_session : public testing::TestWithParam<fault_row>
{
protected:
    void SetUp() override;
    /// Starts the client; nothing is connected and nothing fails yet.
    void start();
    /// Makes calls fail as the row says.
    void break_calls();
    /// Whatever failed: the first server's transmissions arrive and are logged whole, the second
    /// server can be connected, and the client leaves in order with its configuration saved.
    void expect_nothing_else_harmed();
    /// ^L on the second server.
    void connect_second();
    /// Sends a transmission from the first server; it must appear on the screen and in the log.
    void transmit_from_first(const std::string& flight);
    /// `line` with "bravo:PORT" in place of "%s".
    std::string fill_in_server(std::string line) const;
    testing::AssertionResult wait_for_hit();

    listed_servers servers{2};
    program_faults faults;
    client_settings settings;
    client_session client;
    client_start how = wide_terminal;
    std::string preloads = CLOCK_PRELOAD;
    std::string logged;
    std::optional<server_connection> first;
};
