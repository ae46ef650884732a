// resolve.hpp - turns a host name into an address without holding up the program.
#pragma once

#include <netinet/in.h>

/// Finds a host's first IPv4 address. While a name server is waited for, signals go on being served
/// in pauses (so any window and connection may change), and ^X ends the wait; keys typed meanwhile
/// are kept for the key loop. False when there is no address; `address` is then unchanged, else its
/// family and address are set.
bool resolve_host(const char* host, sockaddr_in& address);

/// The same for threads other than the main one: waits in place and lets no signal in.
bool resolve_host_waiting(const char* host, sockaddr_in& address);
