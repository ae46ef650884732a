// mail_report.cpp - see mail_report.hpp.
#include "server/mail/mail_report.hpp"

#include "server/mail/day_news.hpp"
#include "server/mail/mail_day.hpp"
#include "server/storage/calendar_day.hpp"
#include "server/storage/kept_messages.hpp"
#include "server/storage/report_text.hpp"

#include <cstdio>

namespace tovrik
{
namespace
{

constexpr const char* all_in_utc = ". Times are UTC.\n\n";
constexpr std::size_t rule_length = 49;

std::string format_moment(std::time_t moment)
{
    std::tm utc{};
    if (gmtime_r(&moment, &utc) == nullptr)
        return "// :";
    char text[64];
    std::snprintf(text, sizeof text, "%02d/%02d/%04d %02d:%02d", utc.tm_mday, utc.tm_mon + 1,
                  utc.tm_year + 1900, utc.tm_hour, utc.tm_min);
    return text;
}

/// A message in the form of the clients' logs.
std::string format_as_logged(const transmission& message)
{
    std::string text = "ACARS mode: " + message.mode + "  Aircraft reg: " + message.registration +
                       " [" + message.aircraft + "]\n";
    text += "Message label: " + message.label + " Block id: " + message.block_id +
            "  Message number: " + message.message_number + "\n";
    text += "Flight number: " + message.flight_number + "  Flight: " + message.from + "-" +
            message.to + "\nOperator: " + message.operator_name + "\n";
    if (!message.content.empty())
        text += "Message content: -\n" + message.content + "\n";
    return text + std::string(rule_length, '-') + "[ " + format_moment(message.time) + " ]-\n";
}

std::string format_message(mail_style style, const transmission& message,
                           const reference_data& reference)
{
    return style == mail_style::zobe ? report_message(message, reference)
                                     : format_as_logged(message);
}

/// Shows all messages of the day.
std::string visit_day(database& in, std::int64_t day,
                      const std::function<void(const kept_message&)>& take)
{
    return messages_visit(in, mail_day_begin(day), mail_day_begin(day + 1),
                          [&take](const kept_message& kept) {
                              take(kept);
                              return true;
                          });
}

std::string make_list(database& in, const mail_report_request& request,
                      const reference_data& reference, std::string& text)
{
    std::string messages;
    std::size_t count = 0;
    std::size_t shown = 0;
    std::string error = visit_day(in, request.day, [&](const kept_message& kept) {
        if (++count != shown + 1)
            return;
        const std::string message = format_message(request.style, kept.message, reference);
        if (messages.size() + message.size() > request.max_bytes)
            return;
        messages += message;
        ++shown;
    });
    text += report_count(count);
    if (shown < count)
        text += ", the first " + std::to_string(shown) + " of them in this mail";
    text += all_in_utc + messages;
    return error;
}

std::string make_news(database& in, const mail_report_request& request, std::string& text)
{
    day_news news;
    std::string error = visit_day(in, request.day, [&news](const kept_message& kept) {
        day_news_add(news, kept.message, kept.received);
    });
    text += day_news_count(news) + all_in_utc + day_news_text(news);
    return error;
}

} // namespace

std::string mail_report_make(database& in, const mail_report_request& request,
                             const reference_data& reference, mail_report& made)
{
    const std::string title =
        report_title(utc_day(mail_day_begin(request.day)), request.server_name);
    made = {.subject = title, .text = title + "\n"};
    return request.style == mail_style::news ? make_news(in, request, made.text)
                                             : make_list(in, request, reference, made.text);
}

} // namespace tovrik
