// process_figures.cpp - see process_figures.hpp.
#include "bench/process_figures.hpp"

#include <charconv>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <system_error>

namespace
{

namespace fs = std::filesystem;

fs::path make_folder(pid_t process)
{
    return fs::path{"/proc"} / std::to_string(process);
}

/// The number after `label` at the start of a line; none if there is no such line.
std::optional<double> read_labelled_number(const fs::path& path, const std::string& label)
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

std::optional<double> read_wake_ups(pid_t process)
{
    double sum = 0;
    std::error_code failure;
    for (const fs::directory_entry& task :
         fs::directory_iterator{make_folder(process) / "task", failure}) {
        const std::optional<double> of_task =
            read_labelled_number(task.path() / "status", "voluntary_ctxt_switches:");
        if (!of_task)
            return std::nullopt;
        sum += *of_task;
    }
    return failure ? std::nullopt : std::optional{sum};
}

std::optional<double> read_cpu_ms(pid_t process)
{
    clockid_t clock = 0;
    timespec used = {};
    if (clock_getcpuclockid(process, &clock) != 0 || clock_gettime(clock, &used) != 0)
        return std::nullopt;
    return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

/// The process of a folder of /proc; none for the other folders.
std::optional<pid_t> find_process(const fs::path& folder)
{
    const std::string name = folder.filename();
    pid_t process = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (failure != std::errc{} || end != name.data() + name.size())
        return std::nullopt;
    return process;
}

bool has_variable(const fs::path& folder, const std::string& variable)
{
    std::ifstream file{folder / "environ"};
    for (std::string line; std::getline(file, line, '\0');) {
        if (line == variable)
            return true;
    }
    return false;
}

} // namespace

std::vector<pid_t> processes_at_home(const std::string& home)
{
    std::vector<pid_t> found;
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator{"/proc", failure}) {
        const std::optional<pid_t> process = find_process(entry.path());
        if (process && has_variable(entry.path(), "HOME=" + home))
            found.push_back(*process);
    }
    return found;
}

std::optional<memory_use> memory_of(std::span<const pid_t> processes)
{
    memory_use sum;
    for (const pid_t process : processes) {
        // VmRSS in the status file may be up to 64 pages behind; this one is counted each time.
        const fs::path path = make_folder(process) / "smaps_rollup";
        const std::optional<double> resident = read_labelled_number(path, "Rss:");
        const std::optional<double> proportional = read_labelled_number(path, "Pss:");
        if (!resident || !proportional)
            return std::nullopt;
        sum.resident += *resident;
        sum.proportional += *proportional;
    }
    return sum;
}

std::optional<work_done> work_of(std::span<const pid_t> processes)
{
    work_done sum;
    for (const pid_t process : processes) {
        const std::optional<double> cpu_ms = read_cpu_ms(process);
        const std::optional<double> wake_ups = read_wake_ups(process);
        if (!cpu_ms || !wake_ups)
            return std::nullopt;
        sum.cpu_ms += *cpu_ms;
        sum.wake_ups += *wake_ups;
    }
    return sum;
}
