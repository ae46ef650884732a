// quiet_thread.cpp - see quiet_thread.hpp.
#include "server/base/quiet_thread.hpp"

#include <csignal>
#include <system_error>
#include <utility>

namespace tovrik
{

std::string quiet_thread_start(std::thread& thread, std::function<void()> run)
{
    // The thread inherits the mask.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::string error;
    try {
        thread = std::thread{std::move(run)};
    } catch (const std::system_error& failure) {
        error = std::string{"cannot start a thread: "} + failure.what();
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}

} // namespace tovrik
