// scripted_server.hpp - a server whose every byte and every silence a test decides.
//
// Owns its listening socket; a connection owns its own. Nothing happens behind the test's back:
// there are no threads and no answers that were not asked for.
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
    /// The next packet from the client; none if no whole one comes.
    std::optional<server_packet> read_packet(std::chrono::milliseconds limit = default_patience);
    /// Reads until the client has closed its side; false if it does not.
    bool wait_for_close(std::chrono::milliseconds limit = default_patience);
    /// Takes in what has arrived; true if bytes not yet asked for are there.
    bool has_unread_bytes();
    /// Everything the client ever sent, and was read or waited for.
    const std::string& received() const
    {
        return all;
    }
    /// The received bytes cut into packets; an incomplete last one is left out.
    std::vector<server_packet> received_packets() const;

    /// Sends end of file; goes on reading.
    void half_close();
    /// Closes; bytes not yet read make it a reset.
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

/// Listens on an address of this machine at a port of the system's choice.
class scripted_server
{
public:
    explicit scripted_server(const std::string& address = "127.0.0.1");
    ~scripted_server();
    scripted_server(const scripted_server&) = delete;
    scripted_server& operator=(const scripted_server&) = delete;

    int port() const;
    /// The next client; none if nobody comes.
    std::optional<server_connection> accept(std::chrono::milliseconds limit = default_patience);
    /// A client is waiting to be accepted.
    bool has_waiting_client();
    /// Refuses everyone from now on.
    void stop_listening();

private:
    int fd = -1;
    int bound_port = 0;
};

/// A port of this machine that refuses every connection, and that nobody else can take.
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

/// A port on which connecting neither succeeds nor fails: its queue is full and stays so.
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
