// idle_rule.hpp - heartbeats to silent servers, and the end of connections that stay silent.
#pragma once

#include "data/server_registry.hpp"

#include <ctime>

/// Sends a heartbeat to a server that has been silent for ten minutes, and closes its connection
/// after fifteen. now: the time of this poll.
void idle_rule_apply(server_entry& entry, std::time_t now);
