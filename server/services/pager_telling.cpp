// pager_telling.cpp - see pager_telling.hpp.
#include "server/services/pager_telling.hpp"

#include "server/base/limits.hpp"
#include "server/base/time_text.hpp"
#include "server/storage/calendar_day.hpp"

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

/// What a message means to the lists that ask for it.
using hits_of_owners = std::map<pager_owner, std::shared_ptr<shared_hit>>;

hits_of_owners collect_hits(const std::vector<pager_owner>& owners, const transmission& message)
{
    hits_of_owners hits;
    for (const pager_owner& owner : owners) {
        hits.emplace(owner,
                     std::make_shared<shared_hit>(shared_hit{.owner = owner,
                                                             .moment = std::time(nullptr),
                                                             .text = format_hit(owner, message)}));
    }
    return hits;
}

/// Nobody is told of the oldest one of too many.
void drop_oldest_hit(client_session& session)
{
    for (const auto& each : session.new_hits.front().of_lists) {
        --each->untold;
    }
    session.new_hits.pop_front();
}

/// Tells a client of a message that lists ask for, once, even if several of them are its own.
void tell_client(const server_core& core, client_session& session, const hits_of_owners& hits)
{
    offered_hit offered;
    for (const pager_owner& owner : session.pager_owners) {
        if (const auto found = hits.find(owner); found != hits.end()) {
            ++found->second->untold;
            offered.of_lists.push_back(found->second);
        }
    }
    if (offered.of_lists.empty())
        return;
    offered.bytes = encode_hit(core, offered.of_lists.front()->text);
    session.new_hits.push_back(std::move(offered));
    if (session.new_hits.size() > max_pager_hits)
        drop_oldest_hit(session);
}

void finish_hit(server_core& core, client_session& session)
{
    if (!session.hit || !session.hit->is_handed_over)
        return;
    ++core.counts.pager_hits;
    for (const auto& each : session.hit->of_lists) {
        each->is_told = true;
        --each->untold;
    }
    if (session.hit->of_lists.empty())
        core.store->finish_hit(session.hit->owner, session.hit->id);
    session.hit.reset();
}

void give_back_hit(server_core& core, const offered_hit& unsent)
{
    for (const auto& each : unsent.of_lists) {
        if (--each->untold == 0 && !each->is_told)
            core.store->keep_hit(each->owner, each->moment, each->text);
    }
    if (unsent.of_lists.empty())
        core.services.hits.give_back(unsent.owner, unsent.id);
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
std::optional<owned_hit> find_waiting_hit(server_core& core, const client_session& session)
{
    const std::time_t since = std::time(nullptr) - seconds_per_day;
    std::optional<owned_hit> oldest;
    for (const pager_owner& owner : session.pager_owners) {
        const pager_hit* const next = core.services.hits.next(owner, since);
        if (next != nullptr && (!oldest || next->id < oldest->hit.id))
            oldest = {owner, *next};
    }
    return oldest;
}

void give_hit(server_core& core, client_session& session)
{
    if (const auto waiting = find_waiting_hit(core, session)) {
        const auto& [owner, hit] = *waiting;
        session.hit = {.owner = owner,
                       .id = hit.id,
                       .bytes =
                           encode_hit(core, hit.text + " (" + minute_text(hit.moment) + " UTC)")};
        core.services.hits.begin_telling(owner, hit.id);
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
    const hits_of_owners hits = collect_hits(owners, message);
    for (auto& [fd, session] : core.sessions) {
        if (is_connected(session))
            tell_client(core, session, hits);
    }
    for (const auto& [owner, hit] : hits) {
        if (hit->untold == 0)
            core.store->keep_hit(owner, hit->moment, hit->text);
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
