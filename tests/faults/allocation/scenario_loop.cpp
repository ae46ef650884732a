// scenario_loop.cpp - see scenario_loop.hpp.
#include "faults/allocation/scenario_loop.hpp"

#include "faults/allocation/known_faults.hpp"
#include "faults/allocation/scenario_run.hpp"
#include "support/patience.hpp"
#include "support/temp_home.hpp"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <poll.h>
#include <set>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr std::chrono::milliseconds run_limit = default_patience;
constexpr rlimit run_processor_limit = {1, 2}; // seconds; a run that hangs uses them up
constexpr int poll_limit_ms = 50;
constexpr std::size_t max_kinds_told = 40;
constexpr int failed_start_status = 255;
constexpr std::size_t result_bytes = 256UL * 1024;
constexpr std::string_view leave_sequence = "\033[?1049l"; // restores the shell's screen
constexpr std::string_view enter_sequence = "\033[?1049h";
constexpr std::string_view config_begin =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<clientconf version=\"1.02\">\n";
constexpr std::string_view config_end = "</clientconf>\n";

constexpr std::string_view start_errors[] = {
    "Error creating servercollection\n",
    "Unable to init ncurses library\n",
    "Unable to init ncurses windows\n",
};

/// The runs with the same failure.
struct failing_runs {
    std::string first;
    int count = 0;
};

/// What all runs of a scenario share.
struct loop {
    const scenario& which;
    temp_home home;
    client_rig rig{};
    terminal_pair terminal;
    termios shell_modes = terminal.modes();
    termios run_modes = shell_modes; // at the beginning of a run
    run_report* report = nullptr;    // shared with the run
    int error_fd = -1;
    std::string config{};
    std::vector<known_leak> leaks = known_leaks_read();
    std::vector<known_crash> crashes = known_crashes_read();
    std::set<std::string> crashes_seen{};
    scenario_result result{};
    std::map<std::string, failing_runs> failures{}; // by the failure
};

/// A run as seen from outside.
struct finished_run {
    int status = 0;
    std::string output;
    std::string error_text;
};

void* map_shared_memory(std::size_t size)
{
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("cannot share memory");
        std::abort();
    }
    return memory;
}

void add_failure(loop& all, const std::string& name, const std::string& what)
{
    failing_runs& runs = all.failures[what];
    if (runs.count++ == 0)
        runs.first = name;
}

std::string format_failures(const loop& all)
{
    std::string text;
    std::size_t told = 0;
    for (const auto& [what, runs] : all.failures) {
        if (++told > max_kinds_told)
            return text + "and more";
        text += runs.first + ", " + std::to_string(runs.count) + " runs: " + what + '\n';
    }
    return text;
}

