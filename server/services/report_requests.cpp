// report_requests.cpp - see report_requests.hpp.
#include "server/services/report_requests.hpp"

#include "server/base/limits.hpp"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tovrik
{
namespace
{

/// The end of every request, after the moment.
constexpr std::string_view request_tail = "\t*#cnam#\t#cnum#\t0\t0";

std::optional<std::time_t> parse_moment(std::string_view text)
{
    if (!text.ends_with(request_tail))
        return std::nullopt;
    text.remove_suffix(request_tail.size());
    std::time_t moment = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), moment);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    // Days before and after it are calculated with, too. There are no messages at either end.
    constexpr auto last = static_cast<std::time_t>(max_time_s);
    return std::clamp(moment, -last, last);
}

bool is_under_way(const client_session& session)
{
    return session.is_report_made || !session.report.empty();
}

/// Those that are made count until they are, even if the client has gone meanwhile.
std::size_t count_under_way(const server_core& core)
{
    const auto sent = std::ranges::count_if(
        core.sessions, [](const auto& entry) { return !entry.second.report.empty(); });
    return core.reports_in_the_making + static_cast<std::size_t>(sent);
}

bool is_busy(const server_core& core, const client_session& session)
{
    return core.options.reports == report_answer::busy || is_under_way(session) ||
           count_under_way(core) >= max_reports_at_once;
}

/// Makes the faults of a part that the practice server was asked for.
report_part spoil_part(report_part part, report_answer answer)
{
    if (answer == report_answer::corrupt) {
        for (char& byte : part.data) {
            byte = static_cast<char>(~byte);
        }
    }
    if (answer == report_answer::tight)
        part.size = 1;
    return part;
}

/// Announcements wait among the pieces, so that a part is announced when the one before is sent.
void queue_part(client_session& session, const report_part& part)
{
    session.report.push_back(encode_shared(
        {.kind = kind::report_header,
         .payload = std::to_string(part.data.size()) + "\t" + std::to_string(part.size)}));
    for (std::size_t at = 0; at < part.data.size(); at += max_payload_bytes) {
        session.report.push_back(encode_shared(
            {.kind = kind::report_piece, .payload = part.data.substr(at, max_payload_bytes)}));
    }
}

void send_report(server_core& core, client_session& session,
                 std::optional<std::vector<report_part>> parts)
{
    const report_answer answer = core.options.reports;
    session.is_report_made = false;
    if (!parts) {
        session_queue_packet(session, {.kind = kind::report_busy, .payload = "NO"});
        return;
    }
    if (parts->empty() || answer == report_answer::empty) {
        session_queue_packet(session, {.kind = kind::report_empty, .payload = "NO"});
        return;
    }
    ++core.counts.reports;
    session_queue_packet(session, {.kind = kind::report_started, .payload = "OK"});
    for (report_part& part : *parts) {
        queue_part(session, spoil_part(std::move(part), answer));
    }
    if (answer == report_answer::unfinished)
        session.report.pop_back();
}

} // namespace

void answer_report_request(server_core& core, client_session& session, const packet& received)
{
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
    session.is_report_made = true;
    ++core.reports_in_the_making;
    core.store->make_report(*moment, [&core, fd = session.socket.get(), number = session.number](
                                         std::optional<std::vector<report_part>> parts) {
        --core.reports_in_the_making;
        if (client_session* const asking = core_find_client(core, fd, number))
            send_report(core, *asking, std::move(parts));
    });
}

} // namespace tovrik
