// publishing.cpp - see publishing.hpp.
#include "server/services/publishing.hpp"

#include "server/base/limits.hpp"
#include "server/messages/read_transmission.hpp"
#include "server/services/pager_telling.hpp"
#include "server/storage/reference_use.hpp"

#include <algorithm>
#include <ctime>
#include <utility>

namespace tovrik
{
namespace
{

time_point compute_late_at(const server_core& core)
{
    const int late_after_ms = core.options.late_after_ms;
    return late_after_ms > 0 ? steady_clock::now() + std::chrono::milliseconds{late_after_ms}
                             : never;
}

void pass_on(server_core& core, const published_message& item)
{
    const std::size_t limit = core.options.queue_limit;
    const time_point late_at = compute_late_at(core);
    const bool has_text = !item.message.content.empty();
    for (auto& [fd, session] : core.sessions) {
        if (!session.admitted)
            continue;
        if (core_wants(session, item))
            session_queue_transmission(session, {item.bytes, has_text, late_at}, limit);
    }
    pager_tell(core, item.message);
    for (auto& each : core.channels) {
        if (filter_matches(each.filter, item.message))
            ++each.messages;
    }
}

void remember_message(server_core& core, published_message item)
{
    core.history.push_back(std::move(item));
    while (core.history.size() > std::min(core.options.replay_count, max_replay_count)) {
        core.history.pop_front();
    }
}

bool publish(server_core& core, const std::string& xml, transmission message)
{
    const auto made =
        core.options.compressed ? compressed_transmission(xml) : plain_transmission(xml);
    if (!made)
        return false;
    published_message item{encode_shared(*made), is_uplink(xml), std::move(message)};
    core.store->keep_message(item.message);
    pass_on(core, item);
    remember_message(core, std::move(item));
    return true;
}

} // namespace

bool publish_message(server_core& core, transmission message)
{
    if (message.time == 0)
        message.time = std::time(nullptr);
    apply_reference(message, core.services.reference);
    core.store->complete_message(message);
    const std::string xml = transmission_xml(message);
    return publish(core, xml, std::move(message));
}

bool publish_document(server_core& core, const std::string& xml)
{
    return publish(core, xml, read_transmission(xml));
}

} // namespace tovrik
