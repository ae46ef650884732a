// program_measures.cpp - see program_measures.hpp.
#include "bench/program_measures.hpp"

#include "bench/measured_program.hpp"
#include "bench/server_park.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <string>
#include <thread>

namespace
{

std::nullopt_t fail(const char* program, const char* what)
{
    std::fprintf(stderr, "bench_programs: %s %s\n", program, what);
    return std::nullopt;
}

/// A home for each of the programs, prepared for it.
std::deque<temp_home> prepare_homes(const std::vector<compared_program>& programs)
{
    std::deque<temp_home> homes(programs.size());
    for (std::size_t at = 0; at < programs.size(); ++at)
        if (programs[at].prepare != nullptr)
            programs[at].prepare(homes[at]);
    return homes;
}

bool start_measure(const compared_program& program, const std::string& home, start_figures& figures)
{
    measured_program running{program.command, home};
    const std::optional<first_screen> screen = running.wait_for_screen(program.last_text);
    const std::vector<pid_t> processes = running.processes();
    const std::optional<work_done> work = work_of(processes);
    const std::optional<memory_use> memory = memory_of(processes);
    if (!screen || !work || !memory)
        return false;
    figures.first_screen_ms.push_back(screen->ms);
    figures.first_screen_cpu_ms.push_back(work->cpu_ms);
    figures.first_screen_bytes.push_back(static_cast<double>(screen->bytes));
    figures.resident_kb.push_back(memory->resident);
    figures.proportional_kb.push_back(memory->proportional);
    return running.leave(program.end_keys);
}

/// An idle program, with the work that it had done when the idle time began.
struct idle_program {
    idle_program(const compared_program& measured, const std::string& home)
        : program(measured), running(measured.command, home)
    {
    }

    bool begin()
    {
        before = work_of(running.processes());
        return before.has_value();
    }
    bool end()
    {
        const std::vector<pid_t> processes = running.processes();
        const std::optional<work_done> after = work_of(processes);
        const std::optional<memory_use> memory = memory_of(processes);
        if (!after || !memory)
            return false;
        figures = {{after->cpu_ms - before->cpu_ms, after->wake_ups - before->wake_ups}, *memory};
        return true;
    }

    const compared_program& program;
    measured_program running;
    std::optional<work_done> before{};
    idle_figures figures{};
};

using idle_programs = std::deque<idle_program>;

/// Asks each in turn; false, with a line on standard error, if one refuses.
template <typename question>
bool ask_all(idle_programs& programs, const char* refusal, question ask)
{
    return std::ranges::all_of(programs, [&](idle_program& each) {
        const bool agrees = ask(each);
        if (!agrees)
            fail(each.program.name, refusal);
        return agrees;
    });
}

bool measure_idle_time(idle_programs& all, int seconds)
{
    if (!ask_all(all, "does not tell what it has done", [](auto& each) { return each.begin(); }))
        return false;
    std::this_thread::sleep_for(std::chrono::seconds{seconds});
    return ask_all(all, "did not stay", [](auto& each) { return each.end(); }) &&
           ask_all(all, "does not end as it should",
                   [](auto& each) { return each.running.leave(each.program.end_keys); });
}

} // namespace

std::vector<compared_program> working_programs(const std::vector<compared_program>& programs)
{
    const std::deque<temp_home> homes = prepare_homes(programs);
    std::vector<compared_program> working;
    for (std::size_t at = 0; at < programs.size(); ++at) {
        start_figures unused;
        if (start_measure(programs[at], homes[at].path(), unused))
            working.push_back(programs[at]);
        else
            fail(programs[at].name, "does not start or end as it should, left out");
    }
    return working;
}

std::optional<std::vector<start_figures>>
measure_starts(const std::vector<compared_program>& programs, int repetitions)
{
    const std::deque<temp_home> homes = prepare_homes(programs);
    std::vector<start_figures> measured(programs.size());
    std::vector<start_figures> warming(programs.size());
    // The first start of each brings its files into memory, and creates those that it needs.
    for (int repetition = 0; repetition <= repetitions; ++repetition) {
        std::vector<start_figures>& figures = repetition == 0 ? warming : measured;
        for (std::size_t at = 0; at < programs.size(); ++at)
            if (!start_measure(programs[at], homes[at].path(), figures[at]))
                return fail(programs[at].name, "does not start or end as it should");
    }
    return measured;
}

std::optional<idle_comparison> measure_idle(const std::vector<compared_program>& programs,
                                            int connections, int seconds)
{
    const std::deque<temp_home> homes = prepare_homes(programs);
    server_park park{connections};
    const temp_home connected_home;
    connected_home.write_config(config_of(ports_of(park)));
    idle_programs all;
    for (std::size_t at = 0; at < programs.size(); ++at) {
        all.emplace_back(programs[at], homes[at].path());
        if (!all.back().running.wait_for_screen(programs[at].last_text))
            return fail(programs[at].name, "does not start as it should");
    }
    const compared_program& client = programs[client_column];
    measured_program& connected = all.emplace_back(client, connected_home.path()).running;
    if (!connected.wait_for_screen(station_name(std::min(connections, visible_servers))) ||
        !connect_all(park, connected))
        return fail(client.name, "does not connect as it should");
    if (!measure_idle_time(all, seconds))
        return std::nullopt;
    idle_comparison measured;
    for (std::size_t at = 0; at < programs.size(); ++at)
        measured.programs.push_back(all[at].figures);
    measured.connected_client = all.back().figures;
    return measured;
}
