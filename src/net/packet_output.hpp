// packet_output.hpp - the one way to write to a server, and the readiness test of all socket work.
#pragma once

#include "net/packet.hpp"

#include <cstdint>
#include <sys/types.h>

/// How long a socket is waited for before it counts as not ready.
constexpr long ready_wait_us = 200;

/// What wait_ready waits for.
constexpr int for_reading = 0;
constexpr int for_writing = 1;

/// Sends one packet whose text is formatted printf-style and cut after 4,092 characters.
/// Kinds of 200 and above are binary: `format` points to param1 raw bytes, and what goes out is the
/// header alone with a length of 0.
/// The bytes that went out, header included; 0 when nothing was sent (null format, socket not
/// writable within 200 microseconds, memory short); negative when sending failed. Never blocks.
ssize_t send_packet(int socket, std::uint32_t kind, std::uint16_t param1, std::uint16_t param2,
                    const char* format, ...) __attribute__((format(printf, 5, 6)));

/// Waits until a socket is ready, at most `seconds` and 200 microseconds.
/// direction: for_writing, or any other value for reading. A socket at its end counts as ready.
/// 1 ready, 0 not within the time, -1 when the socket cannot be waited for.
int wait_ready(int socket, int direction, int seconds);
