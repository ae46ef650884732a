// server_list_fetch.hpp - fetches the public list of servers in a thread of its own.
//
// The thread touches shared state only under the state lock, and never while it talks to the
// network.
#pragma once

/// Starts a fetch and reports that. If one is running, or no thread can be started, an error is
/// reported with a beep.
void start_server_list_fetch();

/// Waits in pauses for a fetch to end, as long as it makes progress. A fetch is given up after five
/// seconds of silence, and after twenty seconds in all; it changes nothing from then on. For
/// shutdown.
void server_list_fetch_finish();
