// connect_commands.cpp - see connect_commands.hpp.
#include "net/connect_commands.hpp"

#include "app/app_state.hpp"
#include "net/connect_attempt.hpp"
#include "net/connection_end.hpp"
#include "net/server_box.hpp"
#include "ui/pane.hpp"

void connect_selected_server()
{
    server_entry* entry = selected_server();
    if (entry == nullptr)
        return;
    if (entry->socket_fd != 0) {
        status_report(colour::error, "You are already connected to %s",
                      server_display_name(*entry));
        return;
    }
    entry->list_row = app_state.selected;
    server_box_expect(*entry);
    status_report(colour::text, "Try connecting to %s:%d", server_display_name(*entry),
                  server_port(*entry));
    if (connect_server(entry->ServerName, server_port(*entry), entry) == -1)
        status_report(colour::error, "Unable to create new socket");
}

void disconnect_selected_server()
{
    server_entry* entry = selected_server();
    if (entry == nullptr)
        return;
    if (entry->socket_fd == 0) {
        beep();
        status_report(colour::error, "You are not connected to %s", server_display_name(*entry));
        return;
    }
    connection_end_by_user(*entry);
}
