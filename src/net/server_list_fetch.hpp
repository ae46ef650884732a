// server_list_fetch.hpp - fetches the public list of servers in a thread of its own.
//
// The thread touches shared state only under the state lock, and never while it talks to the
// network.
#pragma once

/// Starts a fetch and reports that; while one is running, says so instead.
void start_server_list_fetch();

/// Waits in pauses for a fetch to end, as long as it makes progress. One whose directory has been
/// silent for five seconds is given up: it changes nothing any more. For shutdown.
void server_list_fetch_finish();
