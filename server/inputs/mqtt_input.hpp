// mqtt_input.hpp - JSON lines that a broker passes on.
#pragma once

#include "server/inputs/thread_input.hpp"

namespace tovrik
{

/// Keeps a connection to the broker and subscribes to the topic ("#" if there is none) at each new
/// one, with a quality of service of 1 at most. A connection that fails or ends is made again after
/// a growing pause; the pauses begin anew with a subscription. Messages that the broker has
/// retained from earlier are left out: they would come again with every connection. It is an error
/// if the password file cannot be read, or if the topic is no filter.
prepared_work mqtt_prepare(const input_options& options, const std::shared_ptr<hand_over>& shared);

} // namespace tovrik
