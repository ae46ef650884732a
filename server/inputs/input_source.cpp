// input_source.cpp - see input_source.hpp.
#include "server/inputs/input_source.hpp"

#include "server/base/sockets.hpp"
#include "server/base/utf8_text.hpp"
#include "server/inputs/input_limits.hpp"
#include "server/inputs/json_message.hpp"

#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace tovrik
{

watched_fd::watched_fd(watched_fd&& other) noexcept
    : fd(std::move(other.fd)), host(std::exchange(other.host, nullptr))
{
}

watched_fd& watched_fd::operator=(watched_fd&& other) noexcept
{
    std::swap(fd, other.fd);
    std::swap(host, other.host);
    return *this;
}

watched_fd::~watched_fd()
{
    close();
}

bool watched_fd::open(input_host& home, input_source& owner, unique_fd opened, std::uint32_t events)
{
    close();
    if (!opened || !watch(home.epoll_fd, EPOLL_CTL_ADD, opened.get(), events))
        return false;
    fd = std::move(opened);
    host = &home;
    host->owners[fd.get()] = &owner;
    return true;
}

void watched_fd::close()
{
    if (!fd)
        return;
    // Another descriptor may keep the same file open, so closing alone would not end the waiting.
    watch(host->epoll_fd, EPOLL_CTL_DEL, fd.get(), 0);
    host->owners.erase(fd.get());
    fd = unique_fd{};
}

void watched_fd::change(std::uint32_t events) const
{
    watch(host->epoll_fd, EPOLL_CTL_MOD, fd.get(), events);
}

input_source::input_source(input_options chosen, input_host& home)
    : options(std::move(chosen)), host(home)
{
}

void input_source::on_time(time_point) {}

time_point input_source::next_time() const
{
    return never;
}

void input_source::refresh_counters() {}

void input_source::stop() {}

void input_source::wait_for_end(time_point) {}

void input_source::take_bytes(json_lines& lines, std::string_view bytes, time_point now)
{
    const std::size_t messages = lines.messages();
    const std::size_t broken = lines.broken();
    counters.bytes += bytes.size();
    note_received(lines, messages, broken, lines.take(bytes), now);
}

void input_source::take_rest(json_lines& lines, time_point now)
{
    const std::size_t messages = lines.messages();
    const std::size_t broken = lines.broken();
    note_received(lines, messages, broken, lines.take_rest(), now);
}

void input_source::take_blocks(json_lines& lines, block_queue& queue, time_point now)
{
    std::size_t bytes = 0;
    while (!queue.blocks.empty() && bytes < max_json_bytes_per_turn) {
        const std::string block = queue_pop(queue);
        bytes += block.size();
        take_bytes(lines, block, now);
        take_rest(lines, now);
    }
}

json_lines input_source::make_lines()
{
    return json_lines{[this](const std::string& text) { complain(text); }, long_texts::whole};
}

std::string input_line(const input_options& options, const std::string& text)
{
    return "input '" + utf8_of_latin1(options.name) + "': " + text;
}

void input_source::tell(const std::string& text) const
{
    if (host.tell)
        host.tell(input_line(options, text));
}

void input_source::complain(const std::string& text) const
{
    if (host.complain)
        host.complain(input_line(options, text));
}

void input_source::note_received(const json_lines& lines, std::size_t messages, std::size_t broken,
                                 std::vector<transmission> taken, time_point now)
{
    counters.broken += lines.broken() - broken;
    if (lines.messages() == messages)
        return;
    counters.messages += lines.messages() - messages;
    counters.last_message = std::time(nullptr);
    silence.since = now;
    if (options.drop_empty_squitters)
        counters.left_out += std::erase_if(taken, is_empty_squitter);
    append_messages(received, std::move(taken));
}

void keep_alive(int socket)
{
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    setsockopt(socket, IPPROTO_TCP, TCP_KEEPIDLE, &keepalive_idle_s, sizeof keepalive_idle_s);
    setsockopt(socket, IPPROTO_TCP, TCP_KEEPINTVL, &keepalive_interval_s,
               sizeof keepalive_interval_s);
    setsockopt(socket, IPPROTO_TCP, TCP_KEEPCNT, &keepalive_count, sizeof keepalive_count);
}

bool is_allowed(const std::vector<address_range>& allow, std::uint32_t address)
{
    return allow.empty() || std::ranges::any_of(allow, [address](const address_range& range) {
               return (address & range.mask) == (range.address & range.mask);
           });
}

} // namespace tovrik
