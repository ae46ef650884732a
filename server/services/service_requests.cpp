// service_requests.cpp - see service_requests.hpp.
#include "server/services/service_requests.hpp"

#include "server/base/limits.hpp"
#include "server/base/mail_address.hpp"
#include "server/base/text_fields.hpp"
#include "server/services/pager_telling.hpp"
#include "server/services/report_requests.hpp"

#include <algorithm>
#include <functional>
#include <iterator>

namespace tovrik
{
namespace
{

constexpr const char* no_updates = "Updates are not offered here";
constexpr const char* report_styles[] = {"tovrik", "ZOBE", "News"};

packet make_notice(std::string text)
{
    return {.kind = kind::notice, .payload = std::move(text)};
}

packet make_error(std::string text)
{
    return {.kind = kind::error_text, .payload = std::move(text)};
}

/// Gives an answer to the client that asked, if it is still there.
template <typename answer_type, typename handler>
auto answer_of(server_core& core, client_session& session, handler handle)
{
    ++session.unanswered_requests;
    return [&core, fd = session.socket.get(), number = session.number, handle](answer_type answer) {
        if (client_session* const asking = core_find_client(core, fd, number)) {
            --asking->unanswered_requests;
            handle(*asking, answer);
        }
    };
}

/// Counts a change that a client asks for. False if it has asked for too many.
bool reserve_change(client_session& session)
{
    if (session.changes >= max_changes_per_client)
        return false;
    ++session.changes;
    return true;
}

/// A change that was refused does not count.
void free_change(client_session& session)
{
    --session.changes;
}

/// Answers with one of two kinds.
void answer_with(client_session& session, bool is_granted, std::uint32_t yes, std::uint32_t no)
{
    if (is_granted) {
        session_queue_packet(session, {.kind = yes, .payload = "OK"});
    } else {
        session_queue_packet(session, {.kind = no, .payload = "NO"});
    }
}

void on_update(server_core& core, client_session& session, const packet& received)
{
    if (core.options.refuses_updates) {
        session_queue_packet(session, {.kind = kind::updates_forbidden, .payload = no_updates});
        return;
    }
    if (!reserve_change(session)) {
        answer_with(session, false, kind::update_accepted, kind::update_refused);
        return;
    }
    core.store->add_update(
        received.kind, received.payload,
        answer_of<bool>(core, session, [&core](client_session& asking, bool is_kept) {
            if (is_kept) {
                ++core.counts.updates;
            } else {
                free_change(asking);
            }
            answer_with(asking, is_kept, kind::update_accepted, kind::update_refused);
        }));
}

bool is_address(std::string_view text)
{
    return !text.empty() && is_clean_field(text, max_field_bytes);
}

std::string format_subscription(const std::string& address, const subscription_reply& reply)
{
    // Short enough for one line of the status pane at 80 columns.
    const std::string code = std::to_string(reply.code);
    return reply.is_new ? "Daily reports subscribed. Your code: " + code
                        : address + " is subscribed already. Code: " + code;
}

void on_subscription(server_core& core, client_session& session, const packet& received)
{
    const std::string& address = received.payload;
    if (!is_address(address) || !is_mail_address(address)) {
        session_queue_packet(session, make_error("This is no e-mail address"));
        return;
    }
    const bool may_add = reserve_change(session);
    const auto answer = [address](client_session& asking, const subscription_reply& reply) {
        if (!reply.is_new)
            free_change(asking);
        if (reply.code == 0) {
            session_queue_packet(asking, make_error("No more subscriptions are taken"));
        } else {
            session_queue_packet(asking, make_notice(format_subscription(address, reply)));
        }
    };
    if (may_add) {
        core.store->subscribe(address, answer_of<subscription_reply>(core, session, answer));
    } else {
        session_queue_packet(session, make_error("No more subscriptions are taken"));
    }
}

packet make_style_answer(const std::string& address, unsigned style, style_reply reply)
{
    switch (reply) {
    case style_reply::chosen:
        return make_notice("Daily reports for " + address + " now have the " +
                           report_styles[style] + " style");
    case style_reply::not_subscribed:
        return make_error("There is no such subscription");
    case style_reply::not_kept:
        break;
    }
    return make_error("The style cannot be kept now");
}

void on_report_style(server_core& core, client_session& session, const packet& received)
{
    const unsigned style = received.param1;
    const std::string& address = received.payload;
    if (style >= std::size(report_styles)) {
        session_queue_packet(session,
                             make_error("There is no report style " + std::to_string(style)));
        return;
    }
    const auto answer = [address, style](client_session& asking, style_reply reply) {
        session_queue_packet(asking, make_style_answer(address, style, reply));
    };
    core.store->choose_style(address, style, answer_of<style_reply>(core, session, answer));
}

void answer_pager(client_session& session, bool is_granted)
{
    answer_with(session, is_granted, kind::pager_done, kind::pager_failed);
}

void add_to_pager(server_core& core, client_session& session, const pager_owner& owner,
                  const pager_entry& entry)
{
    if (!reserve_change(session)) {
        answer_pager(session, false);
        return;
    }
    core.store->add_pager(owner, entry,
                          answer_of<bool>(core, session, [](client_session& asking, bool is_kept) {
                              if (!is_kept)
                                  free_change(asking);
                              answer_pager(asking, is_kept);
                          }));
}

void change_pager(server_core& core, client_session& session, const packet& received)
{
    constexpr std::size_t field_count = 4;
    const auto fields = split_fields(received.payload, '\t');
    if (fields.size() != field_count || !is_address(fields[0])) {
        answer_pager(session, false);
        return;
    }
    const pager_owner owner{std::string{fields[0]}, received.param1};
    const pager_entry entry{std::string{fields[1]}, std::string{fields[2]}, std::string{fields[3]}};
    pager_recognise(session, owner);
    if (received.kind == kind::pager_add) {
        add_to_pager(core, session, owner, entry);
    } else {
        core.store->remove_pager(owner, entry, answer_of<bool>(core, session, answer_pager));
    }
}

void on_pager_change(server_core& core, client_session& session, const packet& received)
{
    if (core.options.pager_blocked) {
        session_queue_packet(session, {.kind = kind::pager_blocked, .payload = "NO"});
    } else {
        change_pager(core, session, received);
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
    pager_recognise(session, owner);
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
    } else if (session.unanswered_requests >= max_unanswered_requests) {
        session_queue_packet(session,
                             {.kind = found->refusal, .payload = "Too many requests at once"});
    } else {
        found->handle(core, session, received);
    }
}

} // namespace tovrik
