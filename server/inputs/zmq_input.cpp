// zmq_input.cpp - see zmq_input.hpp.
#include "server/inputs/zmq_input.hpp"

#include "server/inputs/input_limits.hpp"

#include <cstring>
#include <utility>
#include <zmq.hpp>

namespace tovrik
{
namespace
{

/// Maximum number of messages that the library keeps while the thread is busy.
constexpr int max_library_messages = 10000;

/// Where the library tells of connections, within the session's own context.
constexpr const char* monitor_place = "inproc://connections";

/// What one thread has of the library. The context is the last to go: its end waits for the others.
struct publisher_session {
    std::string topic;
    std::shared_ptr<hand_over> shared;
    bool is_told = false; ///< that the connection was lost
    zmq::context_t context{1};
    zmq::socket_t messages{context, zmq::socket_type::sub};
    zmq::socket_t connections{context, zmq::socket_type::pair};
};

int count_ms(std::chrono::milliseconds pause)
{
    return static_cast<int>(pause.count());
}

void set_options(zmq::socket_t& socket, const std::string& topic)
{
    socket.set(zmq::sockopt::linger, 0);
    socket.set(zmq::sockopt::rcvhwm, max_library_messages);
    socket.set(zmq::sockopt::maxmsgsize, static_cast<std::int64_t>(max_block_bytes));
    socket.set(zmq::sockopt::reconnect_ivl, count_ms(first_retry_pause));
    socket.set(zmq::sockopt::reconnect_ivl_max, count_ms(longest_retry_pause));
    socket.set(zmq::sockopt::tcp_keepalive, 1);
    socket.set(zmq::sockopt::tcp_keepalive_idle, keepalive_idle_s);
    socket.set(zmq::sockopt::tcp_keepalive_intvl, keepalive_interval_s);
    socket.set(zmq::sockopt::tcp_keepalive_cnt, keepalive_count);
    socket.set(zmq::sockopt::subscribe, topic);
}

void begin_session(publisher_session& session, const std::string& endpoint)
{
    set_options(session.messages, session.topic);
    session.connections.set(zmq::sockopt::linger, 0);
    if (zmq_socket_monitor(session.messages.handle(), monitor_place,
                           ZMQ_EVENT_HANDSHAKE_SUCCEEDED | ZMQ_EVENT_DISCONNECTED) != 0)
        throw zmq::error_t{};
    session.connections.connect(monitor_place);
    session.messages.connect(endpoint);
}

/// Receives one message, and keeps its last frame. False if there is none.
bool receive_message(zmq::socket_t& socket, zmq::message_t& frame, bool& is_single)
{
    is_single = true;
    if (!socket.recv(frame, zmq::recv_flags::dontwait))
        return false;
    while (frame.more()) {
        is_single = false;
        if (!socket.recv(frame, zmq::recv_flags::dontwait))
            return false;
    }
    return true;
}

/// A topic's name stands before the JSON in the same frame, unless it is a part of the JSON.
std::string_view drop_topic(std::string_view bytes, const std::string& topic)
{
    if (topic.empty() || topic.front() == '{')
        return bytes;
    return bytes.substr(std::min(bytes.find('{'), bytes.size()));
}

void pass_messages(publisher_session& session)
{
    zmq::message_t frame;
    bool is_single = true;
    while (!session.shared->is_stopping && receive_message(session.messages, frame, is_single)) {
        const std::string_view bytes = frame.to_string_view();
        hand_over_block(*session.shared,
                        std::string{is_single ? drop_topic(bytes, session.topic) : bytes});
    }
}

/// The first frame of an event begins with its number.
void record_connection(publisher_session& session, const zmq::message_t& event)
{
    std::uint16_t number = 0;
    if (event.size() < sizeof number)
        return;
    std::memcpy(&number, event.data(), sizeof number);
    if (number == ZMQ_EVENT_HANDSHAKE_SUCCEEDED) {
        hand_over_connected(*session.shared);
        if (std::exchange(session.is_told, false))
            hand_over_line(*session.shared, "connected");
    } else if (session.shared->is_connected.exchange(false) &&
               !std::exchange(session.is_told, true)) {
        hand_over_line(*session.shared, "the connection was closed; trying again");
    }
}

void record_connections(publisher_session& session)
{
    zmq::message_t event;
    zmq::message_t address;
    while (session.connections.recv(event, zmq::recv_flags::dontwait)) {
        if (event.more())
            static_cast<void>(session.connections.recv(address, zmq::recv_flags::dontwait));
        record_connection(session, event);
    }
}

void run_session(publisher_session& session)
{
    zmq::pollitem_t waited[] = {{session.messages.handle(), 0, ZMQ_POLLIN, 0},
                                {session.connections.handle(), 0, ZMQ_POLLIN, 0},
                                {nullptr, session.shared->stopping.get(), ZMQ_POLLIN, 0}};
    while (!session.shared->is_stopping) {
        zmq::poll(waited, std::size(waited), std::chrono::milliseconds{-1});
        record_connections(session);
        pass_messages(session);
    }
}

} // namespace

prepared_work zmq_prepare(const input_options& options, const std::shared_ptr<hand_over>& shared)
{
    try {
        auto session = std::make_shared<publisher_session>();
        session->topic = options.topic;
        session->shared = shared;
        begin_session(*session, options.endpoint);
        return {[session] { run_session(*session); }, {}};
    } catch (const zmq::error_t& failure) {
        return {{}, options.endpoint + ": " + failure.what()};
    }
}

} // namespace tovrik
