// soak_traffic.hpp - what the servers of a soak send.
//
// A numbered transmission is made again from its numbers wherever it is needed, so that a day of
// them need not be kept to know what a log must hold.
#pragma once

#include "support/server_packet.hpp"

#include <cstdint>
#include <random>
#include <string>

/// The text that the client shows and logs for a server's transmission `number`, from 0.
std::string transmission_text(int server, std::int64_t number);

/// The packet with it; every other one is compressed.
server_packet transmission_packet(int server, std::int64_t number);

/// A server's greeting, which offers everything. `needs_password`: it asks for one.
server_packet greeting_packet(int server, bool needs_password);

/// Any packet that needs no answer and ends nothing.
server_packet side_packet(std::mt19937& dice);

/// Any packet of any kind and length, except those that open a box on the client's screen.
server_packet wild_packet(std::mt19937& dice);

/// A whole number from `least` to `most`.
int number_from(std::mt19937& dice, int least, int most);
