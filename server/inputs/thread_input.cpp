// thread_input.cpp - see thread_input.hpp.
#include "server/inputs/thread_input.hpp"

#include "server/base/system_text.hpp"

#include <fcntl.h>
#include <sys/epoll.h>
#include <utility>

namespace tovrik
{

thread_input::thread_input(input_options chosen, input_host& home, prepare_work chosen_work)
    : input_source(std::move(chosen), home), prepare(chosen_work), lines(make_lines())
{
}

thread_input::~thread_input()
{
    thread_input::stop();
}

std::string thread_input::open(time_point)
{
    auto made = hand_over_make();
    if (!made)
        return system_text("cannot wait for messages");
    auto work = prepare(options, made);
    if (!work.error.empty())
        return work.error;
    // The thread may outlive this input and writes to its descriptor; a copy is waited for.
    if (!filled.open(host, *this, unique_fd{fcntl(made->filled.get(), F_DUPFD_CLOEXEC, 0)},
                     EPOLLIN))
        return system_text("cannot wait for messages");
    if (!hand_over_start(made, std::move(work.run)))
        return system_text("cannot start a thread");
    shared = std::move(made);
    return {};
}

void thread_input::on_event(int, time_point now)
{
    std::vector<std::string> told;
    hand_over_take(*shared, waiting, told);
    for (const auto& line : told) {
        tell(line);
    }
    take_blocks(lines, waiting, now);
}

void thread_input::on_time(time_point now)
{
    take_blocks(lines, waiting, now);
}

time_point thread_input::next_time() const
{
    return waiting.blocks.empty() ? never : time_point::min();
}

void thread_input::refresh_counters()
{
    if (!shared)
        return;
    const std::uint64_t connections = shared->connections;
    counters.is_connected = shared->is_connected;
    counters.reconnections = connections > 0 ? connections - 1 : 0;
    counters.lost = shared->lost;
}

void thread_input::stop()
{
    if (shared)
        hand_over_stop(*shared);
}

void thread_input::wait_for_end(time_point deadline)
{
    if (shared)
        hand_over_wait(*shared, deadline);
}

} // namespace tovrik
