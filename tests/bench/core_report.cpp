// core_report.cpp - see core_report.hpp.
#include "bench/core_report.hpp"

#include "bench/comparison_table.hpp"
#include "bench/config_bench.hpp"
#include "bench/directory_bench.hpp"
#include "bench/hostile_bench.hpp"
#include "bench/poll_bench.hpp"
#include "bench/sample_traffic.hpp"
#include "bench/transmission_bench.hpp"
#include "bench/xml_bench.hpp"
#include "bench/xml_readers.hpp"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace
{

std::optional<double> find_figure(const core_figures& figures, const std::string& name)
{
    const auto found = figures.find(name);
    return found != figures.end() ? median(found->second) : std::nullopt;
}

const char* judge(bool is_reached)
{
    return is_reached ? "reached" : "**missed**";
}

/// How many times our reader's time another reader must take, at least.
struct reader_goal {
    std::string_view reader;
    double min_ratio;
};

constexpr reader_goal reader_goals[] = {
    {"rapidxml", 1}, {"pugixml", 1}, {"tinyxml2", 3}, {"libxml2", 6}, {"expat", 6},
};

void write_reader_row(std::FILE* file, const core_figures& figures, const std::string& size,
                      const xml_reader& reader)
{
    const std::string place = xml_bench_name + size + "/";
    const auto own = find_figure(figures, place + xml_readers()[0].name);
    const auto other = find_figure(figures, place + reader.name);
    if (!own || !other)
        return;
    std::fprintf(file, "| %s | %s | %.2f | %.2f | ", size.c_str(), reader.name, *other,
                 *other / *own);
    for (const reader_goal& goal : reader_goals) {
        if (goal.reader == reader.name)
            std::fprintf(file, "at least %g: %s", goal.min_ratio,
                         judge(*other / *own >= goal.min_ratio));
    }
    std::fputs(" |\n", file);
}

void write_readers(std::FILE* file, const core_figures& figures)
{
    std::fputs(
        "\n### Reading a transmission and copying 16 values out of it\n\n"
        "All readers found the same values before they were measured. The ratio is "
        "a reader's time divided by ours. The fastest reader leaves all texts where they are "
        "in its copy of the document. Ours gives each element its whole path and copies of its "
        "texts, since that is what the client looks for and keeps.\n\n"
        "| document | reader | us | ratio | goal |\n|---|---|--:|--:|---|\n",
        file);
    for (const sample_document& sample : sample_documents()) {
        for (const xml_reader& reader : xml_readers())
            write_reader_row(file, figures, sample.size, reader);
    }
}

constexpr const char* step_names[] = {"inflate", "pass", "parse", "template", "log", "screen"};

void write_steps_row(std::FILE* file, const core_figures& figures, const char* size)
{
    std::fprintf(file, "| %s |", size);
    for (const char* step : step_names) {
        const std::string name = std::string{transmission_step_name} + step + "/" + size;
        std::fprintf(file, " %.2f |", find_figure(figures, name).value_or(0));
    }
    std::fputs("\n", file);
}

/// The time that every client needs: inflating, looking at each byte, writing the log and the
/// screen.
double sum_unavoidable_us(const core_figures& figures, const std::string& size, bool is_compressed)
{
    const std::string step = transmission_step_name;
    double sum = is_compressed ? find_figure(figures, step + "inflate/" + size).value_or(0) : 0;
    for (const char* name : {"pass/", "log/", "screen/"})
        sum += find_figure(figures, step + name + size).value_or(0);
    return sum;
}

void write_path_row(std::FILE* file, const core_figures& figures, const std::string& kind,
                    const std::string& size)
{
    constexpr double max_ratio = 2;
    const auto measured = find_figure(figures, transmission_path_name + kind + "/" + size);
    const double unavoidable = sum_unavoidable_us(figures, size, kind != "plain");
    if (!measured || unavoidable <= 0)
        return;
    std::fprintf(file, "| %s, %s | %.1f | %.1f | %.2f | ", kind.c_str(), size.c_str(), *measured,
                 unavoidable, *measured / unavoidable);
    if (kind == "with_statistics")
        std::fputs("none: draws three more boxes |\n", file);
    else
        std::fprintf(file, "at most %g: %s |\n", max_ratio,
                     judge(*measured / unavoidable <= max_ratio));
}

void write_paths(std::FILE* file, const core_figures& figures)
{
    std::fputs("\n### One transmission, from the packet to the log and the screen\n\n"
               "Steps, in microseconds of CPU:\n\n"
               "| document | inflate | one pass | parse | fill template | log | screen |\n"
               "|---|--:|--:|--:|--:|--:|--:|\n",
               file);
    for (const sample_document& sample : sample_documents())
        write_steps_row(file, figures, sample.size);
    std::fputs("\nThe total, compared with the sum of inflate, one pass, log and screen:\n\n"
               "| transmission | us | unavoidable us | ratio | goal |\n|---|--:|--:|--:|---|\n",
               file);
    for (const char* kind : {"plain", "compressed", "with_statistics"}) {
        for (const sample_document& sample : sample_documents())
            write_path_row(file, figures, kind, sample.size);
    }
}

void write_hostile_packets(std::FILE* file, const core_figures& figures)
{
    constexpr double max_ms = 10;
    const std::string prefix = hostile_bench_name;
    std::fputs("\n### One hostile packet\n\n| packet | ms of CPU | goal |\n|---|--:|---|\n", file);
    for (const auto& [name, values] : figures) {
        if (!name.starts_with(prefix))
            continue;
        const double taken_ms = median(values).value_or(0) / 1'000;
        std::fprintf(file, "| %s | %.2f | at most %g: %s |\n", name.c_str() + prefix.size(),
                     taken_ms, max_ms, judge(taken_ms <= max_ms));
    }
}

/// A function whose cost grows with a number, and its limit at one such number.
struct growing_piece {
    const char* name;
    const char* what;
    const char* clock;
    std::int64_t goal_count;
    double goal_us;
};

constexpr growing_piece growing_pieces[] = {
    {config_load_name, "loading the configuration, by servers", "CPU", 10'000, 50'000},
    {config_save_name, "saving it, synced to the disk, by servers", "wall", 0, 0},
    {directory_bench_name, "fetching and merging a directory, by lines", "wall", 100'000,
     1'000'000},
    {poll_idle_name, "a poll cycle over silent connections, by connections", "CPU", 1'000, 5'000},
    {poll_sending_name, "a poll cycle in which each brings 1 kB, by connections", "wall", 0, 0},
};

struct growth_point {
    std::int64_t count;
    double us;
};

/// The figures of one function, by rising argument.
std::vector<growth_point> find_growth(const core_figures& figures, const std::string& name)
{
    std::map<std::int64_t, double> points;
    for (const auto& [key, values] : figures) {
        if (key.starts_with(name + "/"))
            points[std::strtoll(key.c_str() + name.size() + 1, nullptr, 10)] =
                median(values).value_or(0);
    }
    std::vector<growth_point> growth;
    for (const auto& [count, us] : points)
        growth.push_back({count, us});
    return growth;
}

/// The slope between the two largest arguments, where constant costs weigh least.
double find_exponent(const std::vector<growth_point>& growth)
{
    const growth_point& last = growth[growth.size() - 1];
    const growth_point& former = growth[growth.size() - 2];
    return std::log(last.us / former.us) /
           std::log(static_cast<double>(last.count) / static_cast<double>(former.count));
}

void write_growth(std::FILE* file, const core_figures& figures, const growing_piece& piece)
{
    const std::vector<growth_point> growth = find_growth(figures, piece.name);
    if (growth.size() < 2)
        return;
    std::fprintf(file, "| %s | %s |", piece.what, piece.clock);
    const char* separator = " ";
    for (const growth_point& point : growth) {
        std::fprintf(file, "%s%lld: %.4g", separator, static_cast<long long>(point.count),
                     point.us / 1'000);
        separator = "; ";
    }
    std::fprintf(file, " | %.2f | ", find_exponent(growth));
    for (const growth_point& point : growth) {
        if (point.count == piece.goal_count)
            std::fprintf(file, "%lld under %g ms: %s", static_cast<long long>(point.count),
                         piece.goal_us / 1'000, judge(point.us < piece.goal_us));
    }
    std::fputs(" |\n", file);
}

/// Whether a run ended with an error. Versions of the library differ in how they say so.
template <typename run_record> bool is_failed(const run_record& run)
{
    if constexpr (requires { run.error_occurred; })
        return run.error_occurred;
    else
        return run.skipped != decltype(run.skipped){};
}

} // namespace

void figure_keeper::ReportRuns(const std::vector<Run>& runs)
{
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        failed = failed || is_failed(run);
        if (run.run_type != Run::RT_Iteration)
            continue;
        const bool by_wall_clock = !run.run_name.time_type.empty();
        std::string name = run.run_name.function_name;
        if (!run.run_name.args.empty())
            name.append("/").append(run.run_name.args);
        kept[name].push_back(by_wall_clock ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime());
    }
}

void core_report_write(std::FILE* file, const core_figures& figures)
{
    write_readers(file, figures);
    write_paths(file, figures);
    write_hostile_packets(file, figures);
    std::fputs("\n### How cost grows\n\n"
               "Milliseconds, and the growth exponent between the two largest numbers (1 "
               "means linear).\n\n"
               "| piece | clock | number: ms | exponent | goal |\n|---|---|---|--:|---|\n",
               file);
    for (const growing_piece& piece : growing_pieces)
        write_growth(file, figures, piece);
}
