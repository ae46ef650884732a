// mail_child.cpp - see mail_child.hpp.
#include "server/mail/mail_child.hpp"

#include "base/retry.hpp"
#include "base/write_all.hpp"
#include "server/base/limits.hpp"
#include "server/base/sockets.hpp"
#include "server/base/system_text.hpp"
#include "server/base/text_fields.hpp"
#include "server/mail/mail_command.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <utility>

namespace tovrik
{
namespace
{

/// Everything that a program is started with. The system may be out of memory for it.
struct start_settings {
    start_settings()
    {
        error = posix_spawnattr_init(&attributes);
        if (error == 0)
            error = posix_spawn_file_actions_init(&actions);
    }
    ~start_settings()
    {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    start_settings(const start_settings&) = delete;
    start_settings& operator=(const start_settings&) = delete;
    /// Notes the first failure.
    void check(int result)
    {
        error = error == 0 ? result : error;
    }

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t actions{};
    int error = 0;
};

void set_signals(start_settings& settings)
{
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_t* const attributes = &settings.attributes;
    settings.check(posix_spawnattr_setsigmask(attributes, &none));
    settings.check(posix_spawnattr_setsigdefault(attributes, &all));
    settings.check(posix_spawnattr_setpgroup(attributes, 0));
    settings.check(posix_spawnattr_setflags(
        attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
}

/// Libraries open descriptors that would stay open in the program.
void set_descriptors(start_settings& settings, int mail, int output)
{
    posix_spawn_file_actions_t* const actions = &settings.actions;
    settings.check(posix_spawn_file_actions_adddup2(actions, mail, STDIN_FILENO));
    settings.check(posix_spawn_file_actions_adddup2(actions, output, STDOUT_FILENO));
    settings.check(posix_spawn_file_actions_adddup2(actions, output, STDERR_FILENO));
    settings.check(posix_spawn_file_actions_addclosefrom_np(actions, STDERR_FILENO + 1));
}

int start_program(pid_t& pid, const std::string& path, std::vector<std::string> words, int mail,
                  int output)
{
    start_settings settings;
    if (settings.error != 0)
        return settings.error;
    set_signals(settings);
    set_descriptors(settings, mail, output);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    return settings.error != 0 ? settings.error
                               : posix_spawn(&pid, path.c_str(), &settings.actions,
                                             &settings.attributes, arguments.data(), environ);
}

/// Keeps the beginning of what was printed; the rest is only counted.
void take_printed(mail_child& child, std::string_view bytes)
{
    child.printed += bytes.substr(0, max_mail_complaint_bytes - child.printed.size());
    child.printed_bytes += bytes.size();
}

/// Reads what is there, up to the end of the pipe. A program that prints on gets others in between.
void read_output(mail_child& child)
{
    char block[16384];
    const ssize_t count =
        retry_on_eintr([&] { return read(child.output.get(), block, sizeof block); });
    if (count > 0) {
        take_printed(child, {block, static_cast<std::size_t>(count)});
    } else if (count == 0 || !would_block(errno)) {
        child.output = unique_fd{};
    }
}

/// Reads what an ended program has printed last: the pipe holds no more than some of these blocks.
void read_rest(mail_child& child)
{
    constexpr int blocks = 4;
    for (int i = 0; child.output && i < blocks; ++i) {
        read_output(child);
    }
}

void terminate_group(mail_child& child, const std::string& why)
{
    if (!child.killed_because.empty())
        return;
    child.killed_because = why;
    kill(-child.pid, SIGKILL);
}

/// What was printed, in one line of ASCII: nobody knows which characters the other bytes are.
std::string format_printed(std::string_view printed)
{
    std::string line;
    for (const char c : printed) {
        if ((c & 0x80) != 0) {
            line += '?';
        } else if (c != ' ' && !is_control(static_cast<unsigned char>(c))) {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    if (line.ends_with(' '))
        line.pop_back();
    return line.empty() ? line : ": " + line;
}

std::string format_end(const mail_child& child, const siginfo_t& about)
{
    if (!child.killed_because.empty())
        return child.killed_because;
    if (about.si_code == CLD_EXITED && about.si_status == 0)
        return {};
    return (about.si_code == CLD_EXITED ? "the mail program ended with status "
                                        : "the mail program was ended by signal ") +
           std::to_string(about.si_status);
}

/// Notes how the program has ended. Nothing while it has not.
std::optional<std::string> take_end(mail_child& child, int more_options)
{
    siginfo_t about{};
    const int result = retry_on_eintr([&] {
        return waitid(P_PID, static_cast<id_t>(child.pid), &about, WEXITED | more_options);
    });
    if (result == 0 && about.si_pid != child.pid)
        return std::nullopt;
    // What it printed last may not be read yet. Whoever it has left behind may hold the pipe open.
    read_rest(child);
    std::string error = result == 0 ? format_end(child, about) : system_text("waiting failed");
    if (!error.empty())
        error += format_printed(child.printed);
    child = {};
    return error;
}

} // namespace

unique_fd mail_file_make(std::string_view head, std::string_view body)
{
    unique_fd file{memfd_create("mail", MFD_CLOEXEC)};
    if (!file || write_all(file.get(), head) != head.size() ||
        write_all(file.get(), body) != body.size() || lseek(file.get(), 0, SEEK_SET) != 0)
        return unique_fd{};
    return file;
}

std::string mail_child_start(mail_child& child, const std::vector<std::string>& words, int mail,
                             int epoll_fd, time_point end_by)
{
    std::string path;
    if (std::string error = mail_command_find(words, path); !error.empty())
        return error;
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        return system_text("cannot make a pipe");
    mail_child started{.end_by = end_by};
    started.output = unique_fd{ends[0]};
    const unique_fd writing_end{ends[1]};
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    if (const int error = start_program(started.pid, path, words, mail, ends[1]); error != 0)
        return path + ": cannot be started: " + std::strerror(error);
    // The header of an older C library declares its function for C alone.
    started.end = unique_fd{static_cast<int>(syscall(SYS_pidfd_open, started.pid, 0))};
    if (!started.end || !watch(epoll_fd, EPOLL_CTL_ADD, started.end.get(), EPOLLIN) ||
        !watch(epoll_fd, EPOLL_CTL_ADD, ends[0], EPOLLIN)) {
        std::string error = system_text("cannot wait for the mail program");
        terminate_group(started, error);
        take_end(started, 0);
        return error;
    }
    child = std::move(started);
    return {};
}

bool mail_child_on_event(mail_child& child, int fd)
{
    if (child.pid < 0)
        return false;
    if (child.end && fd == child.end.get()) {
        child.has_ended = true;
        return true;
    }
    if (!child.output || fd != child.output.get())
        return false;
    read_output(child);
    if (child.printed_bytes > max_mail_output_bytes)
        terminate_group(child, "the mail program prints without end");
    return true;
}

std::optional<std::string> mail_child_result(mail_child& child, time_point now)
{
    if (child.pid < 0)
        return std::nullopt;
    if (!child.has_ended && now >= child.end_by)
        terminate_group(child, "the mail program takes too long");
    return child.has_ended ? take_end(child, WNOHANG) : std::nullopt;
}

std::string mail_child_finish(mail_child& child, std::chrono::milliseconds patience)
{
    if (child.pid < 0)
        return "no mail program runs";
    pollfd waited{.fd = child.end.get(), .events = POLLIN, .revents = 0};
    if (poll(&waited, 1, static_cast<int>(patience.count())) <= 0)
        terminate_group(child, "the server ends");
    return take_end(child, 0).value_or("");
}

} // namespace tovrik
