// json_input.cpp - see json_input.hpp.
#include "server/inputs/json_input.hpp"

#include "server/base/limits.hpp"
#include "server/base/sockets.hpp"
#include "server/base/system_text.hpp"

#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tovrik
{
namespace
{

/// The end of a datagram ends its last line, even without a line feed.
std::vector<transmission> read_datagrams(json_input& input)
{
    std::vector<transmission> messages;
    std::string block(max_json_line_bytes, '\0');
    for (int i = 0; i < max_datagrams_per_turn; ++i) {
        const ssize_t count =
            recv(input.udp_socket.get(), block.data(), block.size(), MSG_DONTWAIT);
        if (count < 0)
            break;
        append_messages(messages, input.datagram_lines.take(std::string_view{block}.substr(
                                      0, static_cast<std::size_t>(count))));
        append_messages(messages, input.datagram_lines.take_rest());
    }
    return messages;
}

std::vector<transmission> read_stream(json_input& input, int epoll_fd)
{
    char block[16384];
    // The descriptor may be a blocking one, but it is ready, so this does not wait.
    const ssize_t count = read(input.stream_fd, block, sizeof block);
    if (count > 0)
        return input.stream_lines.take({block, static_cast<std::size_t>(count)});
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return {};
    if (count < 0)
        input.stream_error = std::generic_category().message(errno);
    input.stream_ended = true;
    watch(epoll_fd, EPOLL_CTL_DEL, input.stream_fd, 0);
    input.stream_fd = -1;
    return input.stream_lines.take_rest();
}

} // namespace

json_input::json_input(json_input_options chosen)
    : options(std::move(chosen)), stream_fd(options.stream_fd),
      datagram_lines(options.on_complaint), stream_lines(options.on_complaint),
      pushed_lines(options.on_complaint)
{
}

std::string json_open(json_input& input, int epoll_fd)
{
    if (input.options.udp_port) {
        input.udp_port = *input.options.udp_port;
        std::string error =
            open_udp_receiver(input.options.bind_address, input.udp_socket, input.udp_port);
        if (!error.empty())
            return error;
    }
    if ((input.udp_socket && !watch(epoll_fd, EPOLL_CTL_ADD, input.udp_socket.get(), EPOLLIN)) ||
        (input.stream_fd >= 0 && !watch(epoll_fd, EPOLL_CTL_ADD, input.stream_fd, EPOLLIN)))
        return system_text("cannot wait for JSON");
    return {};
}

std::vector<transmission> json_on_event(json_input& input, int epoll_fd, int fd)
{
    if (fd == input.udp_socket.get())
        return read_datagrams(input);
    if (fd == input.stream_fd)
        return read_stream(input, epoll_fd);
    return {};
}

std::size_t json_broken(const json_input& input)
{
    return input.datagram_lines.broken() + input.stream_lines.broken() +
           input.pushed_lines.broken();
}

} // namespace tovrik
