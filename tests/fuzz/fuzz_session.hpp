// fuzz_session.hpp - servers and connections of a fuzzed client, and checks of what it sends.
#pragma once

#include "base/owners.hpp"
#include "data/server_registry.hpp"

#include <string>
#include <string_view>
#include <vector>

/// A malloc'ed copy, to be owned by a record; null for the empty text.
char* owned_or_none(std::string_view text);

/// Registers a server and draws the list again. name: not yet known, not empty.
server_entry& server_add_new(std::string_view name, std::string_view alias);

/// The server's end of a connection that was made for an entry.
class fuzz_connection
{
public:
    explicit fuzz_connection(server_entry& entry);

    /// Sends to the client as much as fits.
    void send(std::string_view bytes) const;
    /// Receives what the client has sent, and requires it to be whole packets of kinds that a
    /// client sends, without binary data. Returns their number.
    int take() const;
    /// Ends the connection from the server's side.
    void close();

private:
    unique_fd held;
};

/// A packet as it travels. Its payload is cut to what its length field can hold.
std::string packet_bytes(unsigned kind, unsigned extra, unsigned param1, unsigned param2,
                         std::string_view payload);

/// Polls every server, in as many runs of the cycle as a busy machine breaks it into, so that an
/// input does the same wherever it is replayed.
void servers_poll();

/// Requires that the list of servers is sorted, without duplicates, and that the selection is
/// inside it.
void servers_check();
