// client_session.cpp - see client_session.hpp.
#include "server/sessions/client_session.hpp"

#include "server/base/limits.hpp"
#include "server/base/sockets.hpp"

#include <cerrno>
#include <iterator>
#include <sys/socket.h>
#include <utility>

namespace tovrik
{
namespace
{

wire_bytes take_first(std::deque<wire_bytes>& queue)
{
    wire_bytes first = std::move(queue.front());
    queue.pop_front();
    return first;
}

wire_bytes take_tick(client_session& session, time_point)
{
    return std::exchange(session.tick, nullptr);
}

wire_bytes take_report_piece(client_session& session, time_point)
{
    return session.report.empty() ? nullptr : take_first(session.report);
}

wire_bytes take_transmission(client_session& session, time_point now)
{
    wire_bytes taken = backlog_take(session.traffic, now);
    session.home->sent += taken ? 1 : 0;
    return taken;
}

bool is_hit_waiting(const client_session& session)
{
    return session.hit && session.hit->bytes && !session.closing;
}

wire_bytes take_hit(client_session& session, time_point)
{
    return is_hit_waiting(session) ? std::exchange(session.hit->bytes, nullptr) : nullptr;
}

/// The queues that take turns, so that none of them starves another.
constexpr wire_bytes (*turns[])(client_session&, time_point) = {take_tick, take_report_piece,
                                                                take_transmission, take_hit};

bool has_packet(const client_session& session)
{
    return !session.assured.empty() || !session.report.empty() ||
           !session.traffic.messages.empty() || session.tick || is_hit_waiting(session);
}

wire_bytes take_next_packet(client_session& session, time_point now)
{
    if (!session.assured.empty())
        return take_first(session.assured);
    wire_bytes taken;
    for (std::size_t i = 0; i < std::size(turns) && !taken; ++i) {
        taken = turns[session.next_turn](session, now);
        session.next_turn = static_cast<unsigned>((session.next_turn + 1) % std::size(turns));
    }
    // Whoever has nothing more to wait for begins anew, so that a message comes before its hit.
    if (!has_packet(session))
        session.next_turn = 0;
    return taken;
}

/// Notes that the socket is full. A client that is stopped for a moment goes on where it was; one
/// that never reads has had its place for long enough.
void wait_to_write(client_session& session, time_point now)
{
    session.waiting_to_write = true;
    if (session.stalled_since == never)
        session.stalled_since = now;
    session.gone = session.gone || now >= session_stall_end(session);
}

/// Sends the rest of the packet under way. False if the socket did not take all of it.
bool finish_packet(client_session& session, time_point now)
{
    while (session.sent_bytes < session.sending->size()) {
        const ssize_t count =
            send(session.socket.get(), session.sending->data() + session.sent_bytes,
                 session.sending->size() - session.sent_bytes, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && would_block(errno)) {
            wait_to_write(session, now);
            return false;
        }
        if (count < 0) {
            session.gone = true;
            return false;
        }
        session.stalled_since = never;
        session.sent_bytes += static_cast<std::size_t>(count);
    }
    session.waiting_to_write = false;
    session.sending.reset();
    session.sent_bytes = 0;
    if (session.hit && !session.hit->bytes)
        session.hit->is_handed_over = true;
    return true;
}

} // namespace

wire_bytes encode_shared(const packet& sent)
{
    return std::make_shared<std::string>(encode_packet(sent));
}

client_session::client_session(int socket_fd, channel& connected_to, std::uint64_t client_number)
    : socket(socket_fd), home(&connected_to), number(client_number)
{
}

void session_receive(client_session& session)
{
    char block[4096];
    for (std::size_t total = 0; total < max_read_bytes_per_turn;) {
        const ssize_t count = recv(session.socket.get(), block, sizeof block, MSG_DONTWAIT);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) {
            session.gone = session.gone || count == 0 || !would_block(errno);
            return;
        }
        session.input.append(block, static_cast<std::size_t>(count));
        total += static_cast<std::size_t>(count);
    }
}

packet_taken session_take_packet(client_session& session, packet& taken)
{
    if (session.input.size() < header_bytes)
        return packet_taken::none;
    const wire_header header = decode_header(session.input);
    if (header.length > max_payload_bytes)
        return packet_taken::broken;
    const std::size_t size = header_bytes + header.length;
    if (session.input.size() < size)
        return packet_taken::none;
    taken = {.kind = header.kind,
             .payload = session.input.substr(header_bytes, header.length),
             .param1 = header.param1,
             .param2 = header.param2,
             .extra = header.extra};
    session.input.erase(0, size);
    return packet_taken::whole;
}

bool session_queue(client_session& session, wire_bytes bytes)
{
    if (session.closing || session.gone || session.assured.size() >= max_assured_packets)
        return false;
    session.assured.push_back(std::move(bytes));
    return true;
}

bool session_queue_packet(client_session& session, const packet& sent)
{
    return session_queue(session, encode_shared(sent));
}

void session_queue_transmission(client_session& session, waiting_message message, std::size_t limit)
{
    if (!session.closing && !session.gone)
        backlog_add(session.traffic, std::move(message), limit);
}

void session_close(client_session& session, wire_bytes last_packet, time_point drop_at)
{
    if (session.closing)
        return;
    session.assured.clear();
    session.report.clear();
    session.traffic.messages.clear();
    session.tick.reset();
    session.next_tick = never;
    session.close_at = never;
    session.access_by = never;
    session.tell_left_out_at = never;
    session.assured.push_back(std::move(last_packet));
    session.drop_at = drop_at;
    session.closing = true;
}

void session_send(client_session& session, time_point now, std::chrono::milliseconds pace)
{
    while (!session.gone) {
        if (!session.sending) {
            if (now < session.next_send || !has_packet(session))
                return;
            session.sending = take_next_packet(session, now);
            if (!session.sending)
                return; // all that waited came too late
        }
        if (!finish_packet(session, now))
            return;
        session.next_send = now + pace;
        // The stream ends here, but closing the connection now would lose what the client has not
        // read yet. So the client closes it, or the session's time limit does.
        if (session.closing && session.assured.empty())
            shutdown(session.socket.get(), SHUT_WR);
    }
}

time_point session_stall_end(const client_session& session)
{
    constexpr std::chrono::minutes limit{max_stalled_minutes};
    return session.stalled_since == never ? never : session.stalled_since + limit;
}

time_point session_send_time(const client_session& session)
{
    if (session.waiting_to_write)
        return never;
    return session.sending || has_packet(session) ? session.next_send : never;
}

} // namespace tovrik
