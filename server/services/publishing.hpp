// publishing.hpp - sends messages to the clients that want them, and keeps the latest.
#pragma once

#include "server/services/server_core.hpp"

#include <string>

namespace tovrik
{

/// Completes a message with the reference data, and with the present time if it has none. Then
/// archives it, queues it for every admitted client, with a notice if one of the client's pager
/// lists asks for it, and remembers it for clients that come later. False if it does not fit a
/// packet.
bool publish_message(server_core& core, transmission message);

/// Does the same with a document, as it stands.
bool publish_document(server_core& core, const std::string& xml);

} // namespace tovrik
