// practice_server.cpp - see practice_server.hpp.
//
// One mutex guards everything. The loop releases it only while it waits for events, so commands act
// at once; they write to the wake-up descriptor, and the loop does what is left to do.
#include "server/practice/practice_server.hpp"

#include "server/base/quiet_thread.hpp"
#include "server/practice/practice_core.hpp"
#include "server/services/publishing.hpp"
#include "server/services/server_loop.hpp"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <thread>

namespace tovrik
{

struct practice_server::implementation {
    explicit implementation(server_options chosen) : options(std::move(chosen)) {}

    const server_options options;

    mutable std::mutex lock;
    std::condition_variable changed;     ///< the record or the number of clients may have changed
    std::unique_ptr<practice_core> core; ///< null while the server is not running
    std::deque<received_packet> record;
    std::string error;
    bool stopping = false;

    std::mutex starting; ///< keeps start and stop apart; taken before `lock`
    std::thread loop;

    void run();
    void remember(const client_session& session, const packet& received);
    void wake() const;
};

void practice_server::implementation::run()
{
    std::unique_lock held{lock};
    const int epoll_fd = core->server.epoll.get();
    while (!stopping) {
        const int wait_ms = practice_wait_ms(*core, steady_clock::now());
        held.unlock();
        epoll_event events[64];
        const int count = epoll_wait(epoll_fd, events, std::size(events), wait_ms);
        held.lock();
        for (int i = 0; i < count; ++i) {
            practice_on_event(*core, events[i].data.fd);
        }
        practice_on_time(*core, steady_clock::now());
        changed.notify_all();
    }
}

void practice_server::implementation::remember(const client_session& session,
                                               const packet& received)
{
    record.push_back(
        {session.number, received.kind, received.param1, received.param2, received.payload});
    while (record.size() > options.record_limit) {
        record.pop_front();
    }
}

void practice_server::implementation::wake() const
{
    eventfd_write(core->server.wake.get(), 1);
}

practice_server::practice_server(server_options options)
    : inside(std::make_unique<implementation>(std::move(options)))
{
}

practice_server::~practice_server()
{
    stop();
}

bool practice_server::start()
{
    const std::lock_guard alone{inside->starting};
    const std::lock_guard held{inside->lock};
    if (inside->core)
        return true;
    auto core = std::make_unique<practice_core>(inside->options);
    core->server.on_packet = [self = inside.get()](const client_session& session,
                                                   const packet& received) {
        self->remember(session, received);
    };
    inside->error = practice_open(*core);
    if (!inside->error.empty())
        return false;
    inside->stopping = false;
    inside->core = std::move(core);
    inside->error = quiet_thread_start(inside->loop, [self = inside.get()] { self->run(); });
    if (!inside->error.empty())
        inside->core.reset();
    return inside->core != nullptr;
}

void practice_server::stop()
{
    const std::lock_guard alone{inside->starting};
    {
        const std::lock_guard held{inside->lock};
        if (!inside->core)
            return;
        inside->stopping = true;
        inside->wake();
    }
    inside->loop.join();
    const std::lock_guard held{inside->lock};
    inside->core.reset();
    inside->changed.notify_all();
}

void practice_server::leave()
{
    const std::lock_guard held{inside->lock};
    if (!inside->core)
        return;
    loop_leave(inside->core->server);
    inside->wake();
}

bool practice_server::is_alone() const
{
    const std::lock_guard held{inside->lock};
    return !inside->core || loop_is_over(inside->core->server);
}

std::string practice_server::error() const
{
    const std::lock_guard held{inside->lock};
    return inside->error;
}

std::uint16_t practice_server::port() const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? inside->core->server.channels.front().listener.port : std::uint16_t{0};
}

std::uint16_t practice_server::directory_port() const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? inside->core->directory.listener.port : std::uint16_t{0};
}

