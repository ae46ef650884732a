// soak_server.hpp - one server of a soak, and all it knows about its client.
//
// Owns its sockets. Acts only when it is stepped; never waits. It derives the client's pace from
// the polls that the client has made: a packet counts as read after two more polls, since the first
// may already have been in progress.
#pragma once

#include "base/owners.hpp"
#include "support/server_packet.hpp"
#include "support/test_clock.hpp"

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

enum class server_manner : std::uint8_t { steady, flooding, splitting };

enum class server_mood : std::uint8_t {
    talking,
    held,     // says nothing until told otherwise
    silent,   // says nothing until the client sends a heartbeat or leaves
    stubborn, // says nothing until the client leaves
};

class soak_server
{
public:
    /// `listener`: a bound socket, whose port is the server's. `clock`: the client's; must outlive
    /// this object.
    soak_server(int number, unique_fd listener, server_manner manner, unsigned seed,
                const test_clock& clock);

    int listener() const
    {
        return listening.get();
    }
    /// The client's socket; -1 when there is none.
    int client() const
    {
        return connection.get();
    }
    /// Accepts a waiting client.
    void accept_client();
    /// Handles a client's socket that can be read or has ended.
    void take_in();
    /// Sends what is due.
    void step();

    void set_mood(server_mood wanted)
    {
        mood = wanted;
    }
    /// The next client will be asked for a password.
    void ask_next_for_password()
    {
        asks_password = true;
    }
    /// Sends something besides the transmissions. False if the client has gone or takes nothing.
    bool say(const server_packet& packet);
    /// Closes the connection, with a reset or with end of file.
    void hang_up(bool with_reset);

    /// Whether a client is connected and has introduced itself.
    bool is_connected() const;
    /// Whether the client has polled often enough to have read the server's first packets.
    bool has_been_polled() const;
    bool is_talking() const
    {
        return mood == server_mood::talking;
    }
    /// Whether everything that was sent has been read.
    bool is_settled() const;

    std::int64_t transmissions = 0; // handed to the client
    std::int64_t packets = 0;       // of any kind, including these
    int clients = 0;                // that have connected so far
    int good_byes = 0;              // that have been received
    int heartbeats = 0;             // that have been received
    int ends = 0;                   // connections that the client has closed
    int passwords = 0;              // that have been received

private:
    void understand(const server_packet& packet);
    void client_left();
    void speak();
    void flood();
    void split();
    bool give(std::string_view bytes);
    server_packet next_packet();

    const test_clock& clock;
    int number;
    server_manner manner;
    std::mt19937 dice;
    unique_fd listening;
    unique_fd connection{};
    std::string inbox{};  // of an incomplete packet
    std::string pieces{}; // of packets still to be sent
    server_mood mood = server_mood::talking;
    bool asks_password = false;
    int introductions = 0; // packets in which the client has introduced itself
    std::int64_t now_ms = 0;
    std::int64_t said_at_polls = 0;
    std::int64_t introduced_at_polls = 0;
    std::int64_t next_due_ms = 0;
    int mean_interval_ms;
};
