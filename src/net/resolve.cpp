// resolve.cpp - see resolve.hpp.
#include "net/resolve.hpp"

#include "app/app_state.hpp"
#include "app/pause.hpp"
#include "data/owners.hpp"
#include "data/text.hpp"
#include "ui/keys.hpp"

#include <cstring>
#include <netdb.h>
#include <new>

namespace
{

constexpr long round_us = 10'000;
constexpr int key_exit = 24;
constexpr int most_kept_keys = 64;

using address_list = std::unique_ptr<addrinfo, releaser<freeaddrinfo>>;

addrinfo request_hints(int flags)
{
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    hints.ai_flags = flags;
    return hints;
}

bool first_address(const addrinfo* list, sockaddr_in& address)
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
    const addrinfo hints = request_hints(flags);
    addrinfo* list = nullptr;
    if (getaddrinfo(host, nullptr, &hints, &list) != 0)
        return false;
    return first_address(address_list{list}.get(), address);
}

/// A name that a resolver thread of the C library is looking up. The thread reads all of it, so it
/// is given up only when the thread has ended or let go.
struct name_request {
    gaicb block = {};
    addrinfo hints = {};
    heap_text host;
};

/// Keys typed during a wait, to be typed again after it.
struct kept_keys {
    int keys[most_kept_keys];
    int count = 0;
    bool exit_wanted = false;
};

void keys_collect(kept_keys& kept)
{
    const int key = key_read(app_state.server_pane);
    kept.exit_wanted = kept.exit_wanted || key == key_exit;
    if (key != ERR && kept.count < most_kept_keys)
        kept.keys[kept.count++] = key;
}

void keys_give_back(const kept_keys& kept)
{
    for (int index = kept.count - 1; index >= 0; --index)
        ungetch(kept.keys[index]);
}

/// Waits for the answer. False when the user has asked for the program's end meanwhile.
bool answer_wait(name_request& request)
{
    kept_keys kept;
    while (gai_error(&request.block) == EAI_INPROGRESS && !kept.exit_wanted) {
        pause_for(round_us);
        keys_collect(kept);
    }
    keys_give_back(kept);
    return gai_error(&request.block) != EAI_INPROGRESS ||
           gai_cancel(&request.block) == EAI_CANCELED;
}

} // namespace

bool resolve_host(const char* host, sockaddr_in& address)
{
    if (resolve_in_place(host, AI_CANONNAME | AI_NUMERICHOST, address))
        return true;
    std::unique_ptr<name_request> request{new (std::nothrow) name_request};
    if (!request)
        return false;
    request->host.reset(str_dup(host));
    request->hints = request_hints(AI_CANONNAME);
    request->block.ar_name = request->host.get();
    request->block.ar_request = &request->hints;
    gaicb* blocks[] = {&request->block};
    if (!request->host || getaddrinfo_a(GAI_NOWAIT, blocks, 1, nullptr) != 0)
        return false;
    if (!answer_wait(*request)) {
        // The thread still works on it; the program is about to end.
        static_cast<void>(request.release());
        return false;
    }
    const bool is_found = gai_error(&request->block) == 0;
    const address_list list{is_found ? request->block.ar_result : nullptr};
    return first_address(list.get(), address);
}

bool resolve_host_waiting(const char* host, sockaddr_in& address)
{
    return resolve_in_place(host, AI_CANONNAME, address);
}
