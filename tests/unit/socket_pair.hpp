// socket_pair.hpp - two connected sockets: the client's end, and the test's end as the server.
#pragma once

#include "base/owners.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

class socket_pair
{
public:
    /// Ends the test program on failure.
    socket_pair()
    {
        int both[2] = {-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, both) != 0) {
            std::perror("cannot make sockets");
            std::abort();
        }
        client_end = unique_fd(both[0]);
        server_end = unique_fd(both[1]);
    }
    int client() const
    {
        return client_end.get();
    }
    /// Sends bytes to the client; false if they do not all fit into the socket.
    bool feed(std::string_view bytes) const
    {
        const ssize_t sent =
            send(server_end.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent == static_cast<ssize_t>(bytes.size());
    }
    /// All that the client has sent since the last call.
    std::string sent_by_client() const
    {
        return waiting_at(server_end.get());
    }
    /// Everything that waits for the client; reads it away.
    std::string left_for_client() const
    {
        return waiting_at(client());
    }
    /// Closes the server's side. Nothing that it sent is lost.
    void close_server()
    {
        server_end = unique_fd();
    }

private:
    static std::string waiting_at(int fd)
    {
        std::string all;
        char piece[4096];
        for (ssize_t length = 0; (length = recv(fd, piece, sizeof piece, MSG_DONTWAIT)) > 0;)
            all.append(piece, static_cast<std::size_t>(length));
        return all;
    }

    unique_fd client_end;
    unique_fd server_end;
};

/// The bytes of a packet, made by hand: a header that announces `length` payload bytes, and
/// whatever follows it.
inline std::string wire_packet(unsigned kind, unsigned length, unsigned extra,
                               std::string_view payload)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(kind >> shift & 0xFF);
    for (const unsigned number : {length, extra, 0U, 0U}) {
        bytes += static_cast<char>(number & 0xFF);
        bytes += static_cast<char>(number >> 8 & 0xFF);
    }
    return bytes.append(payload);
}
