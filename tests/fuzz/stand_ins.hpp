// stand_ins.hpp - what stands in for the system round a fuzzed client: time that never waits,
// children that are never made, and one file in memory for all that is written.
//
// The linker puts these in the place of the C library's functions (see CMakeLists.txt). They act
// only while an input runs; the fuzzer itself gets the real ones.
#pragma once

#include <ctime>
#include <deque>
#include <functional>
#include <string>
#include <sys/types.h>

struct stand_ins {
    bool is_active = false;         // an input is running
    std::time_t now_s = 0;          // the wall clock
    long now_us = 0;                // what it has beyond whole seconds
    long pauses = 0;                // how often the client has paused
    std::function<void()> on_pause; // runs in each pause, under the state lock; may be empty
    int lines = 24;                 // the terminal's size, as a resize finds it
    int columns = 80;
    int forks = 0;                  // children made so far
    std::deque<pid_t> children;     // pending connects, oldest first
    std::deque<pid_t> ended;        // finished ones that nobody has asked about
    std::deque<int> ended_statuses; // how they ended, as waitpid tells it
};

extern stand_ins world;

/// One input's time: begins with the clock at a fixed moment, no children and nothing written.
class world_visit
{
public:
    world_visit();
    ~world_visit();
    world_visit(const world_visit&) = delete;
    world_visit& operator=(const world_visit&) = delete;
};

/// Moves the clock on.
void clock_advance(long microseconds);

/// Lets the oldest pending connect end. False when there is none.
bool child_end(bool is_connected);

/// All that has been written to files since they were last truncated.
std::string written();

/// Makes every file that is opened for writing fail to open, or succeed again.
void writing_refuse(bool refused);
