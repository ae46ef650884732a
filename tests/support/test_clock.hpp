// test_clock.hpp - controls from a test the clock of a program.
//
// Owns the file that both sides map. The preloaded side is test_clock_preload.cpp.
#pragma once

#include <cstdint>
#include <map>
#include <string>

struct test_clock_layout;

class test_clock
{
public:
    /// `alarm_ms_per_second`: the length of a second of alarm(); 1000 is the real one.
    explicit test_clock(int alarm_ms_per_second = 1000);
    ~test_clock();
    test_clock(const test_clock&) = delete;
    test_clock& operator=(const test_clock&) = delete;

    /// The environment variables that put a program under this clock.
    std::map<std::string, std::string> environment() const;
    /// Sets the program's wall clock to `seconds` since 1970; it runs on from there.
    void set(std::int64_t seconds);
    /// Moves the program's wall clock forward, or back by a negative number of seconds.
    void jump(std::int64_t seconds);
    /// Sets the length of a second of alarm() from the next call on; 0: alarms never ring.
    void set_alarm_pace(int alarm_ms_per_second);
    /// Makes the program's wall clock, alarms and waits run `speed` times as fast as the real
    /// clock from now on, 1 to 1000. An alarm that is already set keeps its time.
    void set_speed(int speed);
    /// Stops the program's wall clock, which only jump() and set() move from now on. Alarms and
    /// waits go on as before. Boxes that wait for the user stay open, however slow the test is.
    void stop();
    /// What the program's wall clock shows, in milliseconds since 1970.
    std::int64_t now_ms() const;
    /// How often the program has set its alarm, which it does at the end of every poll.
    std::int64_t alarms_set() const;
    /// The number of seconds for which the program last set its alarm.
    std::int64_t last_alarm_s() const;

private:
    void use_speed(int speed);

    std::string path;
    test_clock_layout* shared = nullptr;
};
