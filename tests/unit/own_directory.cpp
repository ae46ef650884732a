// own_directory.cpp - see own_directory.hpp. The linker sends each call of a wrapped function here.
#include "unit/own_directory.hpp"

#include "base/pause.hpp"
#include "base/state_lock.hpp"
#include "net/connect_attempt.hpp"

#include <atomic>
#include <sys/socket.h>
#include <thread>

namespace
{

std::atomic<int> lock_requests = 0;
std::atomic<bool> is_in_use = false;
std::atomic<bool> has_connections = true;
std::atomic<int> far_end = -1; // of the latest connection, until the test takes it

bool wait_for(const std::function<bool()>& holds)
{
    const auto deadline = std::chrono::steady_clock::now() + default_patience;
    while (!holds() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
    return holds();
}

int connect_here()
{
    int ends[2] = {-1, -1};
    if (!has_connections || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return -1;
    far_end = ends[1];
    return ends[0];
}

} // namespace

extern "C" {
void __real__Z15state_lock_takev();
int __real__Z14connect_serverPKciP12server_entry(const char* host, std::int32_t port,
                                                 server_entry* entry);
void __wrap__Z15state_lock_takev();
int __wrap__Z14connect_serverPKciP12server_entry(const char* host, std::int32_t port,
                                                 server_entry* entry);
}

void __wrap__Z15state_lock_takev()
{
    ++lock_requests;
    __real__Z15state_lock_takev();
}

int __wrap__Z14connect_serverPKciP12server_entry(const char* host, std::int32_t port,
                                                 server_entry* entry)
{
    return is_in_use ? connect_here()
                     : __real__Z14connect_serverPKciP12server_entry(host, port, entry);
}

own_directory::own_directory(bool is_reached)
{
    has_connections = is_reached;
    is_in_use = true;
}

own_directory::~own_directory()
{
    is_in_use = false;
    const unique_fd left{far_end.exchange(-1)};
}

std::optional<server_end> own_directory::accept()
{
    if (!wait_for([] { return far_end >= 0; }))
        return std::nullopt;
    return server_end{far_end.exchange(-1)};
}

bool own_directory::takes_request(const server_end& list)
{
    std::string request;
    const auto deadline = std::chrono::steady_clock::now() + default_patience;
    while (!request.ends_with("\r\n\r\n") && std::chrono::steady_clock::now() < deadline) {
        pause_for(1'000);
        request += list.take_bytes();
    }
    return request.ends_with("\r\n\r\n");
}

int state_lock_requests()
{
    return lock_requests;
}

bool wait_for_lock_requests(int count)
{
    return wait_for([count] { return lock_requests >= count; });
}
