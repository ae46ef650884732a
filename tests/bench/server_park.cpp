// server_park.cpp - see server_park.hpp.
#include "bench/server_park.hpp"

#include "support/config_text.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace
{

constexpr std::string_view connect_key = "\x0c";
constexpr std::string_view down_key = "\033OB";

constexpr std::uint32_t capabilities_kind = 41;
constexpr std::uint32_t identification_kind = 85;
constexpr int introduction_packets = 2;
constexpr const char* capabilities_format = "<?xml version=\"1.0\"?><tovrik><Version>1</Version>"
                                            "<ServerUUID>u%d</ServerUUID></tovrik>";

bool accept_all(server_park& park)
{
    for (scripted_server& server : park.servers) {
        std::optional<server_connection> connection = server.accept();
        for (int packet = 0; packet < introduction_packets; ++packet)
            if (!connection || !connection->read_packet())
                return false;
        park.connections.push_back(std::move(*connection));
    }
    return true;
}

/// Sends each connection's capabilities and a question. The client's answer shows that it has
/// received both.
bool introduce_all(server_park& park)
{
    int number = 0;
    for (server_connection& connection : park.connections) {
        char capabilities[128];
        std::snprintf(capabilities, sizeof capabilities, capabilities_format, ++number);
        if (!connection.send(capabilities_kind, capabilities) ||
            !connection.send(identification_kind, "who"))
            return false;
    }
    return std::ranges::all_of(park.connections, [](server_connection& connection) {
        const std::optional<server_packet> answer = connection.read_packet();
        return answer && answer->kind == identification_kind;
    });
}

} // namespace

server_park::server_park(int count) : servers(static_cast<std::size_t>(count)) {}

std::string station_name(int number)
{
    char name[32];
    std::snprintf(name, sizeof name, "station-%03d", number);
    return name;
}

std::string config_of(const std::vector<int>& ports)
{
    client_settings settings;
    settings.save_to_one = true;
    int number = 0;
    for (const int port : ports)
        settings.servers.push_back({.port = std::to_string(port),
                                    .alias = station_name(++number),
                                    .location = "Frankfurt am Main",
                                    .info = "VHF 131.725 MHz"});
    return config_text(settings);
}

std::vector<int> ports_of(const server_park& park)
{
    std::vector<int> ports;
    for (const scripted_server& server : park.servers)
        ports.push_back(server.port());
    std::sort(ports.begin(), ports.end());
    return ports;
}

bool connect_all(server_park& park, measured_program& client)
{
    for (std::size_t count = 0; count < park.servers.size(); ++count)
        if (!client.type(connect_key) || !client.type(down_key))
            return false;
    return accept_all(park) && introduce_all(park);
}
