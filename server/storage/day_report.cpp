// day_report.cpp - see day_report.hpp.
//
// The archive is read twice: the first part already says how many there are.
#include "server/storage/day_report.hpp"

#include "server/storage/kept_messages.hpp"
#include "server/storage/report_text.hpp"

#include <numeric>
#include <utility>
#include <vector>

namespace tovrik
{
namespace
{

/// Room for all of a part's head but its title: the longest has less.
constexpr std::size_t max_head_bytes = 150;

constexpr std::time_t flip_seconds = 13 * seconds_per_hour;

/// How many messages each part has.
using part_plan = std::vector<std::size_t>;

using text_visit = std::function<void(const std::string& text)>;

/// Shows all messages of the day as texts.
std::string visit_texts(database& in, const day_report_request& request,
                        const reference_data& reference, const text_visit& visit)
{
    return messages_visit(in, request.begin, request.begin + seconds_per_day,
                          [&](const kept_message& kept) {
                              visit(report_message(kept.message, reference));
                              return true;
                          });
}

std::string make_title(const day_report_request& request)
{
    return report_title(day_beginning_at(request.begin), request.server_name);
}

std::string make_plan(database& in, const day_report_request& request,
                      const reference_data& reference, part_plan& plan)
{
    const std::size_t head = make_title(request).size() + max_head_bytes;
    std::size_t bytes = 0;
    return visit_texts(in, request, reference, [&](const std::string& text) {
        if (plan.empty() || bytes + text.size() > request.max_part_bytes) {
            plan.push_back(0);
            bytes = head;
        }
        ++plan.back();
        bytes += text.size();
    });
}

std::string make_head(const day_report_request& request, const part_plan& plan, std::size_t part)
{
    const std::size_t total = std::accumulate(plan.begin(), plan.end(), std::size_t{0});
    std::string head = make_title(request);
    if (plan.size() > 1)
        head += ", part " + std::to_string(part + 1) + " of " + std::to_string(plan.size());
    head += "\n" + report_count(total);
    if (plan.size() > 1)
        head += ", " + std::to_string(plan[part]) + " of them in this part";
    return head + ". Times are UTC.\n\n";
}

} // namespace

calendar_day day_beginning_at(std::time_t begin)
{
    return utc_day(begin + flip_seconds);
}

std::string day_report_make(database& in, const day_report_request& request,
                            const reference_data& reference,
                            const std::function<void(std::string part)>& take)
{
    part_plan plan;
    std::string error = make_plan(in, request, reference, plan);
    if (!error.empty())
        return error;
    std::string text;
    std::size_t part = 0;
    std::size_t count = 0;
    return visit_texts(in, request, reference, [&](const std::string& message) {
        if (count == 0)
            text = make_head(request, plan, part);
        text += message;
        if (++count < plan[part])
            return;
        take(std::exchange(text, {}));
        count = 0;
        ++part;
    });
}

} // namespace tovrik
