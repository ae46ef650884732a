// scripted_server.hpp - a server of which a test decides every byte and every silence.
//
// Owns its listening socket; a connection owns its own. It has no threads, and it does nothing that
// the test did not ask for.
#pragma once

#include "support/patience.hpp"
#include "support/server_packet.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The server's end of one connection.
class server_connection
{
public:
    /// Takes over a connected socket.
    explicit server_connection(int socket_fd);
    server_connection(server_connection&& other) noexcept;
    server_connection& operator=(server_connection&& other) noexcept;
    server_connection(const server_connection&) = delete;
    server_connection& operator=(const server_connection&) = delete;
    ~server_connection();

    /// Sends all bytes at once; false if the client did not take them.
    bool send_bytes(std::string_view bytes);
    bool send(const server_packet& packet);
    /// Sends a text packet.
    bool send(std::uint32_t kind, std::string_view text);

    /// The next `count` bytes from the client; none if they do not come.
    std::optional<std::string> read_bytes(std::size_t count,
                                          std::chrono::milliseconds limit = default_patience);
    /// The next packet from the client; none if no whole packet comes.
    std::optional<server_packet> read_packet(std::chrono::milliseconds limit = default_patience);
    /// Reads until the client has closed its side; false if it does not.
    bool wait_for_close(std::chrono::milliseconds limit = default_patience);
    /// Receives what has arrived; true if there are bytes that the test has not read.
    bool has_unread_bytes();
    /// Everything received from the client so far, read by the test or not.
    const std::string& received() const
    {
        return all;
    }
    /// The received bytes cut into packets, without an incomplete last one.
    std::vector<server_packet> received_packets() const;

    /// Sends end of file; can still read.
    void half_close();
    /// Closes the connection; unread bytes make that a reset.
    void close();
    /// Closes with a reset instead of end of file.
    void reset();

private:
    bool take_in(std::chrono::milliseconds limit);

    int fd = -1;
    std::string all;
    std::size_t taken = 0;
    bool ended = false;
};

/// Listens on an address of this machine at a port that the system chooses.
class scripted_server
{
public:
    explicit scripted_server(const std::string& address = "127.0.0.1");
    ~scripted_server();
    scripted_server(const scripted_server&) = delete;
    scripted_server& operator=(const scripted_server&) = delete;

    int port() const;
    /// Accepts the next client; none if nobody comes.
    std::optional<server_connection> accept(std::chrono::milliseconds limit = default_patience);
    /// Whether a client is waiting to be accepted.
    bool has_waiting_client();
    /// Refuses every client from now on.
    void stop_listening();

private:
    int fd = -1;
    int bound_port = 0;
};

/// A port of this machine that refuses every connection and that nobody else can take.
class closed_port
{
public:
    explicit closed_port(const std::string& address = "127.0.0.1");
    ~closed_port();
    closed_port(const closed_port&) = delete;
    closed_port& operator=(const closed_port&) = delete;
    int port() const;

private:
    int fd = -1;
};

/// A port where a connect neither succeeds nor fails: its queue is full and stays full.
class silent_port
{
public:
    explicit silent_port(const std::string& address = "127.0.0.1");
    ~silent_port();
    silent_port(const silent_port&) = delete;
    silent_port& operator=(const silent_port&) = delete;
    int port() const;

private:
    int fd = -1;
    std::vector<int> queued;
};
