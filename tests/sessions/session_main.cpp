// session_main.cpp - runs random sessions: anything that servers, a user, a terminal and a moment
// can do, in any order.
//
// Its status is 0 if the client stood them all. Prints the seed of every session, with which
// --seed repeats it.
#include "sessions/session_options.hpp"
#include "sessions/session_run.hpp"

#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>

namespace
{

using steady_clock = std::chrono::steady_clock;

constexpr unsigned max_fresh_seed = 1'000'000'000;

session_options options;

double seconds_since(steady_clock::time_point start)
{
    return std::chrono::duration<double>(steady_clock::now() - start).count();
}

void add(session_figures& sum, const session_figures& figures)
{
    sum.actions += figures.actions;
    sum.connections += figures.connections;
    sum.packets += figures.packets;
    sum.stops += figures.stops;
}

void say(const char* whose, const session_figures& figures, double seconds)
{
    std::printf("%s: %d actions, %d connections, %d packets, %d stops, %.1f s\n", whose,
                figures.actions, figures.connections, figures.packets, figures.stops, seconds);
    std::fflush(stdout);
}

TEST(random_sessions, are_all_stood_by_the_client)
{
    const auto start = steady_clock::now();
    unsigned seed = options.seed.value_or(std::random_device{}() % max_fresh_seed);
    session_figures sum;
    int sessions = 0;
    do {
        const std::string name = "session " + std::to_string(seed);
        std::printf("%s ...\n", name.c_str());
        std::fflush(stdout);
        SCOPED_TRACE("to repeat it: random_sessions --seed " + std::to_string(seed) +
                     " --actions " + std::to_string(options.actions));
        const auto session_start = steady_clock::now();
        const session_figures figures = session_run(session_plan_new(seed, options.actions));
        say(name.c_str(), figures, seconds_since(session_start));
        add(sum, figures);
        ++sessions;
        ++seed;
    } while (!HasFailure() && seconds_since(start) < options.seconds);
    say((std::to_string(sessions) + " sessions").c_str(), sum, seconds_since(start));
}

} // namespace

int main(int count, char** arguments)
{
    testing::InitGoogleTest(&count, arguments);
    if (!session_options_read(options, count, arguments))
        return 2;
    return RUN_ALL_TESTS();
}
