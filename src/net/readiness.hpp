// readiness.hpp - asks the kernel once about all sockets, so that a cycle over a thousand silent
// servers does not wait for each of them.
#pragma once

#include "data/server_registry.hpp"

#include <cstddef>
#include <poll.h>
#include <vector>

/// Which servers had something to read when asked, in the order of the collection.
struct readiness {
    std::vector<const server_entry*> entries;
    std::vector<pollfd> sockets; // same order
    std::size_t next = 0;        // where readiness_of goes on
};

/// Asks for all servers from the index `first` on that `is_asked` accepts; never waits. An empty
/// answer when memory is short.
readiness readiness_ask(const collection* servers, std::int32_t first,
                        bool (*is_asked)(const server_entry&));

/// Whether the server is worth reading from. Servers must be asked for in the collection's order.
/// True for one that was not asked about: it has been connected, or has moved, since.
bool readiness_of(readiness& answer, const server_entry& entry);
