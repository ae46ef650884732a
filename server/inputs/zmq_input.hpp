// zmq_input.hpp - JSON lines of a ZeroMQ publisher.
#pragma once

#include "server/inputs/thread_input.hpp"

namespace tovrik
{

/// Subscribes to all that a publisher sends and that begins with the topic. The library connects
/// again by itself, after growing pauses. Of a message in several frames the last one counts, and
/// of a single frame what comes after the topic's name.
/// It is an error if the endpoint is none.
prepared_work zmq_prepare(const input_options& options, const std::shared_ptr<hand_over>& shared);

} // namespace tovrik
