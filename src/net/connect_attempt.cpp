// connect_attempt.cpp - see connect_attempt.hpp.
#include "net/connect_attempt.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/ppoll.hpp"
#include "base/retry.hpp"
#include "base/signal_door.hpp"
#include "data/text.hpp"
#include "net/connection_end.hpp"
#include "net/log_files.hpp"
#include "net/packet_kind.hpp"
#include "net/packet_output.hpp"
#include "net/resolve.hpp"
#include "ui/pane.hpp"
#include "ui/server_pane.hpp"

#include <cerrno>
#include <csignal>
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

bool connect_in_place(int socket, const sockaddr_in& address)
{
    const auto* general = reinterpret_cast<const sockaddr*>(&address);
    // A connect goes on after EINTR; calling it again waits for its end.
    return retry_on_eintr([&] { return connect(socket, general, sizeof address); }) == 0 ||
           errno == EISCONN;
}

/// What the child does. It touches nothing that it shares with its parent except the socket.
[[noreturn]] void run_child(pid_t parent, int socket, const sockaddr_in& address)
{
    // However the program ends, the child ends with it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(child_failed);
    signals_reset_in_child();
    // The delay gives the parent time to note the child's id before the result comes.
    const timespec delay = {0, child_delay_ns};
    ppoll_call(nullptr, 0, &delay, nullptr);
    _exit(connect_in_place(socket, address) ? child_connected : child_failed);
}

pid_t start_child(int socket, const sockaddr_in& address)
{
    const signal_block_guard blocked;
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0)
        run_child(parent, socket, address);
    return child;
}

void connect_in_child(int socket, const sockaddr_in& address, server_entry& entry)
{
    entry.socket_fd = socket;
    entry.connected = 0;
    signal_install(SIGCHLD, on_connect_result);
    const pid_t child = start_child(socket, address);
    if (child > 0)
        entry.connect_pid = child;
    else
        connection_end_after_failure(entry);
}

/// Tells the server which client this is, and that transmissions are wanted as XML.
void introduce_client(const server_entry& entry)
{
    const heap_text version{str_dup(client_version)};
    char* fields[version_fields] = {};
    if (version && str_split(version.get(), fields, version_fields, ".") == version_fields)
        send_packet(entry.socket_fd, sent_client_version, 0, 0, "%s %s %s", fields[0], fields[1],
                    fields[2]);
    send_packet(entry.socket_fd, sent_transmission_format, 0, 0, "CXML");
}

void begin_connection(server_entry& entry)
{
    status_report(colour::notice, "Successfully connected %s:%d. Handle #%d",
                  server_display_name(entry), server_port(entry), entry.socket_fd);
    introduce_client(entry);
    if (is_setting_on(ACARSLog) || is_setting_on(SaveToOne))
        open_log_files(entry);
    // Kept on purpose: this is the row below the one that the user's disconnect command blanks;
    // users know the list like that. Test: disconnect.blanks_the_row_above_the_marker.
    server_marker_write(entry.list_row + 1, marker_connected);
    entry.connect_pid = 0;
    // Kept on purpose: a new connection resets neither last_data_time nor heartbeat_sent, so the
    // idle rule counts from the connection before; servers speak first for that reason.
    // Test: connection.begins_with_the_silence_that_was_there_before.
    entry.connected = 1;
}

server_entry* find_entry(pid_t child)
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        server_entry* entry = server_at(app_state.servers, index);
        if (entry->connect_pid == child)
            return entry;
    }
    return nullptr;
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
    for (pid_t child; (child = retry_on_eintr(next_ended)) > 0;) {
        server_entry* entry = find_entry(child);
        if (entry == nullptr)
            continue;
        if ((status >> 8) != child_failed)
            begin_connection(*entry);
        else
            connection_end_after_failure(*entry);
    }
}
