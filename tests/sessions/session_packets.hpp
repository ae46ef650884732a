// session_packets.hpp - what the servers of a random session send.
#pragma once

#include "sessions/session_dice.hpp"

#include <string>
#include <vector>

/// A server's first bytes: capabilities, which offer most things.
std::string session_greeting(session_dice& dice, int server);

/// What a server sends next, in pieces that it sends one after another: mostly whole packets of
/// every kind, plain or compressed, as documented or with a slip; sometimes parts of packets, or
/// noise.
std::vector<std::string> session_traffic(session_dice& dice);

/// A directory's answer.
std::string session_directory_answer(session_dice& dice);
