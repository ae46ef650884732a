// poll_bench.cpp - see poll_bench.hpp.
#include "bench/poll_bench.hpp"

#include "app/app_state.hpp"
#include "bench/null_screen.hpp"
#include "bench/sample_traffic.hpp"
#include "net/poll.hpp"
#include "unit/socket_pair.hpp"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <string>
#include <string_view>
#include <sys/resource.h>

namespace
{

constexpr std::int64_t connection_counts[] = {1, 10, 100, 1'000};

/// Connected servers, with the far ends of their connections.
class connected_servers
{
public:
    explicit connected_servers(std::int64_t count)
    {
        for (std::int64_t number = 1; number <= count; ++number)
            connect_one(number);
    }
    ~connected_servers()
    {
        configuration_forget();
    }
    connected_servers(const connected_servers&) = delete;
    connected_servers& operator=(const connected_servers&) = delete;

    /// How many are still connected.
    std::int64_t count() const
    {
        std::int64_t connected = 0;
        for (std::int32_t index = 0; index < app_state.servers->count; ++index)
            connected += server_at(app_state.servers, index)->socket_fd != 0 ? 1 : 0;
        return connected;
    }
    bool send_each(std::string_view packet) const
    {
        return std::ranges::all_of(connections,
                                   [packet](const socket_pair& pair) { return pair.feed(packet); });
    }

private:
    void connect_one(std::int64_t number)
    {
        auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
        char name[32];
        std::snprintf(name, sizeof name, "server-%06lld", static_cast<long long>(number));
        if (entry == nullptr)
            std::abort();
        entry->ServerName = strdup(name);
        entry->socket_fd = connections.emplace_back().client();
        entry->connected = 1;
        entry->last_data_time = std::time(nullptr);
        server_add(app_state.servers, entry);
    }

    std::deque<socket_pair> connections;
};

/// Two descriptors for each connection are more than most shells allow a program.
void allow_descriptors()
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

std::string make_sample_packet()
{
    const packet_buffer packet = plain_packet(sample_documents()[0].text);
    const std::size_t length = packet_header_read(packet.header).length;
    std::string bytes(reinterpret_cast<const char*>(packet.header), packet_header_bytes);
    return bytes.append(reinterpret_cast<const char*>(packet.payload), length);
}

void run_idle(benchmark::State& state)
{
    const connected_servers servers{state.range(0)};
    while (state.KeepRunning())
        poll_servers(SIGALRM);
    if (servers.count() != state.range(0))
        state.SkipWithError("a connection was closed");
}

void run_sending(benchmark::State& state)
{
    const connected_servers servers{state.range(0)};
    const std::string packet = make_sample_packet();
    while (state.KeepRunning()) {
        if (!servers.send_each(packet))
            return state.SkipWithError("a packet cannot be sent");
        const auto begin = std::chrono::steady_clock::now();
        poll_servers(SIGALRM);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(taken.count());
    }
    if (servers.count() != state.range(0))
        state.SkipWithError("a connection was closed");
}

} // namespace

void poll_benchmarks_add()
{
    allow_descriptors();
    for (const std::int64_t count : connection_counts) {
        benchmark::RegisterBenchmark(poll_idle_name, run_idle)
            ->Arg(count)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(poll_sending_name, run_sending)
            ->Arg(count)
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
}
