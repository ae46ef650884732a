// server_registry.hpp - the record of one known server and the collection that holds them all.
//
// The collection owns its entries; entries are added by the configuration and by the directory and
// are never removed while the program runs. Knows nothing of screens and sockets beyond the fields.
#pragma once

#include "base/log_record.hpp"
#include "data/collection.hpp"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <sys/types.h>

/// The port of a server whose own port is not given (0).
constexpr std::int32_t DEFAULT_SERVER_PORT = 2202;

struct packet_buffer;

/// One known server. Allocated zeroed, so that every text starts null and every number 0.
/// Texts are owned, malloc'ed, NUL-terminated ISO-8859-1 bytes; null means "none".
///
/// list_row has two meanings. Drawing the list sets it to the row of the server's name, which is
/// its 0-based position + 2. Connecting sets it to the 1-based position, one less, and until the
/// list is drawn again the marker of the connected server belongs on list_row + 1.
struct server_entry {
    char* ServerName;        // host name or address to connect to; never null once registered
    char* ServerAlias;       // the name shown instead of ServerName
    char* Location;          // where the server is located
    char* Info;              // free description
    char* server_uuid;       // the identity that the connected server reported
    char* server_version;    // the version that the connected server reported
    char* Password;          // MD5 digest of the password, 32 lower-case hexadecimal digits
    char* UseEMail;          // address for mailings and pager lists
    char* SubCode;           // subscription code for mailings and pager lists
    void* report_buffer;     // compressed report being received
    std::int32_t ServerPort; // 0 means DEFAULT_SERVER_PORT wherever a port is used
    std::int32_t socket_fd;  // 0: not connected; every test for a connection is a test of this
    std::int32_t list_row;   // where the server's marker stands; see above
    std::uint32_t report_received;
    std::uint32_t report_total;
    std::uint32_t report_size;
    std::uint8_t crc_check;       // 1: the server checks CRCs
    std::uint8_t can_mail;        // 1: it offers mailings
    std::uint8_t connected;       // 1: the connect has completed
    std::uint8_t can_modify;      // 1: it allows database updates
    std::uint8_t can_report;      // 1: it offers reports
    std::uint8_t can_page;        // 1: it offers pager lists
    std::uint8_t heartbeat_sent;  // 1: from a heartbeat until the idle rule closes the connection
    std::FILE* log_file;          // this server's own log; null: not open
    pid_t connect_pid;            // the child that performs the current connect; 0: none
    std::time_t last_data_time;   // when the last whole packet came; kept across connections
    std::uint32_t rx_received;    // payload bytes of the current packet received so far
    std::uint32_t rx_aux;         // cleared with each new packet; nothing reads it
    std::uint32_t bytes_received; // every byte read from this server, never reset
    packet_buffer* rx_packet;     // the packet being assembled; null: none under way
    std::uint8_t rx_waits;        // 1: rx_packet is whole and waits for an open box to close
    std::int32_t boxes_missed;    // boxes of this server in a row that ran out of time
    std::time_t box_closed_time;  // when the last one of them closed
    log_condition log_state;      // of log_file; also when a log was lost
};

/// Creates the empty collection of servers, ordered by server_compare; null when out of memory.
/// The caller owns it and releases it with collection_destroy.
collection* server_collection_new();

/// Order of the list: by name in descending byte order, equal names by ascending port.
/// a, b: server_entry records with a ServerName.
int server_compare(const void* a, const void* b);

/// Registers an entry. -1: inserted, the collection owns it now. -2: entry or its name is null.
/// Otherwise the index of the entry that already has this name and port.
/// Unless -1 is returned the caller keeps the entry and releases it with server_entry_free.
std::int32_t server_add(collection* servers, server_entry* entry);

/// Registers an entry, or releases it if it has no name, if an entry with its name and port is
/// there already, or if the list cannot grow, which server_add does not report. entry: must not be
/// null. False in the last of these cases only: a server is lost.
bool server_add_or_free(collection* servers, server_entry* entry);

/// Releases an entry and the texts that it owns, UseEMail and SubCode excepted.
/// entry: a malloc'ed server_entry; must have no connection.
void server_entry_free(void* entry);

/// The entry at a 0-based position of the collection; null if there is none.
server_entry* server_at(const collection* servers, std::int32_t index);

/// The name to show for a server: its alias, or its host name when it has none. Borrowed.
const char* server_display_name(const server_entry& server);

/// The port to connect to and to show: the configured one, or the default for 0.
std::int32_t server_port(const server_entry& server);
