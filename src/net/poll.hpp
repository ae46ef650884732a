// poll.hpp - the once-a-second cycle: takes one packet from each server and acts on it.
//
// Holds the table of packet kinds. All input from servers comes through here; the key loop never
// reads from a socket.
#pragma once

#include "data/server_registry.hpp"
#include "net/packet.hpp"

/// Visits every connected server once: at most one packet, then the idle rule (a heartbeat after
/// ten minutes of silence, closing after fifteen). Arms the next alarm. Runs on SIGALRM. A run that
/// has taken long ends early and goes on with the next server a moment later; keys are read
/// between.
void poll_servers(int signal_number);

/// Acts on one whole packet by its kind; unknown kinds are ignored.
void packet_dispatch(server_entry& entry, const packet_buffer& packet);

/// Closes a connection that the server ended or that has been silent for too long.
void close_by_server(server_entry& entry);

/// Reports a server's uptime reply. text: seconds, clients and a third field, separated by tabs;
/// anything else shows nothing.
void show_uptime(const char* text);
