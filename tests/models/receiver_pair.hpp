// receiver_pair.hpp - the client's receiver and its model, fed with the same stream.
#pragma once

#include "models/receive_model.hpp"
#include "net/packet_input.hpp"
#include "unit/socket_pair.hpp"

#include <cstring>

class receiver_pair
{
public:
    receiver_pair() = default;
    ~receiver_pair()
    {
        packet_take(server);
    }
    receiver_pair(const receiver_pair&) = delete;
    receiver_pair& operator=(const receiver_pair&) = delete;

    /// Sends bytes to both. More than a socket surely takes is dropped. False if the socket did not
    /// take them.
    bool feed(const std::string& bytes)
    {
        pieces = model.stream.empty() ? 1 : pieces + 1;
        if (bytes.empty() || model.has_ended || pieces > most_pieces ||
            model.stream.size() + bytes.size() > most_bytes)
            return true;
        model.stream += bytes;
        return sockets.feed(bytes);
    }
    /// Ends both streams.
    void end()
    {
        sockets.close_server();
        model.has_ended = true;
    }
    /// Lets both receive, and takes a whole packet out. Returns what should hold and
    /// does not, or else null.
    const char* receive()
    {
        const receive_model_result expected = model.receive();
        const int result = receive_packet(sockets.client(), server);
        const char* broken = result != static_cast<int>(expected)
                                 ? "a packet is complete when its last byte has come"
                                 : compare();
        if (expected == receive_model_result::complete) {
            packet_take(server);
            model.has_packet = false;
        }
        return broken;
    }

private:
    /// What a socket surely holds, although each piece takes space of its own.
    static constexpr std::size_t most_bytes = 50'000;
    static constexpr int most_pieces = 64;

    const char* compare() const
    {
        static_assert(sizeof(packet_buffer) ==
                      receive_model_header_bytes + receive_model_payload_bytes);
        if (server.bytes_received != model.bytes_received)
            return "every byte read is counted";
        if ((server.rx_packet != nullptr) != model.has_packet)
            return "a packet is under way from its first byte to its last";
        if (!model.has_packet)
            return nullptr;
        if (server.rx_received != model.received || server.rx_aux != 0)
            return "payload bytes are counted";
        if (std::memcmp(server.rx_packet, model.packet.data(), model.packet.size()) != 0)
            return "header and payload are what came, and nothing beyond them";
        return nullptr;
    }

    socket_pair sockets{};
    server_entry server = {};
    receive_model model{};
    int pieces = 0; // sent since nothing was waiting
};
