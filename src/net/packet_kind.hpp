// packet_kind.hpp - the numbers of the packet kinds, in both directions.
#pragma once

#include <cstdint>

/// What the client sends.
enum sent_packet_kind : std::uint32_t {
    sent_good_bye = 2,
    sent_add_flight = 30,
    sent_add_airline = 31,
    sent_add_airport = 33,
    sent_add_mode = 34, // an ACARS mode: a message label and its description
    sent_add_aircraft = 38,
    sent_subscription = 60, // to the daily reports that the server mails
    sent_report_style = 66, // of those reports
    sent_report_request = 70,
    sent_pager_add = 77,
    sent_password = 81, // its digest
    sent_identification = 85,
    sent_pager_remove = 88,
    sent_pager_list_request = 89,
    sent_uplink_setting = 95, // "1": leave uplink messages out
    sent_client_version = 101,
    sent_heartbeat = 148,
    sent_transmission_format = 151,
};

/// What the client acts on when a server sends it. Every other kind is ignored.
enum received_packet_kind : std::uint32_t {
    received_closing = 3,
    received_tick = 5, // the server is alive
    received_crc_on = 25,
    received_crc_off = 26,
    received_replay = 27, // how many earlier transmissions follow
    received_update_accepted = 35,
    received_update_refused = 36,
    received_transmission = 40,
    received_capabilities = 41,
    received_server_text = 64,
    received_report_started = 71,
    received_report_busy = 72,
    received_report_empty = 73,
    received_report_header = 74, // announces the pieces
    received_pager_busy = 76,
    received_pager_done = 78,
    received_pager_failed = 79,
    received_password_accepted = 82,
    received_password_refused = 83,
    received_identification_request = 85,
    received_identification_accepted = 86,
    received_identification_refused = 87,
    received_pager_list = 89,
    received_news = 90,
    received_closing_for_maintenance = 100,
    received_closing_when_full = 102,
    received_notice = 103,
    received_updates_forbidden = 106,
    received_error_text = 108,
    received_still_connected = 149,
    received_uptime = 153,
    received_compressed_transmission = 204,
    received_report_piece = 205,
};
