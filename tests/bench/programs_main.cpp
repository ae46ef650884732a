// programs_main.cpp - compares the whole client with the floor: start, memory, idle work and size.
//
// Both run in the same kind of terminal on the same machine in one run. Prints a table; its status
// tells only whether both programs worked, never how fast they were.
#include "bench/comparison_table.hpp"
#include "bench/program_measures.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace
{

struct options {
    int repetitions = 21;
    int idle_seconds = 60;
    int connections = 20;
};

constexpr int most_connections = 500;

int usage_fail()
{
    std::fputs("Usage: bench_programs [--repetitions N] [--idle-seconds N] [--connections N]\n"
               "  --repetitions   starts of each program (21)\n"
               "  --idle-seconds  length of the idle time (60)\n"
               "  --connections   connections in the idle time (20)\n",
               stderr);
    return 2;
}

int* option_named(options& wanted, const char* name)
{
    if (std::strcmp(name, "--repetitions") == 0)
        return &wanted.repetitions;
    if (std::strcmp(name, "--idle-seconds") == 0)
        return &wanted.idle_seconds;
    if (std::strcmp(name, "--connections") == 0)
        return &wanted.connections;
    return nullptr;
}

bool options_read(options& wanted, int count, char** arguments)
{
    for (int at = 1; at < count; at += 2) {
        int* option = option_named(wanted, arguments[at]);
        if (option == nullptr || at + 1 >= count)
            return false;
        *option = std::atoi(arguments[at + 1]);
        if (*option < 1)
            return false;
    }
    return wanted.connections <= most_connections;
}

void starts_print(const start_comparison& starts)
{
    const start_figures& client = starts.client;
    const start_figures& floor = starts.floor;
    comparison_print({.what = "first full screen, 100 servers",
                      .unit = "ms",
                      .client = median(client.first_screen_ms),
                      .floor = median(floor.first_screen_ms),
                      .most_ratio = 3});
    comparison_print({.what = "bytes written for it",
                      .unit = "B",
                      .client = median(client.first_screen_bytes),
                      .floor = median(floor.first_screen_bytes)});
    comparison_print({.what = "resident memory at rest",
                      .unit = "kB",
                      .client = median(client.resident_kb),
                      .floor = median(floor.resident_kb),
                      .most_client = 4096});
    comparison_print({.what = "proportional memory at rest",
                      .unit = "kB",
                      .client = median(client.proportional_kb),
                      .floor = median(floor.proportional_kb)});
}

void idle_print(const idle_comparison& idle, const options& wanted)
{
    const std::string during = " in " + std::to_string(wanted.idle_seconds) + " s idle, " +
                               std::to_string(wanted.connections) + " conn.";
    comparison_print({.what = "CPU" + during,
                      .unit = "ms",
                      .client = idle.client.work.cpu_ms,
                      .floor = idle.floor.work.cpu_ms,
                      .most_ratio = 1.5});
    comparison_print({.what = "wake-ups" + during,
                      .unit = "",
                      .client = idle.client.work.wake_ups,
                      .floor = idle.floor.work.wake_ups});
    comparison_print({.what = "resident memory after it",
                      .unit = "kB",
                      .client = idle.client.memory.resident,
                      .floor = idle.floor.memory.resident,
                      .most_client = 4096});
}

double size_kb(const char* path)
{
    std::error_code failure;
    const auto bytes = std::filesystem::file_size(path, failure);
    return failure ? 0 : static_cast<double>(bytes) / 1024;
}

} // namespace

int main(int count, char** arguments)
{
    options wanted;
    if (!options_read(wanted, count, arguments))
        return usage_fail();
    comparison_heading_print();
    const std::optional<start_comparison> starts = measure_starts(wanted.repetitions);
    if (!starts)
        return 1;
    starts_print(*starts);
    const std::optional<idle_comparison> idle =
        measure_idle(wanted.connections, wanted.idle_seconds);
    if (!idle)
        return 1;
    idle_print(*idle, wanted);
    comparison_print({.what = "program file, stripped",
                      .unit = "kB",
                      .client = size_kb(CLIENT_STRIPPED),
                      .floor = size_kb(FLOOR_STRIPPED)});
    return 0;
}
