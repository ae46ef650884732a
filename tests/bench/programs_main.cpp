// programs_main.cpp - compares the whole client with the floor and with programs in common use:
// start, memory, idle work, the cost of a message, and size.
//
// All run in the same kind of terminal on the same machine in one run. Prints a table. The status
// tells only whether the programs worked, not how fast they were.
#include "base/owners.hpp"
#include "bench/comparison_table.hpp"
#include "bench/hostile_measures.hpp"
#include "bench/message_measures.hpp"
#include "bench/program_goals.hpp"
#include "bench/program_measures.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>

namespace
{

struct options {
    int repetitions = 21;
    int idle_seconds = 60;
    int connections = 20;
    int messages = 20;
    int keys = 300;
    bool with_peers = false;
    const char* markdown = nullptr; // the file's name; null: not given
};

constexpr int max_connections = 500;

int fail_with_usage()
{
    std::fputs("Usage: bench_programs [OPTION]...\n"
               "  --repetitions N   starts of each program (21)\n"
               "  --idle-seconds N  length of the idle time (60)\n"
               "  --connections N   connections of one client in the idle time (20)\n"
               "  --messages N      messages that are shown (20)\n"
               "  --keys N          keys that are pressed beside hostile servers (300)\n"
               "  --peers           also compare with programs that people have\n"
               "  --markdown FILE   also write the tables into FILE\n",
               stderr);
    return 2;
}

int* find_number(options& wanted, const char* name)
{
    if (std::strcmp(name, "--repetitions") == 0)
        return &wanted.repetitions;
    if (std::strcmp(name, "--idle-seconds") == 0)
        return &wanted.idle_seconds;
    if (std::strcmp(name, "--connections") == 0)
        return &wanted.connections;
    if (std::strcmp(name, "--messages") == 0)
        return &wanted.messages;
    if (std::strcmp(name, "--keys") == 0)
        return &wanted.keys;
    return nullptr;
}

/// Reads an option and the value after it. False if it is not such an option.
bool read_valued_option(options& wanted, const char* name, const char* value)
{
    if (value == nullptr)
        return false;
    if (std::strcmp(name, "--markdown") == 0) {
        wanted.markdown = value;
        return true;
    }
    int* number = find_number(wanted, name);
    if (number == nullptr)
        return false;
    *number = std::atoi(value);
    return *number >= 1;
}

/// arguments: null-terminated, without the program's name.
bool read_options(options& wanted, char** arguments)
{
    for (; *arguments != nullptr; ++arguments) {
        if (std::strcmp(*arguments, "--peers") == 0) {
            wanted.with_peers = true;
            continue;
        }
        if (!read_valued_option(wanted, arguments[0], arguments[1]))
            return false;
        ++arguments;
    }
    return wanted.connections <= max_connections;
}

/// Adds a row with the figures that `figure_of` gives for each program's place.
void add_row(comparison& compared, const std::string& what, const char* unit, measure_goal goal,
             const std::function<std::optional<double>(std::size_t)>& figure_of)
{
    figure_row row{what, unit, {}};
    for (std::size_t column = 0; column < compared.columns.size(); ++column)
        row.figures.push_back(figure_of(column));
    goal_add(compared, row, goal);
    compared.rows.push_back(row);
}

void add_starts(comparison& compared, const std::vector<start_figures>& starts)
{
    using figures_field = std::vector<double> start_figures::*;
    const auto add = [&](const char* what, const char* unit, measure_goal goal,
                         figures_field field) {
        add_row(compared, what, unit, goal,
                [&](std::size_t column) { return median(starts[column].*field); });
    };
    add("first full screen", "ms", measure_goal::near_floor_leaner,
        &start_figures::first_screen_ms);
    add("CPU for it", "ms", measure_goal::none, &start_figures::first_screen_cpu_ms);
    add("written for it", "bytes", measure_goal::none, &start_figures::first_screen_bytes);
    add("resident memory at rest", "kB", measure_goal::near_floor_leaner,
        &start_figures::resident_kb);
    add("proportional memory at rest", "kB", measure_goal::near_floor_leaner,
        &start_figures::proportional_kb);
}

void add_idle(comparison& compared, const idle_comparison& idle, const options& wanted)
{
    const std::string during = " in " + std::to_string(wanted.idle_seconds) + " s idle";
    add_row(compared, "CPU" + during, "ms", measure_goal::near_floor,
            [&](std::size_t column) { return idle.programs[column].work.cpu_ms; });
    add_row(compared, "wake-ups" + during, "", measure_goal::none,
            [&](std::size_t column) { return idle.programs[column].work.wake_ups; });
    add_row(compared, "resident memory after it", "kB", measure_goal::near_floor,
            [&](std::size_t column) { return idle.programs[column].memory.resident; });
}

/// The same for the client with its connections, beside the floor, which can have none.
void add_connected(comparison& compared, const idle_comparison& idle, const options& wanted)
{
    const auto add = [&](const char* what, const char* unit, measure_goal goal,
                         double (*figure_of)(const idle_figures&)) {
        const std::string with =
            std::string{what} + ", " + std::to_string(wanted.connections) + " connections";
        add_row(compared, with, unit, goal, [&](std::size_t column) -> std::optional<double> {
            if (column == client_column)
                return figure_of(idle.connected_client);
            if (column == floor_column)
                return figure_of(idle.programs[column]);
            return std::nullopt;
        });
    };
    add("idle CPU", "ms", measure_goal::near_floor,
        [](const idle_figures& figures) { return figures.work.cpu_ms; });
    add("wake-ups", "", measure_goal::none,
        [](const idle_figures& figures) { return figures.work.wake_ups; });
    add("resident memory", "kB", measure_goal::near_floor,
        [](const idle_figures& figures) { return figures.memory.resident; });
}

void add_messages(comparison& compared, const message_figures& messages)
{
    add_row(compared, "written for a message", "bytes", measure_goal::none,
            [&](std::size_t column) { return median(messages.written_bytes[column]); });
    char note[160];
    std::snprintf(note, sizeof note,
                  "A message is what the client makes of a transmission: %.0f lines, %.0f bytes "
                  "of text (medians of %zu different ones).",
                  median(messages.text_lines).value_or(0), median(messages.text_bytes).value_or(0),
                  messages.text_bytes.size());
    compared.notes.emplace_back(note);
}

double find_percentile(std::vector<double> values, std::size_t percent)
{
    std::ranges::sort(values);
    return values[(values.size() * percent + 99) / 100 - 1];
}

void add_keys(comparison& compared, const std::vector<double>& times)
{
    const auto add = [&](const char* what, measure_goal goal, std::size_t percent) {
        add_row(compared, what, "ms", goal, [&](std::size_t column) -> std::optional<double> {
            return column == client_column ? std::optional{find_percentile(times, percent)}
                                           : std::nullopt;
        });
    };
    add("answer to a key, median", measure_goal::none, 50);
    add("answer to a key, 99th percentile", measure_goal::quick_answer, 99);
    compared.notes.push_back("Answers to keys: while " + std::to_string(hostile_servers) +
                             " servers send the most expensive packet each second, " +
                             std::to_string(times.size()) + " keys.");
}

std::optional<double> read_size_kb(const std::string& path)
{
    std::error_code failure;
    const auto bytes = std::filesystem::file_size(path, failure);
    return failure ? std::nullopt : std::optional{static_cast<double>(bytes) / 1024};
}

void add_sizes(comparison& compared, const std::vector<compared_program>& programs)
{
    add_row(compared, "program file, stripped", "kB", measure_goal::small_file,
            [&](std::size_t column) {
                return read_size_kb(column == client_column  ? CLIENT_STRIPPED
                                    : column == floor_column ? FLOOR_STRIPPED
                                                             : programs[column].command.front());
            });
}

void add_notes(comparison& compared, const std::vector<compared_program>& programs,
               const options& wanted)
{
    compared.notes.insert(
        compared.notes.begin(),
        {"Starts: medians of " + std::to_string(wanted.repetitions) +
             " interleaved starts of each program. Idle: all programs at the same time. The "
             "terminal has 24 lines of 80 columns.",
         "The client has " + std::to_string(configured_servers) +
             " configured servers. The floor is a bare curses program with the same windows and "
             "the same loop.",
         "The figures of tmux include its server, but not the program in its pane."});
    std::string versions;
    for (const std::string& version : package_versions(programs))
        versions += (versions.empty() ? "" : ", ") + version;
    if (!versions.empty())
        compared.notes.push_back("Packages: " + versions + ".");
}

/// Whether the two programs are there with which everything else is compared.
bool has_own(const std::vector<compared_program>& programs)
{
    return programs.size() > floor_column && programs[client_column].package == nullptr &&
           programs[floor_column].package == nullptr;
}

bool write_markdown(const comparison& compared, const char* name)
{
    const unique_file file{std::fopen(name, "w")};
    if (!file) {
        std::perror(name);
        return false;
    }
    comparison_write_markdown(compared, file.get());
    return true;
}

} // namespace

int main(int, char** arguments)
{
    options wanted;
    if (!read_options(wanted, arguments + 1))
        return fail_with_usage();
    const std::vector<compared_program> programs =
        working_programs(programs_to_compare(wanted.with_peers));
    if (!has_own(programs))
        return 1;
    comparison compared;
    for (const compared_program& program : programs)
        compared.columns.emplace_back(program.name);
    const auto starts = measure_starts(programs, wanted.repetitions);
    const auto idle =
        starts ? measure_idle(programs, wanted.connections, wanted.idle_seconds) : std::nullopt;
    const auto messages = idle ? measure_messages(programs, wanted.messages) : std::nullopt;
    const auto keys =
        messages ? measure_hostile_keys(programs[client_column], wanted.keys) : std::nullopt;
    if (!keys)
        return 1;
    add_starts(compared, *starts);
    add_idle(compared, *idle, wanted);
    add_connected(compared, *idle, wanted);
    add_messages(compared, *messages);
    add_keys(compared, *keys);
    add_sizes(compared, programs);
    add_notes(compared, programs, wanted);
    comparison_print(compared, stdout);
    return wanted.markdown == nullptr || write_markdown(compared, wanted.markdown) ? 0 : 1;
}
