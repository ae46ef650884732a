// pty_process.cpp - a program with a pseudo-terminal as its input and output.
#include "support/pty_process.hpp"

#include "support/emulator.hpp"
#include "support/patience.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <utmp.h>

namespace
{

constexpr int cannot_start_status = 127;
constexpr int longest_write_wait_ms = 20'000;

std::vector<char*> collect_pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// Ends this process with a line that says what failed; makes only calls allowed in a forked child.
[[noreturn]] void give_up(const char* what)
{
    static_cast<void>(!::write(STDERR_FILENO, what, __builtin_strlen(what)));
    _exit(cannot_start_status);
}

/// Turns the forked child into the program: without the test's descriptors, signals as at login.
[[noreturn]] void run_program(char* const* command, char* const* environment, const char* folder,
                              int error_fd)
{
    for (int number = 1; number < NSIG; ++number)
        std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    dup2(error_fd, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    if (*folder != '\0' && chdir(folder) != 0)
        give_up("cannot enter the working folder\n");
    execvpe(command[0], command, environment);
    give_up("cannot start the program\n");
}

} // namespace

pty_process::pty_process(const program_start& start)
{
    std::vector<std::string> program = start.command;
    emulator_add(program);
    const std::vector<char*> command = collect_pointers(program);
    const std::vector<char*> environment = collect_pointers(start.environment);
    winsize size{};
    size.ws_row = static_cast<unsigned short>(start.rows);
    size.ws_col = static_cast<unsigned short>(start.columns);
    error_fd = memfd_create("standard error", MFD_CLOEXEC);
    wake_fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    int program_fd = -1;
    if (openpty(&terminal_fd, &program_fd, nullptr, nullptr, &size) == 0) {
        tcgetattr(program_fd, &found_settings);
        child = fork();
    }
    if (child < 0) {
        std::perror("cannot start a program in a terminal");
        std::abort();
    }
    if (child == 0) {
        login_tty(program_fd);
        run_program(command.data(), environment.data(), start.folder.c_str(), error_fd);
    }
    close(program_fd);
    fcntl(terminal_fd, F_SETFD, FD_CLOEXEC);
    fcntl(terminal_fd, F_SETFL, fcntl(terminal_fd, F_GETFL) | O_NONBLOCK);
    drainer = std::thread([this] { drain(); });
}

pty_process::~pty_process()
{
    // The group contains the program's own children too, and may outlive its leader.
    kill(-child, SIGKILL);
    if (!ended_with)
        waitpid(child, nullptr, 0);
    hang_up();
    close(wake_fd);
    close(error_fd);
}

bool pty_process::read_output(std::size_t limit)
{
    char bytes[16384];
    const ssize_t length = ::read(terminal_fd, bytes, std::min(limit, sizeof bytes));
    if (length < 0 && (errno == EAGAIN || errno == EINTR))
        return true;
    if (length <= 0)
        return false; // EIO
    pending.append(bytes, static_cast<std::size_t>(length));
    arrived.notify_all();
    return true;
}

void pty_process::drain()
{
    for (bool watches = true;;) {
        pollfd watched[] = {{wake_fd, POLLIN, 0}, {terminal_fd, POLLIN, 0}};
        if (poll(watched, watches ? 2 : 1, -1) < 0 && errno != EINTR)
            break;
        const std::lock_guard lock{guard};
        eventfd_t ignored = 0;
        eventfd_read(wake_fd, &ignored);
        watches = !is_held;
        if (is_stopping || (watches && !read_output(SIZE_MAX)))
            break;
    }
    const std::lock_guard lock{guard};
    closed = true;
    arrived.notify_all();
}

void pty_process::hold_output(bool held)
{
    const std::lock_guard lock{guard};
    is_held = held;
    eventfd_write(wake_fd, 1);
}

void pty_process::read_held(std::size_t count)
{
    const std::lock_guard lock{guard};
    static_cast<void>(read_output(count));
}

bool pty_process::has_room_for_output() const
{
    const int program_fd = program_side_open();
    pollfd watched{program_fd, POLLOUT, 0};
    const bool has_room = program_fd >= 0 && poll(&watched, 1, 0) > 0;
    if (program_fd >= 0)
        close(program_fd);
    return has_room;
}

bool pty_process::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        pollfd watched{terminal_fd, POLLOUT, 0};
        if (poll(&watched, 1, longest_write_wait_ms * patience_factor()) <= 0)
            return false;
        const ssize_t length = ::write(terminal_fd, bytes.data(), bytes.size());
        if (length < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        if (length <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

int pty_process::program_side_open() const
{
    return ioctl(terminal_fd, TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC);
}

bool pty_process::is_behind() const
{
    // The client keeps such output in a file in memory, and goes back to its start when it is done.
    const std::string process = "/proc/" + std::to_string(tcgetpgrp(terminal_fd));
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(process + "/fd", ignored)) {
        if (!read_symlink(entry.path(), ignored).string().starts_with("/memfd:screen"))
            continue;
        std::ifstream file(process + "/fdinfo/" + entry.path().filename().string());
        long place = 0;
        if (std::string name; file >> name >> place && name == "pos:" && place != 0)
            return true;
    }
    return false;
}

bool pty_process::has_unread_input() const
{
    const int program_fd = program_side_open();
    int bytes = 0;
    const bool is_told = program_fd >= 0 && ioctl(program_fd, FIONREAD, &bytes) == 0;
    if (program_fd >= 0)
        close(program_fd);
    return is_told && bytes > 0;
}

bool pty_process::write_after_program(std::string_view mark)
{
    if (output_ended())
        return false;
    const int program_fd = program_side_open();
    if (program_fd < 0)
        return false;
    const ssize_t written = ::write(program_fd, mark.data(), mark.size());
    close(program_fd);
    return written == static_cast<ssize_t>(mark.size());
}

std::string pty_process::take_output(std::chrono::milliseconds limit)
{
    std::unique_lock lock{guard};
    arrived.wait_for(lock, limit, [this] { return closed || !pending.empty(); });
    return std::exchange(pending, {});
}

bool pty_process::output_ended()
{
    const std::lock_guard lock{guard};
    return closed && pending.empty();
}

void pty_process::set_size(int rows, int columns)
{
    winsize size{};
    size.ws_row = static_cast<unsigned short>(rows);
    size.ws_col = static_cast<unsigned short>(columns);
    ioctl(terminal_fd, TIOCSWINSZ, &size);
}

void pty_process::hang_up()
{
    if (terminal_fd < 0)
        return;
    {
        const std::lock_guard lock{guard};
        is_stopping = true;
        eventfd_write(wake_fd, 1);
    }
    drainer.join();
    close(terminal_fd);
    terminal_fd = -1;
}

std::optional<int> pty_process::wait_status()
{
    int status = 0;
    if (!ended_with && waitpid(child, &status, WNOHANG) == child)
        ended_with = status;
    return ended_with;
}

void pty_process::send_signal(int number)
{
    if (!ended_with)
        kill(child, number);
}

termios pty_process::line_settings() const
{
    termios settings{};
    tcgetattr(terminal_fd, &settings);
    return settings;
}

std::string pty_process::error_text() const
{
    std::string text;
    char bytes[4096];
    ssize_t length = 0;
    while ((length = pread(error_fd, bytes, sizeof bytes, static_cast<off_t>(text.size()))) > 0)
        text.append(bytes, static_cast<std::size_t>(length));
    return text;
}
