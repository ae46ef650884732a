// connection.cpp - see connection.hpp.
#include "net/connection.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/retry.hpp"
#include "base/signal_door.hpp"
#include "data/text.hpp"
#include "net/log_files.hpp"
#include "net/packet_input.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/resolve.hpp"
#include "ui/pane.hpp"
#include "ui/server_pane.hpp"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr long child_delay_ns = 100'000'000;
constexpr int child_connected = 1;
constexpr int child_failed = 0;
constexpr int version_fields = 3;

void socket_close(int socket)
{
    shutdown(socket, SHUT_RDWR);
    close(socket);
}

bool connect_in_place(int socket, const sockaddr_in& address)
{
    const auto* general = reinterpret_cast<const sockaddr*>(&address);
    // A connect that was interrupted goes on meanwhile; asked again, it waits for itself.
    return uninterrupted([&] { return connect(socket, general, sizeof address); }) == 0 ||
           errno == EISCONN;
}

/// What the child does: nothing that could touch what it shares with its parent but the socket.
[[noreturn]] void child_run(pid_t parent, int socket, const sockaddr_in& address)
{
    // However the program ends, nothing of it stays behind.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(child_failed);
    signals_reset_in_child();
    // The delay gives the parent time to note the child's id before the result comes.
    const timespec delay = {0, child_delay_ns};
    ppoll(nullptr, 0, &delay, nullptr);
    _exit(connect_in_place(socket, address) ? child_connected : child_failed);
}

pid_t child_start(int socket, const sockaddr_in& address)
{
    const signal_block_guard blocked;
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0)
        child_run(parent, socket, address);
    return child;
}

void connect_failed(server_entry& entry)
{
    status_report(colour::error, "Unable to connect to %s:%d", server_display_name(entry),
                  server_port(entry));
    // The child is gone, and its id may be another process's by now.
    entry.connect_pid = 0;
    connection_end(entry);
    entry.connected = 0;
    server_identity_clear(entry);
}

void connect_in_child(int socket, const sockaddr_in& address, server_entry& entry)
{
    entry.socket_fd = socket;
    entry.connected = 0;
    signal_install(SIGCHLD, on_connect_result);
    const pid_t child = child_start(socket, address);
    if (child > 0)
        entry.connect_pid = child;
    else
        connect_failed(entry);
}

/// Tells the server who is there and that transmissions are wanted as XML.
void introduce(const server_entry& entry)
{
    const heap_text version{str_dup(client_version)};
    char* fields[version_fields] = {};
    if (version && str_split(version.get(), fields, version_fields, ".") == version_fields)
        send_packet(entry.socket_fd, packet_client_version, 0, 0, "%s %s %s", fields[0], fields[1],
                    fields[2]);
    send_packet(entry.socket_fd, packet_transmission_format, 0, 0, "CXML");
}

void connect_succeeded(server_entry& entry)
{
    status_report(colour::notice, "Successfully connected %s:%d. Handle #%d",
                  server_display_name(entry), server_port(entry), entry.socket_fd);
    introduce(entry);
    if (is_setting_on(ACARSLog) || is_setting_on(SaveToOne))
        open_log_files(entry);
    server_marker_write(entry.list_row + 1, marker_connected);
    entry.connect_pid = 0;
    entry.connected = 1;
}

server_entry* entry_of_child(pid_t child)
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* entry = server_at(app_state.servers, index);
        if (entry->connect_pid == child)
            return entry;
    }
    return nullptr;
}

server_entry* duplicate_of(const server_entry& entry)
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* other = server_at(app_state.servers, index);
        const bool is_same_server = other->list_row != entry.list_row && other->socket_fd != 0 &&
                                    other->server_uuid != nullptr && entry.server_uuid != nullptr &&
                                    std::strcmp(other->server_uuid, entry.server_uuid) == 0;
        if (is_same_server)
            return other;
    }
    return nullptr;
}

void status_pane_touch()
{
    if (app_state.status_pane != nullptr)
        touchwin(app_state.status_pane);
}

} // namespace

int connect_server(const char* host, std::int32_t port, server_entry* entry)
{
    sockaddr_in address = {};
    const bool is_resolved =
        entry != nullptr ? resolve_host(host, address) : resolve_host_waiting(host, address);
    if (!is_resolved)
        return -1;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    unique_fd fd{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP)};
    if (!fd)
        return -1;
    const int socket = fd.get();
    if (entry != nullptr)
        connect_in_child(fd.release(), address, *entry);
    else if (!connect_in_place(socket, address))
        return -1;
    else
        fd.release();
    return socket;
}

void on_connect_result(int)
{
    int status = 0;
    // One signal may stand for several children.
    const auto next_ended = [&] { return waitpid(-1, &status, WNOHANG); };
    for (pid_t child; (child = uninterrupted(next_ended)) > 0;) {
        server_entry* entry = entry_of_child(child);
        if (entry == nullptr)
            continue;
        if ((status >> 8) != child_failed)
            connect_succeeded(*entry);
        else
            connect_failed(*entry);
    }
}

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
    connection_leave(*entry);
    server_identity_clear(*entry);
    report_reception_drop(*entry);
    close_log_file(*entry);
    status_report(colour::success, "Connection to %s:%d closed", server_display_name(*entry),
                  server_port(*entry));
    // One row above where the marker of a new connection was drawn; meant to be so.
    server_marker_write(entry->list_row, marker_none);
    status_pane_touch();
}

void check_duplicate_connection(server_entry& entry)
{
    if (duplicate_of(entry) == nullptr)
        return;
    status_report(colour::error, "You are already connected to this server!");
    beep();
    connection_leave(entry);
    server_marker_write(entry.list_row + 1, marker_none);
    status_pane_touch();
}

void connection_end(server_entry& entry)
{
    if (entry.connect_pid > 0) {
        kill(entry.connect_pid, SIGKILL);
        entry.connect_pid = 0;
    }
    if (entry.socket_fd > 0)
        socket_close(entry.socket_fd);
    entry.socket_fd = 0;
    packet_take(entry);
}

void connection_leave(server_entry& entry)
{
    send_packet(entry.socket_fd, packet_good_bye, 0, 0, "Good Bye");
    connection_end(entry);
}

void server_identity_clear(server_entry& entry)
{
    std::free(entry.server_version);
    entry.server_version = nullptr;
    std::free(entry.server_uuid);
    entry.server_uuid = nullptr;
}

void report_reception_drop(server_entry& entry)
{
    std::free(entry.report_buffer);
    entry.report_buffer = nullptr;
    entry.report_received = 0;
}
