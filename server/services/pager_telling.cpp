// pager_telling.cpp - see pager_telling.hpp.
#include "server/services/pager_telling.hpp"

#include "server/base/limits.hpp"
#include "server/base/time_text.hpp"
#include "server/storage/calendar_day.hpp"

#include <algorithm>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tovrik
{
namespace
{

std::string format_hit(const pager_owner& owner, const transmission& message)
{
    std::string text = "Pager of " + owner.address + ":";
    for (const auto& part : {message.registration, message.flight_number, message.to}) {
        if (!part.empty())
            text += " " + part;
    }
    return text;
}

wire_bytes encode_hit(const server_core& core, std::string text)
{
    return encode_shared(
        {.kind = core.options.pager_hits_as_errors ? kind::error_text : kind::notice,
         .payload = std::move(text)});
}

bool is_connected(const client_session& session)
{
    return session.admitted && !session.closing && !session.gone;
}

bool has_client(const server_core& core, const pager_owner& owner)
{
    return std::ranges::any_of(core.sessions, [&owner](const auto& entry) {
        const client_session& session = entry.second;
        return is_connected(session) &&
               std::ranges::find(session.pager_owners, owner) != session.pager_owners.end();
    });
}

/// Tells a client of a message that lists ask for, once, even if several of them are its own. Adds
/// the owners that have been told so.
void tell_client(const server_core& core, client_session& session,
                 const std::vector<pager_owner>& owners, const transmission& message,
                 std::set<pager_owner>& told)
{
    bool is_told = false;
    for (const pager_owner& owner : session.pager_owners) {
        if (!std::binary_search(owners.begin(), owners.end(), owner))
            continue;
        told.insert(owner);
        if (is_told)
            continue;
        is_told = true;
        std::string text = format_hit(owner, message);
        session.new_hits.push_back({.owner = owner,
                                    .moment = std::time(nullptr),
                                    .text = text,
                                    .bytes = encode_hit(core, text)});
    }
    if (session.new_hits.size() > max_pager_hits)
        session.new_hits.pop_front();
}

void finish_hit(server_core& core, client_session& session)
{
    if (!session.hit || !session.hit->is_handed_over)
        return;
    ++core.counts.pager_hits;
    if (session.hit->id != 0)
        core.store->finish_hit(session.hit->owner, session.hit->id);
    session.hit.reset();
}

void give_back_hit(server_core& core, const offered_hit& unsent)
{
    if (unsent.id != 0) {
        core.services.hits.give_back(unsent.owner, unsent.id);
    } else if (!has_client(core, unsent.owner)) {
        core.store->keep_hit(unsent.owner, unsent.moment, unsent.text);
    }
}

/// What is on its way may still arrive while the connection is there.
void give_back_hits(server_core& core, client_session& session)
{
    if (session.hit && (session.gone || session.hit->bytes)) {
        give_back_hit(core, *session.hit);
        session.hit.reset();
    }
    for (const offered_hit& each : session.new_hits) {
        give_back_hit(core, each);
    }
    session.new_hits.clear();
}

/// The oldest waiting hit of a client's lists; nothing if there is none.
std::optional<offered_hit> find_waiting_hit(server_core& core, const client_session& session)
{
    const std::time_t since = std::time(nullptr) - seconds_per_day;
    std::optional<offered_hit> oldest;
    for (const pager_owner& owner : session.pager_owners) {
        const pager_hit* const next = core.services.hits.next(owner, since);
        if (next != nullptr && (!oldest || next->id < oldest->id))
            oldest = {.owner = owner, .id = next->id, .moment = next->moment, .text = next->text};
    }
    return oldest;
}

void give_hit(server_core& core, client_session& session)
{
    session.hit = find_waiting_hit(core, session);
    if (session.hit) {
        session.hit->bytes =
            encode_hit(core, session.hit->text + " (" + minute_text(session.hit->moment) + " UTC)");
        core.services.hits.begin_telling(session.hit->owner, session.hit->id);
    } else if (!session.new_hits.empty()) {
        session.hit = std::move(session.new_hits.front());
        session.new_hits.pop_front();
    }
}

} // namespace

void pager_recognise(client_session& session, const pager_owner& owner)
{
    auto& owners = session.pager_owners;
    if (std::ranges::find(owners, owner) == owners.end() &&
        owners.size() < max_pager_lists_per_client)
        owners.push_back(owner);
}

void pager_tell(server_core& core, const transmission& message)
{
    const std::vector<pager_owner> owners = core.services.pagers.hits(message);
    if (owners.empty())
        return;
    std::set<pager_owner> told;
    for (auto& [fd, session] : core.sessions) {
        if (is_connected(session))
            tell_client(core, session, owners, message, told);
    }
    for (const pager_owner& owner : owners) {
        if (!told.contains(owner))
            core.store->keep_hit(owner, std::time(nullptr), format_hit(owner, message));
    }
}

void pager_serve(server_core& core, client_session& session)
{
    if (session.pager_owners.empty())
        return;
    finish_hit(core, session);
    if (!is_connected(session)) {
        give_back_hits(core, session);
    } else if (!session.hit) {
        give_hit(core, session);
    }
}

} // namespace tovrik
