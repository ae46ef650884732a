// connect_commands.hpp - the user's commands to connect and to disconnect the selected server.
#pragma once

/// Connects the selected server, unless it has a connection or a pending connect; reports either.
void connect_selected_server();

/// Disconnects the selected server; beeps and reports it if there is no connection.
void disconnect_selected_server();
