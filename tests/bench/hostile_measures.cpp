// hostile_measures.cpp - see hostile_measures.hpp.
#include "bench/hostile_measures.hpp"

#include "bench/hostile_documents.hpp"
#include "bench/server_park.hpp"
#include "support/compressed.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <thread>

namespace
{

using std::chrono::steady_clock;

constexpr std::uint32_t compressed_kind = 204;
constexpr std::uint16_t largest_size_hint = 65'535;
constexpr std::chrono::seconds send_interval{1};
constexpr int max_rest_ms = 100;

constexpr const char* up_key = "\033OA";
constexpr const char* down_key = "\033OB";

/// The client with its servers, and when they send next.
struct hostile_round {
    server_park park{hostile_servers};
    temp_home home{};
    std::optional<measured_program> client{};
    server_packet packet{};
    steady_clock::time_point next_sending{};
    int bar = hostile_servers; // the number of the selected server
    std::mt19937 dice{1};
};

bool start_round(hostile_round& round, const compared_program& client)
{
    round.home.write_config(config_of(ports_of(round.park)));
    round.client.emplace(client.command, round.home.path());
    round.packet = {.kind = compressed_kind,
                    .payload = compressed(hostile_documents().front().text),
                    .extra = largest_size_hint};
    return round.client->wait_for_screen(station_name(hostile_servers)).has_value() &&
           connect_all(round.park, *round.client);
}

/// Lets every server send, if it is time.
bool send_due(hostile_round& round)
{
    if (steady_clock::now() < round.next_sending)
        return true;
    round.next_sending = steady_clock::now() + send_interval;
    return std::ranges::all_of(round.park.connections, [&](server_connection& connection) {
        return connection.send(round.packet);
    });
}

/// Moves the bar to the next server, up and down, and gives the time until that one's name is
/// written again.
std::optional<double> time_move(hostile_round& round, bool goes_up)
{
    round.bar += goes_up ? -1 : 1;
    return round.client->time_answer(goes_up ? up_key : down_key, station_name(round.bar));
}

std::optional<std::vector<double>> time_moves(hostile_round& round, int count)
{
    std::vector<double> times;
    bool goes_up = true;
    std::uniform_int_distribution<int> rest_ms{0, max_rest_ms};
    while (static_cast<int>(times.size()) < count) {
        if (round.bar == 1 || round.bar == hostile_servers)
            goes_up = round.bar != 1;
        const std::optional<double> taken =
            send_due(round) ? time_move(round, goes_up) : std::nullopt;
        if (!taken)
            return std::nullopt;
        times.push_back(*taken);
        std::this_thread::sleep_for(std::chrono::milliseconds{rest_ms(round.dice)});
    }
    return times;
}

} // namespace

std::optional<std::vector<double>> measure_hostile_keys(const compared_program& client, int count)
{
    hostile_round round;
    std::optional<std::vector<double>> times;
    if (start_round(round, client))
        times = time_moves(round, count);
    if (times && !round.client->leave(client.end_keys))
        times.reset();
    if (!times)
        std::fprintf(stderr, "bench_programs: %s does not answer beside hostile servers\n",
                     client.name);
    return times;
}
