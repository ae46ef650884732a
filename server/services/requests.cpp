// requests.cpp - see requests.hpp.
#include "server/services/requests.hpp"

#include "server/services/service_requests.hpp"

#include <algorithm>
#include <iterator>
#include <optional>

namespace tovrik
{
namespace
{

/// Admits a client once it has done all that is asked of it. Recent transmissions come first.
void admit_client(server_core& core, client_session& session)
{
    if (session.admitted || !session.identified || !session.authenticated)
        return;
    session.admitted = true;
    session.access_by = never;
    const auto is_wanted = [&session](const published_message& item) {
        return core_wants(session, item);
    };
    const auto& recent = core.history;
    const auto count = std::count_if(recent.begin(), recent.end(), is_wanted);
    if (count == 0)
        return;
    session_queue_packet(session, replay_announcement_packet(static_cast<std::uint32_t>(count)));
    // What was announced must come, so these are assured: newer transmissions cannot push them out.
    for (const auto& item : recent) {
        if (is_wanted(item))
            session_queue(session, item.bytes);
    }
}

packet make_capabilities_packet(const server_core& core, const channel& home)
{
    capability_texts texts = core.options.capabilities;
    if (!texts.need_auth)
        texts.need_auth = core.options.label_of_digest ? "1" : "0";
    if (!texts.server_uuid)
        texts.server_uuid = home.uuid;
    return {.kind = kind::capabilities, .payload = capabilities_xml(texts)};
}

packet make_uptime_packet(const server_core& core)
{
    const auto up = steady_clock::now() - core.started_at;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(up).count();
    return {.kind = kind::uptime,
            .payload = std::to_string(seconds) + "\t" + std::to_string(core_client_count(core)) +
                       "\t" + core.options.name};
}

void on_good_bye(server_core&, client_session& session, const packet&)
{
    session.gone = true;
}

/// The label of the password that a client sent; nothing if it is wrong or one of too many.
std::optional<std::string> authenticate(server_core& core, const client_session& session,
                                        const packet& received)
{
    const time_point now = steady_clock::now();
    if (core.tries.may_try(session.address, core.options.tries_per_minute, now)) {
        if (std::string label = core.options.label_of_digest(received.payload); !label.empty())
            return label;
        core.tries.add_wrong(session.address, now);
    }
    ++core.wrong_passwords;
    return std::nullopt;
}

void on_password_digest(server_core& core, client_session& session, const packet& received)
{
    const auto label = core.options.label_of_digest ? authenticate(core, session, received)
                                                    : std::optional<std::string>{std::string{}};
    if (label) {
        session.authenticated = true;
        session.label = *label;
        session_queue_packet(session, {.kind = kind::password_accepted, .payload = "OK"});
    } else {
        session_queue_packet(session, {.kind = kind::password_refused, .payload = "NO"});
    }
    admit_client(core, session);
}

void on_identification(server_core& core, client_session& session, const packet& received)
{
    if (!core.options.ask_identification)
        return;
    const auto& known = core.options.known_clients;
    session.identified = known.empty() || std::ranges::find(known, received.payload) != known.end();
    if (session.identified) {
        session_queue_packet(session, {.kind = kind::identification_accepted, .payload = "OK"});
    } else {
        session_queue_packet(session, {.kind = kind::identification_refused, .payload = "NO"});
    }
    admit_client(core, session);
}

void on_uplink_setting(server_core&, client_session& session, const packet& received)
{
    session.wants_uplinks = received.payload != "1";
}

void on_heartbeat(server_core& core, client_session& session, const packet&)
{
    session_queue(session, core.tick);
}

struct client_request {
    std::uint32_t number;
    void (*handle)(server_core& core, client_session& session, const packet& received);
};

/// The client's version and its form of transmissions (kinds 101 and 151) need no answer.
constexpr client_request client_requests[] = {
    {kind::good_bye, on_good_bye},
    {kind::password_digest, on_password_digest},
    {kind::identification, on_identification},
    {kind::uplink_setting, on_uplink_setting},
    {kind::heartbeat, on_heartbeat},
};

} // namespace

void welcome_client(server_core& core, client_session& session)
{
    const service_options& options = core.options;
    session.identified = !options.ask_identification;
    session.authenticated = !options.label_of_digest;
    session_queue_packet(session, make_capabilities_packet(core, *session.home));
    if (options.ask_identification)
        session_queue_packet(session, {.kind = kind::identification, .payload = "?"});
    for (const packet& greeting : options.greetings) {
        session_queue_packet(session, greeting);
    }
    if (options.send_uptime)
        session_queue_packet(session, make_uptime_packet(core));
    admit_client(core, session);
}

void answer_packet(server_core& core, client_session& session, const packet& received)
{
    const auto* const found =
        std::ranges::find(client_requests, received.kind, &client_request::number);
    if (found != std::end(client_requests)) {
        found->handle(core, session, received);
    } else {
        answer_service_request(core, session, received);
    }
}

} // namespace tovrik
