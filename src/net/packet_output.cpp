// packet_output.cpp - see packet_output.hpp.
#include "net/packet_output.hpp"

#include "base/owners.hpp"
#include "base/retry.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace
{

using owned_packet = std::unique_ptr<packet_buffer, releaser<std::free>>;

/// Formats the text into the payload. Its length, or -1 when memory is short.
int text_format(packet_buffer& packet, const char* format, va_list arguments)
{
    const heap_text text{static_cast<char*>(std::calloc(packet_max_payload_bytes, 1))};
    if (!text)
        return -1;
    std::vsnprintf(text.get(), packet_max_sent_text_bytes + 1, format, arguments);
    const std::size_t length = std::strlen(text.get());
    std::memcpy(packet.payload, text.get(), length);
    return static_cast<int>(length);
}

ssize_t packet_send(int socket, const packet_buffer& packet, std::size_t length)
{
    if (wait_ready(socket, for_writing, 0) != 1)
        return 0;
    // A socket with room for a part only must not hold the program up either.
    return uninterrupted([&] {
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
        length = text_format(*packet, format, arguments);
        va_end(arguments);
        if (length < 0)
            return 0;
    } else {
        // The length stays 0, so that servers see the header alone.
        std::memcpy(packet->payload, format,
                    std::min<std::size_t>(param1, packet_max_payload_bytes));
    }
    packet_header_write(packet->header,
                        {kind, static_cast<std::uint16_t>(length), 0, param1, param2});
    return packet_send(socket, *packet, static_cast<std::size_t>(length));
}

int wait_ready(int socket, int direction, int seconds)
{
    const timespec limit = {seconds, ready_wait_us * 1'000};
    pollfd watched = {socket, static_cast<short>(direction == for_writing ? POLLOUT : POLLIN), 0};
    if (socket <= 0)
        return -1;
    const int ready = uninterrupted([&] { return ppoll(&watched, 1, &limit, nullptr); });
    if (ready < 0 || (watched.revents & POLLNVAL) != 0)
        return -1;
    return ready > 0 ? 1 : 0;
}
