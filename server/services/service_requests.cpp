// service_requests.cpp - see service_requests.hpp.
#include "server/services/service_requests.hpp"

#include "server/base/limits.hpp"
#include "server/base/random_source.hpp"
#include "server/base/text_fields.hpp"
#include "server/services/report_requests.hpp"

#include <algorithm>
#include <iterator>

namespace tovrik
{
namespace
{

constexpr const char* report_styles[] = {"tovrik", "ZOBE", "News"};

packet make_notice(std::string text)
{
    return {.kind = kind::notice, .payload = std::move(text)};
}

packet make_error(std::string text)
{
    return {.kind = kind::error_text, .payload = std::move(text)};
}

bool may_add(const client_session& session)
{
    return session.changes < max_changes_per_client;
}

void on_update(server_core& core, client_session& session, const packet& received)
{
    if (may_add(session) && core.services.reference.add(received.kind, received.payload)) {
        ++session.changes;
        session_queue_packet(session, {.kind = kind::update_accepted, .payload = "OK"});
    } else {
        session_queue_packet(session, {.kind = kind::update_refused, .payload = "NO"});
    }
}

bool is_address(std::string_view text)
{
    return !text.empty() && is_clean_field(text, max_field_bytes);
}

/// The code that a subscriber adds to further requests. It is not a secret, but the same at every
/// start.
unsigned make_subscription_code(std::string_view address)
{
    constexpr unsigned min_code = 10000;
    constexpr unsigned max_code = 65535;
    return random_source{make_seed(address)}.between(min_code, max_code);
}

void on_subscription(server_core& core, client_session& session, const packet& received)
{
    auto& subscriptions = core.services.subscriptions;
    const std::string& address = received.payload;
    if (!is_address(address)) {
        session_queue_packet(session, make_error("This is no e-mail address"));
    } else if (subscriptions.contains(address)) {
        session_queue_packet(session, make_notice(address + " is subscribed already. Code: " +
                                                  std::to_string(make_subscription_code(address))));
    } else if (!may_add(session) || subscriptions.size() >= max_subscriptions) {
        session_queue_packet(session, make_error("No more subscriptions are taken"));
    } else {
        ++session.changes;
        subscriptions[address] = 0;
        // Short enough for one line of the status pane at 80 columns.
        session_queue_packet(session, make_notice("Daily reports subscribed. Your code: " +
                                                  std::to_string(make_subscription_code(address))));
    }
}

void on_report_style(server_core& core, client_session& session, const packet& received)
{
    const auto found = core.services.subscriptions.find(received.payload);
    if (received.param1 >= std::size(report_styles)) {
        session_queue_packet(
            session, make_error("There is no report style " + std::to_string(received.param1)));
    } else if (found == core.services.subscriptions.end()) {
        session_queue_packet(session, make_error("There is no such subscription"));
    } else {
        found->second = received.param1;
        session_queue_packet(session,
                             make_notice("Daily reports for " + found->first + " now have the " +
                                         report_styles[received.param1] + " style"));
    }
}

/// From now on the client is told of messages that the owner's list asks for.
void remember_owner(client_session& session, const pager_owner& owner)
{
    auto& owners = session.pager_owners;
    if (std::find(owners.begin(), owners.end(), owner) == owners.end() &&
        owners.size() < max_pager_lists_per_client)
        owners.push_back(owner);
}

bool add_to_pager(server_core& core, client_session& session, const pager_owner& owner,
                  const pager_entry& entry)
{
    if (!may_add(session) || !core.services.pagers.add(owner, entry))
        return false;
    ++session.changes;
    return true;
}

bool change_pager(server_core& core, client_session& session, const packet& received)
{
    constexpr std::size_t field_count = 4;
    const auto fields = split_fields(received.payload, '\t');
    if (fields.size() != field_count || !is_address(fields[0]))
        return false;
    const pager_owner owner{std::string{fields[0]}, received.param1};
    const pager_entry entry{std::string{fields[1]}, std::string{fields[2]}, std::string{fields[3]}};
    remember_owner(session, owner);
    return received.kind == kind::pager_add ? add_to_pager(core, session, owner, entry)
                                            : core.services.pagers.remove(owner, entry) > 0;
}

void on_pager_change(server_core& core, client_session& session, const packet& received)
{
    if (core.options.pager_blocked) {
        session_queue_packet(session, {.kind = kind::pager_blocked, .payload = "NO"});
    } else if (change_pager(core, session, received)) {
        session_queue_packet(session, {.kind = kind::pager_done, .payload = "OK"});
    } else {
        session_queue_packet(session, {.kind = kind::pager_failed, .payload = "NO"});
    }
}

void on_pager_list(server_core& core, client_session& session, const packet& received)
{
    if (core.options.pager_blocked) {
        session_queue_packet(session, {.kind = kind::pager_blocked, .payload = "NO"});
        return;
    }
    if (!is_address(received.payload)) {
        session_queue_packet(session, make_error("This is no e-mail address"));
        return;
    }
    const pager_owner owner{received.payload, received.param1};
    remember_owner(session, owner);
    session_queue_packet(session, {.kind = kind::pager_list,
                                   .payload = pager_list_text(core.services.pagers.list(owner))});
}

/// A request for a service, and the answer of a server that does not offer it. For some of these
/// answers clients have texts of their own and do not show ours.
struct service_request {
    std::uint32_t number;
    bool (*is_offered)(const capability_texts& texts);
    std::uint32_t refusal;
    const char* refusal_text;
    void (*handle)(server_core& core, client_session& session, const packet& received);
};

constexpr const char* no_updates = "Updates are not offered here";
constexpr const char* no_mailings = "Daily mailings are not offered here";
constexpr const char* no_pagers = "Pager lists are not offered here";
constexpr const char* no_reports = "Reports are not offered here";

constexpr service_request service_requests[] = {
    {kind::add_flight, offers_updates, kind::updates_forbidden, no_updates, on_update},
    {kind::add_airline, offers_updates, kind::updates_forbidden, no_updates, on_update},
    {kind::add_airport, offers_updates, kind::updates_forbidden, no_updates, on_update},
    {kind::add_label, offers_updates, kind::updates_forbidden, no_updates, on_update},
    {kind::add_aircraft, offers_updates, kind::updates_forbidden, no_updates, on_update},
    {kind::subscription, offers_mailings, kind::error_text, no_mailings, on_subscription},
    {kind::report_style, offers_mailings, kind::error_text, no_mailings, on_report_style},
    {kind::report_request, offers_reports, kind::error_text, no_reports, answer_report_request},
    {kind::pager_add, offers_pagers, kind::pager_failed, no_pagers, on_pager_change},
    {kind::pager_remove, offers_pagers, kind::pager_failed, no_pagers, on_pager_change},
    {kind::pager_list, offers_pagers, kind::error_text, no_pagers, on_pager_list},
};

} // namespace

void answer_service_request(server_core& core, client_session& session, const packet& received)
{
    const auto* const found =
        std::ranges::find(service_requests, received.kind, &service_request::number);
    if (found == std::end(service_requests))
        return;
    if (!found->is_offered(core.options.capabilities)) {
        session_queue_packet(session, {.kind = found->refusal, .payload = found->refusal_text});
    } else if (!session.admitted) {
        session_queue_packet(
            session, {.kind = found->refusal, .payload = "Services are for those who have access"});
    } else {
        found->handle(core, session, received);
    }
}

std::optional<packet> pager_notice(const server_core& core, const client_session& session,
                                   const transmission& message)
{
    const auto& owners = session.pager_owners;
    const auto owner = std::find_if(owners.begin(), owners.end(), [&](const pager_owner& each) {
        return core.services.pagers.is_hit(each, message);
    });
    if (owner == owners.end())
        return std::nullopt;
    std::string text = "Pager of " + owner->address + ":";
    for (const auto& part : {message.registration, message.flight_number, message.to}) {
        if (!part.empty())
            text += " " + part;
    }
    return make_notice(std::move(text));
}

} // namespace tovrik
