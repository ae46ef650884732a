// packet_output.hpp - the one way to write to a server.
#pragma once

#include "net/packet.hpp"

#include <cstdint>
#include <sys/types.h>

/// Sends one packet whose text is formatted as printf does and cut after 4,092 characters. Kinds of
/// 200 and above are binary: `format` points to param1 raw bytes, and only the header goes out,
/// with a length of 0. Never blocks.
/// The bytes that went out, header included; 0 if nothing was sent (null format, socket not
/// writable within 200 microseconds, out of memory); negative if sending failed. Callers need not
/// look at the result: a lost server shows itself at the next read or by its silence, and until
/// then nothing is done differently.
ssize_t send_packet(int socket, std::uint32_t kind, std::uint16_t param1, std::uint16_t param2,
                    const char* format, ...) __attribute__((format(printf, 5, 6)));
