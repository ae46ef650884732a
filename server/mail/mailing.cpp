// mailing.cpp - see mailing.hpp.
#include "server/mail/mailing.hpp"

#include "server/base/limits.hpp"
#include "server/base/mail_address.hpp"
#include "server/base/system_text.hpp"
#include "server/base/text_fields.hpp"
#include "server/mail/mail_day.hpp"
#include "server/storage/calendar_day.hpp"

#include <algorithm>
#include <memory>
#include <utility>

namespace tovrik
{
namespace
{

constexpr std::chrono::seconds note_pause{5};

std::string format_mails(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " mail" : " mails");
}

/// A pause in its largest unit.
std::string format_pause(std::chrono::milliseconds pause)
{
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(pause).count();
    return minutes == 1 ? "a minute" : std::to_string(minutes) + " minutes";
}

std::string format_footer(const std::string& server_name, const std::string& from)
{
    return "\n-- \nYou get this because your address is subscribed to the daily reports of " +
           server_name + ".\nTo end that, write to " + from + ".\n";
}

} // namespace

mailing::mailing(const mail_sources& all, teller to_owner, mail_patience limits)
    : sources(all), tell(std::move(to_owner)), patience(limits)
{
}

void mailing::change(mail_options chosen)
{
    if (chosen == options)
        return;
    options = std::move(chosen);
    report = std::nullopt; // it says what was chosen before
    pause = patience.first_pause;
    if (doing == step::resting && next_try != never)
        next_try = now;
}

bool mailing::is_refused(const std::string& address) const
{
    return std::ranges::any_of(options.never_to, [&address](const std::string& each) {
        return upper_case(each) == upper_case(address);
    });
}

/// Mails about days to come were sent while the clock was ahead. Without this, there would be none
/// until it gets there again.
void mailing::take_back_marks()
{
    are_marks_checked = sources.kept.write(
        {.work = [today = day_number(moment)](
                     database& in) { return subscriptions_take_back(in, today); },
         .done =
             [this](const std::string& error) {
                 if (error.empty())
                     return;
                 are_marks_checked = false;
                 clock.even_since = now; // and again after as long a time
                 tell("the subscriptions are not checked: " + error, line_level::warning);
             }});
}

void mailing::begin_day(std::optional<std::int64_t> wanted)
{
    if (day && !unsent.empty())
        tell(format_mails(unsent.size()) + " about " + mail_day_text(*day) + " given up",
             line_level::warning);
    unsent.clear();
    pause = patience.first_pause;
    day = wanted;
    next_try = day ? now : never;
}

void mailing::on_time(int watched_with, time_point steady, std::time_t wall)
{
    now = steady;
    moment = wall;
    epoll_fd = watched_with;
    are_marks_checked = even_clock_look(clock, now, moment) && are_marks_checked;
    due = options.is_offered && !is_leaving ? std::optional{mail_day_due(moment, options.at_minute)}
                                            : std::nullopt;
    if (doing == step::running) {
        if (const auto result = mail_child_result(child, now))
            take_result(*result);
    }
    if (doing == step::noting && now >= next_try)
        note_first();
    if (doing != step::resting || is_leaving)
        return;
    if (due && !are_marks_checked && now - clock.even_since >= patience.even_clock)
        take_back_marks();
    if (due != day)
        begin_day(due);
    if (now >= next_try)
        ask_who_is_due();
}

bool mailing::on_event(int fd)
{
    return mail_child_on_event(child, fd);
}

void mailing::ask_who_is_due()
{
    doing = step::asking;
    const auto found = std::make_shared<std::vector<mail_subscription>>();
    const bool is_taken = sources.kept.read(
        {.work = [found,
                  asked = *day](database& in) { return subscriptions_due(in, asked, *found); },
         .done =
             [this, found](const std::string& error) {
                 if (error.empty()) {
                     take_list(std::move(*found));
                 } else {
                     end_round("the subscriptions cannot be read: " + error);
                 }
             }});
    if (!is_taken)
        end_round("too many reports wait");
}

/// Those who failed most often come last, and those with the same style together.
void mailing::take_list(std::vector<mail_subscription> list)
{
    std::erase_if(list, [this](const mail_subscription& each) {
        return !is_mail_address(each.address) || is_refused(each.address);
    });
    auto tried = std::exchange(unsent, {});
    for (const mail_subscription& each : list) {
        unsent[each.address] = tried[each.address];
    }
    std::ranges::stable_sort(list, {}, [this](const mail_subscription& each) {
        return std::pair{unsent[each.address], each.style};
    });
    waiting.assign(list.begin(), list.end());
    failures_in_row = 0;
    sent_in_round = 0;
    go_on();
}

