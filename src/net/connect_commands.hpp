// connect_commands.hpp - the user's commands to connect and to disconnect the selected server.
#pragma once

/// Begins to connect the selected server and reports that. If it has a connection or a pending
/// connect, only that is reported.
void connect_selected_server();

/// Disconnects the selected server, which also ends a pending connect. If it has neither, that is
/// reported with a beep.
void disconnect_selected_server();
