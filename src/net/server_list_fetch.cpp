// server_list_fetch.cpp - see server_list_fetch.hpp.
#include "net/server_list_fetch.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "base/retry.hpp"
#include "base/state_lock.hpp"
#include "base/thread_start.hpp"
#include "net/connection.hpp"
#include "net/directory.hpp"
#include "net/directory_lines.hpp"
#include "net/packet_output.hpp"
#include "ui/pane.hpp"
#include "ui/popup.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr int ready_wait_s = 30;
constexpr std::size_t block_bytes = 4096;
constexpr long finish_round_us = 10'000;
constexpr long silence_limit_us = 5'000'000;
constexpr int entries_a_batch = 256;

/// Holds the state lock for a moment in which the thread touches shared state.
class state_lock_moment
{
public:
    state_lock_moment()
    {
        state_lock_take();
    }
    ~state_lock_moment()
    {
        state_lock_release();
    }
    state_lock_moment(const state_lock_moment&) = delete;
    state_lock_moment& operator=(const state_lock_moment&) = delete;

    /// Whether shared state may still be touched.
    static bool is_welcome()
    {
        return !app_state.fetch.is_given_up;
    }
};

/// Makes the socket known to shutdown, or takes it away again.
void socket_publish(int socket)
{
    const state_lock_moment moment;
    app_state.fetch.socket = socket;
}

bool request_send(int socket)
{
    char request[512];
    const int length = std::snprintf(request, sizeof request,
                                     "GET /tovrikserver.main HTTP/1.0\r\nHost: %s\r\n"
                                     "Accept: */*\r\nUser-Agent: tovrikclient-%s\r\n\r\n",
                                     directory_host, client_version);
    const auto sent =
        static_cast<std::size_t>(std::clamp<int>(length, 0, static_cast<int>(sizeof request) - 1));
    return uninterrupted([&] { return send(socket, request, sent, MSG_NOSIGNAL); }) >= 0;
}

/// A response as far as it has come, with room for a terminator.
struct response_text {
    heap_text bytes;
    std::size_t length = 0;
    std::size_t room = 0;
};

bool room_make(response_text& response)
{
    if (response.room > response.length + block_bytes)
        return true;
    const std::size_t room = std::max(response.room * 2, 4 * block_bytes);
    void* grown = std::realloc(response.bytes.get(), room);
    if (grown == nullptr)
        return false;
    static_cast<void>(response.bytes.release());
    response.bytes.reset(static_cast<char*>(grown));
    response.room = room;
    return true;
}

/// Reads to the end of the response, or to the bound. False when waiting for the socket failed. A
/// read error counts as the end; so does a lack of memory.
bool response_read(int socket, response_text& response)
{
    while (response.length + block_bytes <= directory_max_bytes && room_make(response)) {
        if (wait_ready(socket, for_reading, ready_wait_s) == -1)
            return false;
        char* end = response.bytes.get() + response.length;
        const ssize_t count = uninterrupted([&] { return read(socket, end, block_bytes); });
        if (count <= 0)
            break;
        response.length += static_cast<std::size_t>(count);
        ++app_state.fetch.progress;
    }
    if (response.bytes)
        response.bytes.get()[response.length] = '\0';
    return true;
}

void entry_add(server_entry* entry)
{
    if (entry == nullptr)
        return;
    if (app_state.servers->count < max_servers)
        server_add_or_free(app_state.servers, entry);
    else
        server_entry_free(entry);
}

/// Adds some entries, then lets the main thread go on. False when no line is left.
bool batch_add(char*& lines)
{
    const state_lock_moment moment;
    for (int added = 0; added < entries_a_batch; ++added) {
        char* line = directory_line_next(lines);
        if (line == nullptr || !state_lock_moment::is_welcome())
            return false;
        entry_add(directory_entry_new(line));
    }
    ++app_state.fetch.progress;
    return true;
}

void response_merge(const response_text& response)
{
    char* lines = response.length > 0 ? directory_body(response.bytes.get()) : nullptr;
    while (lines != nullptr && batch_add(lines)) {
        // The lock goes to whoever takes it first, and the main thread has been waiting.
        const timespec breath = {0, 1'000'000};
        nanosleep(&breath, nullptr);
    }
}

/// Talks to the directory and merges its answer. False when the fetch ends without a word.
bool fetch_through(int socket)
{
    if (wait_ready(socket, for_writing, ready_wait_s) != 1)
        return false;
    response_text response;
    if (request_send(socket) && !response_read(socket, response))
        return false;
    response_merge(response);
    return true;
}

/// Shows the list, under a window that is open.
void list_show()
{
    server_list_draw();
    popup_raise();
}

/// Shows the result; the next fetch may begin from here on.
void fetch_report(bool is_worth_a_word)
{
    const state_lock_moment moment;
    const bool is_shown = is_worth_a_word && state_lock_moment::is_welcome();
    if (is_shown)
        list_show();
    pthread_mutex_unlock(&app_state.fetch.mutex);
    if (is_shown)
        status_report(colour::server_text, "Serverlist fetched with %d entries",
                      app_state.servers->count);
}

void* fetch_server_list(void*)
{
    pthread_mutex_lock(&app_state.fetch.mutex);
    const int socket = connect_server(directory_host, directory_port, nullptr);
    bool is_worth_a_word = true;
    if (socket >= 0) {
        socket_publish(socket);
        is_worth_a_word = fetch_through(socket);
        socket_publish(-1);
        shutdown(socket, SHUT_RDWR);
        close(socket);
    }
    fetch_report(is_worth_a_word);
    --app_state.fetch.running;
    return nullptr;
}

/// Starts the thread and counts it.
bool fetch_thread_start()
{
    ++app_state.fetch.running;
    const bool is_started = thread_start(app_state.fetch.thread, fetch_server_list, nullptr);
    if (!is_started)
        --app_state.fetch.running;
    return is_started;
}

void report_unable()
{
    status_report(colour::error, "Unable to fetch serverlist from %s", directory_host);
    beep();
}

void fetch_give_up()
{
    app_state.fetch.is_given_up = true;
    if (app_state.fetch.socket >= 0)
        shutdown(app_state.fetch.socket, SHUT_RDWR);
}

} // namespace

void start_server_list_fetch()
{
    // The count also covers the moment before a new thread has taken the mutex.
    if (app_state.fetch.running > 0 || pthread_mutex_trylock(&app_state.fetch.mutex) != 0)
        return report_unable();
    const bool is_started = fetch_thread_start();
    pthread_mutex_unlock(&app_state.fetch.mutex);
    if (is_started)
        status_report(colour::notice, "Fetch Serverlist from %s...", directory_host);
    else
        report_unable();
}

void server_list_fetch_finish()
{
    unsigned progress = app_state.fetch.progress;
    long silent_us = 0;
    while (app_state.fetch.running > 0 && silent_us < silence_limit_us) {
        pause_for(finish_round_us);
        silent_us += finish_round_us;
        if (progress != app_state.fetch.progress)
            silent_us = 0;
        progress = app_state.fetch.progress;
    }
    if (app_state.fetch.running > 0)
        fetch_give_up();
    else
        pthread_mutex_destroy(&app_state.fetch.mutex);
}
