// client_rig.cpp - see client_rig.hpp.
#include "faults/allocation/client_rig.hpp"

#include "app/app_state.hpp"
#include "app/main_loop.hpp"
#include "app/start_stop.hpp"
#include "base/pause.hpp"
#include "faults/allocation/virtual_time.hpp"
#include "net/connect_commands.hpp"
#include "net/directory.hpp"
#include "net/log_files.hpp"
#include "support/config_text.hpp"
#include "support/loopback.hpp"
#include "ui/layout.hpp"
#include "ui/server_pane.hpp"

#include <clocale>
#include <csignal>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr const char* addresses[rig_servers] = {"127.0.0.9", "127.0.0.8"};
constexpr const char* aliases[rig_servers] = {"alpha", "bravo"};
constexpr long long patience_us = 2'000'000; // of the virtual clock, for a user who does nothing
constexpr int max_moments = 20'000;
constexpr int key_escape_code = 27;
constexpr int key_exit_code = 24;

long long typed_at_us = 0;

int open_directory_listener()
{
    static const int listener = [] {
        const int fd = bind_free_port("127.0.0.1");
        listen(fd, 8);
        fcntl(fd, F_SETFL, O_NONBLOCK);
        return fd;
    }();
    return listener;
}

/// Whether the newest line of the status pane is this text.
bool is_status(std::string_view text)
{
    WINDOW* pane = app_state.status_pane;
    for (std::size_t at = 0; pane != nullptr && at < text.size(); ++at) {
        const chtype cell = mvwinch(pane, status_row, status_column + static_cast<int>(at));
        if (static_cast<char>(cell & A_CHARTEXT) != text[at])
            return false;
    }
    return pane != nullptr;
}

void wait_a_moment()
{
    const timespec moment = {0, 100'000};
    nanosleep(&moment, nullptr);
}

/// The arrows are written as bytes that no terminal sends.
int decode_key(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    if (code == rig_key_down)
        return KEY_DOWN;
    return code == rig_key_up ? KEY_UP : code;
}

void push_keys(std::string_view keys)
{
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        ungetch(decode_key(*key));
}

/// Acts as a user who closes whatever is open.
void on_pause(long long now_us)
{
    if (typed_at_us == 0)
        typed_at_us = now_us;
    if (now_us < typed_at_us + patience_us)
        return;
    typed_at_us = now_us;
    ungetch(key_exit_code);
    ungetch(key_escape_code);
}

void set_user(bool is_there)
{
    typed_at_us = 0;
    pause_watch(is_there ? on_pause : nullptr);
}

/// The position in the list of a configured server, or -1. When out of memory, the client may have
/// lost its name or its alias.
std::int32_t find_position(std::size_t index)
{
    for (std::int32_t position = 0; position < app_state.servers->count; ++position) {
        const server_entry& entry = *server_at(app_state.servers, position);
        const char* alias = entry.ServerAlias != nullptr ? entry.ServerAlias : "";
        if (std::strcmp(entry.ServerName, addresses[index]) == 0 ||
            std::strcmp(alias, aliases[index]) == 0)
            return position;
    }
    return -1;
}

int count_threads()
{
    int count = 0;
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr)
        return max_moments; // asked again in a moment
    while (readdir(tasks) != nullptr)
        ++count;
    closedir(tasks);
    return count - 2; // "." and ".."
}

void send_answer(int listener, const std::string& answer)
{
    const int connection = accept(listener, nullptr, nullptr);
    if (connection < 0)
        return;
    send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
    shutdown(connection, SHUT_WR);
    close(connection);
}

} // namespace

const char* const directory_host = "127.0.0.1";
const std::int32_t directory_port = port_of(open_directory_listener());

void rig_listen(client_rig& rig)
{
    for (std::size_t index = 0; index < rig_servers; ++index) {
        rig.servers[index].listener = bind_free_port(addresses[index]);
        listen(rig.servers[index].listener, 8);
        fcntl(rig.servers[index].listener, F_SETFL, O_NONBLOCK);
    }
}

