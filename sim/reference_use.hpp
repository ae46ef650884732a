// reference_use.hpp - what the added reference data does to the messages that follow.
#pragma once

#include "sim/reference_data.hpp"
#include "sim/transmission.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace sim
{

/// Completes a message by what has been added about its flight (on the days on which it flies), its
/// aircraft, its airline and its label: routing, type, operator and the label's description. What
/// was added wins over what the message said.
void apply_reference(transmission& message, const reference_data& reference);

/// Makes a made-up message one about an added entry, the one that `turn` comes to when they take
/// turns, so that what was added is soon heard of. Nothing happens without entries, and to messages
/// from the ground.
void feature_entry(transmission& message, const reference_data& reference, std::size_t turn);

/// What is known of an airport: "FRA" or, once added, "FRA (Frankfurt, Germany)".
std::string airport_text(std::string_view code, const reference_data& reference);

} // namespace sim
