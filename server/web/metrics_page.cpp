// metrics_page.cpp - see metrics_page.hpp.
#include "server/web/metrics_page.hpp"

#include "server/web/web_text.hpp"

namespace tovrik
{
namespace
{

using number = std::uint64_t;

/// A figure of the whole server, or of one receiver or channel.
template <typename record> struct figure {
    const char* name; ///< after "tovrikd_"; a name that ends in _total is a counter
    const char* help;
    number (*read)(const record&);
};

using report = server_report;
using receiver = receiver_report;
using channel = channel_report;

number number_of_time(std::time_t time)
{
    return static_cast<number>(time > 0 ? time : 0);
}

constexpr figure<report> server_figures[] = {
    {"healthy", "1 if the server is well", [](const report& r) -> number { return r.is_healthy; }},
    {"start_time_seconds", "When the server started",
     [](const report& r) { return number_of_time(r.started); }},
    {"report_time_seconds", "When these figures were taken",
     [](const report& r) { return number_of_time(r.now); }},
    {"clients", "Clients that are connected", [](const report& r) -> number { return r.clients; }},
    {"max_clients", "Clients that may be connected at once",
     [](const report& r) -> number { return r.max_clients; }},
    {"connections_total", "Connections of clients", [](const report& r) { return r.connections; }},
    {"refused_full_total", "Connections turned away because the server was full",
     [](const report& r) { return r.refused_full; }},
    {"refused_passwords_total", "Wrong passwords",
     [](const report& r) { return r.refused_passwords; }},
    {"doubles_total", "Receptions that were merged into others",
     [](const report& r) { return r.doubles; }},
    {"archived_messages", "Messages in the archive", [](const report& r) { return r.archived; }},
    {"archive_waiting_messages", "Messages that are not on the disk yet",
     [](const report& r) { return r.archive_waiting; }},
    {"archive_lost_messages_total", "Messages that could not be kept",
     [](const report& r) { return r.archive_lost; }},
    {"updates_total", "Updates of the reference data by clients",
     [](const report& r) { return r.services.updates; }},
    {"pager_lists", "Pager lists that are watched",
     [](const report& r) { return r.services.pager_lists; }},
    {"pager_hits_total", "Messages that matched pager lists",
     [](const report& r) { return r.services.pager_hits; }},
    {"subscriptions", "Subscriptions to mailings",
     [](const report& r) { return r.services.subscriptions; }},
    {"mails_total", "Mails handed to the mail program",
     [](const report& r) { return r.services.mails; }},
    {"mails_failed_total", "Mails that the mail program did not take",
     [](const report& r) { return r.services.mails_failed; }},
    {"reports_total", "Reports that clients asked for",
     [](const report& r) { return r.services.reports; }},
};

constexpr figure<receiver> receiver_figures[] = {
    {"receiver_connected", "1 if the receiver's connection or socket is open",
     [](const receiver& r) -> number { return r.is_connected; }},
    {"receiver_silent", "1 if clients have been told that the receiver is silent",
     [](const receiver& r) -> number { return r.is_silent; }},
    {"receiver_last_message_time_seconds", "When the last message came; 0: none since the start",
     [](const receiver& r) { return number_of_time(r.last_message); }},
    {"receiver_messages_total", "Messages of the receiver",
     [](const receiver& r) { return r.messages; }},
    {"receiver_bytes_total", "Bytes of the receiver", [](const receiver& r) { return r.bytes; }},
    {"receiver_broken_total", "Lines that were no message",
     [](const receiver& r) { return r.broken; }},
    {"receiver_refused_total", "What came from addresses that are not allowed",
     [](const receiver& r) { return r.refused; }},
    {"receiver_lost_total", "Datagrams or messages that the system dropped",
     [](const receiver& r) { return r.lost; }},
    {"receiver_reconnections_total", "Connections made again",
     [](const receiver& r) { return r.reconnections; }},
};

constexpr figure<channel> channel_figures[] = {
    {"channel_clients", "Clients of the channel",
     [](const channel& c) -> number { return c.clients; }},
    {"channel_messages_total", "Messages that passed the channel's filter",
     [](const channel& c) { return c.messages; }},
    {"channel_sent_total", "Messages sent to all clients of the channel together",
     [](const channel& c) { return c.sent; }},
    {"channel_left_out_total", "Messages that clients could not be sent in time",
     [](const channel& c) { return c.left_out; }},
};

void append_head(std::string& page, const std::string& name, const char* help)
{
    page += "# HELP " + name + ' ' + help + "\n# TYPE " + name +
            (name.ends_with("_total") ? " counter\n" : " gauge\n");
}

void append_sample(std::string& page, const std::string& name, const std::string& labels,
                   number value)
{
    page += name + labels + ' ' + std::to_string(value) + '\n';
}

std::string make_labels(const receiver& r, std::size_t index)
{
    return "{input=\"" + std::to_string(index + 1) + "\",receiver=\"" + web_label(r.name) +
           "\",type=\"" + web_label(r.type) + "\"}";
}

std::string make_labels(const channel& c, std::size_t)
{
    return "{channel=\"" + web_label(c.name) + "\",port=\"" + std::to_string(c.port) + "\"}";
}

/// Appends a figure of every record. The samples of one name have to stand together.
template <typename record, std::size_t count>
void append_figures(std::string& page, const figure<record> (&figures)[count],
                    const std::vector<record>& records)
{
    for (const auto& [short_name, help, read] : figures) {
        const std::string name = std::string{"tovrikd_"} + short_name;
        append_head(page, name, help);
        for (std::size_t i = 0; i < records.size(); ++i)
            append_sample(page, name, make_labels(records[i], i), read(records[i]));
    }
}

} // namespace

std::string metrics_page(const server_report& report)
{
    std::string page;
    append_head(page, "tovrikd_info", "What the server is");
    append_sample(page, "tovrikd_info",
                  "{name=\"" + web_label(report.name) + "\",uuid=\"" + web_label(report.uuid) +
                      "\",version=\"" + web_label(report.version) + "\"}",
                  1);
    for (const auto& [short_name, help, read] : server_figures) {
        const std::string name = std::string{"tovrikd_"} + short_name;
        append_head(page, name, help);
        append_sample(page, name, "", read(report));
    }
    append_figures(page, receiver_figures, report.receivers);
    append_figures(page, channel_figures, report.channels);
    return page;
}

} // namespace tovrik
