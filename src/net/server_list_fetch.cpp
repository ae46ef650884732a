// server_list_fetch.cpp - see server_list_fetch.hpp.
#include "net/server_list_fetch.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "base/retry.hpp"
#include "base/state_lock.hpp"
#include "base/thread_start.hpp"
#include "net/connect_attempt.hpp"
#include "net/directory.hpp"
#include "net/directory_lines.hpp"
#include "net/readiness.hpp"
#include "ui/pane.hpp"
#include "ui/server_pane.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr int ready_wait_s = 30;
constexpr std::size_t block_bytes = 4096;
constexpr std::size_t request_size = 512;
constexpr long finish_round_us = 10'000;
constexpr std::chrono::seconds max_silence{5};
constexpr std::chrono::seconds max_finish{20};
constexpr int entries_per_batch = 256;

/// Whether the thread may still insert and draw: not once it was given up. Under the state lock.
bool may_touch_state()
{
    return !app_state.fetch.is_given_up;
}

/// Makes the socket known to shutdown; -1 takes it away again.
void publish_socket(int socket)
{
    const state_lock_guard guard;
    app_state.fetch.socket = socket;
}

bool send_request(int socket)
{
    char request[request_size];
    const int length = std::snprintf(request, sizeof request,
                                     "GET /tovrikserver.main HTTP/1.0\r\nHost: %s\r\n"
                                     "Accept: */*\r\nUser-Agent: tovrikclient-%s\r\n\r\n",
                                     directory_host, client_version);
    const auto sent =
        static_cast<std::size_t>(std::clamp<int>(length, 0, static_cast<int>(sizeof request) - 1));
    return retry_on_eintr([&] { return send(socket, request, sent, MSG_NOSIGNAL); }) >= 0;
}

/// A response as far as it has come. The capacity leaves space for a terminator.
struct response_text {
    heap_text bytes;
    std::size_t length = 0;
    std::size_t capacity = 0;
};

/// Makes sure that another block and a terminator fit. False when out of memory.
bool reserve_block(response_text& response)
{
    if (response.capacity > response.length + block_bytes)
        return true;
    const std::size_t capacity = std::max(response.capacity * 2, 4 * block_bytes);
    void* grown = std::realloc(response.bytes.get(), capacity);
    if (grown == nullptr)
        return false;
    static_cast<void>(response.bytes.release());
    response.bytes.reset(static_cast<char*>(grown));
    response.capacity = capacity;
    return true;
}

/// Reads to the end of the response, or to the bound. A read error counts as the end, and so does
/// running out of memory. False if waiting for the socket failed.
bool read_response(int socket, response_text& response)
{
    while (response.length + block_bytes <= directory_max_bytes && reserve_block(response)) {
        // Kept on purpose: a time-out goes on to the read, which waits for as long as it takes; a
        // slow directory is worth it. Test:
        // directory_fetch.a_directory_may_be_silent_for_longer_than_it_is_waited_for.
        if (wait_ready(socket, for_reading, ready_wait_s) == -1)
            return false;
        char* end = response.bytes.get() + response.length;
        const ssize_t count = retry_on_eintr([&] { return read(socket, end, block_bytes); });
        if (count <= 0)
            break;
        response.length += static_cast<std::size_t>(count);
        ++app_state.fetch.progress;
    }
    if (response.bytes)
        response.bytes.get()[response.length] = '\0';
    return true;
}

void add_entry(server_entry* entry)
{
    if (entry == nullptr)
        return;
    if (app_state.servers->count < max_servers)
        server_add_or_free(app_state.servers, entry);
    else
        server_entry_free(entry);
}

/// Adds a bounded number of entries under the state lock. False if no line is left, or the fetch
/// was given up.
bool add_batch(char*& lines)
{
    const state_lock_guard guard;
    for (int added = 0; added < entries_per_batch; ++added) {
        char* line = directory_line_next(lines);
        if (line == nullptr || !may_touch_state())
            return false;
        add_entry(directory_entry_new(line));
    }
    ++app_state.fetch.progress;
    return true;
}

