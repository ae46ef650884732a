// poll_halt_test.cpp - a cycle over the servers that stops for waiting keys, or in which one server
// delays the others.
#include "base/signal_door.hpp"
#include "unit/net_fixture.hpp"

#include "base/pause.hpp"
#include "net/poll.hpp"

#include <csignal>
#include <ctime>
#include <functional>
#include <string>
#include <sys/time.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

/// The time until the alarm rings; less than a second.
long read_alarm_us()
{
    itimerval left{};
    getitimer(ITIMER_REAL, &left);
    return static_cast<long>(left.it_value.tv_usec);
}

/// Continues the cycle until it is over, however often a busy machine makes it stop.
void finish_cycle()
{
    while (app_state.poll.next != 0)
        poll_servers(SIGALRM);
}

/// Servers that have something to say, "s00" to "s19" in the order of the list. The first sends a
/// list that stays open for a while.
class long_poll_cycle : public net_test
{
protected:
    long_poll_cycle()
    {
        for (int index = 0; index < count; ++index)
            add_server(("host" + std::to_string(99 - index)).c_str());
        for (int index = 0; index < count; ++index)
            ends.push_back(connect(*server_at(app_state.servers, index)));
        ends[0].send({89, "D-AIQA\tFRA\tLH0400"});
        for (int index = 1; index < count; ++index)
            ends[static_cast<std::size_t>(index)].send({103, "s" + std::to_string(index)});
        type_ahead("x\033"); // the list ignores the first key, which costs a round
    }

    static constexpr int count = 20;
    std::vector<server_end> ends;
};

TEST_F(long_poll_cycle, stops_for_waiting_keys_after_a_single_long_packet)
{
    poll_servers(SIGALRM);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(app_state.poll.next, 1);
    EXPECT_LE(read_alarm_us(), 1'000) << "this was no break";
    finish_cycle();
    EXPECT_EQ(said(), (status_lines{{"s16", 2}, {"s17", 2}, {"s18", 2}, {"s19", 2}}));
    EXPECT_EQ(alarm(0), 1U);
}

TEST_F(long_poll_cycle, visits_no_server_twice)
{
    ends[1].send({103, "more"});
    poll_servers(SIGALRM);
    finish_cycle();
    EXPECT_EQ(said().back(), (status_line{"s19", 2}));
    poll_servers(SIGALRM);
    finish_cycle();
    EXPECT_EQ(said().back(), (status_line{"more", 2}));
}

/// A cycle in which the first server delays the others with a list, until something that runs
/// meanwhile is done.
class halted_poll_cycle : public net_test
{
protected:
    void poll_with(std::function<void()> what_happens) const
    {
        meanwhile() = std::move(what_happens);
        signal_install(SIGALRM, [](int) {
            meanwhile()();
            type_ahead("\033");
        });
        alarm(0);
        raise(SIGALRM);
        first_end.send({89, "D-AIQA\tFRA\tLH0400"});
        poll_servers(SIGALRM);
    }

    server_entry& first = add_server("z.example");
    server_end first_end = connect(first);

private:
    static std::function<void()>& meanwhile()
    {
        static std::function<void()> what;
        return what;
    }
};

TEST_F(halted_poll_cycle, reaches_a_server_that_was_added_meanwhile)
{
    std::vector<server_end> ends;
    poll_with([&] {
        ends.push_back(connect(add_server("new.example")));
        ends.back().send({103, "I am new"});
    });
    finish_cycle();
    EXPECT_EQ(said(), (status_lines{{"I am new", 2}}));
}

TEST_F(halted_poll_cycle, does_not_stop_after_its_last_server)
{
    poll_with([] { pause_for(25'000); });
    EXPECT_EQ(app_state.poll.next, 0);
    EXPECT_GT(read_alarm_us(), 1'000) << "a cycle that is over waits for the next second";
}

TEST_F(halted_poll_cycle, uses_the_time_at_which_it_began)
{
    server_entry& second = add_server("y.example");
    const server_end second_end = connect(second);
    std::time_t begin;
    do {
        mark();
        begin = std::time(nullptr);
        second.last_data_time = begin - 600; // which is long enough a second later
        second.heartbeat_sent = 0;
        poll_with([&] {
            while (std::time(nullptr) == begin)
                pause_for(10'000);
        });
        finish_cycle();
    } while (app_state.poll.now != begin);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(second.heartbeat_sent, 0);
    EXPECT_EQ(first.last_data_time, begin);
}

} // namespace
