// measured_program.cpp - see measured_program.hpp.
#include "bench/measured_program.hpp"

#include "bench/process_figures.hpp"
#include "support/patience.hpp"
#include "support/sanitizer_options.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr unsigned short rows = 24;
constexpr unsigned short columns = 80;
constexpr int cannot_start_status = 127;

/// A screen is complete when nothing follows for this long; an idle program writes nothing.
constexpr std::chrono::milliseconds screen_quiet{30};

/// The same for later output, of which a part may come only in the program's next round.
constexpr std::chrono::milliseconds later_quiet{100};

/// How often to check something that the kernel does not report.
constexpr std::chrono::milliseconds look_again{2};

std::int64_t read_clock_ns()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

std::int64_t* map_shared_number()
{
    void* place = mmap(nullptr, sizeof(std::int64_t), PROT_READ | PROT_WRITE,
                       MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return place != MAP_FAILED ? static_cast<std::int64_t*>(place) : nullptr;
}

std::vector<std::string> make_environment(const std::string& home)
{
    std::vector<std::string> environment{"TERM=screen-256color", "LC_ALL=C.UTF-8", "TZ=UTC",
                                         "PATH=/usr/bin:/bin", "HOME=" + home};
    for (const auto& [name, value] : sanitizer_environment())
        environment.push_back(std::string{name}.append("=").append(value));
    return environment;
}

/// The texts as exec takes them: a null-terminated list. The caller keeps the texts.
std::vector<char*> collect_pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Turns the forked child into the program.
[[noreturn]] void run_program(char* const* command, char* const* environment, const char* folder,
                              std::int64_t* exec_ns)
{
    if (chdir(folder) == 0) {
        *exec_ns = read_clock_ns();
        execve(command[0], command, environment);
    }
    _exit(cannot_start_status);
}

} // namespace

measured_program::measured_program(std::vector<std::string> command, const std::string& home)
    : home_path(home), stop_fd(eventfd(0, EFD_CLOEXEC)), exec_ns(map_shared_number())
{
    std::vector<std::string> environment = make_environment(home);
    const std::vector<char*> command_pointers = collect_pointers(command);
    const std::vector<char*> environment_pointers = collect_pointers(environment);
    const winsize size = {rows, columns, 0, 0};
    if (exec_ns != nullptr)
        child = forkpty(&terminal_fd, nullptr, nullptr, &size);
    if (child == 0)
        run_program(command_pointers.data(), environment_pointers.data(), home.c_str(), exec_ns);
    if (child < 0) {
        std::perror("cannot make a terminal");
        std::abort();
    }
    fcntl(terminal_fd, F_SETFD, FD_CLOEXEC);
    drainer = std::thread([this] { drain(); });
}

measured_program::~measured_program()
{
    for (const pid_t process : processes())
        kill(process, SIGKILL);
    if (child > 0)
        waitpid(child, nullptr, 0);
    eventfd_write(stop_fd, 1);
    drainer.join();
    close(terminal_fd);
    close(stop_fd);
    munmap(exec_ns, sizeof *exec_ns);
}

std::vector<pid_t> measured_program::processes() const
{
    std::vector<pid_t> found = processes_at_home(home_path);
    if (child > 0 && std::ranges::find(found, child) == found.end())
        found.push_back(child);
    return found;
}

void measured_program::drain()
{
    while (true) {
        pollfd watched[] = {{terminal_fd, POLLIN, 0}, {stop_fd, POLLIN, 0}};
        if (poll(watched, 2, -1) < 0 && errno == EINTR)
            continue;
        char bytes[16384];
        const ssize_t length =
            watched[1].revents == 0 ? read(terminal_fd, bytes, sizeof bytes) : -1;
        const std::int64_t read_ns = read_clock_ns();
        const std::lock_guard lock{guard};
        arrived.notify_all();
        closed = length <= 0; // an error: the other side is closed everywhere
        if (closed)
            return;
        output.append(bytes, static_cast<std::size_t>(length));
        last_read_ns = read_ns;
    }
}

std::optional<first_screen> measured_program::wait_for_screen(std::string_view last_text)
{
    std::unique_lock lock{guard};
    const auto is_shown = [&] { return closed || output.find(last_text) != std::string::npos; };
    if (!arrived.wait_for(lock, default_patience, is_shown) || closed)
        return std::nullopt;
    wait_for_quiet(lock, screen_quiet);
    return first_screen{static_cast<double>(last_read_ns - *exec_ns) / 1e6, output.size()};
}

void measured_program::wait_for_quiet(std::unique_lock<std::mutex>& lock,
                                      std::chrono::milliseconds quiet)
{
    std::size_t seen = 0;
    do {
        seen = output.size();
        arrived.wait_for(lock, quiet, [&] { return output.size() != seen; });
    } while (output.size() != seen);
}

std::size_t measured_program::written()
{
    const std::lock_guard lock{guard};
    return output.size();
}

std::optional<std::size_t> measured_program::wait_for_more(std::size_t before)
{
    std::unique_lock lock{guard};
    const auto has_come = [&] { return closed || output.size() > before; };
    if (!arrived.wait_for(lock, default_patience, has_come) || closed)
        return std::nullopt;
    wait_for_quiet(lock, later_quiet);
    return output.size();
}

bool measured_program::type(std::string_view keys)
{
    return write(terminal_fd, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size());
}

std::optional<double> measured_program::time_answer(std::string_view keys, std::string_view text)
{
    const std::size_t before = written();
    const std::int64_t begin_ns = read_clock_ns();
    if (!type(keys))
        return std::nullopt;
    std::unique_lock lock{guard};
    const auto is_written = [&] {
        return closed || output.find(text, before) != std::string::npos;
    };
    if (!arrived.wait_for(lock, default_patience, is_written) || closed)
        return std::nullopt;
    return static_cast<double>(last_read_ns - begin_ns) / 1e6;
}

/// Waits until no process of the program is left.
bool measured_program::others_end()
{
    const auto give_up = std::chrono::steady_clock::now() + default_patience;
    while (!processes_at_home(home_path).empty()) {
        if (std::chrono::steady_clock::now() > give_up)
            return false;
        std::this_thread::sleep_for(look_again);
    }
    return true;
}

bool measured_program::leave(std::string_view keys)
{
    if (!type(keys))
        return false;
    {
        std::unique_lock lock{guard};
        if (!arrived.wait_for(lock, default_patience, [this] { return closed; }))
            return false;
    }
    int status = 0;
    const bool is_reaped = waitpid(child, &status, 0) == child;
    child = -1;
    return is_reaped && WIFEXITED(status) && WEXITSTATUS(status) == 0 && others_end();
}
