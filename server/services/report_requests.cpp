// report_requests.cpp - see report_requests.hpp.
#include "server/services/report_requests.hpp"

#include "server/base/limits.hpp"
#include "server/base/zlib_bytes.hpp"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace tovrik
{
namespace
{

/// The end of every request, after the moment.
constexpr std::string_view request_tail = "\t*#cnam#\t#cnum#\t0\t0";

/// A report to be announced and sent.
struct prepared_report {
    std::string data;      ///< compressed
    std::size_t size = 0;  ///< announced; clients decompress into four times as many bytes
    std::size_t total = 0; ///< announced number of compressed bytes
};

std::optional<std::time_t> parse_moment(std::string_view text)
{
    if (!text.ends_with(request_tail))
        return std::nullopt;
    text.remove_suffix(request_tail.size());
    std::time_t moment = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), moment);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return moment;
}

bool is_busy(const server_core& core, const client_session& session)
{
    const auto under_way =
        std::count_if(core.sessions.begin(), core.sessions.end(),
                      [](const auto& entry) { return !entry.second.report.empty(); });
    return core.options.reports == report_answer::busy || !session.report.empty() ||
           static_cast<std::size_t>(under_way) >= max_reports_at_once;
}

prepared_report prepare_report(const std::string& text, report_answer answer)
{
    prepared_report report{.data = zlib_bytes(text), .size = text.size()};
    report.total = report.data.size();
    if (answer == report_answer::corrupt) {
        for (char& byte : report.data) {
            byte = static_cast<char>(~byte);
        }
    }
    if (answer == report_answer::tight)
        report.size = 1;
    return report;
}

void send_report(client_session& session, const prepared_report& report, report_answer answer)
{
    session_queue_packet(session, {.kind = kind::report_started, .payload = "OK"});
    session_queue_packet(
        session, {.kind = kind::report_header,
                  .payload = std::to_string(report.total) + "\t" + std::to_string(report.size)});
    for (std::size_t at = 0; at < report.data.size(); at += max_payload_bytes) {
        session.report.push_back(encode_shared(
            {.kind = kind::report_piece, .payload = report.data.substr(at, max_payload_bytes)}));
    }
    if (answer == report_answer::unfinished)
        session.report.pop_back();
}

} // namespace

void answer_report_request(server_core& core, client_session& session, const packet& received)
{
    const report_answer answer = core.options.reports;
    const auto moment = parse_moment(received.payload);
    if (!moment) {
        session_queue_packet(session, {.kind = kind::error_text,
                                       .payload = "This request of a report makes no sense"});
        return;
    }
    if (is_busy(core, session)) {
        session_queue_packet(session, {.kind = kind::report_busy, .payload = "NO"});
        return;
    }
    const std::string text = core.services.archive.report_of(local_day(*moment), core.options.name);
    if (text.empty() || answer == report_answer::empty) {
        session_queue_packet(session, {.kind = kind::report_empty, .payload = "NO"});
        return;
    }
    send_report(session, prepare_report(text, answer), answer);
}

} // namespace tovrik
