// connection_end.cpp - see connection_end.hpp.
#include "net/connection_end.hpp"

#include "app/app_state.hpp"
#include "data/owned_text.hpp"
#include "net/log_files.hpp"
#include "net/packet_input.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/report_reception.hpp"
#include "ui/pane.hpp"
#include "ui/server_pane.hpp"

#include <csignal>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

void close_socket(int socket)
{
    shutdown(socket, SHUT_RDWR);
    close(socket);
}

/// What every way has in common.
void drop_connection(server_entry& entry)
{
    if (entry.connect_pid > 0) {
        kill(entry.connect_pid, SIGKILL);
        entry.connect_pid = 0;
    }
    if (entry.socket_fd > 0)
        close_socket(entry.socket_fd);
    entry.socket_fd = 0;
    packet_take(entry);
}

/// Says good-bye first.
void leave_server(server_entry& entry)
{
    send_packet(entry.socket_fd, sent_good_bye, 0, 0, "Good Bye");
    drop_connection(entry);
}

void forget_identity(server_entry& entry)
{
    owned_text_clear(entry.server_version);
    owned_text_clear(entry.server_uuid);
}

void touch_status_pane()
{
    if (app_state.status_pane != nullptr)
        touchwin(app_state.status_pane);
}

/// Another entry that is connected to the server that this one names; null if there is none.
server_entry* find_duplicate(const server_entry& entry)
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* other = server_at(app_state.servers, index);
        // Kept on purpose: entries count as others by their list_row alone, so two with the same
        // one may both be connected. Test: duplicate.needs_another_connection_in_another_row.
        const bool is_same_server = other->list_row != entry.list_row && other->socket_fd != 0 &&
                                    other->server_uuid != nullptr && entry.server_uuid != nullptr &&
                                    std::strcmp(other->server_uuid, entry.server_uuid) == 0;
        if (is_same_server)
            return other;
    }
    return nullptr;
}

} // namespace

void connection_end_after_failure(server_entry& entry)
{
    status_report(colour::error, "Unable to connect to %s:%d", server_display_name(entry),
                  server_port(entry));
    // The child is gone, and its id may be another process's by now.
    entry.connect_pid = 0;
    drop_connection(entry);
    entry.connected = 0;
    forget_identity(entry);
}

void connection_end_by_user(server_entry& entry)
{
    leave_server(entry);
    forget_identity(entry);
    report_reception_drop(entry);
    close_log_file(entry);
    status_report(colour::success, "Connection to %s:%d closed", server_display_name(entry),
                  server_port(entry));
    // Kept on purpose: this is the row above the one that a new connection is marked on; users know
    // the list like that. Test: disconnect.blanks_the_row_above_the_marker.
    server_marker_write(entry.list_row, marker_none);
    touch_status_pane();
}

void check_duplicate_connection(server_entry& entry)
{
    if (find_duplicate(entry) == nullptr)
        return;
    status_report(colour::error, "You are already connected to this server!");
    beep();
    // Kept on purpose: identity and log stay; they do not count without a socket.
    // Test: duplicate.connection_leaves_its_identity_its_flags_and_its_log_behind.
    leave_server(entry);
    server_marker_write(entry.list_row + 1, marker_none);
    touch_status_pane();
}

void close_by_server(server_entry& entry)
{
    status_report(colour::error, "Connection closed by server");
    // Kept on purpose: half a report and the log stay for the next connection to the server.
    // Test: dispatch.closing_clears_the_connection_and_leaves_the_rest.
    drop_connection(entry);
    forget_identity(entry);
    server_marker_write(entry.list_row + 1, marker_none);
}

void connection_end_at_exit(server_entry& entry)
{
    report_reception_drop(entry);
    if (entry.socket_fd != 0)
        leave_server(entry);
    close_log_file(entry);
}
