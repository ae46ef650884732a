// stand_ins.cpp - see stand_ins.hpp.
#include "fuzz/stand_ins.hpp"
#include "base/state_lock.hpp"

#include "base/pause.hpp"
#include "fuzz/property.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

stand_ins world;

namespace
{

constexpr std::time_t first_moment_s = 1'100'000'000;
constexpr long us_per_second = 1'000'000;
constexpr pid_t first_child = 0x40000000; // beyond what kernels assign
constexpr int max_pauses = 200'000;
constexpr int connected_status = 1 << 8;

int written_fd = -1;
bool is_refused = false;

bool is_made_up(pid_t child)
{
    return child >= first_child;
}

/// A descriptor of the one file to which everything is written.
int open_written(int flags)
{
    if (is_refused) {
        errno = EACCES;
        return -1;
    }
    if (written_fd < 0)
        written_fd = memfd_create("written", MFD_CLOEXEC);
    require(written_fd >= 0, "there is memory for written files");
    if ((flags & O_TRUNC) != 0)
        require(ftruncate(written_fd, 0) == 0, "the written file can be emptied");
    lseek(written_fd, 0, SEEK_END);
    return fcntl(written_fd, F_DUPFD_CLOEXEC, 0);
}

void run_pause()
{
    require(++world.pauses < max_pauses, "every wait for the user comes to an end");
    if (!world.on_pause)
        return;
    state_lock_take();
    world.on_pause();
    state_lock_release();
}

} // namespace

world_visit::world_visit()
{
    world = {};
    world.is_active = true;
    world.now_s = first_moment_s;
    is_refused = false;
    if (written_fd >= 0)
        require(ftruncate(written_fd, 0) == 0, "the written file can be emptied");
}

world_visit::~world_visit()
{
    world = {};
}

void clock_advance(long microseconds)
{
    world.now_us += microseconds;
    world.now_s += world.now_us / us_per_second;
    world.now_us %= us_per_second;
}

bool child_end(bool is_connected)
{
    if (world.children.empty())
        return false;
    world.ended.push_back(world.children.front());
    world.ended_statuses.push_back(is_connected ? connected_status : 0);
    world.children.pop_front();
    return true;
}

std::string written()
{
    std::string bytes(static_cast<std::size_t>(std::max<off_t>(0, lseek(written_fd, 0, SEEK_END))),
                      '\0');
    const ssize_t length = pread(written_fd, bytes.data(), bytes.size(), 0);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(0, length)));
    return bytes;
}

void writing_refuse(bool refused)
{
    is_refused = refused;
}

extern "C" {

std::time_t __real_time(std::time_t* result);
int __real_poll(pollfd* fds, nfds_t count, int limit);
int __real_ppoll(pollfd* fds, nfds_t count, const timespec* limit, const sigset_t* mask);
unsigned __real_alarm(unsigned seconds);
int __real_setitimer(__itimer_which_t which, const itimerval* wanted, itimerval* before);
pid_t __real_fork();
pid_t __real_waitpid(pid_t child, int* status, int options);
int __real_kill(pid_t process, int signal_number);
int __real_fsync(int fd);
int __real_ioctl(int fd, unsigned long request, void* argument);
int __real_getaddrinfo(const char* host, const char* service, const addrinfo* hints,
                       addrinfo** list);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument);
int __real_pthread_detach(pthread_t thread);
int __real_open(const char* name, int flags, mode_t mode);

std::time_t __wrap_time(std::time_t* result)
{
    if (!world.is_active)
        return __real_time(result);
    if (result != nullptr)
        *result = world.now_s;
    return world.now_s;
}

/// The fuzzer's terminal has no input, and it has not vanished.
int __wrap_poll(pollfd* fds, nfds_t count, int limit)
{
    const bool is_terminal = count > 0 && fds[0].fd == STDIN_FILENO;
    return is_terminal ? 0 : __real_poll(fds, count, limit);
}

int __wrap_ppoll(pollfd* fds, nfds_t count, const timespec* limit, const sigset_t* mask)
{
    if (!world.is_active)
        return __real_ppoll(fds, count, limit, mask);
    const timespec at_once = {0, 0};
    const int ready = count > 0 ? __real_ppoll(fds, count, &at_once, nullptr) : 0;
    if (ready == 0 && limit != nullptr)
        clock_advance(limit->tv_sec * us_per_second + limit->tv_nsec / 1000);
    if (count == 0)
        run_pause();
    return ready;
}

unsigned __wrap_alarm(unsigned seconds)
{
    return world.is_active ? 0 : __real_alarm(seconds);
}

int __wrap_setitimer(__itimer_which_t which, const itimerval* wanted, itimerval* before)
{
    return world.is_active ? 0 : __real_setitimer(which, wanted, before);
}

pid_t __wrap_fork()
{
    if (!world.is_active)
        return __real_fork();
    world.children.push_back(first_child + world.forks++);
    return world.children.back();
}

pid_t __wrap_waitpid(pid_t child, int* status, int options)
{
    if (!world.is_active)
        return __real_waitpid(child, status, options);
    if (world.ended.empty())
        return 0;
    const pid_t ended = world.ended.front();
    *status = world.ended_statuses.front();
    world.ended.pop_front();
    world.ended_statuses.pop_front();
    return ended;
}

int __wrap_kill(pid_t process, int signal_number)
{
    return is_made_up(process) ? 0 : __real_kill(process, signal_number);
}

int __wrap_fsync(int fd)
{
    return world.is_active ? 0 : __real_fsync(fd);
}

int __wrap_ioctl(int fd, unsigned long request, void* argument)
{
    if (!world.is_active || request != TIOCGWINSZ)
        return __real_ioctl(fd, request, argument);
    const winsize size = {static_cast<unsigned short>(world.lines),
                          static_cast<unsigned short>(world.columns), 0, 0};
    std::memcpy(argument, &size, sizeof size);
    return 0;
}

/// Resolves only numeric addresses.
int __wrap_getaddrinfo(const char* host, const char* service, const addrinfo* hints,
                       addrinfo** list)
{
    in_addr address = {};
    const bool is_address = host != nullptr && inet_pton(AF_INET, host, &address) == 1;
    return !world.is_active || is_address ? __real_getaddrinfo(host, service, hints, list)
                                          : EAI_NONAME;
}

/// Does the new thread's work at once, before the caller continues.
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument)
{
    if (!world.is_active)
        return __real_pthread_create(thread, attributes, run, argument);
    *thread = pthread_self();
    run(argument);
    return 0;
}

int __wrap_pthread_detach(pthread_t thread)
{
    return world.is_active ? 0 : __real_pthread_detach(thread);
}

/// Made-up names must not harm the machine: everything is written to one place.
int __wrap_open(const char* name, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const bool is_reading = (flags & O_ACCMODE) == O_RDONLY;
    return !world.is_active || is_reading ? __real_open(name, flags, mode) : open_written(flags);
}

} // extern "C"
