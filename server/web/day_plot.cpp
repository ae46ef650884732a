// day_plot.cpp - see day_plot.hpp.
#include "server/web/day_plot.hpp"

#include "server/web/status_parts.hpp"
#include "server/web/web_text.hpp"

#include <algorithm>
#include <numeric>

namespace tovrik
{
namespace
{

constexpr std::time_t hour_s = 3600;
constexpr unsigned hours_per_label = 3;

// In pixels, from the top of the picture.
constexpr unsigned plot_height = 216;
constexpr unsigned plot_top = 22; ///< of the highest bar; its number stands above it
constexpr unsigned plot_base = 190;
constexpr unsigned min_bar = 2; ///< of an hour with any message
constexpr unsigned number_gap = 6;
constexpr unsigned label_line = plot_base + 19;

/// One hour of the plot.
struct plot_hour {
    std::time_t begin;
    std::uint64_t messages;
    std::size_t place; ///< from the left
    bool is_present;
    bool is_peak; ///< the first of those with the most messages
};

std::vector<plot_hour> make_hours(const server_report& report)
{
    const std::time_t present = report.now - report.now % hour_s;
    const auto peak = std::ranges::max_element(report.hourly) - report.hourly.begin();
    std::vector<plot_hour> hours;
    for (std::size_t i = 0; i < hours_of_plot; ++i) {
        const auto hours_ago = static_cast<std::time_t>(hours_of_plot - 1 - i);
        hours.push_back({.begin = present - hours_ago * hour_s,
                         .messages = report.hourly[i],
                         .place = i,
                         .is_present = hours_ago == 0,
                         .is_peak = static_cast<std::size_t>(peak) == i && report.hourly[i] > 0});
    }
    return hours;
}

std::string name_of_hour(const plot_hour& hour)
{
    const std::string begin = web_utc(hour.begin, "%H:%M");
    return hour.is_present ? "since " + begin + " UTC"
                           : begin + " to " + web_utc(hour.begin + hour_s, "%H:%M") + " UTC";
}

std::string count_of_messages(std::uint64_t count)
{
    return web_number(count) + (count == 1 ? " message" : " messages");
}

/// A share of the picture's width: `tenths` of the column at `place`, from its left edge.
std::string make_position(std::size_t place, unsigned tenths)
{
    constexpr std::size_t hundred = 10000; // in hundredths of a percent
    const std::size_t share = (place * 10 + tenths) * hundred / (hours_of_plot * 10);
    const std::string parts = std::to_string(100 + share % 100);
    return std::to_string(share / 100) + '.' + parts.substr(1) + '%';
}

unsigned find_bar_height(std::uint64_t messages, std::uint64_t most)
{
    if (messages == 0)
        return 0;
    const double share = static_cast<double>(messages) / static_cast<double>(most);
    return std::max(min_bar, static_cast<unsigned>(share * (plot_base - plot_top)));
}

std::string make_text(const char* kind, std::size_t place, unsigned line, const std::string& text)
{
    return std::string{"<text class=\""} + kind + "\" x=\"" + make_position(place, 5) + "\" y=\"" +
           std::to_string(line) + "\">" + text + "</text>";
}

std::string make_bar(const plot_hour& hour, std::uint64_t most)
{
    const unsigned height = find_bar_height(hour.messages, most);
    std::string bar =
        "<g><title>" + name_of_hour(hour) + ": " + count_of_messages(hour.messages) + "</title>";
    if (height > 0)
        bar += std::string{"<rect class=\""} + (hour.is_present ? "bar present" : "bar") +
               "\" x=\"" + make_position(hour.place, 1) + "\" width=\"" + make_position(0, 8) +
               "\" y=\"" + std::to_string(plot_base - height) + "\" height=\"" +
               std::to_string(height) + "\" rx=\"2\" />";
    bar += make_text(hour.is_peak ? "value peak" : "value", hour.place,
                     plot_base - height - number_gap, web_short_number(hour.messages));
    return bar + "</g>\n";
}

std::string make_label(const plot_hour& hour)
{
    const std::string clock = web_utc(hour.begin, "%H");
    const bool is_labelled = std::stoul("0" + clock) % hours_per_label == 0;
    return make_text(is_labelled ? "hour" : "hour between", hour.place, label_line, clock) + '\n';
}

std::string make_description(const std::vector<plot_hour>& hours, std::uint64_t sum)
{
    const auto peak = std::ranges::find(hours, true, &plot_hour::is_peak);
    if (peak == hours.end())
        return "There were no messages.";
    return count_of_messages(sum) + " in all. Busiest hour: " + name_of_hour(*peak) + " with " +
           web_number(peak->messages) + '.';
}

std::string make_table(const std::vector<plot_hour>& hours)
{
    std::vector<table_row> rows;
    for (auto hour = hours.rbegin(); hour != hours.rend(); ++hour)
        rows.push_back({.cells = {web_utc(hour->begin, "%Y-%m-%d"), name_of_hour(*hour),
                                  web_number(hour->messages)}});
    return "<details><summary>The same as numbers</summary>\n" +
           status_table({{"Day"}, {"Hour"}, {"Messages", true}}, rows) + "</details>\n";
}

} // namespace

std::string day_plot(const server_report& report)
{
    const std::vector<plot_hour> hours = make_hours(report);
    const std::uint64_t most = *std::ranges::max_element(report.hourly);
    const auto sum = std::accumulate(report.hourly.begin(), report.hourly.end(), std::uint64_t{0});
    std::string figure =
        "<svg class=\"plot\" role=\"img\" aria-labelledby=\"plot-title plot-description\" "
        "xmlns=\"http://www.w3.org/2000/svg\" width=\"100%\" height=\"" +
        std::to_string(plot_height) +
        "\">\n<title id=\"plot-title\">Messages of the last 24 hours</title>\n"
        "<desc id=\"plot-description\">" +
        make_description(hours, sum) + "</desc>\n";
    for (const plot_hour& hour : hours)
        figure += make_bar(hour, most);
    const std::string base = std::to_string(plot_base);
    figure +=
        "<line class=\"base\" x1=\"0\" x2=\"100%\" y1=\"" + base + "\" y2=\"" + base + "\" />\n";
    for (const plot_hour& hour : hours)
        figure += make_label(hour);
    return figure + "</svg>\n<p class=\"note\">" + make_description(hours, sum) +
           " The dashed bar is the present hour.</p>\n" + make_table(hours);
}

} // namespace tovrik