void mailing::go_on()
{
    // What was chosen may have changed since the list was made.
    while (!waiting.empty() && is_refused(waiting.front().address)) {
        unsent.erase(waiting.front().address);
        waiting.pop_front();
    }
    if (waiting.empty() || due != day || failures_in_row >= max_mail_failures_in_row) {
        end_round({});
    } else if (const auto style = static_cast<mail_style>(waiting.front().style);
               report && report->style == style) {
        send_first();
    } else {
        write_report(style);
    }
}

void mailing::write_report(mail_style style)
{
    doing = step::writing;
    report = std::nullopt;
    const auto made = std::make_shared<written_report>(written_report{.style = style});
    const auto work = [made, footer = format_footer(sources.server_name, options.from),
                       reference = sources.reference,
                       request = mail_report_request{.day = *day,
                                                     .style = style,
                                                     .server_name = sources.server_name,
                                                     .max_bytes = max_mail_bytes}](database& in) {
        mail_report text;
        std::string error = mail_report_make(in, request, reference, text);
        made->subject = std::move(text.subject);
        made->body = mail_body_make(text.text + footer);
        return error;
    };
    const auto done = [this, made](const std::string& error) {
        if (error.empty()) {
            report = std::move(*made);
            go_on();
        } else {
            end_round("the report cannot be made: " + error);
        }
    };
    if (!sources.kept.read({.work = work, .done = done}))
        end_round("too many reports wait");
}

void mailing::send_first()
{
    const std::string& to = waiting.front().address;
    const mail_head head{.from = options.from,
                         .to = to,
                         .subject = report->subject,
                         .id = mail_id(sources.uuid, options.from, to, *day),
                         .date = moment};
    const unique_fd mail =
        mail_file_make(mail_head_text(head, report->body.is_ascii), report->body.text);
    std::string error = mail ? mail_child_start(child, options.command, mail.get(), epoll_fd,
                                                now + patience.program)
                             : system_text("no room for a mail");
    if (error.empty()) {
        doing = step::running;
    } else {
        fail_first(error);
    }
}

void mailing::take_result(const std::string& error)
{
    if (!error.empty()) {
        fail_first(error);
        return;
    }
    ++sent;
    ++sent_in_round;
    failures_in_row = 0;
    note_first();
}

void mailing::fail_first(const std::string& error)
{
    const std::string& address = waiting.front().address;
    ++failed;
    ++failures_in_row;
    ++unsent[address];
    tell("the mail to " + address + " about " + mail_day_text(*day) + " is not sent: " + error,
         line_level::warning);
    waiting.pop_front();
    go_on();
}

/// Until it is on disk that a mail was sent, no other is: it would be a second one that may come
/// twice.
void mailing::note_first()
{
    doing = step::noting;
    next_try = never;
    const auto done = [this](const std::string& error) {
        const bool was_missing = std::exchange(is_note_missing, !error.empty());
        if (is_note_missing) {
            if (!was_missing)
                tell("it is not kept that a mail was sent: " + error, line_level::warning);
            next_try = now + note_pause;
            return;
        }
        unsent.erase(waiting.front().address);
        waiting.pop_front();
        go_on();
    };
    if (!sources.kept.write(
            {.work = [address = waiting.front().address, mailed = *day](
                         database& in) { return subscription_mailed(in, address, mailed); },
             .done = done}))
        next_try = now + note_pause;
}

/// `trouble` is what kept everything from being sent, besides failures that were told.
void mailing::end_round(const std::string& trouble)
{
    doing = step::resting;
    next_try = never;
    report = std::nullopt;
    waiting.clear();
    std::string line = format_mails(sent_in_round) + " about " + mail_day_text(*day) + " sent";
    const bool is_over = (trouble.empty() && unsent.empty()) || due != day;
    if (is_over) {
        if (std::exchange(sent_in_round, 0) > 0)
            tell(line, line_level::info);
        return;
    }
    sent_in_round = 0;
    line += trouble.empty() ? "" : "; " + trouble;
    tell(line + "; the rest is tried again in " + format_pause(pause), line_level::warning);
    next_try = now + pause;
    pause = std::min(pause * 2, patience.longest_pause);
}

void mailing::leave()
{
    is_leaving = true;
    due = std::nullopt;
}

void mailing::close()
{
    leave();
    if (doing == step::running)
        take_result(mail_child_finish(child, patience.end));
}

} // namespace tovrik
