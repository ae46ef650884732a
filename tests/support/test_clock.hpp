// test_clock.hpp - the test's hand on the clock of a program that runs under it.
//
// Owns the file through which both speak. The preloaded half is test_clock_preload.cpp.
#pragma once

#include <cstdint>
#include <map>
#include <string>

struct test_clock_layout;

class test_clock
{
public:
    /// `alarm_ms_per_second`: the length of a second of alarm(); 1000 is the truth.
    explicit test_clock(int alarm_ms_per_second = 1000);
    ~test_clock();
    test_clock(const test_clock&) = delete;
    test_clock& operator=(const test_clock&) = delete;

    /// The environment variables that put a program under this clock.
    std::map<std::string, std::string> environment() const;
    /// Makes the program's wall clock show `seconds` since 1970, and run on from there.
    void set(std::int64_t seconds);
    /// Moves the program's wall clock forward, or back by a negative number of seconds.
    void jump(std::int64_t seconds);
    /// A new length of a second of alarm(), from the program's next call on; 0: alarms never ring.
    void set_alarm_pace(int alarm_ms_per_second);
    /// Lets the program's wall clock, its alarms and its waits run `speed` times as fast as the
    /// true clock from now on, 1 to 1000. An alarm that is already set keeps its time.
    void set_speed(int speed);
    /// What the program's wall clock shows, in milliseconds since 1970.
    std::int64_t now_ms() const;
    /// How often the program has set its alarm; it does so at the end of every poll.
    std::int64_t alarms_set() const;
    /// For how many seconds the program has set its alarm the last time.
    std::int64_t last_alarm_s() const;

private:
    std::string path;
    test_clock_layout* shared = nullptr;
};
