// program_measures.cpp - see program_measures.hpp.
#include "bench/program_measures.hpp"

#include "bench/measured_program.hpp"
#include "support/config_text.hpp"
#include "support/scripted_server.hpp"
#include "support/temp_home.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <string>
#include <thread>

namespace
{

constexpr int configured_servers = 100;
constexpr int visible_servers = 20;

constexpr std::string_view connect_key = "\x0c";
constexpr std::string_view down_key = "\033OB";

constexpr std::uint32_t capabilities_kind = 41;
constexpr std::uint32_t identification_kind = 85;
constexpr int introduction_packets = 2;
constexpr const char* capabilities_format = "<?xml version=\"1.0\"?><tovrik><Version>1</Version>"
                                            "<ServerUUID>u%d</ServerUUID></tovrik>";

std::nullopt_t failed(const char* what)
{
    std::fprintf(stderr, "bench_programs: %s\n", what);
    return std::nullopt;
}

std::string station_name(int number)
{
    char name[32];
    std::snprintf(name, sizeof name, "station-%03d", number);
    return name;
}

/// Servers of one host are listed by their ports, so their names count up from the top.
std::string config_of(const std::vector<int>& ports)
{
    client_settings settings;
    int number = 0;
    for (const int port : ports)
        settings.servers.push_back({.port = std::to_string(port),
                                    .alias = station_name(++number),
                                    .location = "Frankfurt am Main",
                                    .info = "VHF 131.725 MHz"});
    return config_text(settings);
}

bool start_measure(const char* path, const std::string& home, start_figures& figures)
{
    measured_program program{path, home};
    const std::optional<first_screen> screen =
        program.wait_for_screen(station_name(visible_servers));
    const std::optional<memory_use> memory = memory_of(program.id());
    if (!screen || !memory)
        return false;
    figures.first_screen_ms.push_back(screen->ms);
    figures.first_screen_bytes.push_back(static_cast<double>(screen->bytes));
    figures.resident_kb.push_back(memory->resident);
    figures.proportional_kb.push_back(memory->proportional);
    return program.leave();
}

/// Twenty servers, or as many as wanted, and the connections to them.
struct server_park {
    std::deque<scripted_server> servers;
    std::vector<server_connection> connections;
};

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
    for (scripted_server& server : park.servers) {
        std::optional<server_connection> connection = server.accept();
        for (int packet = 0; packet < introduction_packets; ++packet)
            if (!connection || !connection->read_packet())
                return false;
        park.connections.push_back(std::move(*connection));
    }
    return true;
}

/// Sends each connection's capabilities. The client's answer to the question behind them tells that
/// it has taken both.
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

bool idle_end(const measured_program& program, const work_done& before, idle_figures& figures)
{
    const std::optional<work_done> after = work_of(program.id());
    const std::optional<memory_use> memory = memory_of(program.id());
    if (!after || !memory)
        return false;
    figures = {{after->cpu_ms - before.cpu_ms, after->wake_ups - before.wake_ups}, *memory};
    return true;
}

} // namespace

std::optional<start_comparison> measure_starts(int repetitions)
{
    std::vector<int> ports;
    for (int port = 1; port <= configured_servers; ++port)
        ports.push_back(port);
    const temp_home home;
    home.write_config(config_of(ports));
    start_comparison measured;
    start_comparison warming; // the first start of each brings its files into memory
    for (int repetition = 0; repetition <= repetitions; ++repetition) {
        start_comparison& figures = repetition == 0 ? warming : measured;
        if (!start_measure(CLIENT_BINARY, home.path(), figures.client))
            return failed("the client does not start or end as it should");
        if (!start_measure(FLOOR_BINARY, home.path(), figures.floor))
            return failed("the floor does not start or end as it should");
    }
    return measured;
}

std::optional<idle_comparison> measure_idle(int connections, int seconds)
{
    server_park park;
    park.servers.resize(static_cast<std::size_t>(connections));
    const temp_home home;
    home.write_config(config_of(ports_of(park)));
    measured_program floor{FLOOR_BINARY, home.path()};
    measured_program client{CLIENT_BINARY, home.path()};
    if (!floor.wait_for_screen(station_name(visible_servers)) ||
        !client.wait_for_screen(station_name(std::min(connections, visible_servers))))
        return failed("the programs do not start as they should");
    if (!connect_all(park, client) || !introduce_all(park))
        return failed("the client does not connect as it should");
    const std::optional<work_done> client_before = work_of(client.id());
    const std::optional<work_done> floor_before = work_of(floor.id());
    if (!client_before || !floor_before)
        return failed("the kernel does not tell what a process has done");
    std::this_thread::sleep_for(std::chrono::seconds{seconds});
    idle_comparison measured;
    if (!idle_end(client, *client_before, measured.client) ||
        !idle_end(floor, *floor_before, measured.floor))
        return failed("the programs did not stay");
    if (!client.leave() || !floor.leave())
        return failed("the programs do not end as they should");
    return measured;
}
