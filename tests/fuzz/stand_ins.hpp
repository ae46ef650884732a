// stand_ins.hpp - replaces the system for a fuzzed client: time that never waits, children that are
// never made, and one file in memory for everything that is written.
//
// The linker replaces the C library's functions with these (see CMakeLists.txt). They act only
// while an input runs; the fuzzer itself gets the real ones.
#pragma once

#include <ctime>
#include <deque>
#include <functional>
#include <string>
#include <sys/types.h>

struct stand_ins {
    bool is_active = false;         // an input is running
    std::time_t now_s = 0;          // the wall clock
    long now_us = 0;                // the microseconds beyond whole seconds
    long pauses = 0;                // how often the client has paused
    std::function<void()> on_pause; // runs in each pause, under the state lock; may be empty
    int lines = 24;                 // the terminal's size, as a resize reads it
    int columns = 80;
    int forks = 0;                  // children made so far
    std::deque<pid_t> children;     // pending connects, oldest first
    std::deque<pid_t> ended;        // finished ones not yet waited for
    std::deque<int> ended_statuses; // how they ended, as waitpid tells it
};

extern stand_ins world;

/// The time of one input: begins with the clock at a fixed moment, no children and nothing written.
class world_visit
{
public:
    world_visit();
    ~world_visit();
    world_visit(const world_visit&) = delete;
    world_visit& operator=(const world_visit&) = delete;
};

/// Advances the clock.
void clock_advance(long microseconds);

/// Ends the oldest pending connect. False if there is none.
bool child_end(bool is_connected);

/// All that has been written to files since they were last truncated.
std::string written();

/// Makes opening any file for writing fail, or succeed again.
void writing_refuse(bool refused);
