// packet_kind.hpp - the numbers of the packet kinds that the client sends.
#pragma once

#include <cstdint>

enum sent_packet_kind : std::uint32_t {
    packet_good_bye = 2,
    packet_password = 81,
    packet_identification = 85,
    packet_uplink_setting = 95,
    packet_client_version = 101,
    packet_heartbeat = 148,
    packet_transmission_format = 151,
};
