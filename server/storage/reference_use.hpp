// reference_use.hpp - applies the added reference data to the messages that follow.
#pragma once

#include "server/messages/transmission.hpp"
#include "server/storage/reference_data.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace tovrik
{

/// Completes a message with what has been added about its flight (on the days on which it flies),
/// its aircraft, its airline and its label: routing, type, operator and the label's description.
/// Added data replaces what the message said.
void apply_reference(transmission& message, const reference_data& reference);

/// Changes a generated message so that it is about an added entry: number `turn`, as the entries
/// take turns. So the traffic soon shows what was added. Does nothing without entries, and to
/// messages from the ground.
void feature_entry(transmission& message, const reference_data& reference, std::size_t turn);

/// An airport's code, with its name if that was added: "FRA", or "FRA (Frankfurt, Germany)".
std::string airport_text(std::string_view code, const reference_data& reference);

} // namespace tovrik