std::string rig_config(const client_rig& rig, bool fetch_on_start)
{
    client_settings settings{.acars_log = true,
                             .contact_info = true,
                             .save_passwords = true,
                             .flight_stats = true,
                             .fetch_on_start = fetch_on_start,
                             .save_on_exit = true,
                             .servers = {}};
    for (std::size_t index = 0; index < rig_servers; ++index)
        settings.servers.push_back({.name = addresses[index],
                                    .port = std::to_string(port_of(rig.servers[index].listener)),
                                    .alias = aliases[index],
                                    .location = "Frankfurt",
                                    .info = "on the hill",
                                    .password = std::string(32, '0'),
                                    .subcode = "1234",
                                    .email = "pilot@example.org"});
    return config_text(settings);
}

bool rig_start()
{
    std::setlocale(LC_CTYPE, "C.UTF-8");
    pause_init();
    return app_start();
}

server_entry* rig_entry(std::size_t index)
{
    const std::int32_t position = find_position(index);
    return server_at(app_state.servers, position);
}

bool rig_is_configured(const client_rig& rig, std::size_t index)
{
    const server_entry* entry = rig_entry(index);
    return entry != nullptr && std::strcmp(entry->ServerName, addresses[index]) == 0 &&
           entry->ServerPort == port_of(rig.servers[index].listener);
}

void rig_connect_wait(std::size_t index)
{
    const server_entry* entry = rig_entry(index);
    for (int moments = 0; entry->connect_pid > 0 && moments < max_moments; ++moments) {
        wait_a_moment();
        pause_for(1'000);
    }
}

bool rig_accept(client_rig& rig, std::size_t index)
{
    rig_server& server = rig.servers[index];
    server.connection = accept4(server.listener, nullptr, nullptr, SOCK_CLOEXEC);
    return server.connection >= 0;
}

bool rig_connect(client_rig& rig, std::size_t index)
{
    app_state.selected = find_position(index) + 1;
    connect_selected_server();
    rig_connect_wait(index);
    return rig_accept(rig, index);
}

void rig_join(client_rig& rig)
{
    for (std::size_t index = 0; index < rig_servers; ++index) {
        server_entry& entry = *rig_entry(index);
        int ends[2] = {-1, -1};
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        entry.socket_fd = ends[0];
        rig.servers[index].connection = ends[1];
        entry.connected = 1;
        entry.last_data_time = std::time(nullptr);
        entry.can_mail = entry.can_modify = entry.can_report = entry.can_page = 1;
        server_marker_write(entry.list_row + 1, marker_connected);
        open_log_files(entry);
    }
}

void rig_type(std::string_view keys)
{
    const char last_key[] = {static_cast<char>(key_exit_code), '\0'};
    push_keys(last_key);
    push_keys(keys);
    set_user(true);
    main_loop();
    set_user(false);
    flushinp();
}

void rig_packets_take(const client_rig& rig, std::string_view keys)
{
    push_keys(keys);
    set_user(true);
    for (const std::string& packet : rig.packets) {
        rig_send(rig, 0, packet);
        rig_poll();
    }
    set_user(false);
    flushinp();
}

void rig_poll()
{
    raise(SIGALRM);
    pause_for(1'000);
}

void rig_resize(unsigned short rows, unsigned short columns)
{
    winsize size = {};
    size.ws_row = rows;
    size.ws_col = columns;
    ioctl(STDOUT_FILENO, TIOCSWINSZ, &size);
    raise(SIGWINCH);
    pause_for(1'000);
}

void rig_send(const client_rig& rig, std::size_t index, std::string_view bytes)
{
    send(rig.servers[index].connection, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void rig_directory_serve(const client_rig& rig)
{
    for (int moments = 0; app_state.fetch.running > 0 && moments < max_moments; ++moments) {
        send_answer(open_directory_listener(), rig.directory_answer);
        wait_a_moment();
        pause_for(1'000);
    }
}

bool rig_wait_for_status(std::string_view text)
{
    for (int moments = 0; moments < max_moments; ++moments) {
        rig_poll();
        if (is_status(text))
            return true;
        wait_a_moment();
    }
    return false;
}

void rig_threads_wait()
{
    for (int moments = 0; count_threads() > 1 && moments < max_moments; ++moments)
        wait_a_moment();
}
