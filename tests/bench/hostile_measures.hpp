// hostile_measures.hpp - how quickly the client answers keys beside hostile servers.
#pragma once

#include "bench/compared_programs.hpp"

#include <optional>
#include <vector>

/// How many servers send a hostile packet each second.
constexpr int hostile_servers = 15;

/// Presses `count` keys at any times of the poll cycle while the servers send. The time until each
/// is answered on the terminal, in ms. None, with a line on standard error, if the client fails.
std::optional<std::vector<double>> measure_hostile_keys(const compared_program& client, int count);
