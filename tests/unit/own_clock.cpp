// own_clock.cpp - see own_clock.hpp.
#include "unit/own_clock.hpp"

#include <ctime>
#include <poll.h>
#include <utility>

namespace
{

constexpr long long start_us = 1'700'000'000'000'000;
constexpr long long us_a_second = 1'000'000;
constexpr long long us_a_millisecond = 1'000;

struct clock_state {
    bool is_used = false;
    bool are_sockets_asked_at_once = false;
    long long first_us = 0;
    long long elapsed_us = 0;
    long long pause_us = -1; // of every pause so far; -1: no pause yet, 0: not all the same
    std::function<void(long)> act{};
};
clock_state state;

void record_pause(const timespec& limit)
{
    const long long length = limit.tv_sec * us_a_second + limit.tv_nsec / 1'000;
    state.elapsed_us += length;
    state.pause_us = state.pause_us == -1 || state.pause_us == length ? length : 0;
}

} // namespace

extern "C" {

// The linker sends calls of time() and ppoll() here.
time_t __real_time(time_t* result);
int __real_ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask);

time_t __wrap_time(time_t* result)
{
    if (!state.is_used)
        return __real_time(result);
    const auto now =
        static_cast<time_t>((start_us + state.first_us + state.elapsed_us) / us_a_second);
    if (result != nullptr)
        *result = now;
    return now;
}

int __wrap_ppoll(pollfd* watched, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    const timespec none = {};
    if (state.are_sockets_asked_at_once && count > 0)
        return __real_ppoll(watched, count, &none, mask);
    if (!state.is_used || count > 0 || limit == nullptr)
        return __real_ppoll(watched, count, limit, mask);
    record_pause(*limit);
    const int result = __real_ppoll(nullptr, 0, &none, mask);
    if (state.act)
        state.act(own_clock::elapsed_ms());
    return result;
}

} // extern "C"

own_clock::own_clock(long first_ms)
{
    state = {.is_used = true, .first_us = first_ms * us_a_millisecond};
}

own_clock::~own_clock()
{
    state = {};
}

void own_clock::on_pause(std::function<void(long)> act)
{
    state.act = std::move(act);
}

void own_clock::ask_sockets_at_once()
{
    state.are_sockets_asked_at_once = true;
}

void own_clock::jump(long seconds)
{
    state.first_us += seconds * us_a_second;
}

long own_clock::elapsed_ms()
{
    return static_cast<long>(state.elapsed_us / us_a_millisecond);
}

long own_clock::pause_us()
{
    return state.pause_us > 0 ? static_cast<long>(state.pause_us) : 0;
}
