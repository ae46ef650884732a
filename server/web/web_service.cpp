// web_service.cpp - see web_service.hpp.
#include "server/web/web_service.hpp"

#include "base/signal_door.hpp"
#include "server/base/limits.hpp"
#include "server/base/system_text.hpp"
#include "server/web/web_connections.hpp"
#include "server/web/web_pages.hpp"

#include <algorithm>
#include <array>
#include <exception>
#include <mutex>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>

namespace tovrik
{
namespace
{

using std::chrono::milliseconds;

/// What the server's thread hands to the web's.
struct published_report {
    std::mutex lock;
    std::shared_ptr<const server_report> report;
    time_point made_at = steady_clock::now();
};

int count_ms_until(time_point next)
{
    if (next == never)
        return -1;
    const auto rest = std::chrono::ceil<milliseconds>(next - steady_clock::now()).count();
    return static_cast<int>(std::max<decltype(rest)>(rest, 0));
}

} // namespace

struct web_service::running_service {
    explicit running_service(const web_options& with)
        : options(with), desk([this](const std::string& path, const std::string& reached) {
              return find_page(path, reached);
          })
    {
    }

    web_page find_page(const std::string& path, const std::string& reached)
    {
        std::shared_ptr<const server_report> report;
        time_point made_at;
        {
            const std::lock_guard taken{published.lock};
            report = published.report;
            made_at = published.made_at;
        }
        const auto age = std::chrono::duration_cast<milliseconds>(steady_clock::now() - made_at);
        return web_pages_find(path, options.public_name.empty() ? reached : options.public_name,
                              {report.get(), age}, options.max_report_age);
    }

    /// Answers until the end event comes.
    void run()
    {
        for (;;) {
            constexpr int max_events = 64;
            std::array<epoll_event, max_events> events{};
            const int count = epoll_wait(connections.epoll.get(), events.data(), max_events,
                                         count_ms_until(web_connections_next_time(connections)));
            for (int i = 0; i < count; ++i) {
                const int fd = events[static_cast<std::size_t>(i)].data.fd;
                if (fd == end_event.get())
                    return;
                answer_event(fd);
            }
            web_connections_on_time(connections, steady_clock::now());
        }
    }

    /// One connection may be more than memory is left for; the others go on.
    void answer_event(int fd)
    try {
        web_connections_on_event(connections, desk, fd);
    } catch (const std::exception&) {
        connections.askers.erase(fd);
    }

    web_options options;
    published_report published;
    http_desk desk;
    web_connections connections;
    unique_fd end_event;
    std::thread thread;
};

web_service::web_service() = default;

web_service::~web_service()
{
    stop();
}

std::string web_service::start(const web_options& options)
{
    stop();
    auto starting = std::make_unique<running_service>(options);
    if (starting->options.max_report_age == milliseconds{0})
        starting->options.max_report_age = milliseconds{max_report_age_ms};
    std::string error = web_connections_open(starting->connections, options.bind, options.port);
    if (!error.empty())
        return error;
    starting->end_event = unique_fd{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    if (!starting->end_event || !watch(starting->connections.epoll.get(), EPOLL_CTL_ADD,
                                       starting->end_event.get(), EPOLLIN))
        return system_text("cannot wait for events");
    try {
        const signal_block_guard blocked;
        starting->thread = std::thread{[service = starting.get()] { service->run(); }};
    } catch (const std::system_error& problem) {
        return std::string{"cannot start the web's thread: "} + problem.what();
    }
    running = std::move(starting);
    return {};
}

std::uint16_t web_service::port() const
{
    return running ? running->connections.listener.port : 0;
}

void web_service::publish(std::shared_ptr<const server_report> report)
{
    if (!running)
        return;
    const time_point now = steady_clock::now();
    // The one before goes after the lock does: freeing it takes longer than changing places.
    const std::lock_guard taken{running->published.lock};
    running->published.report.swap(report);
    running->published.made_at = now;
}

void web_service::stop()
{
    if (!running)
        return;
    eventfd_write(running->end_event.get(), 1);
    running->thread.join();
    running.reset();
}

} // namespace tovrik
