// packet_input.cpp - see packet_input.hpp.
#include "net/packet_input.hpp"

#include "app/app_state.hpp"
#include "base/retry.hpp"
#include "net/packet_output.hpp"
#include "ui/pane.hpp"

#include <algorithm>
#include <cstring>
#include <unistd.h>
#include <zlib.h>

namespace
{

bool packet_begin(server_entry& server)
{
    server.rx_packet = static_cast<packet_buffer*>(std::calloc(1, sizeof(packet_buffer)));
    server.rx_aux = 0;
    server.rx_received = 0;
    return server.rx_packet != nullptr;
}

int packet_drop(server_entry& server, int result)
{
    packet_take(server);
    return result;
}

/// Reads the header. packet_complete: all of it is there. A part of a header stays in the buffer,
/// and the next call takes it for the whole: how many bytes it had is not remembered.
int header_read(int socket, server_entry& server)
{
    std::size_t have = 0;
    while (true) {
        unsigned char* rest = server.rx_packet->header + have;
        const ssize_t count =
            uninterrupted([&] { return read(socket, rest, packet_header_bytes - have); });
        if (count <= 0)
            return packet_drop(server, packet_failed);
        have += static_cast<std::size_t>(count);
        server.bytes_received += static_cast<std::uint32_t>(count);
        if (have == packet_header_bytes)
            return packet_complete;
        if (wait_ready(socket, for_reading, 0) != 1)
            return packet_pending;
    }
}

void payload_append(server_entry& server, std::size_t count)
{
    const std::size_t room = packet_max_payload_bytes -
                             std::min<std::size_t>(server.rx_received, packet_max_payload_bytes);
    if (const std::size_t copied = std::min(count, room); copied > 0)
        std::memcpy(server.rx_packet->payload + server.rx_received, app_state.receive_scratch,
                    copied);
    server.rx_received += static_cast<std::uint32_t>(count);
    server.bytes_received += static_cast<std::uint32_t>(count);
}

void text_terminate(packet_buffer& packet, const packet_header& header)
{
    if (header.kind <= packet_last_text_kind)
        packet.payload[std::min<std::size_t>(header.length, packet_max_payload_bytes - 1)] = '\0';
}

/// Asks for the packet's whole length, also when a part of it is there already; what follows in the
/// stream may thus be taken along.
int payload_read(int socket, server_entry& server, const packet_header& header)
{
    const ssize_t count = uninterrupted(
        [&] { return read(socket, app_state.receive_scratch, packet_payload_length(header)); });
    if (count <= 0)
        return packet_drop(server, packet_failed);
    payload_append(server, static_cast<std::size_t>(count));
    if (server.rx_received < header.length)
        return packet_pending;
    text_terminate(*server.rx_packet, header);
    return packet_complete;
}

} // namespace

int receive_packet(int socket, server_entry& server)
{
    if (server.rx_packet == nullptr) {
        if (wait_ready(socket, for_reading, 0) != 1)
            return packet_pending;
        if (!packet_begin(server))
            return packet_failed;
        const int header_state = header_read(socket, server);
        if (header_state != packet_complete)
            return header_state;
    }
    const packet_header header = packet_header_read(server.rx_packet->header);
    // One that has a size hint, but no length, is dropped only when more bytes have come.
    if (header.length == 0 && header.extra == 0)
        return packet_drop(server, packet_pending);
    if (wait_ready(socket, for_reading, 0) != 1)
        return packet_pending;
    return payload_read(socket, server, header);
}

received_packet packet_take(server_entry& server)
{
    received_packet packet{server.rx_packet};
    server.rx_packet = nullptr;
    server.rx_received = 0;
    return packet;
}

std::size_t packet_payload_length(const packet_header& header)
{
    return std::min<std::size_t>(header.length, packet_max_payload_bytes);
}

heap_bytes decompress_packet(const unsigned char* data, std::uint32_t size_hint,
                             std::size_t data_length)
{
    const std::size_t capacity = decompression_factor * size_hint;
    heap_bytes text{static_cast<unsigned char*>(std::calloc(capacity + 1, 1))};
    if (!text)
        return text;
    uLongf length = capacity;
    const int result = uncompress(text.get(), &length, data, data_length);
    if (result == Z_OK)
        return text;
    status_report(colour::error, "Unable to decompress binary paket. Err: %d", result);
    beep();
    return nullptr;
}
