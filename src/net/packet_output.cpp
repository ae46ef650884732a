// packet_output.cpp - see packet_output.hpp.
#include "net/packet_output.hpp"

#include "base/owners.hpp"
#include "base/retry.hpp"
#include "net/readiness.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <sys/socket.h>

namespace
{

using owned_packet = std::unique_ptr<packet_buffer, releaser<std::free>>;

/// Formats the text into the payload. Its length; -1 when out of memory.
int format_payload(packet_buffer& packet, const char* format, va_list arguments)
{
    const heap_text text{static_cast<char*>(std::calloc(packet_max_payload_bytes, 1))};
    if (!text)
        return -1;
    std::vsnprintf(text.get(), packet_max_sent_text_bytes + 1, format, arguments);
    const std::size_t length = std::strlen(text.get());
    std::memcpy(packet.payload, text.get(), length);
    return static_cast<int>(length);
}

ssize_t send_bytes(int socket, const packet_buffer& packet, std::size_t length)
{
    if (wait_ready(socket, for_writing, 0) != 1)
        return 0;
    // A socket that can take only a part of the packet must not block either.
    return retry_on_eintr([&] {
        return send(socket, &packet, packet_header_bytes + length, MSG_NOSIGNAL | MSG_DONTWAIT);
    });
}

} // namespace

ssize_t send_packet(int socket, std::uint32_t kind, std::uint16_t param1, std::uint16_t param2,
                    const char* format, ...)
{
    if (format == nullptr)
        return 0;
    const owned_packet packet{static_cast<packet_buffer*>(std::calloc(1, sizeof(packet_buffer)))};
    if (!packet)
        return 0;
    int length = 0;
    if (kind <= packet_last_text_kind) {
        va_list arguments;
        va_start(arguments, format);
        length = format_payload(*packet, format, arguments);
        va_end(arguments);
        if (length < 0)
            return 0;
    } else {
        // Kept on purpose: the length stays 0, so only the header goes out; no server expects
        // binary kinds. Test: send_packet.sends_binary_kinds_as_a_header_of_length_0.
        std::memcpy(packet->payload, format,
                    std::min<std::size_t>(param1, packet_max_payload_bytes));
    }
    packet_header_write(packet->header,
                        {kind, static_cast<std::uint16_t>(length), 0, param1, param2});
    return send_bytes(socket, *packet, static_cast<std::size_t>(length));
}
