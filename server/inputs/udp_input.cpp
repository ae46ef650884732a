// udp_input.cpp - see udp_input.hpp.
#include "server/inputs/udp_input.hpp"

#include "server/base/limits.hpp"
#include "server/base/sockets.hpp"
#include "server/base/system_text.hpp"
#include "server/inputs/input_limits.hpp"

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <optional>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace tovrik
{

/// Room for the datagrams of one call.
struct datagram_buffers {
    struct control_room {
        alignas(cmsghdr) char bytes[CMSG_SPACE(sizeof(std::uint32_t))];
    };
    // Not filled with zeros: of most places only the first page is ever used.
    std::unique_ptr<char[]> bytes{new char[datagrams_per_call * max_json_line_bytes]};
    std::array<sockaddr_in, datagrams_per_call> senders;
    std::array<control_room, datagrams_per_call> controls;
    std::array<iovec, datagrams_per_call> places;
    std::array<mmsghdr, datagrams_per_call> headers;
};

namespace
{

void prepare_buffers(datagram_buffers& buffers)
{
    for (std::size_t i = 0; i < datagrams_per_call; ++i) {
        buffers.places[i] = {&buffers.bytes[i * max_json_line_bytes], max_json_line_bytes};
        msghdr& header = buffers.headers[i].msg_hdr;
        header = {};
        header.msg_name = &buffers.senders[i];
        header.msg_namelen = sizeof buffers.senders[i];
        header.msg_iov = &buffers.places[i];
        header.msg_iovlen = 1;
        header.msg_control = buffers.controls[i].bytes;
        header.msg_controllen = sizeof buffers.controls[i].bytes;
    }
}

/// How many datagrams the system has dropped since the socket was opened, if it says so.
std::optional<std::uint32_t> read_dropped(msghdr& header)
{
    for (cmsghdr* control = CMSG_FIRSTHDR(&header); control != nullptr;
         control = CMSG_NXTHDR(&header, control)) {
        if (control->cmsg_level == SOL_SOCKET && control->cmsg_type == SO_RXQ_OVFL) {
            std::uint32_t dropped = 0;
            std::memcpy(&dropped, CMSG_DATA(control), sizeof dropped);
            return dropped;
        }
    }
    return {};
}

/// Asks for a large buffer: with the right to exceed the system's limit, and if that is missing,
/// within it.
void reserve_receive_buffer(int socket)
{
    const int size = udp_receive_buffer_bytes;
    if (setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof size) != 0)
        setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

} // namespace

udp_input::udp_input(input_options chosen, input_host& home)
    : input_source(std::move(chosen), home), lines(make_lines())
{
}

udp_input::~udp_input() = default;

std::string udp_input::open(time_point)
{
    unique_fd opened;
    port = options.port;
    std::string error = open_udp_receiver(options.bind, opened, port);
    if (!error.empty())
        return error;
    const int on = 1;
    reserve_receive_buffer(opened.get());
    setsockopt(opened.get(), SOL_SOCKET, SO_RXQ_OVFL, &on, sizeof on);
    if (!socket.open(host, *this, std::move(opened), EPOLLIN))
        return system_text("cannot wait for datagrams");
    buffers = std::make_unique<datagram_buffers>();
    counters.is_connected = true;
    return {};
}

void udp_input::on_event(int, time_point now)
{
    drain();
    take_blocks(lines, waiting, now);
}

void udp_input::on_time(time_point now)
{
    take_blocks(lines, waiting, now);
}

time_point udp_input::next_time() const
{
    return waiting.blocks.empty() ? never : time_point::min();
}

void udp_input::drain()
{
    for (std::size_t taken = 0; taken < max_datagrams_per_drain; taken += datagrams_per_call) {
        // What finds no room here stays with the system, which counts what it drops.
        if (queue_is_full(waiting, datagrams_per_call * max_json_line_bytes) || !receive_some())
            return;
    }
}

/// Takes as many datagrams as fit the buffers. False if there were fewer.
bool udp_input::receive_some()
{
    prepare_buffers(*buffers);
    const int count =
        recvmmsg(socket.get(), buffers->headers.data(), datagrams_per_call, MSG_DONTWAIT, nullptr);
    for (std::size_t i = 0; count > 0 && i < static_cast<std::size_t>(count); ++i) {
        mmsghdr& header = buffers->headers[i];
        if (const auto dropped = read_dropped(header.msg_hdr)) {
            counters.lost += *dropped - dropped_before;
            dropped_before = *dropped;
        }
        if (is_allowed(options.allow, ntohl(buffers->senders[i].sin_addr.s_addr))) {
            queue_push(waiting, {&buffers->bytes[i * max_json_line_bytes], header.msg_len});
        } else {
            ++counters.refused;
        }
    }
    return count == static_cast<int>(datagrams_per_call);
}

} // namespace tovrik
