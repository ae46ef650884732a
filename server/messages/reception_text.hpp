// reception_text.hpp - says in a message's text how it was heard.
#pragma once

#include "server/messages/transmission.hpp"

namespace tovrik
{

/// Adds a last line such as "[roof 131.725 MHz]" to the content. Adds nothing to a message without
/// a content, which stays one, and nothing if neither station nor frequency is known.
void append_reception(transmission& message);

} // namespace tovrik
