// soak_server.cpp - see soak_server.hpp.
#include "soak/soak_server.hpp"

#include "soak/soak_traffic.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <utility>

namespace
{

constexpr std::uint32_t good_bye_kind = 2;
constexpr std::uint32_t password_kind = 81;
constexpr std::uint32_t password_accepted_kind = 82;
constexpr std::uint32_t version_kind = 101;
constexpr std::uint32_t heartbeat_kind = 148;
constexpr std::uint32_t format_kind = 151;

constexpr int max_waiting_clients = 16;
constexpr int introduction_packets = 2;
constexpr int polls_to_read = 2;
constexpr int shortest_interval_ms = 1000;
constexpr int one_side_packet_in = 6;
constexpr std::size_t max_burst_bytes = 64UL * 1024;

/// Takes a received packet from the start of `inbox`; false if it is not complete.
bool take_packet(std::string& inbox, server_packet& packet)
{
    std::size_t length = 0;
    if (inbox.size() < wire_header_bytes)
        return false;
    packet = parse_header(inbox, length);
    if (inbox.size() < wire_header_bytes + length)
        return false;
    packet.payload = inbox.substr(wire_header_bytes, length);
    inbox.erase(0, wire_header_bytes + length);
    return true;
}

} // namespace

soak_server::soak_server(int which, unique_fd listener, server_manner how, unsigned seed,
                         const test_clock& client_clock)
    : clock(client_clock), number(which), manner(how), dice(seed + static_cast<unsigned>(which)),
      listening(std::move(listener)), mean_interval_ms(shortest_interval_ms * (1 + which % 10 * 2))
{
    listen(listening.get(), max_waiting_clients);
    fcntl(listening.get(), F_SETFL, O_NONBLOCK);
}

void soak_server::step()
{
    now_ms = clock.now_ms();
    if (!is_connected() || mood != server_mood::talking)
        return;
    if (manner == server_manner::flooding)
        flood();
    else if (manner == server_manner::splitting)
        split();
    else
        speak();
}

void soak_server::accept_client()
{
    // The waiting client may have given up.
    const int fd = accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd < 0)
        return;
    connection = unique_fd{fd};
    inbox.clear();
    pieces.clear();
    introductions = 0;
    ++clients;
    say(greeting_packet(number, asks_password));
    asks_password = false;
    next_due_ms = now_ms;
}

void soak_server::take_in()
{
    std::array<char, 4096> bytes{};
    while (connection) {
        const ssize_t length = recv(connection.get(), bytes.data(), bytes.size(), 0);
        if (length < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (length <= 0)
            return client_left();
        inbox.append(bytes.data(), static_cast<std::size_t>(length));
        for (server_packet packet; take_packet(inbox, packet);)
            understand(packet);
    }
}

void soak_server::understand(const server_packet& packet)
{
    if (packet.kind == version_kind || packet.kind == format_kind) {
        ++introductions;
        introduced_at_polls = clock.alarms_set(); // what was sent earlier is read from now on
        said_at_polls = introduced_at_polls;
    } else if (packet.kind == good_bye_kind) {
        ++good_byes;
    } else if (packet.kind == password_kind) {
        ++passwords;
        say({.kind = password_accepted_kind, .payload = "accepted"});
    } else if (packet.kind == heartbeat_kind) {
        ++heartbeats;
        if (mood == server_mood::silent)
            mood = server_mood::talking;
    }
}

void soak_server::client_left()
{
    connection = unique_fd{};
    ++ends;
    if (mood == server_mood::silent || mood == server_mood::stubborn)
        mood = server_mood::talking;
}

bool soak_server::is_connected() const
{
    return connection && introductions >= introduction_packets;
}

bool soak_server::has_been_polled() const
{
    return clock.alarms_set() >= introduced_at_polls + polls_to_read;
}

bool soak_server::is_settled() const
{
    return clock.alarms_set() >= said_at_polls + polls_to_read && pieces.empty();
}

bool soak_server::say(const server_packet& packet)
{
    return give(packet_bytes(packet));
}

/// Sends all of it or nothing: the sockets of servers that wait for their client have space.
bool soak_server::give(std::string_view bytes)
{
    const ssize_t sent =
        connection ? send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) : -1;
    // Polls made while this thread was delayed have not seen what was sent only afterwards.
    said_at_polls = clock.alarms_set();
    ++packets;
    return sent == static_cast<ssize_t>(bytes.size());
}

server_packet soak_server::next_packet()
{
    if (number_from(dice, 1, one_side_packet_in) == 1)
        return side_packet(dice);
    return transmission_packet(number, transmissions++);
}

void soak_server::speak()
{
    if (now_ms < next_due_ms || !is_settled())
        return;
    say(next_packet());
    next_due_ms = now_ms + number_from(dice, shortest_interval_ms,
                                       std::max(shortest_interval_ms, 2 * mean_interval_ms));
}

/// Sends as much as the socket takes; the last packet may stay incomplete for a while.
void soak_server::flood()
{
    while (pieces.size() < max_burst_bytes)
        pieces += packet_bytes(number_from(dice, 0, 3) == 0 ? wild_packet(dice)
                                                            : transmission_packet(number, 0));
    const ssize_t sent = send(connection.get(), pieces.data(), pieces.size(), MSG_NOSIGNAL);
    if (sent <= 0)
        return;
    pieces.erase(0, static_cast<std::size_t>(sent));
    ++packets;
}

/// Sends a piece of a packet at any time, whether the previous one has been read or not.
void soak_server::split()
{
    if (now_ms < next_due_ms)
        return;
    if (pieces.empty())
        pieces = packet_bytes(transmission_packet(number, 0));
    const int most = static_cast<int>(pieces.size());
    const int length = number_from(dice, 0, 2) == 0 ? number_from(dice, 1, std::min(most, 14))
                                                    : number_from(dice, 1, most);
    const ssize_t sent =
        send(connection.get(), pieces.data(), static_cast<std::size_t>(length), MSG_NOSIGNAL);
    if (sent > 0)
        pieces.erase(0, static_cast<std::size_t>(sent));
    ++packets;
    next_due_ms = now_ms + number_from(dice, 0, 2 * shortest_interval_ms);
}

void soak_server::hang_up(bool with_reset)
{
    const linger at_once{.l_onoff = 1, .l_linger = 0};
    if (with_reset && connection)
        setsockopt(connection.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    connection = unique_fd{};
    pieces.clear();
}