bool practice_server::push_transmission(std::string_view xml)
{
    const std::lock_guard held{inside->lock};
    if (!inside->core || !publish_document(inside->core->server, std::string{xml}))
        return false;
    inside->wake();
    return true;
}

std::size_t practice_server::push_json(std::string_view lines)
{
    const std::lock_guard held{inside->lock};
    if (!inside->core)
        return 0;
    const std::size_t count = practice_take_json(*inside->core, lines);
    inside->wake();
    return count;
}

std::uint16_t practice_server::json_port() const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? inside->core->json.udp_port : std::uint16_t{0};
}

std::size_t practice_server::broken_json_lines() const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? json_broken(inside->core->json) : 0;
}

std::optional<json_end> practice_server::json_stream_end() const
{
    const std::lock_guard held{inside->lock};
    if (!inside->core || !inside->core->json.stream_ended)
        return std::nullopt;
    const json_input& json = inside->core->json;
    return json_end{json.stream_lines.broken(), json.stream_error};
}

bool practice_server::has_waiting_packets() const
{
    const std::lock_guard held{inside->lock};
    return inside->core && core_has_waiting_packets(inside->core->server);
}

std::size_t practice_server::push_packet(const packet& sent)
{
    const std::lock_guard held{inside->lock};
    if (!inside->core)
        return 0;
    const std::size_t count = core_broadcast(inside->core->server, sent);
    inside->wake();
    return count;
}

std::size_t practice_server::close_clients(std::uint32_t close_kind)
{
    const std::lock_guard held{inside->lock};
    if (!inside->core)
        return 0;
    const std::size_t count = core_close_clients(inside->core->server, close_kind);
    inside->wake();
    return count;
}

std::size_t practice_server::drop_clients()
{
    const std::lock_guard held{inside->lock};
    if (!inside->core)
        return 0;
    const std::size_t count = core_client_count(inside->core->server);
    for (auto& [fd, session] : inside->core->server.sessions) {
        session.gone = true;
    }
    inside->wake();
    return count;
}

std::size_t practice_server::client_count() const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? core_client_count(inside->core->server) : 0;
}

bool practice_server::wait_for_clients(std::size_t count, std::chrono::milliseconds limit)
{
    std::unique_lock held{inside->lock};
    return inside->changed.wait_for(held, limit, [this, count] {
        return (inside->core ? core_client_count(inside->core->server) : 0) == count;
    });
}

std::vector<received_packet> practice_server::packets() const
{
    const std::lock_guard held{inside->lock};
    return {inside->record.begin(), inside->record.end()};
}

std::optional<received_packet> practice_server::wait_for_packet(std::uint32_t packet_kind,
                                                                std::chrono::milliseconds limit,
                                                                std::size_t nth)
{
    std::unique_lock held{inside->lock};
    std::optional<received_packet> found;
    inside->changed.wait_for(held, limit, [this, &found, packet_kind, nth] {
        std::size_t seen = 0;
        for (const received_packet& received : inside->record) {
            if (received.kind == packet_kind && ++seen == nth)
                found = received;
        }
        return found.has_value();
    });
    return found;
}

void practice_server::forget_packets()
{
    const std::lock_guard held{inside->lock};
    inside->record.clear();
}

std::vector<reference_entry> practice_server::reference_entries() const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? inside->core->server.services.reference.entries()
                        : std::vector<reference_entry>{};
}

std::vector<pager_entry> practice_server::pager_list(const std::string& address,
                                                     std::uint16_t code) const
{
    const std::lock_guard held{inside->lock};
    return inside->core ? inside->core->server.services.pagers.list({address, code})
                        : std::vector<pager_entry>{};
}

std::optional<unsigned> practice_server::subscription_style(const std::string& address) const
{
    const std::lock_guard held{inside->lock};
    if (!inside->core)
        return std::nullopt;
    const auto& subscriptions = inside->core->server.memory.subscriptions;
    const auto found = subscriptions.find(address);
    return found == subscriptions.end() ? std::nullopt : std::optional{found->second};
}

} // namespace tovrik
