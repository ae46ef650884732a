// packet_kind.hpp - the numbers of the packet kinds that the client sends.
#pragma once

#include <cstdint>

enum sent_packet_kind : std::uint32_t {
    packet_good_bye = 2,
    packet_add_flight = 30,
    packet_add_airline = 31,
    packet_add_airport = 33,
    packet_add_mode = 34,
    packet_add_aircraft = 38,
    packet_subscribe = 60,
    packet_report_style = 66,
    packet_report_request = 70,
    packet_pager_add = 77,
    packet_password = 81,
    packet_identification = 85,
    packet_pager_remove = 88,
    packet_pager_list = 89,
    packet_uplink_setting = 95,
    packet_client_version = 101,
    packet_heartbeat = 148,
    packet_transmission_format = 151,
};
