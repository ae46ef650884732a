// loopback.hpp - sockets on this machine's loopback addresses, for the servers of the tests.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/// A new TCP socket bound to `address` and a free port. Ends the test program on failure.
int bind_free_port(const std::string& address);

/// The port that a socket is bound to.
int port_of(int fd);

/// A port of 127.0.0.1 that nobody uses: it has just been free.
std::uint16_t free_port();

/// Starts connecting a new socket to `port` without waiting; -1 if refused at once.
int begin_connect(const std::string& address, int port);

/// Waits until `fd` is ready for any of the poll `events`; false if the time runs out.
bool wait_for_socket(int fd, short events, std::chrono::milliseconds limit);
