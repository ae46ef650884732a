// soak_options.hpp - what a soak is asked to do.
#pragma once

#include <cstdint>
#include <string>

enum class soak_kind : std::uint8_t {
    steady, // every server sends whole packets, at most one a second
    flood,  // the first few send all that their sockets take
    split,  // the first few send their packets in pieces, at any time
};

struct soak_options {
    double hours = 24; // by the program's clock
    int speed = 100;   // how much faster that clock runs, 1 to 1000
    int servers = 50;
    unsigned seed = 1;
    soak_kind kind = soak_kind::steady;
    bool one_log = false;      // all servers write into one log
    double sample_minutes = 0; // between two looks at the process; 0: 144 looks in all
    std::string report{};      // a file that gets the figures too; empty: none
};

/// Reads the arguments behind the program's name into `options`. False, after a line on standard
/// error, if one of them is unknown or out of its range.
bool soak_options_read(soak_options& options, int count, char** arguments);
