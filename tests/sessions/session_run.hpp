// session_run.hpp - carries out the plan of a random session and watches the client meanwhile.
//
// The client runs under a shell, so that it can be stopped and brought back, and what it leaves of
// the terminal can be seen. Its three servers and its directory belong to the session.
#pragma once

#include "sessions/session_plan.hpp"

/// How much of a plan met a client that was there for it.
struct session_figures {
    int actions = 0;
    int connections = 0;
    int packets = 0; // and pieces of packets that were sent
    int stops = 0;
};

/// Runs a session. Reports a failure to the running test, with the last actions before it, if the
/// client crashes, ends by itself or leaves with another status than expected; if it does not
/// answer a key; if a sanitizer reports something; if the terminal gets anything that curses does
/// not write, or is not given back; if a temporary file is left; or if the configuration was
/// changed by a signal, cannot be read again or has lost a server.
session_figures session_run(const session_plan& plan);
