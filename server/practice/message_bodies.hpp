// message_bodies.hpp - what aircraft and ground stations write to each other, by message label.
#pragma once

#include "server/base/random_source.hpp"

#include <string>

namespace tovrik
{

/// The flight that a message is about.
struct message_subject {
    const char* flight_number;
    const char* from;
    const char* to;
    unsigned minute; ///< of the day, 0 to 1439
};

struct message_body {
    const char* label;
    std::string content; ///< empty: the label says it all
};

/// A plausible message from an aircraft.
message_body downlink_body(random_source& random, const message_subject& subject);

/// A plausible message from the ground.
message_body uplink_body(random_source& random, const message_subject& subject);

} // namespace tovrik
