// daemon_report.cpp - see daemon_report.hpp.
#include "server/tovrikd/daemon_report.hpp"

#include <algorithm>
#include <ctime>
#include <map>
#include <utility>

namespace tovrik
{
namespace
{

receiver_report make_receiver(const input_report& input)
{
    return {.name = input.name,
            .type = input.type,
            .is_connected = input.counters.is_connected,
            .last_message = input.counters.last_message,
            .is_silent = input.is_silent,
            .messages = input.counters.messages,
            .bytes = input.counters.bytes,
            .broken = input.counters.broken,
            .refused = input.counters.refused,
            .lost = input.counters.lost,
            .reconnections = input.counters.reconnections};
}

std::vector<channel_report> make_channels(const server_core& server)
{
    std::vector<channel_report> reports;
    for (const channel& each : server.channels) {
        channel_report report{.name = each.name,
                              .port = each.listener.port,
                              .messages = each.messages,
                              .sent = each.sent,
                              .left_out = each.left_out_before};
        for (const auto& [fd, session] : server.sessions) {
            if (session.home != &each || session.number == 0)
                continue;
            ++report.clients;
            report.left_out += session.traffic.left_out;
        }
        reports.push_back(std::move(report));
    }
    return reports;
}

service_report make_services(const daemon& running)
{
    const service_counts& counts = running.server.counts;
    return {.updates = counts.updates,
            .pager_lists = running.server.services.pagers.size(),
            .pager_hits = counts.pager_hits,
            .subscriptions = running.kept.subscriptions,
            .mails = running.mails.sent,
            .mails_failed = running.mails.failed,
            .reports = counts.reports};
}

std::vector<listed_server> make_listed(const daemon& running)
{
    const configuration& chosen = running.chosen;
    std::vector<listed_server> listed;
    for (const channel& each : running.server.channels) {
        if (!each.listener.socket)
            continue; // only its last clients are still there
        listed.push_back({.host = {},
                          .port = each.listener.port,
                          .location = chosen.location,
                          .description = chosen.description,
                          .name = each.name});
    }
    for (const peer_configuration& peer : chosen.peers) {
        listed.push_back({.host = peer.host,
                          .port = peer.port,
                          .location = peer.location,
                          .description = peer.description,
                          .name = peer.name});
    }
    return listed;
}

} // namespace

std::shared_ptr<const server_report> daemon_report(daemon& running)
{
    auto report = std::make_shared<server_report>();
    const server_core& server = running.server;
    report->name = running.chosen.name;
    report->version = SERVER_VERSION;
    report->uuid = running.kept.uuid;
    report->now = std::time(nullptr);
    report->started = running.started;
    report->trouble = running.kept.trouble;
    report->is_healthy = report->trouble.empty();
    report->clients = core_client_count(server);
    report->max_clients = running.chosen.max_clients;
    report->connections = server.clients_so_far;
    report->refused_full = server.clients_turned_away;
    report->refused_passwords = server.wrong_passwords;
    report->doubles = running.known.merged;
    report->archived = running.kept.messages;
    report->archive_waiting = running.kept.waiting_messages;
    report->archive_lost = running.kept.lost_messages;
    heard_before_move_on(running.kept.heard, report->now);
    report->hourly = running.kept.heard.hours;
    for (const input_report& input : input_set_reports(running.inputs)) {
        report->receivers.push_back(make_receiver(input));
    }
    report->channels = make_channels(server);
    report->listed = make_listed(running);
    report->services = make_services(running);
    return report;
}

std::string format_counts(daemon& running)
{
    const auto report = daemon_report(running);
    std::uint64_t received = 0;
    std::uint64_t left_out = 0;
    for (const receiver_report& receiver : report->receivers) {
        received += receiver.messages;
    }
    for (const channel_report& each : report->channels) {
        left_out += each.left_out;
    }
    return std::to_string(report->clients) + " clients, " + std::to_string(received) +
           " messages received, " + std::to_string(report->archived) + " in the archive, " +
           std::to_string(left_out) + " left out for clients, " +
           std::to_string(report->archive_lost) + " not kept";
}

} // namespace tovrik
