// soak_options.hpp - the options of a soak.
#pragma once

#include <cstdint>
#include <string>

enum class soak_kind : std::uint8_t {
    steady, // every server sends whole packets, at most one a second
    flood,  // the first few send as much as their sockets take
    split,  // the first few send their packets in pieces, at any time
};

struct soak_options {
    double hours = 24; // by the program's clock
    int speed = 100;   // how many times faster that clock runs, 1 to 1000
    int servers = 50;
    unsigned seed = 1;
    soak_kind kind = soak_kind::steady;
    bool one_log = false;      // all servers share one log
    double sample_minutes = 0; // between two measurements; 0: 144 measurements in all
    std::string report{};      // a file that gets the figures too; empty: none
};

/// Reads the arguments after the program's name into `options`. False, with a line on standard
/// error, if an argument is unknown or out of range.
bool soak_options_read(soak_options& options, int count, char** arguments);
