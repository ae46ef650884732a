// status_page.cpp - see status_page.hpp.
#include "server/web/status_page.hpp"

#include "server/web/day_plot.hpp"
#include "server/web/status_parts.hpp"
#include "server/web/status_style.hpp"
#include "server/web/web_text.hpp"

#include <algorithm>
#include <numeric>

namespace tovrik
{
namespace
{

constexpr std::time_t day_s = 86400;

std::string make_time(std::time_t time, const char* format)
{
    return "<time datetime=\"" + web_utc(time, "%Y-%m-%dT%H:%M:%SZ") + "\">" +
           web_utc(time, format) + "</time>";
}

/// A number in which a nought does not catch the eye.
std::string make_count(std::uint64_t number)
{
    return number == 0 ? "<span class=\"none\">0</span>" : web_number(number);
}

std::string make_pill(const char* kind, const std::string& text)
{
    return std::string{"<span class=\"pill "} + kind + "\">" + text + "</span>";
}

bool is_in_trouble(const receiver_report& receiver)
{
    return receiver.is_silent || !receiver.is_connected;
}

bool is_heard(const receiver_report& receiver)
{
    return !is_in_trouble(receiver) && receiver.last_message > 0;
}

std::size_t count_in_trouble(const server_report& report)
{
    return static_cast<std::size_t>(std::ranges::count_if(report.receivers, is_in_trouble));
}

std::string make_state(const receiver_report& receiver)
{
    std::string pills;
    if (!receiver.is_connected)
        pills += make_pill("bad", "Not connected") + ' ';
    if (receiver.is_silent)
        pills += make_pill("bad", "Silent");
    if (!pills.empty())
        return pills;
    return is_heard(receiver) ? make_pill("good", "Receiving") : make_pill("calm", "Waiting");
}

std::string make_last_message(const receiver_report& receiver, std::time_t now)
{
    if (receiver.last_message <= 0)
        return "<b>None yet</b>";
    constexpr std::time_t just_now_s = 5;
    const std::time_t passed = now - receiver.last_message;
    const std::string ago = passed < just_now_s ? "Just now" : web_duration(passed) + " ago";
    const char* const format =
        passed < day_s && web_utc(now, "%d") == web_utc(receiver.last_message, "%d")
            ? "%H:%M:%S UTC"
            : "%Y-%m-%d %H:%M UTC";
    return "<b>" + ago + "</b> <small>" + make_time(receiver.last_message, format) + "</small>";
}

std::string make_receiver_summary(const server_report& report)
{
    std::string names;
    for (const receiver_report& receiver : report.receivers) {
        if (is_in_trouble(receiver))
            names += (names.empty() ? "" : ", ") + web_html(receiver.name);
    }
    return names.empty() ? "" : "<p class=\"warning\">Not heard: <b>" + names + "</b></p>\n";
}

std::string make_receivers(const server_report& report)
{
    if (report.receivers.empty())
        return "<p class=\"note\">There are no receivers.</p>\n";
    std::vector<table_row> rows;
    for (const receiver_report& receiver : report.receivers)
        rows.push_back({.cells = {"<b>" + web_html(receiver.name) + "</b> <small>" +
                                      web_html(receiver.type) + "</small>",
                                  make_state(receiver), make_last_message(receiver, report.now),
                                  make_count(receiver.messages), make_count(receiver.broken),
                                  make_count(receiver.refused), make_count(receiver.lost),
                                  make_count(receiver.reconnections)},
                        .is_marked = is_in_trouble(receiver)});
    return make_receiver_summary(report) + status_table({{"Receiver"},
                                                         {"State"},
                                                         {"Last message"},
                                                         {"Messages", true},
                                                         {"Broken", true},
                                                         {"Not allowed", true},
                                                         {"Lost", true},
                                                         {"Reconnected", true}},
                                                        rows);
}

std::string make_channels(const server_report& report)
{
    std::vector<table_row> rows;
    for (const channel_report& channel : report.channels)
        rows.push_back(
            {.cells = {"<b>" + web_html(channel.name) + "</b>", std::to_string(channel.port),
                       make_count(channel.clients), make_count(channel.messages),
                       make_count(channel.sent), make_count(channel.left_out)}});
    return status_table({{"Channel"},
                         {"Port", true},
                         {"Clients", true},
                         {"Messages", true},
                         {"Sent", true},
                         {"Left out", true}},
                        rows);
}

std::string make_tiles(const server_report& report)
{
    const auto sum = std::accumulate(report.hourly.begin(), report.hourly.end(), std::uint64_t{0});
    const auto heard = static_cast<std::size_t>(std::ranges::count_if(report.receivers, is_heard));
    return status_facts("tiles", {{"Messages in 24 hours", web_number(sum)},
                                  {"Receivers heard", web_number(heard),
                                   "of " + web_number(report.receivers.size())},
                                  {"Clients", web_number(report.clients),
                                   "of " + web_number(report.max_clients) + " at most"},
                                  {"Messages in the archive", web_number(report.archived)}});
}

std::string make_services(const server_report& report)
{
    const service_report& services = report.services;
    return status_facts("facts", {{"Updates of the database", make_count(services.updates)},
                                  {"Pager lists", make_count(services.pager_lists)},
                                  {"Pager hits", make_count(services.pager_hits)},
                                  {"Subscriptions to mailings", make_count(services.subscriptions)},
                                  {"Mails sent", make_count(services.mails)},
                                  {"Reports made", make_count(services.reports)},
                                  {"Doubles merged into one", make_count(report.doubles)},
                                  {"Waiting for the archive", make_count(report.archive_waiting)}});
}

template <typename record>
std::uint64_t count_in_all(const std::vector<record>& records, std::uint64_t record::*field)
{
    std::uint64_t sum = 0;
    for (const record& each : records)
        sum += each.*field;
    return sum;
}

std::string make_losses(const server_report& report)
{
    return status_facts("facts",
                        {{"Lost before they were read",
                          make_count(count_in_all(report.receivers, &receiver_report::lost))},
                         {"Broken, no message in them",
                          make_count(count_in_all(report.receivers, &receiver_report::broken))},
                         {"From addresses that are not allowed",
                          make_count(count_in_all(report.receivers, &receiver_report::refused))},
                         {"Left out for slow clients",
                          make_count(count_in_all(report.channels, &channel_report::left_out))},
                         {"Not kept in the archive", make_count(report.archive_lost)},
                         {"Mails not taken", make_count(report.services.mails_failed)},
                         {"Clients turned away, server full", make_count(report.refused_full)},
                         {"Wrong passwords", make_count(report.refused_passwords)}});
}

std::string make_head(const server_report& report)
{
    return "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n"
           "<meta charset=\"utf-8\" />\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\" />\n"
           "<meta name=\"color-scheme\" content=\"light dark\" />\n"
           "<meta http-equiv=\"refresh\" content=\"60\" />\n"
           "<link rel=\"icon\" href=\"data:,\" />\n<title>" +
           web_html(report.name) + " - ACARS message server</title>\n<style>\n" + status_style +
           "</style>\n</head>\n";
}

std::string make_server_state(const server_report& report, const std::string& trouble)
{
    if (!trouble.empty())
        return "<p class=\"state warning\" role=\"alert\">" + make_pill("bad", "Trouble") + ' ' +
               web_html(trouble) + "</p>\n";
    std::string pills = make_pill("good", "In order");
    if (const std::size_t silent = count_in_trouble(report); silent > 0)
        pills += ' ' +
                 make_pill("bad", web_number(silent) + " of " +
                                      web_number(report.receivers.size()) + " receivers not heard");
    return "<p class=\"state\">" + pills + "</p>\n";
}

std::string make_header(const server_report& report, const std::string& trouble)
{
    return "<header>\n<p class=\"kind\">ACARS message server</p>\n<h1>" + web_html(report.name) +
           "</h1>\n" + make_server_state(report, trouble) + "<p class=\"note\">Running for " +
           web_duration(report.now - report.started, 2) + ", since " +
           make_time(report.started, "%Y-%m-%d %H:%M UTC") + ". " + web_number(report.connections) +
           " connections. As of " + make_time(report.now, "%Y-%m-%d %H:%M:%S UTC") +
           ".</p>\n</header>\n";
}

std::string make_footer(const server_report& report)
{
    return "<footer>\n<p>tovrikd " + web_html(report.version) +
           "<span>&#183;</span><a href=\"/tovrikserver.main\">Directory for clients</a>"
           "<span>&#183;</span><a href=\"/metrics\">Figures for Prometheus</a>"
           "<span>&#183;</span><a href=\"/healthz\">Health</a></p>\n"
           "<p>All times are UTC. Counts are since the start. "
           "The page renews itself every minute.</p>\n</footer>\n";
}

} // namespace

std::string status_page(const server_report& report, const std::string& trouble)
{
    return make_head(report) + "<body>\n" + make_header(report, trouble) + "<main>\n" +
           make_tiles(report) + status_section("receivers", "Receivers", make_receivers(report)) +
           status_section("day", "Messages of the last 24 hours", day_plot(report)) +
           status_section("channels", "Channels", make_channels(report)) +
           "<div class=\"pair\">\n" +
           status_section("services", "Services", make_services(report)) +
           status_section("losses", "Losses", make_losses(report)) + "</div>\n</main>\n" +
           make_footer(report) + "</body>\n</html>\n";
}

} // namespace tovrik
