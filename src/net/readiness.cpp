// readiness.cpp - see readiness.hpp.
#include "net/readiness.hpp"

#include <new>

namespace
{

bool sockets_collect(readiness& answer, const collection* servers, std::int32_t first,
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

readiness readiness_ask(const collection* servers, std::int32_t first,
                        bool (*is_asked)(const server_entry&))
{
    readiness answer;
    const bool is_answered =
        sockets_collect(answer, servers, first, is_asked) &&
        poll(answer.sockets.data(), static_cast<nfds_t>(answer.sockets.size()), 0) >= 0;
    // Choosing between the two in one expression would copy the answer, and run out of memory
    // there.
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
