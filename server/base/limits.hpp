// limits.hpp - the bounds of the practice server: what a packet carries, what a client can take,
// and how much is kept for clients that misbehave.
#pragma once

#include <cstddef>

namespace tovrik
{

/// Size of the header before every payload.
constexpr std::size_t header_bytes = 12;

/// Maximum payload of one packet, in both directions.
constexpr std::size_t max_payload_bytes = 4096;

/// Maximum length of a text payload: clients put it and a NUL into a buffer of max_payload_bytes.
constexpr std::size_t max_text_bytes = max_payload_bytes - 1;

/// Maximum length of an element's text in the clients' document reader.
constexpr std::size_t max_value_bytes = 511;

/// Maximum number of bytes read from one client before the others get their turn.
constexpr std::size_t max_read_bytes_per_turn = 16384;

/// Maximum number of assured packets that wait for one client; further ones are dropped.
constexpr std::size_t max_assured_packets = 1024;

/// Maximum number of transmissions kept for replay to new clients.
constexpr std::size_t max_replay_count = 1000;

/// Maximum number of transmissions generated at once when the loop is late.
constexpr int max_transmissions_per_turn = 100;

/// Maximum number of transmissions a minute.
constexpr double max_rate_per_minute = 60000;

/// Maximum length of a password: clients have no room for a longer one.
constexpr std::size_t max_password_bytes = 39;

/// How long a client whose socket is full may take nothing from it. A program that is stopped for a
/// night keeps its place for some hours, until the socket is full.
constexpr int max_stalled_minutes = 15;

/// How long a client that was told of the end may keep its connection open.
constexpr int closing_grace_ms = 5000;

/// Maximum number of clients at a time that are told that the server is full; further ones are
/// closed at once.
constexpr std::size_t max_clients_turned_away = 64;

/// How long accepting rests when the system has no descriptor left.
constexpr int accept_retry_ms = 200;

/// Maximum number of addresses whose wrong passwords are counted.
constexpr std::size_t max_watched_addresses = 10000;

/// Maximum length of a field of a service request.
constexpr std::size_t max_field_bytes = 64;

/// Maximum number of entries that a client may add during one connection: to the reference data,
/// pager lists and subscriptions together.
constexpr std::size_t max_changes_per_client = 500;

/// Maximum number of entries that clients may add to the reference data.
constexpr std::size_t max_reference_entries = 2000;

/// Maximum number of pager lists, and of entries in one of them. A full list of the longest entries
/// still fits a packet.
constexpr std::size_t max_pager_lists = 500;
constexpr std::size_t max_pager_entries = 40;

/// Maximum length of a registration, flight number or airport of a pager entry.
constexpr std::size_t max_pager_field_bytes = 30;

/// Maximum number of pager lists whose hits one client is told of.
constexpr std::size_t max_pager_lists_per_client = 8;

/// Maximum number of subscriptions to mailings.
constexpr std::size_t max_subscriptions = 1000;

/// Maximum length of the messages in a mail, of what the mail program prints before it is killed,
/// and of the part of that which is told.
constexpr std::size_t max_mail_bytes = std::size_t{4} * 1024 * 1024;
constexpr std::size_t max_mail_output_bytes = std::size_t{1024} * 1024;
constexpr std::size_t max_mail_complaint_bytes = 300;

/// Maximum number of mails in a row that the mail program may fail to take; the others wait with
/// them.
constexpr unsigned max_mail_failures_in_row = 5;

/// Maximum number of messages that are kept for reports, and maximum total length of their texts.
constexpr std::size_t max_archived_messages = 20000;
constexpr std::size_t max_archived_bytes = std::size_t{16} * 1024 * 1024;

/// Maximum number of jobs that wait for the database: those that write, and those that read. A
/// burst of datagrams is kept one job each.
constexpr std::size_t max_storage_writes = 16384;
constexpr std::size_t max_storage_reads = 64;

/// Maximum number of messages that one deletion of old ones takes away.
constexpr std::size_t max_forgotten_messages = 1000;

/// Maximum number of hits that are kept for a pager list; the oldest make room.
constexpr std::size_t max_pager_hits = 100;

/// Maximum length of a report's text.
constexpr std::size_t max_report_bytes = std::size_t{1024} * 1024;

/// Maximum length of a part of a report of many messages. Clients inflate into four times as much.
constexpr std::size_t max_report_part_bytes = std::size_t{16} * 1024 * 1024;

/// Maximum number of reports under way at the same time.
constexpr std::size_t max_reports_at_once = 8;

/// Maximum number of requests of one client that wait for the database.
constexpr std::size_t max_unanswered_requests = 64;

/// Maximum number of simultaneous connections to the directory; further ones are closed at once.
constexpr std::size_t max_directory_connections = 64;

/// Maximum length of a request to the directory.
constexpr std::size_t max_directory_request_bytes = 8192;

/// How long a client of the directory may take for its request, and again for the answer.
constexpr int max_directory_ms = 30000;

/// Maximum number of pieces of an answer that are sent before others get their turn.
constexpr int max_directory_sends_per_turn = 64;

/// Maximum size of a directory's file.
constexpr std::size_t max_directory_bytes = std::size_t{64} * 1024 * 1024;

/// Maximum number of simultaneous connections to the web service. A further one takes the place of
/// the oldest.
constexpr std::size_t max_web_connections = 64;

/// Maximum length of the request line and headers of a request to the web service.
constexpr std::size_t max_web_request_bytes = 8192;

/// How long an asker of the web service may take for the request, for the answer, and to close.
constexpr int max_web_request_ms = 5000;
constexpr int max_web_answer_ms = 30000;
constexpr int max_web_closing_ms = 1000;

/// How old a report may be before the server counts as one that hangs.
constexpr int max_report_age_ms = 10000;

/// The latest time of a message, in seconds since the epoch: the end of the year 9999.
constexpr double max_time_s = 253402300799;

/// Maximum length of a line of JSON; no datagram is longer.
constexpr std::size_t max_json_line_bytes = 65536;

/// Maximum number of datagrams that are read before others get their turn.
constexpr int max_datagrams_per_turn = 16;

/// Maximum number of texts about broken lines a second. All broken lines are counted.
constexpr int max_complaints_per_second = 10;

/// Maximum length of a line for standard error, of those that wait to be taken together, and their
/// maximum number in a second.
constexpr std::size_t max_line_bytes = 1000;
constexpr std::size_t max_waiting_line_bytes = 16384;
constexpr int max_lines_per_second = 50;

/// Maximum size of a file of JSON lines.
constexpr std::size_t max_json_file_bytes = std::size_t{64} * 1024 * 1024;

/// Maximum size of a replay file.
constexpr std::size_t max_replay_file_bytes = std::size_t{16} * 1024 * 1024;

} // namespace tovrik
