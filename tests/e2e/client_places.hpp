// client_places.hpp - everywhere in the client that somebody can be when something happens to it.
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
    /// A server that never answers takes half a second to make; without it, its place in the list
    /// is another's.
    explicit placed_client(bool with_silent_server = false);
    /// Starts it with these settings besides its servers. `how.command`: the client, or a shell
    /// that starts it.
    [[nodiscard]] testing::AssertionResult start(client_settings settings, client_start how = {});
    /// The same without waiting; the caller's shell may hold the client back until later.
    void launch(client_settings settings, client_start how = {});
    /// After a launch: waits until the client has started, and connects it.
    [[nodiscard]] testing::AssertionResult connect();

    terminal_session& terminal()
    {
        return client.terminal();
    }

    scripted_server server{"127.0.0.9"};
    std::optional<silent_port> nowhere;
    temp_home answers; // for the name that is looked up: see the slow resolver
    client_session client;
    std::optional<server_connection> connection;
    pid_t program = 0; // the client's own process, known once it is connected
};

struct client_place {
    const char* name;
    /// Goes there from the panes; the place stays however long the test takes.
    testing::AssertionResult (*go)(placed_client& at);
    bool leaves_on_exit_key = false; // ^X ends the client there
    bool is_popup = false;           // closed by a resize and by a stop
    bool needs_silent_server = false;
};

extern const client_place an_attempt_to_connect;
extern const std::vector<client_place> client_places;

/// The name of a place, for tests made of a table of them.
std::string place_name(const testing::TestParamInfo<client_place>& about);

void PrintTo(const client_place& place, std::ostream* out);
