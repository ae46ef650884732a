// server_park.hpp - servers for the client to connect to while it is measured.
#pragma once

#include "bench/measured_program.hpp"
#include "support/scripted_server.hpp"

#include <deque>
#include <string>
#include <vector>

/// Listening servers, and the connections to them.
struct server_park {
    explicit server_park(int count);

    std::deque<scripted_server> servers{};
    std::vector<server_connection> connections{};
};

/// A configuration with one server of this machine for each port. Servers are sorted by port, so
/// ascending ports have the names station-001, station-002 and so on from the top. All
/// transmissions are logged in one file.
std::string config_of(const std::vector<int>& ports);

/// The name of a server, counted from 1.
std::string station_name(int number);

/// The ports of all servers, ascending.
std::vector<int> ports_of(const server_park& park);

/// Lets the client, whose list shows exactly the park's servers, connect to all of them, and
/// exchanges the first packets. False if the client fails.
bool connect_all(server_park& park, measured_program& client);
