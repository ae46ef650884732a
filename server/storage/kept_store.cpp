// kept_store.cpp - see kept_store.hpp.
#include "server/storage/kept_store.hpp"

#include "server/base/limits.hpp"
#include "server/storage/calendar_day.hpp"
#include "server/storage/day_report.hpp"
#include "server/storage/kept_messages.hpp"
#include "server/storage/kept_pagers.hpp"
#include "server/storage/kept_subscriptions.hpp"
#include "server/storage/kept_updates.hpp"
#include "server/storage/kept_uuid.hpp"

#include <ctime>
#include <memory>
#include <utility>

namespace tovrik
{
namespace
{

constexpr std::chrono::seconds close_patience{10};

/// What a job finds out for its end. The job runs in another thread, but never at the same time.
template <typename result> std::shared_ptr<result> make_result(result unless_done = {})
{
    return std::make_shared<result>(std::move(unless_done));
}

} // namespace

kept_store::kept_store(service_state& kept_state, const std::string& server_name,
                       std::function<void(const std::string&)> taker)
    : state(kept_state), name(server_name), complain(std::move(taker)),
      hits(kept, kept_state.hits, complain)
{
}

std::string kept_store::open(const std::string& folder)
{
    return kept.open(folder, [this](database& in) { return prepare(in); });
}

std::string kept_store::prepare(database& in)
{
    const std::time_t now = std::time(nullptr);
    heard.day = day_number(now);
    heard.hour = hour_number(now);
    std::string error = uuid_read_or_make(in, uuid);
    if (error.empty())
        error = updates_read(in, state.reference);
    if (error.empty())
        error = pagers_read(in, state.pagers);
    if (error.empty())
        error = hits.read(in);
    if (error.empty())
        error = messages_count(in, messages);
    if (error.empty())
        error = subscriptions_count(in, subscriptions);
    if (error.empty())
        error = contacts_read(in, max_heard_aircraft, heard.contacts);
    if (error.empty())
        error = flights_read(in, heard.day, max_heard_flights, heard.flights);
    if (error.empty())
        error = hours_read(in, now, heard.hours);
    return error;
}

void kept_store::close()
{
    hits.write_last();
    if (!kept.close(close_patience))
        complain("the database did not close in time");
    kept.run_finished();
}

void kept_store::forget_before(std::time_t moment)
{
    const auto forgotten = make_result<std::vector<std::string>>();
    kept.write({.work = [moment, forgotten](
                            database& in) { return messages_forget(in, moment, *forgotten); },
                .done =
                    [this, moment, forgotten](const std::string& error) {
                        if (!error.empty()) {
                            complain("old messages are not forgotten: " + error);
                            return;
                        }
                        messages -= forgotten->size();
                        for (const std::string& registration : *forgotten) {
                            heard_before_forget(heard, registration);
                        }
                        if (forgotten->size() == max_forgotten_messages)
                            forget_before(moment);
                    }});
}

void kept_store::forget_hits_before(std::time_t moment)
{
    hits.forget_before(moment);
}

/// Half of the room is for messages, whatever clients ask for.
bool kept_store::has_room_for_request()
{
    const std::size_t waiting = kept.waiting_writes();
    const bool was_crowded = is_crowded;
    is_crowded = waiting >= max_storage_writes / (was_crowded ? 4 : 2);
    if (is_crowded && !was_crowded)
        complain("requests of clients are refused: too many wait");
    return !is_crowded;
}

/// Changes the database, then what is looked at for every message.
void kept_store::write_or_refuse(std::function<std::string(database&, bool&)> work,
                                 std::function<void()> mirror, yes_or_no answer)
{
    if (!has_room_for_request()) {
        answer(false);
        return;
    }
    const auto is_granted = make_result<bool>();
    const auto finish = [this, is_granted, mirror = std::move(mirror),
                         answer = std::move(answer)](const std::string& error) {
        if (!error.empty())
            complain("a request of a client was not kept: " + error);
        const bool is_kept = error.empty() && *is_granted;
        if (is_kept)
            mirror();
        answer(is_kept);
    };
    if (!kept.write({.work = [work = std::move(work),
                              is_granted](database& in) { return work(in, *is_granted); },
                     .done = finish}))
        finish("the database is closed");
}

void kept_store::add_update(std::uint32_t kind, const std::string& text, yes_or_no answer)
{
    write_or_refuse(
        [kind, text](database& in, bool& is_kept) { return update_keep(in, kind, text, is_kept); },
        [this, kind, text] { state.reference.add(kind, text); }, std::move(answer));
}

void kept_store::add_pager(const pager_owner& owner, const pager_entry& entry, yes_or_no answer)
{
    write_or_refuse([owner, entry](database& in,
                                   bool& is_kept) { return pager_keep(in, owner, entry, is_kept); },
                    [this, owner, entry] { state.pagers.add(owner, entry); }, std::move(answer));
}

void kept_store::remove_pager(const pager_owner& owner, const pager_entry& pattern,
                              yes_or_no answer)
{
    write_or_refuse(
        [owner, pattern](database& in, bool& is_granted) {
            std::size_t removed = 0;
            std::string error = pager_remove(in, owner, pattern, removed);
            is_granted = removed > 0;
            return error;
        },
        [this, owner, pattern] { state_remove_pager(state, owner, pattern); }, std::move(answer));
}

void kept_store::keep_hit(const pager_owner& owner, std::time_t moment, const std::string& text)
{
    state.hits.add(owner, moment, text);
    hits.write();
}

void kept_store::finish_hit(const pager_owner& owner, std::int64_t id)
{
    state.hits.remove(owner, id);
    hits.tell(id);
}

void kept_store::subscribe(const std::string& address,
                           std::function<void(subscription_reply)> answer)
{
    const auto reply = make_result<subscription_reply>();
    const std::int64_t today = day_number(std::time(nullptr));
    write_or_refuse(
        [address, today, reply](database& in, bool& is_granted) {
            mail_subscription made;
            subscription_result result{};
            std::string error = subscription_keep(in, address, today, made, result);
            *reply = {.is_new = result == subscription_result::made, .code = made.code};
            is_granted = result != subscription_result::full;
            return error;
        },
        [this, reply] { subscriptions += reply->is_new ? 1 : 0; },
        [reply, answer = std::move(answer)](bool is_granted) {
            answer(is_granted ? *reply : subscription_reply{});
        });
}

void kept_store::choose_style(const std::string& address, unsigned style,
                              std::function<void(style_reply)> answer)
{
    const auto reply = make_result<style_reply>(style_reply::not_kept);
    write_or_refuse(
        [address, style, reply](database& in, bool& is_kept) {
            std::string error = subscription_set_style(in, address, style, is_kept);
            if (error.empty())
                *reply = is_kept ? style_reply::chosen : style_reply::not_subscribed;
            return error;
        },
        [] {},
        [reply, answer = std::move(answer)](bool is_kept) {
            const bool is_sure = is_kept || *reply == style_reply::not_subscribed;
            answer(is_sure ? *reply : style_reply::not_kept);
        });
}

void kept_store::complete_message(transmission& message)
{
    heard_before_add(heard, message, std::time(nullptr));
}

void kept_store::keep_message(const transmission& message)
{
    const std::time_t now = std::time(nullptr);
    ++waiting_messages;
    if (!kept.write(
            {.work = [message, now](database& in) { return message_keep(in, message, now); },
             .done = [this](const std::string& error) { finish_message(error); }}))
        finish_message("the disk is too slow");
}

void kept_store::finish_message(const std::string& error)
{
    --waiting_messages;
    if (error.empty()) {
        ++messages;
    } else {
        ++lost_messages;
    }
    if (!error.empty() && trouble.empty())
        complain("messages are not kept: " + error);
    if (error.empty() && !trouble.empty())
        complain("messages are kept again");
    trouble = error;
}

void kept_store::make_report(std::time_t moment, report_taker answer)
{
    const auto parts = make_result<std::vector<report_part>>();
    const auto work = [parts, moment, server_name = name,
                       reference = state.reference](database& in) {
        const day_report_request request{.begin = moment - 1,
                                         .server_name = server_name,
                                         .max_part_bytes = max_report_part_bytes};
        return day_report_make(in, request, reference, [&parts](const std::string& text) {
            parts->push_back(report_part_of(text));
        });
    };
    const auto finish = [this, parts, answer = std::move(answer)](const std::string& error) {
        if (error.empty()) {
            answer(std::move(*parts));
        } else {
            complain("a report was not made: " + error);
            answer(std::nullopt);
        }
    };
    if (!kept.read({.work = work, .done = finish}))
        finish("too many reports wait");
}

} // namespace tovrik
