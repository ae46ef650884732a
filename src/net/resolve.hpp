// resolve.hpp - turns a host name into an address without holding up the program.
#pragma once

#include <netinet/in.h>

/// Finds a host's first IPv4 address. While it waits for a name server, signals go on being served
/// in pauses (so any window and any connection may change), and ^X ends the wait; keys typed
/// meanwhile, ^X included, are kept for the key loop. True with the family and the address set in
/// `address`; false, and `address` unchanged, if there is none.
bool resolve_host(const char* host, sockaddr_in& address);

/// The same for threads other than the main one: it waits in place and lets no signal in.
bool resolve_host_waiting(const char* host, sockaddr_in& address);
