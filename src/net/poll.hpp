// poll.hpp - the once-a-second cycle: takes one packet from each server and has it acted on.
//
// All input from servers comes through here; the key loop never reads from a socket.
#pragma once

/// Visits every connected server once: at most one packet, then the idle rule (a heartbeat after
/// ten minutes of silence, the end after fifteen). A packet that would open a box over another one
/// stays where it is. Sets the next alarm. Runs on SIGALRM. A run that
/// has taken long ends early, so that keys are read; the next run, a moment later, goes on with the
/// next server.
void poll_servers(int signal_number);
