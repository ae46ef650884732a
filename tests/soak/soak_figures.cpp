// soak_figures.cpp - see soak_figures.hpp.
#include "soak/soak_figures.hpp"

#include "bench/process_figures.hpp"
#include "e2e/network_session.hpp"
#include "support/patience.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <sstream>

namespace
{

namespace fs = std::filesystem;

constexpr double max_span_hours = 1;

int count_entries(const std::string& folder)
{
    std::error_code failure;
    const fs::directory_iterator all{folder, failure};
    return failure ? 0 : static_cast<int>(std::distance(begin(all), end(all)));
}

/// The resident part of the mapping named [heap].
double read_heap_kb(const std::string& process_folder)
{
    std::ifstream file{process_folder + "/smaps"};
    bool is_heap = false;
    for (std::string line; std::getline(file, line);) {
        if (line.find('-') < line.find(' '))
            is_heap = line.ends_with("[heap]");
        double kb = 0;
        std::string label;
        if (is_heap && line.starts_with("Rss:") && std::istringstream{line} >> label >> kb)
            return kb;
    }
    return 0;
}

const soak_sample& find_least(const std::vector<soak_sample>& samples, double begin, double end)
{
    const auto key = [&](const soak_sample& sample) {
        const bool is_within = sample.hours >= begin && sample.hours <= end;
        return is_within ? sample.resident_kb : std::numeric_limits<double>::infinity();
    };
    return *std::ranges::min_element(samples, {}, key);
}

bool has_same_counts(const soak_sample& one, const soak_sample& other)
{
    return one.descriptors == other.descriptors && one.threads == other.threads &&
           one.children == other.children;
}

bool has_sanitizer()
{
    return patience_factor() > 1;
}

} // namespace

soak_sample soak_sample_of(pid_t process)
{
    const std::string folder = "/proc/" + std::to_string(process);
    const memory_use memory = memory_of({&process, 1}).value_or(memory_use{});
    return {.resident_kb = memory.resident,
            .proportional_kb = memory.proportional,
            .heap_kb = read_heap_kb(folder),
            .descriptors = count_entries(folder + "/fd"),
            .threads = count_entries(folder + "/task"),
            .children = static_cast<int>(children_of(process).size())};
}

std::string soak_sample_line(const soak_sample& sample)
{
    char line[160];
    std::snprintf(line, sizeof line,
                  "%7.2f h: %6.0f kB resident, %6.0f kB proportional, %6.0f kB heap, "
                  "%3d descriptors, %d threads, %d children",
                  sample.hours, sample.resident_kb, sample.proportional_kb, sample.heap_kb,
                  sample.descriptors, sample.threads, sample.children);
    return line;
}

testing::AssertionResult nothing_has_grown(const std::vector<soak_sample>& samples)
{
    if (samples.size() < 2)
        return testing::AssertionFailure() << "there are not two samples to compare";
    const double end = samples.back().hours;
    const double length = end - samples.front().hours;
    const double begin = samples.front().hours + std::min(max_span_hours, length / 6);
    const double span = std::min(max_span_hours, length / 3);
    const soak_sample& first = find_least(samples, begin, begin + span);
    const soak_sample& last = find_least(samples, end - span, end);
    const bool is_same = std::ranges::all_of(
        samples, [&](const soak_sample& sample) { return has_same_counts(sample, first); });
    const bool is_small =
        has_sanitizer() || last.resident_kb <= first.resident_kb + tolerated_growth_kb;
    if (is_same && is_small && first.descriptors > 0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the client has grown\nfrom " << soak_sample_line(first)
                                       << "\nto   " << soak_sample_line(last);
}
