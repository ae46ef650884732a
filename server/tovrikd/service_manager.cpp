// service_manager.cpp - see service_manager.hpp.
#include "server/tovrikd/service_manager.hpp"

#include <ctime>
#include <systemd/sd-daemon.h>

namespace tovrik
{

void service_manager_tell_ready()
{
    sd_notify(0, "READY=1");
}

void service_manager_tell_reloading()
{
    // The manager tells two reloads apart by their times.
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    constexpr long us_per_s = 1000000;
    constexpr long ns_per_us = 1000;
    sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%lld",
               static_cast<long long>(now.tv_sec) * us_per_s + now.tv_nsec / ns_per_us);
}

void service_manager_tell_stopping()
{
    sd_notify(0, "STOPPING=1");
}

} // namespace tovrik
