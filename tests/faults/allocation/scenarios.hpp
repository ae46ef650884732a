// scenarios.hpp - what the client does while allocations fail, as tables.
#pragma once

#include "faults/allocation/client_rig.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How far the client is when a scenario begins.
enum class rig_stage : std::uint8_t { not_started, started, connected };

struct scenario {
    const char* name;
    rig_stage stage = rig_stage::connected;
    /// Runs while allocations fail. False: the client reports that it cannot run.
    bool (*act)(client_rig& rig, const scenario& which) = nullptr;
    std::string_view keys{};                         // for scenarios with typed keys
    std::vector<std::string> (*packets)() = nullptr; // for scenarios where the first server sends
    void (*prepare)(client_rig& rig) = nullptr;      // runs before allocations fail
    bool keeps_first = true; // the first server's connection outlives the scenario
    bool keeps_second = true;
    bool allocates = true; // false: it needs no memory at all
};

/// Start, connections, commands, services, resizes and shutdown.
std::span<const scenario> run_scenarios();
std::span<const scenario> service_scenarios();

/// One for each kind of packet, and more for kinds with several cases.
std::span<const scenario> packet_scenarios();

/// Types the scenario's keys into the key loop.
bool act_keys(client_rig& rig, const scenario& which);

/// Makes the first server send the scenario's packets, with its keys typed ahead.
bool act_packets(client_rig& rig, const scenario& which);
