// packet_input_target.cpp - a stream of packets cut into any pieces, beside a reader with the same
// rules: a header that came in part counts as whole, every read of a payload asks for its full
// length, and only packet_max_payload_bytes of it are kept.
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "fuzz/stand_ins.hpp"
#include "net/packet_input.hpp"
#include "unit/socket_pair.hpp"

#include <cstring>

namespace
{

/// What a socket surely holds, although each piece takes space of its own.
constexpr std::size_t max_waiting_bytes = 50'000;
constexpr int max_waiting_pieces = 64;

constexpr std::size_t max_run = 9'000;

struct plain_packet {
    std::string header = std::string(packet_header_bytes, '\0');
    std::string payload = std::string(packet_max_payload_bytes, '\0');
    std::size_t received = 0;

    std::size_t read_number(std::size_t place, std::size_t count) const
    {
        std::size_t number = 0;
        while (count-- > 0)
            number = number << 8 | static_cast<unsigned char>(header[place + count]);
        return number;
    }
    std::size_t length() const
    {
        return read_number(4, 2);
    }
};

struct plain_receiver {
    std::string waiting{}; // sent, and not yet read
    bool is_closed = false;
    bool is_under_way = false;
    plain_packet packet{};
    std::size_t bytes_received = 0;

    bool is_ready() const
    {
        return is_closed || !waiting.empty();
    }
    std::string read(std::size_t most)
    {
        std::string bytes = waiting.substr(0, most);
        waiting.erase(0, bytes.size());
        bytes_received += bytes.size();
        return bytes;
    }
    int drop(int result)
    {
        is_under_way = false;
        return result;
    }
    int take_header()
    {
        is_under_way = true;
        packet = {};
        const std::string bytes = read(packet_header_bytes);
        packet.header.replace(0, bytes.size(), bytes);
        if (bytes.size() == packet_header_bytes)
            return packet_complete;
        return is_closed ? drop(packet_failed) : packet_pending;
    }
    int take_payload()
    {
        const std::size_t most = packet_max_payload_bytes;
        const std::string bytes = read(std::min(packet.length(), most));
        if (bytes.empty())
            return drop(packet_failed);
        const std::size_t capacity = most - std::min(most, packet.received);
        const std::size_t kept = std::min(capacity, bytes.size());
        if (kept > 0)
            packet.payload.replace(packet.received, kept, bytes, 0, kept);
        packet.received += bytes.size();
        if (packet.received < packet.length())
            return packet_pending;
        if (packet.read_number(0, 4) <= packet_last_text_kind)
            packet.payload[std::min(packet.length(), most - 1)] = '\0';
        return packet_complete;
    }
    int receive()
    {
        if (!is_under_way) {
            const int result = is_ready() ? take_header() : packet_pending;
            if (result != packet_complete)
                return result;
        }
        if (packet.read_number(4, 4) == 0)
            return drop(packet_pending);
        return is_ready() ? take_payload() : packet_pending;
    }
};

/// The client's receiver beside the plain one.
struct receivers {
    socket_pair sockets{};
    server_entry server = {};
    plain_receiver plain{};
    int pieces = 0; // sent since nothing was waiting

    receivers() = default;
    receivers(const receivers&) = delete;
    receivers& operator=(const receivers&) = delete;
    ~receivers()
    {
        packet_take(server);
    }
    void feed(const std::string& bytes)
    {
        pieces = plain.waiting.empty() ? 1 : pieces + 1;
        if (plain.is_closed || pieces > max_waiting_pieces ||
            plain.waiting.size() + bytes.size() > max_waiting_bytes)
            return;
        require(bytes.empty() || sockets.feed(bytes), "the socket takes what is sent");
        plain.waiting += bytes;
    }
    void close()
    {
        sockets.close_server();
        plain.is_closed = true;
    }
    void compare_packets() const
    {
        require((server.rx_packet != nullptr) == plain.is_under_way,
                "a packet is under way from its first byte to its last");
        if (!plain.is_under_way)
            return;
        const plain_packet& packet = plain.packet;
        require(std::memcmp(server.rx_packet->header, packet.header.data(), packet.header.size()) ==
                    0,
                "the header is what came");
        require(std::memcmp(server.rx_packet->payload, packet.payload.data(),
                            packet.payload.size()) == 0,
                "the payload is what came, and nothing beyond it");
        require(server.rx_received == packet.received, "payload bytes are counted");
    }
    void receive()
    {
        const int expected = plain.receive();
        const int result = receive_packet(sockets.client(), server);
        require(result == expected, "a packet is complete when its last byte has come");
        require(server.bytes_received == static_cast<std::uint32_t>(plain.bytes_received),
                "every byte read is counted");
        compare_packets();
        if (result != packet_complete)
            return;
        packet_take(server);
        plain.drop(packet_complete);
    }
};

std::string make_packet(fuzz_input& input)
{
    const unsigned kind = input.flag() ? 40U + input.number(165) : input.number(65'535) << 12;
    const unsigned length = input.number(65'535);
    const unsigned announced = input.flag() ? length : input.number(5'000);
    const unsigned extra = input.flag() ? 0 : input.number(65'535);
    const std::string payload(std::min<std::size_t>(length, max_run),
                              static_cast<char>(input.byte()));
    return wire_packet(kind, announced, extra, payload);
}

void step(receivers& both, fuzz_input& input)
{
    switch (input.number(7)) {
    case 0:
        both.feed(make_packet(input));
        break;
    case 1:
        both.feed(std::string(input.number(max_run), static_cast<char>(input.byte())));
        break;
    case 2:
    case 3:
        both.feed(input.bytes(input.number(255)));
        break;
    case 4:
        if (input.number(15) == 0)
            both.close();
        break;
    default:
        both.receive();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const world_visit visit;
    fuzz_input input{data, size};
    receivers both;
    while (!input.is_empty())
        step(both, input);
    for (int rounds = 0; rounds < 4; ++rounds)
        both.receive();
    return 0;
}
