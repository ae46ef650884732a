// packet_input.cpp - see packet_input.hpp.
#include "net/packet_input.hpp"

#include "app/app_state.hpp"
#include "base/retry.hpp"
#include "net/readiness.hpp"

#include <algorithm>
#include <cstring>
#include <unistd.h>

namespace
{

bool begin_packet(server_entry& server)
{
    server.rx_packet = static_cast<packet_buffer*>(std::calloc(1, sizeof(packet_buffer)));
    server.rx_aux = 0;
    server.rx_received = 0;
    return server.rx_packet != nullptr;
}

int drop_packet(server_entry& server, int result)
{
    packet_take(server);
    return result;
}

/// Reads the header. packet_complete: all of it has come. packet_pending: a part of it stays in the
/// buffer.
int read_header(int socket, server_entry& server)
{
    // Kept on purpose: how much of a header has come is not remembered, so the next poll takes a
    // part of it for the whole; servers send headers in one piece.
    // Test: packet_receiving.takes_a_partial_header_for_a_whole_one.
    std::size_t have = 0;
    while (true) {
        unsigned char* rest = server.rx_packet->header + have;
        const ssize_t count =
            retry_on_eintr([&] { return read(socket, rest, packet_header_bytes - have); });
        if (count <= 0)
            return drop_packet(server, packet_failed);
        have += static_cast<std::size_t>(count);
        server.bytes_received += static_cast<std::uint32_t>(count);
        if (have == packet_header_bytes)
            return packet_complete;
        if (wait_ready(socket, for_reading, 0) != 1)
            return packet_pending;
    }
}

/// Counts all the bytes that were read, and keeps those that the packet's buffer has space for.
void append_payload(server_entry& server, std::size_t count)
{
    const std::size_t space = packet_max_payload_bytes -
                              std::min<std::size_t>(server.rx_received, packet_max_payload_bytes);
    if (const std::size_t copied = std::min(count, space); copied > 0)
        std::memcpy(server.rx_packet->payload + server.rx_received, app_state.receive_scratch,
                    copied);
    server.rx_received += static_cast<std::uint32_t>(count);
    server.bytes_received += static_cast<std::uint32_t>(count);
}

void terminate_text(packet_buffer& packet, const packet_header& header)
{
    if (header.kind <= packet_last_text_kind)
        packet.payload[std::min<std::size_t>(header.length, packet_max_payload_bytes - 1)] = '\0';
}

int read_payload(int socket, server_entry& server, const packet_header& header)
{
    // Kept on purpose: the read asks for the packet's full length even when a part of it has come,
    // so it may take bytes of the next packet along; servers pace their packets for that. Test:
    // packet_receiving.asks_for_the_whole_length_again_and_takes_bytes_that_follow.
    const ssize_t count = retry_on_eintr(
        [&] { return read(socket, app_state.receive_scratch, packet_payload_length(header)); });
    if (count <= 0)
        return drop_packet(server, packet_failed);
    append_payload(server, static_cast<std::size_t>(count));
    if (server.rx_received < header.length)
        return packet_pending;
    terminate_text(*server.rx_packet, header);
    return packet_complete;
}

} // namespace

int receive_packet(int socket, server_entry& server)
{
    if (server.rx_packet == nullptr) {
        if (wait_ready(socket, for_reading, 0) != 1)
            return packet_pending;
        if (!begin_packet(server))
            return packet_failed;
        const int header_state = read_header(socket, server);
        if (header_state != packet_complete)
            return header_state;
    }
    if (packet_is_empty(server))
        return drop_packet(server, packet_pending);
    if (wait_ready(socket, for_reading, 0) != 1)
        return packet_pending;
    return read_payload(socket, server, packet_header_read(server.rx_packet->header));
}

bool packet_is_empty(const server_entry& server)
{
    if (server.rx_packet == nullptr)
        return false;
    const packet_header header = packet_header_read(server.rx_packet->header);
    // Kept on purpose: a size hint without a length counts as a payload, and such a packet is only
    // dropped when more bytes come. Test: packet_receiving.fails_on_a_size_hint_without_a_length.
    return header.length == 0 && header.extra == 0;
}

received_packet packet_take(server_entry& server)
{
    received_packet packet{server.rx_packet};
    server.rx_packet = nullptr;
    server.rx_received = 0;
    server.rx_waits = 0;
    return packet;
}
