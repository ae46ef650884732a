// daemon_channels.hpp - opens and closes channels as the configuration asks for them.
#pragma once

#include "server/tovrikd/daemon.hpp"

#include <string>
#include <vector>

namespace tovrik
{

/// Makes the open channels those of a configuration: the server's own port with all messages, and
/// each channel. A channel whose port stays keeps its clients, even if its name or filter changes.
/// Returns an error text for each that could not be opened; then all channels are as before.
std::vector<std::string> daemon_change_channels(daemon& running, const configuration& chosen);

} // namespace tovrik
