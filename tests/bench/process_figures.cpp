// process_figures.cpp - see process_figures.hpp.
#include "bench/process_figures.hpp"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

namespace
{

namespace fs = std::filesystem;

fs::path folder_of(pid_t process)
{
    return fs::path{"/proc"} / std::to_string(process);
}

/// The number behind `label` at the start of a line; none if there is no such line.
std::optional<double> labelled_number(const fs::path& path, const std::string& label)
{
    std::ifstream file{path};
    for (std::string word; file >> word;) {
        double number = 0;
        if (word == label && file >> number)
            return number;
        file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    return std::nullopt;
}

std::optional<double> wake_ups_of(pid_t process)
{
    double sum = 0;
    std::error_code failure;
    for (const fs::directory_entry& task :
         fs::directory_iterator{folder_of(process) / "task", failure}) {
        const std::optional<double> of_task =
            labelled_number(task.path() / "status", "voluntary_ctxt_switches:");
        if (!of_task)
            return std::nullopt;
        sum += *of_task;
    }
    return failure ? std::nullopt : std::optional{sum};
}

} // namespace

std::optional<memory_use> memory_of(pid_t process)
{
    // The VmRSS of the status file lags behind by up to 64 pages; this one is counted anew.
    const fs::path path = folder_of(process) / "smaps_rollup";
    const std::optional<double> resident = labelled_number(path, "Rss:");
    const std::optional<double> proportional = labelled_number(path, "Pss:");
    if (!resident || !proportional)
        return std::nullopt;
    return memory_use{*resident, *proportional};
}

std::optional<work_done> work_of(pid_t process)
{
    clockid_t clock = 0;
    timespec used = {};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &used) != 0)
        return std::nullopt;
    const std::optional<double> wake_ups = wake_ups_of(process);
    if (!wake_ups)
        return std::nullopt;
    return work_done{static_cast<double>(used.tv_sec) * 1e3 +
                         static_cast<double>(used.tv_nsec) / 1e6,
                     *wake_ups};
}
