// web_sample_report.hpp - a server's report of a plausible day, for the tests of the web.
#pragma once

#include "server/web/server_report.hpp"

/// 2026-01-05 10:30:12 UTC.
constexpr std::time_t sample_now = 1767609012;

/// Three receivers, of which the second is silent, and two channels. The peak of the day is 1,310
/// messages, 12 hours ago.
inline tovrik::server_report sample_report()
{
    tovrik::server_report report{.name = "Home",
                                 .version = "1.2.3",
                                 .uuid = "5b0c3f0e",
                                 .now = sample_now,
                                 .started = sample_now - 12 * 86400 - 4 * 3600 - 77};
    report.clients = 14;
    report.max_clients = 1000;
    report.connections = 20418;
    report.refused_full = 31;
    report.refused_passwords = 3;
    report.doubles = 5127;
    report.archived = 1240331;
    report.archive_waiting = 2;
    report.archive_lost = 7;
    report.hourly = {412,  377,  301,  244,  198,  231,  388,  640,  905, 1104, 1243, 1310,
                     1288, 1201, 1175, 1132, 1190, 1254, 1219, 1080, 934, 811,  640,  348};
    report.receivers = {
        {.name = "roof",
         .type = "udp",
         .is_connected = true,
         .last_message = sample_now - 2,
         .messages = 402117,
         .bytes = 181204412,
         .broken = 12},
        {.name = "hangar",
         .type = "mqtt",
         .is_connected = true,
         .last_message = sample_now - 42 * 60,
         .is_silent = true,
         .messages = 77204,
         .bytes = 33124412,
         .reconnections = 4},
        {.name = "m\xFChle",
         .type = "tcp-connect",
         .is_connected = true,
         .last_message = sample_now - 187,
         .messages = 31877,
         .bytes = 12124412,
         .broken = 1,
         .refused = 9,
         .lost = 18},
    };
    report.channels = {{.name = "Home",
                        .port = 2202,
                        .clients = 11,
                        .messages = 511198,
                        .sent = 4120448,
                        .left_out = 214},
                       {.name = "Home VDL2", .port = 2203, .clients = 3, .messages = 201877}};
    report.listed = {{.port = 2202, .location = "Berlin", .description = "all", .name = "Home"},
                     {.port = 2203, .location = "Berlin", .description = "VDL2", .name = "VDL2"},
                     {.host = "friend.example", .port = 2204, .name = "Friend"}};
    report.services = {.updates = 18,
                       .pager_lists = 41,
                       .pager_hits = 1207,
                       .subscriptions = 9,
                       .mails = 108,
                       .mails_failed = 4,
                       .reports = 77};
    return report;
}

/// Every character of ISO-8859-1 from 1 on, and texts that are no text in a page, a label or a
/// line.
constexpr const char* hostile_texts[] = {
    "<script>alert(1)</script>",
    "\"><img src=x onerror=alert(1)>",
    "' onload='alert(1)",
    "&amp;&#60;&lt;&",
    "a\nb\r\nc\td",
    "\x01\x02\x1B[31m\x7F\x80\x85\x9F",
    "\\\"} 1\nevil 2\n",
    "]]>--><!--</style></title>",
    "m\xFChle \xA0\xFF\xC3\xBC",
    "\xF0\x9F\x98\x80",
    "%s%n{{}}",
};

/// The sample with `text` wherever a text is.
inline tovrik::server_report sample_report_of(const std::string& text)
{
    tovrik::server_report report = sample_report();
    report.name = report.version = report.uuid = report.trouble = text;
    for (auto& receiver : report.receivers)
        receiver.name = receiver.type = text;
    for (auto& channel : report.channels)
        channel.name = text;
    for (auto& server : report.listed)
        server.host = server.location = server.description = server.name = text;
    return report;
}
