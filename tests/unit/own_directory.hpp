// own_directory.hpp - a directory inside the test program, for the thread that fetches the list of
// servers, and a look at when any thread asks for the state lock.
#pragma once

#include "unit/net_fixture.hpp"

#include <optional>
#include <string>

/// While it lives, connections to the directory end here. One at a time.
class own_directory
{
public:
    /// is_reached: whether a fetch gets a connection at all.
    explicit own_directory(bool is_reached = true);
    ~own_directory();
    own_directory(const own_directory&) = delete;
    own_directory& operator=(const own_directory&) = delete;

    /// Waits for the next fetch's connection, without letting anybody take the state lock.
    static std::optional<server_end> accept();
    /// Lets the fetch send its request and reads it; the caller has the state lock again then.
    /// False if it does not come.
    static bool takes_request(const server_end& list);
};

/// How often the state lock has been asked for so far, whether or not it was taken yet.
int state_lock_requests();

/// Waits until the lock has been asked for `count` times, without giving it away. False if that
/// does not happen.
bool wait_for_lock_requests(int count);
