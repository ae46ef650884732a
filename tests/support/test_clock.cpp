// test_clock.cpp - controls from a test the clock of a program.
#include "support/test_clock.hpp"

#include "support/test_clock_layout.hpp"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

std::int64_t read_real_clock_ns()
{
    return std::chrono::nanoseconds{std::chrono::system_clock::now().time_since_epoch()}.count();
}

} // namespace

test_clock::test_clock(int alarm_ms_per_second)
{
    path = std::filesystem::temp_directory_path() / "ncursesclient-clock-XXXXXX";
    const int fd = mkstemp(path.data());
    void* mapped = MAP_FAILED;
    if (fd >= 0 && ftruncate(fd, sizeof(test_clock_layout)) == 0)
        mapped = mmap(nullptr, sizeof(test_clock_layout), PROT_READ | PROT_WRITE, MAP_SHARED, fd,
                      0); // zeroes: no offset, no alarm yet
    if (mapped == MAP_FAILED) {
        std::perror("cannot make a clock");
        std::abort();
    }
    close(fd);
    shared = static_cast<test_clock_layout*>(mapped);
    set_alarm_pace(alarm_ms_per_second);
}

test_clock::~test_clock()
{
    munmap(shared, sizeof(test_clock_layout));
    unlink(path.c_str());
}

std::map<std::string, std::string> test_clock::environment() const
{
    return {{"LD_PRELOAD", CLOCK_PRELOAD}, {clock_file_variable, path}};
}

void test_clock::set(std::int64_t seconds)
{
    shared->offset_ms.store(seconds * 1000 -
                            clock_shown_ns(*shared, read_real_clock_ns()) / ns_per_ms);
}

void test_clock::jump(std::int64_t seconds)
{
    shared->offset_ms.fetch_add(seconds * 1000);
}

void test_clock::set_alarm_pace(int alarm_ms_per_second)
{
    shared->alarm_ms_per_second.store(alarm_ms_per_second);
}

void test_clock::use_speed(int speed)
{
    const std::int64_t now_ns = read_real_clock_ns();
    const std::int64_t unused = 1 - shared->speed_in_use.load();
    shared->speeds[unused].since_ns.store(now_ns);
    shared->speeds[unused].shown_ns.store(clock_shown_ns(*shared, now_ns));
    shared->speeds[unused].speed.store(speed);
    shared->speed_in_use.store(unused);
}

void test_clock::set_speed(int speed)
{
    use_speed(speed);
    set_alarm_pace(1000 / speed);
}

void test_clock::stop()
{
    use_speed(-1);
}

std::int64_t test_clock::now_ms() const
{
    return clock_shown_ns(*shared, read_real_clock_ns()) / ns_per_ms + shared->offset_ms.load();
}

std::int64_t test_clock::alarms_set() const
{
    return shared->alarms.load();
}

std::int64_t test_clock::last_alarm_s() const
{
    return shared->last_alarm_s.load();
}