std::string read_error_text(int fd)
{
    char bytes[4096];
    const ssize_t length = pread(fd, bytes, sizeof bytes, 0);
    return {bytes, static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

/// Waits until the run has ended, and empties the terminal meanwhile.
void wait_for_run(const loop& all, pid_t process, finished_run& run)
{
    const unique_fd process_fd{static_cast<int>(syscall(SYS_pidfd_open, process, 0))};
    pollfd watched[] = {{process_fd.get(), POLLIN, 0}, {all.terminal.screen_fd(), POLLIN, 0}};
    const auto deadline = std::chrono::steady_clock::now() + run_limit;
    while (waitpid(process, &run.status, WNOHANG) == 0) {
        static_cast<void>(poll(watched, 2, poll_limit_ms));
        all.terminal.drain(run.output);
        if (std::chrono::steady_clock::now() > deadline)
            kill(process, SIGKILL);
    }
    all.terminal.drain_whole(run.output);
}

finished_run play_run(loop& all, failure_plan plan, long nth)
{
    finished_run run;
    all.home.write_config(all.config);
    all.terminal.restore(all.run_modes);
    static_cast<void>(ftruncate(all.error_fd, 0) == 0);
    new (all.report) run_report{};
    const pid_t process = fork();
    if (process == 0) {
        dup2(all.error_fd, STDERR_FILENO);
        lseek(STDERR_FILENO, 0, SEEK_SET);
        crashes_report_to(all.report->crash);
        setrlimit(RLIMIT_CPU, &run_processor_limit);
        scenario_run(all.rig, all.which, plan, nth, all.shell_modes, *all.report);
    }
    wait_for_run(all, process, run);
    run.error_text = read_error_text(all.error_fd);
    return run;
}

std::string make_run_name(failure_plan plan, long nth)
{
    if (plan == failure_plan::none)
        return "without failures";
    return "allocation " + std::to_string(nth) +
           (plan == failure_plan::once ? " failing once" : " and all later ones failing");
}

/// Whether the client restored the terminal although it was killed. Under the address sanitizer,
/// the sanitizer's handlers replace its own.
bool is_given_back([[maybe_unused]] const loop& all, [[maybe_unused]] const finished_run& run)
{
#if defined(__SANITIZE_ADDRESS__)
    return true;
#else
    const termios found = all.terminal.modes();
    const bool took_screen = run.output.find(enter_sequence) != std::string::npos;
    const bool gave_back = run.output.find(leave_sequence) != std::string::npos;
    return std::memcmp(&found, &all.shell_modes, sizeof found) == 0 && (gave_back || !took_screen);
#endif
}

std::vector<frame_name> find_names(const block_origin& origin)
{
    return frame_names({origin.frames, static_cast<std::size_t>(origin.depth)});
}

/// The place in a library where a failed allocation is known to end the program.
const known_crash* find_known_crash(const loop& all)
{
    const std::size_t count = std::min(all.report->failure_count, reported_failures);
    for (const block_origin& failed : std::span{all.report->failures, count}) {
        const std::string place = library_place(find_names(failed));
        const auto known = std::ranges::find_if(all.crashes, [&](const known_crash& crash) {
            return crash.scenario == all.which.name && crash.place == place;
        });
        if (known != all.crashes.end())
            return &*known;
    }
    return nullptr;
}

/// A run that did not reach its end.
void judge_crash(loop& all, const std::string& name, const finished_run& run)
{
    const bool is_hanging = all.report->crash.depth == 0;
    if (!is_hanging && !is_given_back(all, run))
        add_failure(all, name, "ended by a library, and the terminal is not given back");
    if (const known_crash* known = find_known_crash(all); known != nullptr) {
        ++all.result.library_crashes;
        all.crashes_seen.insert(known->place);
        return;
    }
    const crash_report& crash = all.report->crash;
    std::string what =
        "ended, wait status " + std::to_string(run.status) + ' ' + run.error_text + '\n' +
        frames_text(frame_names({crash.frames, static_cast<std::size_t>(crash.depth)}));
    if (all.report->failure_count > 0) {
        const std::size_t last = (all.report->failure_count - 1) % reported_failures;
        const auto failed = find_names(all.report->failures[last]);
        what = "after an allocation of " + library_place(failed) + '\n' + frames_text(failed) +
               "    " + what;
    }
    add_failure(all, name, what);
}

void judge_leaks(loop& all, const std::string& name)
{
    const run_report& report = *all.report;
    const std::size_t count = std::min(report.leak_count, reported_leaks);
    if (report.leak_count > count)
        add_failure(all, name, "more blocks lost than there is room to report");
    for (const lost_block& block : std::span{report.leaks, count}) {
        const auto frames = find_names(block.origin);
        if (!is_known_leak(all.leaks, frames))
            add_failure(all, name,
                        std::to_string(block.size_bytes) + " bytes lost of\n" +
                            frames_text(frames));
    }
}

bool has_part(std::string_view text, const std::string& part)
{
    return text.find(part) != std::string_view::npos;
}

/// Whether a configuration is complete; its servers are numbered from 1.
bool is_whole_config(std::string_view text)
{
    bool is_whole = text.starts_with(config_begin) && text.ends_with(config_end);
    for (int number = 1; has_part(text, "    <Server" + std::to_string(number) + ">\n"); ++number)
        is_whole = is_whole &&
                   has_part(text, "</UseEMail>\n    </Server" + std::to_string(number) + ">\n");
    return is_whole;
}

/// The configuration must be the old one, or a complete new one.
void judge_config(loop& all, const std::string& name)
{
    const std::string found = all.home.read_config().value_or("(none)");
    if (found != all.config && !is_whole_config(found))
        add_failure(all, name, "the configuration is damaged:\n" + found);
    for (const std::string& file : all.home.files()) {
        if (file.starts_with("ncursesclient.conf."))
            add_failure(all, name, file + " is left behind");
    }
}

/// A client that cannot run says why in one line, and restores a terminal that it took, except
/// after a failed window.
void judge_failed_start(loop& all, const std::string& name, const finished_run& run)
{
    const auto* line = std::ranges::find(start_errors, run.error_text);
    if (line == std::end(start_errors) || WEXITSTATUS(run.status) != failed_start_status)
        return add_failure(all, name,
                           "status " + std::to_string(WEXITSTATUS(run.status)) + " after \"" +
                               run.error_text + "\"");
    const bool took_screen = run.output.find(enter_sequence) != std::string::npos;
    const bool gave_back = run.output.find(leave_sequence) != std::string::npos;
    if (line != std::end(start_errors) - 1 && took_screen != gave_back)
        add_failure(all, name, "the screen is not given back after \"" + run.error_text + "\"");
}

void judge_run(loop& all, failure_plan plan, long nth, const finished_run& run)
{
    const std::string name = make_run_name(plan, nth);
    const run_report& report = *all.report;
    if (!report.is_over)
        return judge_crash(all, name, run);
    if (report.complaints[0] != '\0')
        add_failure(all, name, report.complaints);
    judge_leaks(all, name);
    judge_config(all, name);
    if (!report.has_started)
        return judge_failed_start(all, name, run);
    if (run.output.find(leave_sequence) == std::string::npos)
        add_failure(all, name, "the screen is not given back");
    if (!run.error_text.empty())
        add_failure(all, name, "on standard error: " + run.error_text);
}

bool play_once(loop& all, failure_plan plan, long nth)
{
    const finished_run run = play_run(all, plan, nth);
    ++all.result.runs;
    judge_run(all, plan, nth, run);
    return all.report->has_failed || !all.report->is_over;
}

void play_all_runs(loop& all)
{
    play_once(all, failure_plan::none, 0);
    all.result.allocations = all.report->counted;
    if ((all.result.allocations > 0) != all.which.allocates)
        add_failure(all, "the scenario", std::to_string(all.result.allocations) + " allocations");
    for (const failure_plan plan : {failure_plan::once, failure_plan::from_then_on}) {
        for (long nth = 1; play_once(all, plan, nth);)
            ++nth;
    }
    for (const known_crash& known : all.crashes) {
        if (known.must_happen && known.scenario == all.which.name &&
            !all.crashes_seen.contains(known.place))
            add_failure(all, "the scenario", "no longer crashes: " + known.place);
    }
}

void begin_client(loop& all)
{
    allocations_are_clients(true);
    if (!rig_start())
        add_failure(all, "the scenario", "the client does not start");
    allocations_are_clients(false);
}

void set_environment(const temp_home& home)
{
    setenv("HOME", home.path().c_str(), 1);
    setenv("TERM", "screen-256color", 1);
    setenv("TZ", "UTC", 1);
    unsetenv("LINES");
    unsetenv("COLUMNS");
    static_cast<void>(chdir(home.path().c_str()) == 0);
}

std::string make_directory_answer()
{
    std::string answer = "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n";
    for (int number = 0; number < 12; ++number)
        answer += "server" + std::to_string(number) +
                  ".example\t2202\tthird\tFrankfurt\ton the hill\tsixth\talias" +
                  std::to_string(number) + "\teighth\tninth\n";
    return answer;
}

scenario_result run_loop(const scenario& which)
{
    loop all{.which = which, .home = {}, .terminal = {}};
    all.report = static_cast<run_report*>(map_shared_memory(sizeof(run_report)));
    all.error_fd = memfd_create("standard error", MFD_CLOEXEC);
    crashes_report_to(all.report->crash);
    set_environment(all.home);
    all.home.make_folder("logs");
    all.home.write_file("ncursesclient.hlp", "A line of help.\nAnd another.\n");
    rig_listen(all.rig);
    all.rig.directory_answer = make_directory_answer();
    if (which.packets != nullptr)
        all.rig.packets = which.packets();
    all.config = rig_config(all.rig, which.stage == rig_stage::not_started);
    all.home.write_config(all.config);
    if (which.stage != rig_stage::not_started)
        begin_client(all);
    all.run_modes = all.terminal.modes();
    play_all_runs(all);
    all.result.failures = format_failures(all);
    static_cast<void>(chdir("/") == 0);
    return all.result;
}

/// The result in the form in which one process passes it to the other.
struct shared_result {
    long allocations;
    long runs;
    long library_crashes;
    char failures[result_bytes];
};

} // namespace

scenario_result scenario_loop(const scenario& which)
{
    auto* shared = static_cast<shared_result*>(map_shared_memory(sizeof(shared_result)));
    std::fflush(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        const scenario_result result = run_loop(which);
        shared->allocations = result.allocations;
        shared->runs = result.runs;
        shared->library_crashes = result.library_crashes;
        result.failures.copy(shared->failures, result_bytes - 1);
        _exit(0);
    }
    int status = 0;
    waitpid(process, &status, 0);
    scenario_result result{shared->allocations, shared->runs, shared->library_crashes,
                           shared->failures};
    if (status != 0)
        result.failures += "the scenario's own process ended with status " + std::to_string(status);
    munmap(shared, sizeof(shared_result));
    return result;
}
