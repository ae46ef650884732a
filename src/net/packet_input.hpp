// packet_input.hpp - makes whole packets out of the bytes that a server sends.
//
// Owns the receive half of a server_entry. Opens and closes no sockets and gives payloads no
// meaning.
#pragma once

#include "base/owners.hpp"
#include "data/server_registry.hpp"
#include "net/packet.hpp"

#include <memory>

/// A packet taken from a server's receive half.
using received_packet = std::unique_ptr<packet_buffer, releaser<std::free>>;

/// What receive_packet returns.
constexpr int packet_complete = 1;
constexpr int packet_failed = -1;
constexpr int packet_pending = -2;

/// Moves the server's incoming packet forward by what its socket has ready. Never blocks longer
/// than a readiness test of 200 microseconds for each part.
/// packet_complete: server.rx_packet is whole, and terminated if it is a text. The caller takes it
/// with packet_take. packet_pending: nothing is whole yet, or a packet without payload was dropped;
/// what has arrived is kept. packet_failed: end of file, a read error, or out of memory; nothing is
/// kept.
int receive_packet(int socket, server_entry& server);

/// Whether a packet is under way whose header, which may have come in part, gives no payload. The
/// next receive_packet drops it without reading.
bool packet_is_empty(const server_entry& server);

/// Takes the packet under way out of the server's receive half, which is then ready for the next.
/// Null if there is none.
received_packet packet_take(server_entry& server);
