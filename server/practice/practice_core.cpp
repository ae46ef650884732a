// practice_core.cpp - see practice_core.hpp.
#include "server/practice/practice_core.hpp"

#include "base/md5.hpp"
#include "server/base/limits.hpp"
#include "server/services/publishing.hpp"
#include "server/services/server_identity.hpp"
#include "server/services/server_loop.hpp"

#include <algorithm>
#include <ctime>

namespace tovrik
{
namespace
{

constexpr std::time_t past_message_interval_s = 60;

/// The practice server has one password at most.
password_check make_password_check(const server_options& options)
{
    if (!options.password)
        return {};
    char digest[33];
    md5_hex(*options.password, digest);
    return [right = std::string{digest}](std::string_view sent) {
        return sent == right ? std::string{"practice"} : std::string{};
    };
}

service_options make_service_options(const server_options& options)
{
    service_options made{
        .max_clients = options.max_clients,
        .pace_ms = options.pace_ms,
        .name = options.name,
        .capabilities = options.capabilities,
        .known_clients = options.known_clients,
        .ask_identification = options.ask_identification,
        .send_uptime = options.send_uptime,
        .greetings = options.greetings,
        .replay_count = options.replay_count,
        .queue_limit = options.queue_limit,
        .compressed = options.compressed,
        .tick_every_ms = options.tick_every_ms,
        .reports = options.reports,
        .pager_blocked = options.pager_blocked,
        .close_after_ms = options.close_after_ms,
        .close_kind = options.close_kind,
    };
    made.label_of_digest = make_password_check(options);
    return made;
}

steady_clock::duration compute_interval(const server_options& options)
{
    const double rate = std::min(options.rate_per_minute, max_rate_per_minute);
    return std::chrono::duration_cast<steady_clock::duration>(
        std::chrono::duration<double>{60 / rate});
}

void publish_next(practice_core& core, std::time_t now)
{
    fed_message next = core.messages.next(now);
    if (auto* const message = std::get_if<transmission>(&next)) {
        publish_message(core.server, std::move(*message));
    } else {
        publish_document(core.server, std::get<std::string>(next));
    }
}

/// Whether all messages come from receivers, and made-up ones would only be taken for theirs.
bool is_receiver_only(const server_options& options)
{
    return (options.json_udp_port || options.json_stream_fd >= 0) && options.rate_per_minute <= 0 &&
           options.replay_documents.empty() && options.replay_messages.empty();
}

/// The messages that new clients get first: one for each of the last minutes.
void publish_past(practice_core& core)
{
    if (is_receiver_only(core.options))
        return;
    const std::time_t now = std::time(nullptr);
    for (std::size_t age = std::min(core.options.replay_count, max_replay_count); age > 0; --age) {
        publish_next(core, now - static_cast<std::time_t>(age) * past_message_interval_s);
    }
}

void publish_due(practice_core& core, time_point now)
{
    const auto interval = compute_interval(core.options);
    for (int i = 0; i < max_transmissions_per_turn && now >= core.next_transmission; ++i) {
        core.next_transmission += interval;
        publish_next(core, std::time(nullptr));
    }
    // After a stall, what was missed is not sent later.
    core.next_transmission = std::max(core.next_transmission, now);
}

std::size_t publish_all(practice_core& core, std::vector<transmission> received)
{
    for (transmission& message : received) {
        publish_message(core.server, std::move(message));
    }
    return received.size();
}

} // namespace

practice_core::practice_core(const server_options& chosen)
    : options(chosen), offered(make_service_options(chosen)), server(offered),
      messages(chosen, server.services.reference), json({.bind_address = chosen.bind_address,
                                                         .udp_port = chosen.json_udp_port,
                                                         .stream_fd = chosen.json_stream_fd,
                                                         .on_complaint = chosen.on_complaint})
{
    server.memory.keeps_messages = offers_reports(chosen.capabilities);
}

std::string practice_open(practice_core& core)
{
    const server_options& options = core.options;
    std::string error = loop_open(core.server);
    if (error.empty())
        error = loop_open_channel(core.server, {.name = options.name,
                                                .address = options.bind_address,
                                                .port = options.port,
                                                .seed = identity_seed(machine_name(), options.name,
                                                                      options.bind_address)});
    if (error.empty())
        error = directory_open(core.directory, options, core.server.epoll.get(),
                               core.server.channels.front().listener.port);
    if (error.empty())
        error = json_open(core.json, core.server.epoll.get());
    if (!error.empty())
        return error;
    if (options.rate_per_minute > 0)
        core.next_transmission = steady_clock::now() + compute_interval(options);
    publish_past(core);
    return {};
}

int practice_wait_ms(const practice_core& core, time_point now)
{
    return loop_wait_ms(core.server,
                        std::min(core.next_transmission, directory_next_time(core.directory)), now);
}

void practice_on_event(practice_core& core, int fd)
{
    const int epoll_fd = core.server.epoll.get();
    if (!loop_on_event(core.server, fd) &&
        !directory_on_event(core.directory, core.options, epoll_fd, fd))
        publish_all(core, json_on_event(core.json, epoll_fd, fd));
}

void practice_on_time(practice_core& core, time_point now)
{
    if (now >= core.next_transmission)
        publish_due(core, now);
    loop_on_time(core.server, now);
    directory_on_time(core.directory, core.server.epoll.get(), now);
}

std::size_t practice_take_json(practice_core& core, std::string_view lines)
{
    json_lines& pushed = core.json.pushed_lines;
    const std::size_t count = publish_all(core, pushed.take(lines));
    return count + publish_all(core, pushed.take_rest());
}

} // namespace tovrik
