// readiness.cpp - see readiness.hpp.
#include "net/readiness.hpp"

#include "base/ppoll.hpp"
#include "base/retry.hpp"

#include <new>

namespace
{

bool collect_sockets(readiness& answer, const collection* servers, std::int32_t first,
                     bool (*is_asked)(const server_entry&))
{
    try {
        for (std::int32_t index = first; index < servers->count; ++index) {
            const server_entry* entry = server_at(servers, index);
            if (!is_asked(*entry))
                continue;
            answer.entries.push_back(entry);
            answer.sockets.push_back({entry->socket_fd, POLLIN, 0});
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

} // namespace

int wait_ready(int socket, int direction, int seconds)
{
    const timespec limit = {seconds, ready_wait_us * 1'000};
    pollfd watched = {socket, static_cast<short>(direction == for_writing ? POLLOUT : POLLIN), 0};
    if (socket <= 0)
        return -1;
    const int ready = retry_on_eintr([&] { return ppoll_call(&watched, 1, &limit, nullptr); });
    if (ready < 0 || (watched.revents & POLLNVAL) != 0)
        return -1;
    return ready > 0 ? 1 : 0;
}

readiness readiness_ask(const collection* servers, std::int32_t first,
                        bool (*is_asked)(const server_entry&))
{
    readiness answer;
    const bool is_answered =
        collect_sockets(answer, servers, first, is_asked) &&
        poll(answer.sockets.data(), static_cast<nfds_t>(answer.sockets.size()), 0) >= 0;
    // A conditional expression here would copy the answer, and run out of memory doing so.
    if (!is_answered)
        answer = {};
    return answer;
}

bool readiness_of(readiness& answer, const server_entry& entry)
{
    if (answer.next >= answer.entries.size() || answer.entries[answer.next] != &entry)
        return true;
    const pollfd& asked = answer.sockets[answer.next++];
    return asked.fd != entry.socket_fd || asked.revents != 0;
}