void merge_response(const response_text& response)
{
    char* lines = response.length > 0 ? directory_body(response.bytes.get()) : nullptr;
    while (lines != nullptr && add_batch(lines)) {
        // The lock is not fair; without a sleep the main thread might wait for the whole list.
        const timespec yield_time = {0, 1'000'000};
        nanosleep(&yield_time, nullptr);
    }
}

/// Talks to the directory and merges its answer. False if the fetch ends without a report.
bool talk_to_directory(int socket)
{
    if (wait_ready(socket, for_writing, ready_wait_s) != 1)
        return false;
    response_text response;
    if (send_request(socket) && !read_response(socket, response))
        return false;
    merge_response(response);
    return true;
}

/// Fetches the list over a connection of its own. False if the fetch ends without a report.
bool fetch_list()
{
    const unique_fd socket{connect_server(directory_host, directory_port, nullptr)};
    if (!socket)
        return true;
    publish_socket(socket.get());
    const bool should_report = talk_to_directory(socket.get());
    publish_socket(-1);
    shutdown(socket.get(), SHUT_RDWR);
    return should_report;
}

/// Shows the result and lets the next fetch begin.
void finish_fetch(bool should_report)
{
    const state_lock_guard guard;
    const bool is_shown = should_report && may_touch_state();
    if (is_shown)
        server_list_draw();
    pthread_mutex_unlock(&app_state.fetch.fetch_mutex);
    // Kept on purpose: this is the number of all servers known, and it is reported after a failed
    // fetch as well; users see that the list is still there. Test:
    // directory_fetch.a_directory_that_refuses_or_has_no_address_leaves_the_count_unchanged.
    if (is_shown)
        status_report(colour::server_text, "Serverlist fetched with %d entries",
                      app_state.servers->count);
}

void* fetch_server_list(void*)
{
    pthread_mutex_lock(&app_state.fetch.fetch_mutex);
    finish_fetch(fetch_list());
    --app_state.fetch.running;
    return nullptr;
}

/// Starts the thread and counts it.
bool start_fetch_thread()
{
    ++app_state.fetch.running;
    const bool is_started = thread_start(app_state.fetch.fetch_thread, fetch_server_list, nullptr);
    if (!is_started)
        --app_state.fetch.running;
    return is_started;
}

void report_unable()
{
    status_report(colour::error, "Unable to fetch serverlist from %s", directory_host);
    beep();
}

void give_up_fetch()
{
    app_state.fetch.is_given_up = true;
    if (app_state.fetch.socket >= 0)
        shutdown(app_state.fetch.socket, SHUT_RDWR);
}

/// How long shutdown waits for a fetch. The time is measured and not counted in rounds, which a
/// busy machine makes longer.
struct fetch_patience {
    using clock = std::chrono::steady_clock;
    clock::time_point begin = clock::now();
    clock::time_point last_progress = begin;
    unsigned progress = app_state.fetch.progress;

    bool may_wait()
    {
        const clock::time_point now = clock::now();
        if (progress != app_state.fetch.progress) {
            progress = app_state.fetch.progress;
            last_progress = now;
        }
        return now - last_progress < max_silence && now - begin < max_finish;
    }
};

} // namespace

void start_server_list_fetch()
{
    // The count also covers the moment before a new thread has taken the mutex.
    if (app_state.fetch.running > 0 || pthread_mutex_trylock(&app_state.fetch.fetch_mutex) != 0)
        return report_unable();
    const bool is_started = start_fetch_thread();
    pthread_mutex_unlock(&app_state.fetch.fetch_mutex);
    if (is_started)
        status_report(colour::notice, "Fetch Serverlist from %s...", directory_host);
    else
        report_unable();
}

void server_list_fetch_finish()
{
    fetch_patience patience;
    while (app_state.fetch.running > 0 && patience.may_wait())
        pause_for(finish_round_us);
    if (app_state.fetch.running > 0)
        give_up_fetch();
    else
        pthread_mutex_destroy(&app_state.fetch.fetch_mutex);
}
