// resolve.cpp - see resolve.hpp.
#include "net/resolve.hpp"

#include "app/app_state.hpp"
#include "base/owners.hpp"
#include "base/pause.hpp"
#include "base/thread_start.hpp"
#include "data/text.hpp"
#include "ui/keys.hpp"

#include <atomic>
#include <cstring>
#include <netdb.h>
#include <new>

namespace
{

constexpr long round_us = 10'000;
constexpr int max_kept_keys = 64;

using address_list = std::unique_ptr<addrinfo, releaser<freeaddrinfo>>;

addrinfo make_hints(int flags)
{
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    hints.ai_flags = flags;
    return hints;
}

bool copy_first_address(const addrinfo* list, sockaddr_in& address)
{
    if (list == nullptr || list->ai_addrlen < sizeof(sockaddr_in))
        return false;
    sockaddr_in found = {};
    std::memcpy(&found, list->ai_addr, sizeof found);
    address.sin_family = found.sin_family;
    address.sin_addr = found.sin_addr;
    return true;
}

bool resolve_in_place(const char* host, int flags, sockaddr_in& address)
{
    const addrinfo hints = make_hints(flags);
    addrinfo* list = nullptr;
    if (getaddrinfo(host, nullptr, &hints, &list) != 0)
        return false;
    return copy_first_address(address_list{list}.get(), address);
}

/// A name that a thread of its own looks up; the thread touches nothing else. The last of the two
/// owners, the thread and the caller that waits, deletes it.
struct name_request {
    heap_text host;
    sockaddr_in address = {};
    bool is_found = false;
    std::atomic<bool> is_answered = false;
    std::atomic<int> owners = 2;
};

void drop_reference(name_request* request)
{
    if (request->owners.fetch_sub(1) == 1)
        delete request;
}

using owned_request = std::unique_ptr<name_request, releaser<drop_reference>>;

void* run_resolver(void* argument)
{
    const owned_request request{static_cast<name_request*>(argument)};
    request->is_found = resolve_in_place(request->host.get(), AI_CANONNAME, request->address);
    request->is_answered = true;
    return nullptr;
}

/// Keys typed during a wait, which are put back after it.
struct kept_keys {
    int keys[max_kept_keys + 1]; // one more for ^X, which ends the wait
    int count = 0;
    bool is_exit_wanted = false;
};

void collect_key(kept_keys& kept)
{
    const int key = key_read(app_state.server_pane);
    kept.is_exit_wanted = kept.is_exit_wanted || key == key_exit;
    if (key != ERR && (kept.count < max_kept_keys || kept.is_exit_wanted))
        kept.keys[kept.count++] = key;
}

void put_keys_back(const kept_keys& kept)
{
    for (int index = kept.count - 1; index >= 0; --index)
        key_give_back(kept.keys[index]);
}

/// Waits until there is an answer, or until the user wants to leave the program.
void wait_for_answer(const name_request& request)
{
    kept_keys kept;
    while (!request.is_answered && !kept.is_exit_wanted) {
        pause_for(round_us);
        collect_key(kept);
    }
    put_keys_back(kept);
}

} // namespace

bool resolve_host(const char* host, sockaddr_in& address)
{
    if (resolve_in_place(host, AI_CANONNAME | AI_NUMERICHOST, address))
        return true;
    const owned_request request{new (std::nothrow) name_request};
    if (!request)
        return false;
    request->host.reset(str_dup(host));
    pthread_t thread;
    if (!request->host || !thread_start(thread, run_resolver, request.get())) {
        request->owners = 1;
        return false;
    }
    wait_for_answer(*request);
    if (!request->is_answered || !request->is_found)
        return false;
    address = request->address;
    return true;
}

bool resolve_host_waiting(const char* host, sockaddr_in& address)
{
    return resolve_in_place(host, AI_CANONNAME, address);
}
