// client_places.hpp - the places in the client where something can happen to the user.
#pragma once

#include "e2e/client_session.hpp"

#include <string>
#include <sys/types.h>
#include <vector>

/// A client connected to a server that offers every service. Its list has that server first, then
/// one that never answers, then one whose name is never found.
class placed_client
{
public:
    /// Setting up a server that never answers takes half a second. Without it, another server
    /// takes its place in the list.
    explicit placed_client(bool with_silent_server = false);
    /// Starts the client with these settings besides its servers. `how.command`: the client, or a
    /// shell that starts it.
    [[nodiscard]] testing::AssertionResult start(client_settings settings, client_start how = {});
    /// The same without waiting: the caller's shell may delay the client.
    void launch(client_settings settings, client_start how = {});
    /// After launch: waits until the client has started, and connects it.
    [[nodiscard]] testing::AssertionResult connect();

    terminal_session& terminal()
    {
        return client.terminal();
    }

    scripted_server server{"127.0.0.9"};
    std::optional<silent_port> nowhere;
    temp_home answers; // to the look-ups of the slow resolver
    client_session client;
    std::optional<server_connection> connection;
    pid_t program = 0; // the client's own process, set once it is connected
};

struct client_place {
    const char* name;
    /// Goes there from the panes. The client stays there however long the test takes.
    testing::AssertionResult (*go)(placed_client& at);
    bool leaves_on_exit_key = false; // ^X ends the client there
    bool is_popup = false;           // closed by a resize and by a stop
    bool needs_silent_server = false;
};

extern const client_place an_attempt_to_connect;
extern const std::vector<client_place> client_places;

/// The name of a place, for parameterised tests.
std::string place_name(const testing::TestParamInfo<client_place>& about);

void PrintTo(const client_place& place, std::ostream* out);
