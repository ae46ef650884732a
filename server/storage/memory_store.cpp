// memory_store.cpp - see memory_store.hpp.
#include "server/storage/memory_store.hpp"

#include "server/base/limits.hpp"
#include "server/base/random_source.hpp"

#include <ctime>

namespace tovrik
{
namespace
{

/// Not a secret, but the same at every start.
std::uint16_t make_subscription_code(std::string_view address)
{
    constexpr unsigned min_code = 10000;
    constexpr unsigned max_code = 65535;
    return static_cast<std::uint16_t>(
        random_source{make_seed(address)}.between(min_code, max_code));
}

} // namespace

memory_store::memory_store(service_state& kept, const std::string& server_name)
    : state(kept), name(server_name)
{
}

void memory_store::add_update(std::uint32_t kind, const std::string& text, yes_or_no answer)
{
    answer(state.reference.add(kind, text));
}

void memory_store::add_pager(const pager_owner& owner, const pager_entry& entry, yes_or_no answer)
{
    answer(state.pagers.add(owner, entry));
}

void memory_store::remove_pager(const pager_owner& owner, const pager_entry& pattern,
                                yes_or_no answer)
{
    answer(state_remove_pager(state, owner, pattern) > 0);
}

void memory_store::keep_hit(const pager_owner& owner, std::time_t moment, const std::string& text)
{
    state.hits.add(owner, moment, text);
}

void memory_store::finish_hit(const pager_owner& owner, std::int64_t id)
{
    state.hits.remove(owner, id);
}

void memory_store::subscribe(const std::string& address,
                             std::function<void(subscription_reply)> answer)
{
    if (subscriptions.contains(address)) {
        answer({.code = make_subscription_code(address)});
    } else if (subscriptions.size() >= max_subscriptions) {
        answer({});
    } else {
        subscriptions[address] = 0;
        answer({.is_new = true, .code = make_subscription_code(address)});
    }
}

void memory_store::choose_style(const std::string& address, unsigned style,
                                std::function<void(style_reply)> answer)
{
    const auto found = subscriptions.find(address);
    if (found != subscriptions.end())
        found->second = style;
    answer(found != subscriptions.end() ? style_reply::chosen : style_reply::not_subscribed);
}

void memory_store::complete_message(transmission&) {}

void memory_store::keep_message(const transmission& message)
{
    if (keeps_messages)
        archive.add(message, std::time(nullptr), state.reference);
}

void memory_store::make_report(std::time_t moment, report_taker answer)
{
    const std::string text = archive.report_of(local_day(moment), name);
    std::vector<report_part> parts;
    if (!text.empty())
        parts.push_back(report_part_of(text));
    answer(std::move(parts));
}

} // namespace tovrik
