// readiness.hpp - asks the kernel which sockets are ready: one of them, or those of all servers.
//
// All servers are asked about at once, so that a cycle over a thousand silent ones does not wait
// for each.
#pragma once

#include "data/server_registry.hpp"

#include <cstddef>
#include <poll.h>
#include <vector>

/// How long a socket is waited for before it counts as not ready.
constexpr long ready_wait_us = 200;

/// What wait_ready waits for.
constexpr int for_reading = 0;
constexpr int for_writing = 1;

/// Waits until a socket is ready, at most `seconds` and 200 microseconds.
/// direction: for_writing, or any other value for reading. A socket at its end counts as ready.
/// 1 if it is ready, 0 if not within that time, -1 if the socket cannot be waited for.
int wait_ready(int socket, int direction, int seconds);

/// Which servers had something to read when asked, in the order of the collection.
struct readiness {
    std::vector<const server_entry*> entries;
    std::vector<pollfd> sockets; // in the same order
    std::size_t next = 0;        // where readiness_of goes on
};

/// Asks about all servers from the index `first` on that `is_asked` accepts; never waits. The
/// answer is empty when out of memory.
readiness readiness_ask(const collection* servers, std::int32_t first,
                        bool (*is_asked)(const server_entry&));

/// Whether a server is worth reading from. Ask in the order of the collection. True for one that
/// the answer does not know: it has been connected, or has moved, since then.
bool readiness_of(readiness& answer, const server_entry& entry);
