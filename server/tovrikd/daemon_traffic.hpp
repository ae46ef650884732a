// daemon_traffic.hpp - the way of messages from the inputs to the clients.
#pragma once

#include "server/tovrikd/daemon.hpp"

#include <vector>

namespace tovrik
{

/// Takes what inputs brought: merges doubles, joins blocks, publishes what is ready.
void daemon_take_messages(daemon& running, std::vector<transmission> messages, time_point now);

/// Publishes what has waited long enough for further blocks or stronger doubles.
void daemon_pass_on_waiting(daemon& running, time_point now);

/// Publishes all that waits.
void daemon_pass_on_all(daemon& running);

/// Tells all clients of receivers that have become silent, or are heard again.
void daemon_tell_silence(daemon& running, time_point now);

} // namespace tovrik
